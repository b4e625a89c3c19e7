// Which services are in force, and the fakes that tests put in force.
#include <gtest/gtest.h>

#include "platform/SystemServices.h"
#include "platform/fake/FakeServices.h"

namespace platform {
namespace {

int interrupts = 0;

TEST(ServicesTest, ReplacementsNestAndEnd) {
  const Services& system = CurrentServices();
  EXPECT_EQ(system.registry, &SystemRegistry());
  FakeServices outer, inner;
  {
    const ScopedServices first(outer.services);
    {
      const ScopedServices second(inner.services);
      EXPECT_EQ(CurrentServices().registry, &inner.registry);
    }
    EXPECT_EQ(CurrentServices().desktop, &outer.desktop);
  }
  EXPECT_EQ(&CurrentServices(), &system);
}

TEST(ServicesTest, FakesRememberWhatTheyWereAsked) {
  FakeServices fakes;
  const Services& services = fakes.services;
  services.desktop->ShowMessage("text", "caption");
  services.desktop->Beep(440, 100);
  services.desktop->WriteDebugOutput("line");
  EXPECT_EQ(fakes.desktop.messages, (std::vector<RecordingDesktop::Message>{{"text", "caption"}}));
  EXPECT_EQ(fakes.desktop.tones, (std::vector<RecordingDesktop::Tone>{{440, 100}}));
  EXPECT_EQ(fakes.desktop.debugOutput, std::vector<std::string>{"line"});

  fakes.modules.answers["known"] = -5;
  int status = 1;
  EXPECT_TRUE(services.modules->Call("unknown", "Run", status).has_value());
  EXPECT_EQ(status, 1);
  EXPECT_EQ(services.modules->Call("known", "Run", status), std::nullopt);
  EXPECT_EQ(status, -5);
  EXPECT_EQ(fakes.modules.calls.size(), 2u);

  fakes.terminal.Interrupt();
  services.terminal->OnInterrupt([] { ++interrupts; });
  fakes.terminal.Interrupt();
  EXPECT_EQ(interrupts, 1);
}

TEST(ServicesTest, TheFailingRegistryFailsOnce) {
  MemoryRegistry memory;
  memory.Write(Hive::Users, "A\\B", "x");
  for (int failAt = 0; failAt <= 5; ++failAt) {
    FailingRegistry failing(memory, failAt);
    const std::vector<bool> done = {
        failing.Read(Hive::Users, "A\\B") == "x",
        failing.Write(Hive::Users, "A\\C", "y") == RegistryResult::Done,
        failing.Subkeys(Hive::Users, "A").size() >= 1,
        failing.DeleteTree(Hive::Users, "A\\C") == RegistryResult::Done,
    };
    for (int call = 1; call <= 4; ++call) {
      // Without the second call there is nothing that the fourth could delete.
      const bool expected = call != failAt && !(failAt == 2 && call == 4);
      EXPECT_EQ(done[static_cast<std::size_t>(call - 1)], expected) << call << " of " << failAt;
    }
    EXPECT_EQ(failing.CallCount(), 4);
    memory.DeleteTree(Hive::Users, "A\\C");
  }
  EXPECT_EQ(memory.Snapshot(),
            (std::vector<std::string>{"HKEY_USERS\\A = ", "HKEY_USERS\\A\\B = x"}));
}

TEST(ServicesTest, ModulesThatCannotBeCalledGiveAReason) {
  int status = 1;
  for (const char* module : {"", "no-such-module.so", __FILE__}) {
    const auto reason = SystemModules().Call(module, "DllRegisterServer", status);
    ASSERT_TRUE(reason.has_value()) << module;
    EXPECT_FALSE(reason->empty());
    EXPECT_EQ(status, 1);
  }
}

}  // namespace
}  // namespace platform
