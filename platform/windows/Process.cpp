// The running process and its surroundings.
#include <windows.h>

#include "platform/SystemServices.h"
#include "platform/windows/ModulePath.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class SystemProcessService final : public Process {
 public:
  std::uint32_t ProcessId() override { return GetCurrentProcessId(); }

  std::uint32_t ThreadId() override { return GetCurrentThreadId(); }

  LocalTime Now() override {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear,   now.wMonth,  now.wDay,         now.wHour,
            now.wMinute, now.wSecond, now.wMilliseconds};
  }

  fs::path Program() override { return ModulePath(nullptr); }

  fs::path TemporaryFolder() override {
    wchar_t folder[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH + 1, folder);
    return length > 0 && length <= MAX_PATH ? fs::path(folder) : fs::path();
  }

  // From the environment: this is asked for while a module loads, when the shell must not be
  // called.
  fs::path StateFolder() override {
    wchar_t folder[MAX_PATH];
    const DWORD length = GetEnvironmentVariableW(L"LOCALAPPDATA", folder, MAX_PATH);
    return length > 0 && length < MAX_PATH ? fs::path(folder) : fs::path();
  }
};

}  // namespace

Process& SystemProcess() {
  static SystemProcessService process;
  return process;
}

}  // namespace platform
