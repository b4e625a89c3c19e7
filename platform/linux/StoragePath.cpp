#include "platform/StoragePath.h"

#include <algorithm>

#include "base/CodePage.h"

namespace platform {
namespace {

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Bytes of the well-formed character of UTF-8 that the text begins with; 0 when it begins with
// none.
std::size_t Utf8Length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (length == 1) return 1;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  const bool whole =
      std::all_of(text.begin() + 1, text.begin() + static_cast<long>(length), IsContinuation);
  const auto second = static_cast<unsigned char>(text[1]);
  const bool tooLong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool noLetter = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F);
  return whole && !tooLong && !noLetter ? length : 0;
}

std::string ToDisk(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    if (length == 0) {
      result += base::ToUtf8(text.substr(0, 1));
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
}

}  // namespace

std::filesystem::path PathOfStorage(std::string_view text) {
  std::string path = ToDisk(text);
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

std::string StoragePathOf(const std::filesystem::path& path) {
  std::string text = base::FromUtf8(path.native());
  // Only what leads back to the same name.
  if (ToDisk(text) != path.native()) text = path.native();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

std::u16string WideStoragePath(std::string_view text) {
  return PathOfStorage(text).u16string();
}

bool CompoundFilesSurviveKills() {
  return true;
}

}  // namespace platform
