#include "platform/StoragePath.h"

#include "base/CodePage.h"
#include "platform/PathText.h"

namespace platform {

std::filesystem::path PathOfStorage(std::string_view text) {
  return PathFromText(text);
}

std::string StoragePathOf(const std::filesystem::path& path) {
  return base::FromWide(std::filesystem::path(path).make_preferred().u16string());
}

std::u16string WideStoragePath(std::string_view text) {
  return base::ToWide(text);
}

bool CompoundFilesSurviveKills() {
  return false;
}

}  // namespace platform
