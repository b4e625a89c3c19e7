// The rules of the registry service, the same for the system's and the one in memory.
#include <gtest/gtest.h>

#include "platform/SystemServices.h"
#include "platform/fake/FakeServices.h"
#ifdef _WIN32
#include "tests/platform/Support.h"
#else
#include "tests/platform/LinuxSupport.h"
#endif

namespace platform {
namespace {

constexpr Hive kUser = Hive::CurrentUser;

class RegistryTest : public testing::TestWithParam<bool> {
 protected:
  ~RegistryTest() override { registry.DeleteTree(kUser, root); }

  std::string Key(const std::string& below) const { return root + "\\" + below; }

#ifndef _WIN32
  testing_support::TemporaryConfiguration configuration;
#endif
  MemoryRegistry memory;
  Registry& registry = GetParam() ? SystemRegistry() : memory;
  std::string root = "Software\\FxboxTest" + std::to_string(std::random_device()());
};

TEST_P(RegistryTest, KeepsTextsByteForByte) {
  const std::string texts[] = {"",
                               "plain",
                               "C:\\Ordner\\Bild.jpg",
                               "Gr\xFC\xDF"
                               "e %20 \x80",
                               "line\r\nline",
                               std::string(5000, 'x')};
  for (const std::string& text : texts) {
    EXPECT_EQ(registry.Write(kUser, Key("A\\B"), text), RegistryResult::Done);
    EXPECT_EQ(registry.Read(kUser, Key("A\\B")), text);
  }
  EXPECT_EQ(registry.Write(kUser, Key("A\\B"), std::string("cut\0off", 7)), RegistryResult::Done);
  EXPECT_EQ(registry.Read(kUser, Key("A\\B")), "cut");
}

TEST_P(RegistryTest, FindsKeysInAnyCase) {
  registry.Write(kUser, Key("Some Key\\{Abc}"), "1");
  registry.Write(kUser, Key("SOME KEY\\{aBC}"), "2");
  std::string loose = "\\";
  loose.append(Key("some key\\\\{ABC}\\"));
  registry.Write(kUser, loose, "3");
  EXPECT_EQ(registry.Read(kUser, Key("some key\\{abc}")), "3");
  EXPECT_EQ(registry.Subkeys(kUser, Key("sOME kEY")), std::vector<std::string>{"{Abc}"});
}

TEST_P(RegistryTest, KeepsAwkwardNamesApart) {
  const std::vector<std::string> names = {".",   "..", ".value", "a b",  "a%2Fb",
                                          "a/b", "b",  "B_",     "\xE4", "\xF6"};
  for (const std::string& name : names) {
    ASSERT_EQ(registry.Write(kUser, Key(name), "value of " + name), RegistryResult::Done) << name;
    ASSERT_EQ(registry.Write(kUser, Key(name) + "\\below", "below " + name), RegistryResult::Done);
  }
  EXPECT_EQ(registry.Subkeys(kUser, Key("")), names);
  for (const std::string& name : names) {
    EXPECT_EQ(registry.Read(kUser, Key(name)), "value of " + name);
    EXPECT_EQ(registry.Read(kUser, Key(name) + "\\below"), "below " + name);
  }
}

TEST_P(RegistryTest, DeletesWholeTreesAndOnlyThem) {
  for (const char* key : {"A\\B\\C", "A\\B\\D\\E", "A\\BB", "A"}) {
    registry.Write(kUser, Key(key), key);
  }
  EXPECT_EQ(registry.DeleteTree(kUser, Key("a\\b")), RegistryResult::Done);
  EXPECT_EQ(registry.DeleteTree(kUser, Key("a\\b")), RegistryResult::NotFound);
  EXPECT_EQ(registry.Read(kUser, Key("A\\B")), std::nullopt);
  EXPECT_EQ(registry.Read(kUser, Key("A\\B\\D\\E")), std::nullopt);
  EXPECT_EQ(registry.Read(kUser, Key("A\\BB")), "A\\BB");
  EXPECT_EQ(registry.Read(kUser, Key("A")), "A");
}

TEST_P(RegistryTest, KeepsOrPrunesOnDemand) {
  EXPECT_FALSE(registry.Exists(kUser, Key("A")));
  EXPECT_EQ(registry.WriteShared(kUser, Key("A\\B"), "1", true), RegistryResult::Done);
  EXPECT_EQ(registry.WriteShared(kUser, Key("A\\B"), "2", true), RegistryResult::Exists);
  EXPECT_EQ(registry.Read(kUser, Key("A\\B")), "1");
  EXPECT_EQ(registry.WriteShared(kUser, Key("A\\B"), "2", false), RegistryResult::Done);
  EXPECT_EQ(registry.Read(kUser, Key("A\\B")), "2");
  for (const char* kept : {"A", "A\\B"}) {
    EXPECT_EQ(registry.DeleteEmpty(kUser, Key(kept)), RegistryResult::Exists) << kept;
  }
  registry.DeleteTree(kUser, Key("A\\B"));
  EXPECT_TRUE(registry.Exists(kUser, Key("A")));
  EXPECT_EQ(registry.DeleteEmpty(kUser, Key("A")), RegistryResult::Done);
  EXPECT_EQ(registry.DeleteEmpty(kUser, Key("A")), RegistryResult::NotFound);
}

TEST_P(RegistryTest, RefusesWhatCannotBe) {
  registry.Write(kUser, Key("A"), "x");
  EXPECT_EQ(registry.DeleteTree(kUser, ""), RegistryResult::Denied);
  EXPECT_EQ(registry.DeleteTree(kUser, "\\"), RegistryResult::Denied);
  EXPECT_EQ(registry.Read(kUser, Key("A")), "x");
  const std::string zero = Key(std::string("A\0B", 3));
  EXPECT_EQ(registry.Write(kUser, zero, "y"), RegistryResult::Failed);
  EXPECT_EQ(registry.Read(kUser, zero), std::nullopt);
  EXPECT_EQ(registry.DeleteTree(kUser, zero), RegistryResult::NotFound);
  if (GetParam()) {
    EXPECT_EQ(registry.Write(kUser, Key(std::string(300, 'n')), "y"), RegistryResult::Failed);
  }
}

INSTANTIATE_TEST_SUITE_P(All, RegistryTest, testing::Bool(),
                         [](const auto& which) { return which.param ? "System" : "Memory"; });

}  // namespace
}  // namespace platform
