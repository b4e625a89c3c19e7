// Texts as the system takes them.
#pragma once

#include <windows.h>

#include <string>

#include "platform/windows/Text.h"

namespace toolkit {

using platform::Utf8Of;

// What is not well-formed becomes the replacement character.
inline std::wstring WideOf(const std::string& utf8) {
  const int size = static_cast<int>(utf8.size());
  const int count = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(count), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), count);
  return wide;
}

// The text of a window or an edit.
inline std::string TextOf(HWND window) {
  std::wstring wide(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  wide.resize(
      static_cast<std::size_t>(GetWindowTextW(window, wide.data(), static_cast<int>(wide.size()))));
  return Utf8Of(wide);
}

}  // namespace toolkit
