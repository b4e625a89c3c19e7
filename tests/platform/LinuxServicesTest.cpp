// Desktop, terminal and modules of Linux.
#include <signal.h>

#include "platform/SystemServices.h"
#include "tests/platform/LinuxSupport.h"

namespace platform {
namespace {

volatile sig_atomic_t interrupts = 0;

int StatusAfter(int number) {
  const pid_t child = testing_support::StartProcess([number] {
    SystemTerminal().OnInterrupt([] { interrupts = interrupts + 1; });
    raise(number);
    if (interrupts != 1) return 1;
    raise(SIGINT);
    return 2;
  });
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

TEST(LinuxServicesTest, TheFirstInterruptIsHeardTheSecondEnds) {
  for (const int number : {SIGINT, SIGTERM}) {
    const int status = StatusAfter(number);
    EXPECT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), SIGINT);
  }
}

TEST(LinuxServicesTest, AnIgnoredInterruptStaysIgnored) {
  EXPECT_EQ(testing_support::ExitStatus(testing_support::StartProcess([] {
              signal(SIGINT, SIG_IGN);
              SystemTerminal().OnInterrupt([] { interrupts = 1; });
              raise(SIGINT);
              return static_cast<int>(interrupts);
            })),
            0);
}

TEST(LinuxServicesTest, CallsAFunctionOfAModule) {
  int status = 0;
  EXPECT_EQ(SystemModules().Call(FXBOX_TEST_MODULE, "DllRegisterServer", status), std::nullopt);
  EXPECT_EQ(status, 5);
  EXPECT_TRUE(SystemModules().Call(FXBOX_TEST_MODULE, "NoSuchFunction", status).has_value());
  EXPECT_TRUE(SystemModules().Call(__FILE__, "DllRegisterServer", status).has_value());
}

}  // namespace
}  // namespace platform
