// A second, naive form of the point filters, on whole pictures: what the pulls are compared with.
#pragma once

#include <string>

#include "tests/support/Pictures.h"

namespace testing_support {

struct ModelStep {
  std::string progId;
  std::string parameters;
};

// Whether a class is one of the nine point filters or the filter that does nothing.
bool HasModel(const std::string& progId);
// The result of a new filter with these parameters.
Picture ApplyModel(const ModelStep& step, const Picture& picture);

}  // namespace testing_support
