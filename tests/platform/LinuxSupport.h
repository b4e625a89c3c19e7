// What tests of the Linux services need besides: a registry of their own, and child processes.
#pragma once

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/platform/Support.h"

namespace testing_support {

// Gives an environment variable back its value at the end; null unsets it meanwhile.
class ScopedVariable {
 public:
  ScopedVariable(const char* variable, const char* value) : name(variable) {
    if (const char* old = std::getenv(variable)) before = old, wasSet = true;
    Set(value);
  }
  ~ScopedVariable() { Set(wasSet ? before.c_str() : nullptr); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void Set(const char* value) const { value ? setenv(name, value, 1) : unsetenv(name); }

  const char* name;
  std::string before;
  bool wasSet = false;
};

// The system's registry service works in here, never in the user's configuration.
struct TemporaryConfiguration {
  TemporaryFolder folder;
  ScopedVariable variable{"XDG_CONFIG_HOME", folder.Path().c_str()};
  std::filesystem::path Store() const { return folder / "fxbox4/registry"; }
};

// From now on no file of this process gets longer, as on a full disk.
inline void LimitFileSize(rlim_t most) {
  const rlimit limit = {most, most};
  signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &limit);
}

template <class Body>
pid_t StartProcess(Body body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  return child;
}

inline int ExitStatus(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs `body`, which gives 0 when all is well, in a process that file permissions bind.
template <class Body>
int AsOrdinaryUser(Body body) {
  constexpr uid_t kNobody = 65534;
  return ExitStatus(StartProcess([&] {
    if (geteuid() == 0 && setresuid(kNobody, kNobody, kNobody) != 0) return 99;
    return body();
  }));
}

}  // namespace testing_support
