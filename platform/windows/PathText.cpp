#include "platform/PathText.h"

#include "base/CodePage.h"

namespace platform {

std::string PathText(const std::filesystem::path& path) {
  return base::FromWide(path.u16string());
}

std::filesystem::path PathFromText(std::string_view text) {
  return base::ToWide(text);
}

}  // namespace platform
