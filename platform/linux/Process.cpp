// The running process and its surroundings.
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "platform/SystemServices.h"
#include "platform/linux/Environment.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class SystemProcessService final : public Process {
 public:
  std::uint32_t ProcessId() override { return static_cast<std::uint32_t>(getpid()); }

  std::uint32_t ThreadId() override { return static_cast<std::uint32_t>(syscall(SYS_gettid)); }

  LocalTime Now() override {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local = {};
    localtime_r(&now.tv_sec, &local);
    constexpr long kNanosecondsAMillisecond = 1'000'000;
    return {local.tm_year + 1900,
            local.tm_mon + 1,
            local.tm_mday,
            local.tm_hour,
            local.tm_min,
            local.tm_sec,
            static_cast<int>(now.tv_nsec / kNanosecondsAMillisecond)};
  }

  fs::path Program() override {
    std::error_code error;
    const fs::path path = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::path() : path;
  }

  fs::path TemporaryFolder() override {
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    return error ? fs::path("/tmp") : folder;
  }

  fs::path StateFolder() override { return FolderOfUser("XDG_STATE_HOME", ".local/state"); }
};

}  // namespace

Process& SystemProcess() {
  static SystemProcessService process;
  return process;
}

}  // namespace platform
