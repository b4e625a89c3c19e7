#include "base/PercentText.h"

namespace base {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

bool IsPlain(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
         c == '_' || c == '.' || c == '~';
}

// -1 for what is no digit.
int DigitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The byte that the code at the front of the text stands for, -1 where there is none.
int CodeAt(std::string_view text) {
  if (text.size() < 3 || text[0] != '%') return -1;
  const int high = DigitOf(text[1]);
  const int low = DigitOf(text[2]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

}  // namespace

std::string PercentEncode(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    if (IsPlain(c)) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return text;
}

std::string PercentDecode(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    const int code = CodeAt(text);
    bytes += code < 0 ? text[0] : static_cast<char>(code);
    text.remove_prefix(code < 0 ? 1 : 3);
  }
  return bytes;
}

}  // namespace base
