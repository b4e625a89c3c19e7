#include "platform/PathText.h"

namespace platform {

std::string PathText(const std::filesystem::path& path) {
  return path.native();
}

std::filesystem::path PathFromText(std::string_view text) {
  return text;
}

}  // namespace platform
