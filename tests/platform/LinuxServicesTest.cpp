// Desktop, terminal and modules of Linux.
#include <signal.h>

#include "platform/SystemServices.h"
#include "tests/platform/LinuxSupport.h"

namespace platform {
namespace {

using testing_support::ScopedVariable;

TEST(LinuxServicesTest, MessagesGoToTheErrorOutput) {
  testing::internal::CaptureStderr();
  SystemDesktop().ShowMessage(
      "Gr\xFC\xDF"
      "e",
      "Fxbox4.dll");
  SystemDesktop().Beep(440, 10);
  {
    const ScopedVariable quiet("FXBOX_DEBUG", nullptr);
    SystemDesktop().WriteDebugOutput("hidden\n");
    const ScopedVariable loud("FXBOX_DEBUG", "1");
    SystemDesktop().WriteDebugOutput("shown\n");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Fxbox4.dll: Gr\u00FC\u00DFe\nshown\n");
}

TEST(LinuxServicesTest, ArgumentsComeWithoutTheProgram) {
  char program[] = "fxbox", first[] = "a b", second[] = "\xC3\xBC";
  char* all[] = {program, first, second, nullptr};
  EXPECT_EQ(SystemTerminal().Arguments(3, all), (std::vector<std::string>{"a b", "\xC3\xBC"}));
  EXPECT_TRUE(SystemTerminal().Arguments(0, all + 3).empty());
}

TEST(LinuxServicesTest, AFileHasNoWidth) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(SystemTerminal().ErrorWidth(), 0);
  testing::internal::GetCapturedStderr();
}

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
}

}  // namespace
}  // namespace platform
