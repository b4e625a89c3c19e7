// Files of settings, by the service of the system that runs the test.
#include <gmock/gmock.h>

#include "platform/SystemServices.h"
#ifdef _WIN32
#include "tests/platform/Support.h"
#else
#include "tests/platform/LinuxSupport.h"
#endif

namespace platform {
namespace {

using testing::ElementsAre;
using testing_support::ReadFile;
using testing_support::WriteFile;

class ProfilesTest : public testing::Test {
 protected:
  std::string Read(const char* section, const char* key) {
    return profiles.Read(ini, section, key);
  }
  // What the file holds after `value` was written as section S, key k.
  std::string Written(const std::string& before, std::optional<std::string_view> value) {
    WriteFile(ini, before);
    EXPECT_TRUE(profiles.Write(ini, "S", "k", value));
    return ReadFile(ini);
  }

  testing_support::TemporaryFolder folder;
  const std::filesystem::path ini = folder / "settings.ini";
  Profiles& profiles = SystemProfiles();
};

TEST_F(ProfilesTest, ReadsWhatOtherProgramsWrote) {
  const std::string longLine(70000, 'x');
  const std::string junk("\x01\xFF\0[S\r\n=\r\n]=[\r\n\x1A\r\n", 19);
  WriteFile(ini, junk +
                     "; [T]\r\n[T]\r\nk=in T\r\n  [s]  \r\n;k=comment\r\n K  =  a b \r\nlone\r\n" +
                     "q=\"quoted \"\nh='x\r\ne=\r\nlong=" + longLine +
                     "\r\n\r\nz=a=b\r\n[S]\r\nk2=1" + "\r\n[L]\r\nlast=end");
  const struct {
    const char *section, *key;
    std::string value;
  } cases[] = {{"S", "k", "a b"}, {"T", "K", "in T"},      {"S", "q", "quoted "}, {"S", "h", "'x"},
               {"S", "e", ""},    {"S", "long", longLine}, {"S", "z", "a=b"},     {"S", "lone", ""},
               {"S", "none", ""}, {"U", "k", ""},          {"L", "last", "end"}};
  for (const auto& c : cases) EXPECT_EQ(Read(c.section, c.key), c.value) << c.key;
  EXPECT_EQ(profiles.Read(folder / "none.ini", "S", "k"), "");
}

TEST_F(ProfilesTest, ChangesOneLineAndKeepsTheOthers) {
  EXPECT_EQ(Written("; mine\r\n[S]\r\na=1\r\nK=old\r\n;c\r\n[T]\r\nk=t\r\n", "new"),
            "; mine\r\n[S]\r\na=1\r\nK=new\r\n;c\r\n[T]\r\nk=t\r\n");
  EXPECT_EQ(Written("[S]\r\nk=1\r\nb=2\r\n", std::nullopt), "[S]\r\nb=2\r\n");
  std::filesystem::remove(ini);
  EXPECT_TRUE(profiles.Write(ini, "S", "k",
                             "Gr\xFC\xDF"
                             "e"));
  EXPECT_EQ(ReadFile(ini),
            "[S]\r\nk=Gr\xFC\xDF"
            "e\r\n");
  EXPECT_TRUE(profiles.Write(ini, "Second", "x", ""));
  EXPECT_TRUE(profiles.Write(ini, "S", "none", std::nullopt));
  EXPECT_THAT(profiles.Sections(ini), ElementsAre("S", "Second"));
  EXPECT_THAT(profiles.Keys(ini, "s"), ElementsAre("k"));
}

TEST_F(ProfilesTest, AMarkedUtf8FileIsOne) {
  const std::string mark = "\xEF\xBB\xBF";
  WriteFile(ini, mark +
                     "[S]\r\nk=Gr\xC3\xBC\xC3\x9F"
                     "e\r\n");
  EXPECT_EQ(Read("S", "k"),
            "Gr\xFC\xDF"
            "e");
  EXPECT_TRUE(profiles.Write(ini, "S", "k", "\xD6l"));
  EXPECT_EQ(ReadFile(ini), mark + "[S]\r\nk=\xC3\x96l\r\n");
}

TEST_F(ProfilesTest, WhatCannotBeWrittenStays) {
  std::filesystem::create_directory(ini);
  EXPECT_FALSE(profiles.Write(ini, "S", "k", "v"));
  EXPECT_FALSE(profiles.Write(folder / "none" / "x.ini", "S", "k", "v"));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"settings.ini"});
}

#ifndef _WIN32
TEST_F(ProfilesTest, BlankLinesLineEndsAndEncodingStay) {
  EXPECT_EQ(Written("[S]\r\na=1\r\n\r\n[T]\r\nk=t", "new"),
            "[S]\r\na=1\r\nk=new\r\n\r\n[T]\r\nk=t");
  EXPECT_EQ(Written("[S]\na=1", "v"), "[S]\na=1\nk=v\n");
  EXPECT_EQ(Written("", "v"), "[S]\r\nk=v\r\n");
  const std::string wide("\xFF\xFE[\0S\0]\0", 8);
  WriteFile(ini, wide);
  EXPECT_FALSE(profiles.Write(ini, "S", "k", "v"));
  EXPECT_EQ(ReadFile(ini), wide);
}

TEST_F(ProfilesTest, TwoProcessesLoseNoLine) {
  const auto writeMany = [this](char letter) {
    int failures = 0;
    for (int i = 0; i < 30; ++i) {
      const std::string key = letter + std::to_string(i);
      failures += !profiles.Write(ini, "S", key, "v");
    }
    return failures;
  };
  const pid_t first = testing_support::StartProcess([&] { return writeMany('a'); });
  const pid_t second = testing_support::StartProcess([&] { return writeMany('b'); });
  EXPECT_EQ(testing_support::ExitStatus(first), 0);
  EXPECT_EQ(testing_support::ExitStatus(second), 0);
  EXPECT_EQ(profiles.Keys(ini, "S").size(), 60u);
}

TEST_F(ProfilesTest, AProtectedFileStays) {
  WriteFile(ini, "[S]\nk=1\n");
  std::filesystem::permissions(ini, std::filesystem::perms(0444));
  std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
  EXPECT_EQ(testing_support::AsOrdinaryUser([&] {
              return profiles.Write(ini, "S", "k", "2") || profiles.Write(ini, "S", "k", "1") ? 1
                                                                                              : 0;
            }),
            0);
  EXPECT_EQ(ReadFile(ini), "[S]\nk=1\n");
}
#endif

}  // namespace
}  // namespace platform
