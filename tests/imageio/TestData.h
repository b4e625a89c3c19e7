// Where the tests find picture files, good and broken.
#pragma once

#include <cstdlib>

#include "tests/imageio/TestPicture.h"

namespace test {

inline std::filesystem::path DataFolder() {
  const char* other = std::getenv("FXBOX_TEST_DATA");
  return other != nullptr ? other : FXBOX_TEST_DATA;
}

}  // namespace test
