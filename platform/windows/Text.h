// Conversions between the system's wide texts and narrow ones.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace platform {

inline std::string Utf8Of(std::wstring_view wide) {
  const int length = static_cast<int>(wide.size());
  if (length == 0) return {};
  const int needed =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text.data(), needed, nullptr, nullptr);
  return text;
}

inline std::wstring WideOf(std::string_view utf8) {
  const int length = static_cast<int>(utf8.size());
  if (length == 0) return {};
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), length)));
  return wide;
}

// What the system says to an error, as one line in UTF-8.
inline std::string ReasonOf(DWORD error) {
  wchar_t text[512];
  const DWORD flags =
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  std::wstring_view line(text, FormatMessageW(flags, nullptr, error, 0, text, 512, nullptr));
  while (!line.empty() && (line.back() == L' ' || line.back() == L'.')) line.remove_suffix(1);
  return line.empty() ? "system error " + std::to_string(error) : Utf8Of(line);
}

}  // namespace platform
