#include "host/Texts.h"

#include "base/CodePage.h"

namespace host {

std::filesystem::path PathOf(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string Utf8Of(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::string ChainTextOf(std::string_view outside) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (outside.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    outside.remove_prefix(kByteOrderMark.size());
  }
  std::string converted = base::FromUtf8(outside);
  return base::ToUtf8(converted) == outside ? converted : std::string(outside);
}

std::string Quoted(std::string_view codePageText) {
  constexpr std::size_t kLongest = 40;
  const bool isLong = codePageText.size() > kLongest;
  return '"' + base::ToUtf8(codePageText.substr(0, kLongest)) + (isLong ? "...\"" : "\"");
}

}  // namespace host
