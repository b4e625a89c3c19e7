#include "platform/SystemMessage.h"

#include <windows.h>

namespace platform {

std::string SystemMessage(HRESULT status) {
  constexpr DWORD kUserLanguage = 0x400;
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  char* text = nullptr;
  const DWORD length = FormatMessageA(kFlags, nullptr, static_cast<DWORD>(status), kUserLanguage,
                                      reinterpret_cast<char*>(&text), 0, nullptr);
  if (length == 0 || !text) return "status " + std::to_string(status);
  std::string message(text, length);
  LocalFree(text);
  return message;
}

}  // namespace platform
