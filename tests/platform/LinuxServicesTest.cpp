// Desktop, terminal and modules of Linux.
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <winuser.h>

#include <chrono>
#include <iostream>
#include <thread>

#include "platform/ModuleResource.h"
#include "platform/StoragePath.h"
#include "platform/SystemMessage.h"
#include "platform/SystemServices.h"
#include "platform/linux/SharedObject.h"
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

TEST(LinuxServicesTest, TheWidthIsThatOfTheTerminalOfErrors) {
  EXPECT_EQ(testing_support::ExitStatus(testing_support::StartProcess([] {
              const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
              const winsize size = {24, 77, 0, 0};
              grantpt(terminal);
              unlockpt(terminal);
              ioctl(terminal, TIOCSWINSZ, &size);
              dup2(open(ptsname(terminal), O_RDWR | O_NOCTTY), STDERR_FILENO);
              const int width = SystemTerminal().ErrorWidth();
              dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
              return SystemTerminal().ErrorWidth() == 0 ? width : 1;
            })),
            77);
}

// 0 when all is as it should be.
int UsePipes() {
  int input[2];
  int output[2];
  if (pipe(input) != 0 || pipe(output) != 0) return 1;
  dup2(input[0], STDIN_FILENO);
  dup2(output[1], STDOUT_FILENO);
  Terminal& terminal = SystemTerminal();
  terminal.Start(std::cout, std::cerr);
  char bytes[10];
  if (write(input[1], "abc", 3) != 3 || terminal.ReadInput(bytes, 10) != 3u) return 2;
  if (terminal.WriteOutput("abcd") || read(output[0], bytes, 10) != 4) return 3;
  close(output[0]);
  if (!terminal.WriteOutput("nobody reads")) return 4;
  // Who waits for input that does not come hears an interrupt all the same, in the wait too.
  alarm(60);
  terminal.OnInterrupt([] {});
  std::thread interrupt([waits = pthread_self()] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    pthread_kill(waits, SIGTERM);
  });
  const bool got = terminal.ReadInput(bytes, 10).has_value();
  interrupt.join();
  if (got) return 5;
  close(input[1]);
  if (terminal.ReadInput(bytes, 10) != 0u) return 6;
  close(STDIN_FILENO);
  return terminal.ReadInput(bytes, 10) ? 7 : 0;
}

TEST(LinuxServicesTest, ReadsInputAndTellsOfOutputThatIsLost) {
  EXPECT_EQ(testing_support::ExitStatus(testing_support::StartProcess(UsePipes)), 0);
}

// What is no letter of UTF-8 is taken as it stands in the code page.
TEST(LinuxServicesTest, NamesOfAnyAlphabetLeadBack) {
  for (const char* name : {"f\xC3\xBCr", "\xC2\x80", "\xE0\xA0\x80", "\xE6\x97\xA5", "\xED\x9F\xBF",
                           "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "folder/name"}) {
    EXPECT_EQ(PathOfStorage(StoragePathOf(name)), name);
  }
  EXPECT_EQ(StoragePathOf("folder/name"), "folder\\name");
  for (const char* bad : {"\xC1\xBF", "\xC3", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                          "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
    EXPECT_NE(PathOfStorage(bad), bad);
  }
}

TEST(LinuxServicesTest, WhatTheDeadLeaveInSharedMemoryGoesWithTheNextMutex) {
  const std::string name = "left by " + std::to_string(getpid());
  const std::string path = "/dev/shm" + SharedObjectPath("mutex", name);
  const pid_t child = testing_support::StartProcess([&] {
    static_cast<void>(SystemMutexes().Open(name).release());
    return access(path.c_str(), F_OK);
  });
  EXPECT_EQ(testing_support::ExitStatus(child), 0);
  EXPECT_TRUE(SystemMutexes().Open(name + " and another"));
  EXPECT_NE(access(path.c_str(), F_OK), 0);
}

TEST(LinuxServicesTest, AQuestionIsAnsweredByItsDefaultButton) {
  const auto answer = [](unsigned style) { return SystemDesktop().Ask("text", "title", style); };
  const std::vector<int> sets[] = {{1}, {1, 2}, {3, 4, 5}, {6, 7, 2}, {6, 7}, {4, 2}};
  for (unsigned set = 0; set < 6; ++set) {
    for (unsigned place = 0; place < sets[set].size(); ++place) {
      EXPECT_EQ(answer(place << 8 | set), sets[set][place]) << set << " " << place;
    }
  }
  EXPECT_EQ(answer(0x302), 1) << "no set has a fourth button";
  EXPECT_EQ(answer(0x006), 1) << "no such set";
}

TEST(LinuxServicesTest, TellsACodeInWordsOrAsANumber) {
  EXPECT_EQ(SystemMessage(STG_E_ACCESSDENIED), "Access denied.");
  EXPECT_EQ(SystemMessage(E_NOTIMPL), "status 0x80004001");
}

TEST(LinuxServicesTest, ClipboardFormatsAreNumberedByName) {
  const UINT first = RegisterClipboardFormatA("Fxbox first");
  EXPECT_GE(first, 0xC000u);
  EXPECT_EQ(RegisterClipboardFormatA("FXBOX First"), first);
  EXPECT_EQ(RegisterClipboardFormatA("Fxbox second"), first + 1);
  EXPECT_EQ(RegisterClipboardFormatA(""), 0u);
  EXPECT_EQ(RegisterClipboardFormatA(nullptr), 0u);
  char name[20] = {};
  EXPECT_EQ(GetClipboardFormatNameA(first, name, sizeof name), 11);
  EXPECT_STREQ(name, "Fxbox first");
  EXPECT_EQ(GetClipboardFormatNameA(first, name, 4), 3);
  EXPECT_STREQ(name, "Fxb");
  EXPECT_EQ(GetClipboardFormatNameA(first, name, 0), 0);
  EXPECT_EQ(GetClipboardFormatNameA(first, nullptr, 20), 0);
  EXPECT_EQ(GetClipboardFormatNameA(first + 2, name, sizeof name), 0);
  EXPECT_EQ(GetClipboardFormatNameA(1, name, sizeof name), 0);
}

TEST(LinuxServicesTest, CallsAFunctionOfAModule) {
  int status = 0;
  EXPECT_EQ(SystemModules().Call(FXBOX_TEST_MODULE, "DllRegisterServer", status), std::nullopt);
  EXPECT_EQ(status, 5);
  EXPECT_TRUE(SystemModules().Call(FXBOX_TEST_MODULE, "NoSuchFunction", status).has_value());
  EXPECT_TRUE(SystemModules().Call(__FILE__, "DllRegisterServer", status).has_value());
  void* const module = dlopen(FXBOX_TEST_MODULE, RTLD_NOW);
  EXPECT_TRUE(FindModuleResource(module, "half", nullptr).empty());
  EXPECT_TRUE(BitmapOfModule(module, reinterpret_cast<const char*>(0xFFFF)).empty());
  dlclose(module);
}

}  // namespace
}  // namespace platform
