// The settings object: codes, names of keys and sections, the file in all its states.
#include "settings/ZNRegistry.h"

#include <gmock/gmock.h>

#include <functional>

#include "platform/PathText.h"
#include "platform/fake/FakeServices.h"
#include "settings/ZNRegistryMFC.h"
#include "tests/platform/Support.h"

namespace {

namespace fs = std::filesystem;
using platform::Hive;
using testing::ElementsAre;
using testing_support::ReadFile;
using testing_support::WriteFile;

const std::string kSlash(1, platform::kFolderSeparator);

class ZNRegistryTest : public testing::Test {
 protected:
  ZNRegistryTest() {
    fakes.process.program = folder / "Program.exe";
    EXPECT_EQ(registry.Init("Firm", "", "2.0", "ZN", nullptr), 0);
  }

  std::string TextOf(const fs::path& path) { return platform::PathText(path); }
  std::string Ini() { return ReadFile(ini); }
  std::string Text(const char* key) {
    KvString text;
    return registry.Read("S", key, text) == 0 ? text.ToStdString() : "";
  }

  testing_support::TemporaryFolder folder;
  platform::FakeServices fakes;
  platform::ScopedServices scope{fakes.services};
  const fs::path ini = folder / "Sennet.ini";
  const fs::path backup = folder / "Sennet.ini.bak";
  ZNRegistry registry;
  char buffer[300] = "";
};

TEST_F(ZNRegistryTest, FindsItsFile) {
  EXPECT_EQ(registry.GetIniPathAndName(buffer, sizeof buffer), 0);
  EXPECT_EQ(buffer, TextOf(ini));
  const int exact = static_cast<int>(TextOf(ini).size()) + 1;
  EXPECT_EQ(registry.GetIniPathAndName(buffer, exact), 0);
  EXPECT_EQ(registry.GetIniPathAndName(buffer, exact - 1), -9);

  const std::string other = TextOf(folder / "other");
  int has = -1;
  EXPECT_EQ(registry.HasIniFilePath(&has), 0);
  EXPECT_EQ(has, 0);
  EXPECT_EQ(registry.SetIniFilePath(""), -6);
  EXPECT_EQ(registry.SetIniFilePath(other.c_str()), 0);
  EXPECT_EQ(fakes.registry.Snapshot().back(),
            "HKEY_LOCAL_MACHINE\\Software\\Firm\\2.0\\IniFilePath = " + other);
  EXPECT_EQ(registry.HasIniFilePath(&has), 0);
  EXPECT_EQ(has, 1);
  EXPECT_EQ(registry.GetIniPathAndName(buffer, sizeof buffer), 0);
  EXPECT_EQ(buffer, other + kSlash + "Sennet.ini");
  KvString path;
  EXPECT_EQ(registry.GetIniPath(path), 0);
  EXPECT_EQ(path, (other + kSlash).c_str());
}

TEST_F(ZNRegistryTest, AnExtraIsAFileOrAPrefix) {
  const std::string mine = TextOf(folder / "mine.ini");
  EXPECT_EQ(registry.Init("Firm", nullptr, nullptr, "ZN", mine.c_str()), 0);
  EXPECT_EQ(registry.Write("S", "k", "v"), 0);
  EXPECT_THAT(ReadFile(folder / "mine.ini"), testing::StartsWith("[ZN_#_S]"));
  EXPECT_EQ(registry.Init("Firm", nullptr, nullptr, "ZN", "Other"), 0);
  EXPECT_EQ(registry.Write("S", "k", "v"), 0);
  EXPECT_THAT(Ini(), testing::StartsWith("[Other_#_S]"));
}

TEST_F(ZNRegistryTest, LearnsTheProductFromTheInf) {
  const std::string inf = "[P]\r\nCompany=Firm\r\nProduct=Box\r\nVersion=4\r\n";
  ZNRegistry other("P", nullptr);
  EXPECT_EQ(other.InitFromInf("P", nullptr), -8);
  WriteFile(folder / "Tesmar.inf", inf);
  EXPECT_EQ(other.InitFromInf("P", nullptr), -8);
  KvString company, product, version, id;
  WriteFile(folder / "Tesmar.inf", inf + "ShortId=" + std::string(600, 'B'));
  EXPECT_EQ(other.InitFromInf("P", nullptr), 0);
  EXPECT_TRUE(other.GetRegistryInfo(company, product, version, id));
  EXPECT_EQ(id.GetLength(), 511);
  WriteFile(folder / "Tesmar.inf", inf + "ShortId=BX");
  EXPECT_EQ(other.InitFromInf("Q", nullptr), -8);
  EXPECT_EQ(other.InitFromInf("P", nullptr), 0);
  EXPECT_TRUE(other.GetRegistryInfo(company, product, version, id));
  EXPECT_EQ(company + "," + product + "," + version + "," + id, "Firm,Box,4,BX");
}

TEST_F(ZNRegistryTest, ValuesHaveTheirForms) {
  EXPECT_EQ(registry.Write("S", "i", -7), 0);
  EXPECT_EQ(registry.Write("S", "d", 2.5), 0);
  EXPECT_EQ(registry.Write("S", "b", true), 0);
  EXPECT_EQ(registry.Write("S", "t",
                           "Gr\xFC\xDF"
                           "e"),
            0);
  EXPECT_EQ(registry.Write("S", "e", ""), 0);
  EXPECT_EQ(Ini(),
            "[ZN_#_S]\r\ni=-7\r\nd=2.500000\r\nb=true\r\nt=Gr\xFC\xDF"
            "e\r\ne=\r\n");
  int i = 0;
  double d = 0;
  bool b = false;
  KvString text;
  EXPECT_EQ(registry.Read("S", "i", &i), 0);
  EXPECT_EQ(registry.Read("S", "d", &d), 0);
  EXPECT_EQ(registry.Read("S", "b", &b), 0);
  EXPECT_EQ(registry.Read("S", "e", text), -8);
  EXPECT_EQ(i, -7);
  EXPECT_EQ(d, 2.5);
  EXPECT_TRUE(b);
  struct {
    const char* written;
    int asInt, asDouble, asBool;
  } const cases[] = {{"TRUE", -11, -11, -11},
                     {"12x", 0, 0, -11},
                     {"falsehood", -11, -11, 0},  // cut to its buffer before it is compared
                     {"-", -11, -11, -11}};
  for (const auto& c : cases) {
    registry.Write("S", "x", c.written);
    EXPECT_EQ(registry.Read("S", "x", &i), c.asInt) << c.written;
    EXPECT_EQ(registry.Read("S", "x", &d), c.asDouble) << c.written;
    EXPECT_EQ(registry.Read("S", "x", &b), c.asBool) << c.written;
  }
  for (const std::size_t length : {127, 128, 255, 5000}) {
    const std::string value(length, 'v');
    registry.Write("S", "long", value.c_str());
    EXPECT_EQ(Text("long"), value);
  }
}

TEST_F(ZNRegistryTest, DefaultsAndPaths) {
  WriteFile(ini, "[ZN_#_S]\r\npath=here\r\ndone=there\\\r\n");
  int i = 0;
  KvString text;
  EXPECT_EQ(registry.ReadDefault("S", "none", &i, 9), 0);
  EXPECT_EQ(i, 9);
  EXPECT_EQ(registry.ReadDefault("S", "none", text, "standard"), 0);
  EXPECT_EQ(text, "standard");
  EXPECT_EQ(registry.ReadDefault("S", "none", buffer, 5, "standard"), -12);
  EXPECT_STREQ(buffer, "stan");
  EXPECT_EQ(registry.ReadPath("S", "path", text), 0);
  EXPECT_EQ(text, ("here" + kSlash).c_str());
  EXPECT_EQ(registry.ReadPath("S", "done", text), 0);
  EXPECT_EQ(text, "there\\");
  EXPECT_EQ(registry.ReadPath("S", "none", text, "d"), 0);
  EXPECT_EQ(text, ("d" + kSlash).c_str());
  EXPECT_EQ(registry.ReadPath("S", "path", buffer, 6), 0);
  EXPECT_EQ(registry.ReadPath("S", "path", buffer, 5), -9);
  EXPECT_EQ(registry.ReadPath("S", "none", buffer, 5), -8);
}

TEST_F(ZNRegistryTest, OnlyTheCarefulReaderKeepsABackup) {
  EXPECT_EQ(registry.Read("S", "k", buffer, 9), -14);
  const std::string content = "[ZN_#_S]\r\nk=1\r\n";
  WriteFile(ini, content);
  EXPECT_EQ(Text("k"), "1");
  EXPECT_FALSE(fs::exists(backup));
  EXPECT_EQ(registry.Read("S", "k", buffer, 9), 0);
  EXPECT_EQ(ReadFile(backup), content);
  fs::remove(ini);
  EXPECT_EQ(Text("k"), "");
  EXPECT_FALSE(fs::exists(ini));
  EXPECT_EQ(registry.Read("S", "k", buffer, 9), 0);
  EXPECT_EQ(Ini(), content);
  WriteFile(ini, "[ZN_#_S]\r\nk=2\r\n");
  registry.CreateIniBackup();
  EXPECT_EQ(ReadFile(backup), Ini());
}

TEST_F(ZNRegistryTest, WrongCallsGiveTheirCodes) {
  ZNRegistry empty;
  KvString text;
  EXPECT_EQ(empty.Read("S", "k", text), -10);
  EXPECT_EQ(empty.WriteUser("S", "k", 1), -10);
  EXPECT_EQ(empty.DeleteAll(), -10);
  EXPECT_EQ(empty.Init("", nullptr, "", "ZN", nullptr), -6);
  EXPECT_EQ(empty.Init("Firm", nullptr, nullptr, "", nullptr), -6);
  EXPECT_EQ(empty.HasIniFilePath(nullptr), -10);
  EXPECT_EQ(registry.Write("", "k", "v"), -6);
  EXPECT_EQ(registry.Write("S", nullptr, "v"), -6);
  EXPECT_EQ(registry.Write("S", "k", static_cast<const char*>(nullptr)), -6);
  EXPECT_EQ(registry.Write("S", "k", "v\r\n[evil]"), -6);
  EXPECT_EQ(registry.WriteKey(HKEY_CURRENT_USER, nullptr, "v", false), -6);
  EXPECT_EQ(registry.WriteKey(HKEY_CURRENT_USER, "k", nullptr, false), -6);
  const HKEY user = HKEY_CURRENT_USER;
  for (const auto& [key, name] :
       {std::pair<const char*, const char*>(nullptr, "n"), {"L", nullptr}}) {
    EXPECT_EQ(registry.ReadListItem(user, key, name, 0, text), -6);
    EXPECT_EQ(registry.ReadListItem(user, key, name, 0, buffer, 9), -6);
    EXPECT_EQ(registry.AddListItem(user, key, name, "v"), -6);
    EXPECT_EQ(registry.RemoveListItem(user, key, name, "v"), -6);
  }
  EXPECT_EQ(registry.AddListItem(user, "L", "n", nullptr), -6);
  EXPECT_EQ(registry.RemoveListItem(user, "L", "n", nullptr), -6);
  EXPECT_FALSE(fs::exists(ini));
  fs::create_directory(ini);
  EXPECT_EQ(registry.Write("S", "k", "v"), -7);
  registry.GetErrorText(-12, text);
  EXPECT_EQ(text, "ZNRegistry - Fehler: Default l\xE4nger als Platz in Ziel");
  registry.GetErrorText(-14, buffer, 11);
  EXPECT_STREQ(buffer, "ZNRegistry");
}

TEST_F(ZNRegistryTest, EveryUserGetsTheNextNumber) {
  EXPECT_EQ(registry.WriteUser("S", "k", "first"), 0);
  EXPECT_THAT(Ini(), testing::HasSubstr("[ZN_#_User0001_#_S]"));
  fakes.registry.DeleteTree(Hive::CurrentUser, "Software");  // another user logs on
  KvString text;
  EXPECT_EQ(registry.ReadUser("S", "k", text), -8);
  EXPECT_EQ(registry.WriteUser("S", "k", "second"), 0);
  EXPECT_THAT(Ini(), testing::HasSubstr("[ZN_#_User0002_#_S]"));
  EXPECT_EQ(fakes.registry.Read(Hive::LocalMachine, "Software\\Firm\\2.0\\LastUser"), "0002");
  fakes.registry.Write(Hive::CurrentUser, "Software\\Firm\\2.0\\User", "0001");
  EXPECT_EQ(registry.ReadUser("S", "k", text), 0);
  EXPECT_EQ(text, "first");
  // The last number that there can be, and none.
  for (const char* last : {"2147483647", "many"}) {
    fakes.registry.DeleteTree(Hive::CurrentUser, "Software");
    fakes.registry.Write(Hive::LocalMachine, "Software\\Firm\\2.0\\LastUser", last);
    EXPECT_EQ(registry.ReadUser("S", "k", text), 0);
    EXPECT_EQ(fakes.registry.Read(Hive::LocalMachine, "Software\\Firm\\2.0\\LastUser"), "0001");
  }
}

TEST_F(ZNRegistryTest, KeysAndLists) {
  const HKEY machine = HKEY_LOCAL_MACHINE;
  KvString text;
  EXPECT_EQ(registry.ReadKey(machine, "K", text), -3);
  EXPECT_EQ(registry.ReadKey(nullptr, "K", text), -3);
  EXPECT_EQ(registry.WriteKey(machine, "K", "value", true), 0);
  EXPECT_EQ(registry.WriteKey(machine, "K", "other", true), -13);
  EXPECT_EQ(registry.ReadKey(machine, "K", buffer, 5), -1);
  EXPECT_EQ(registry.ReadKey(machine, "K", buffer, 6), 0);
  EXPECT_STREQ(buffer, "value");
  for (const char* value : {"a", "b", "a", "c"}) registry.AddListItem(machine, "L\\M", "n", value);
  EXPECT_EQ(registry.ReadListItem(machine, "L\\M", "n", 2, text), 0);
  EXPECT_EQ(text, "c");
  EXPECT_EQ(registry.ReadListItem(machine, "L\\M", "n", 3, text), -3);
  EXPECT_EQ(registry.RemoveListItem(machine, "L\\M", "n", "none"), 0);
  EXPECT_EQ(registry.RemoveListItem(machine, "L\\M", "n", "a"), 0);
  EXPECT_EQ(fakes.registry.Subkeys(Hive::LocalMachine, "Software\\Firm\\2.0\\L\\M"),
            (std::vector<std::string>{"n_0000", "n_0001"}));
  registry.RemoveListItem(machine, "L\\M", "n", "c");
  registry.RemoveListItem(machine, "L\\M", "n", "b");
  EXPECT_THAT(fakes.registry.Subkeys(Hive::LocalMachine, "Software\\Firm\\2.0"), ElementsAre("K"));
  fakes.registry.Write(Hive::Users, "S-1\\Software\\Firm\\2.0\\User", "0001");
  fakes.registry.Write(Hive::CurrentUser, "Software\\Firm\\2.0\\User", "0002");
  EXPECT_EQ(registry.DeleteAll(), 0);
  EXPECT_EQ(fakes.registry.Snapshot(),
            (std::vector<std::string>{
                "HKEY_LOCAL_MACHINE\\Software = ", "HKEY_CURRENT_USER\\Software = ",
                "HKEY_CURRENT_USER\\Software\\Firm = ", "HKEY_USERS\\S-1 = ",
                "HKEY_USERS\\S-1\\Software = ", "HKEY_USERS\\S-1\\Software\\Firm = "}));
}

TEST_F(ZNRegistryTest, ARefusedRegistryHasItsCodes) {
  for (const auto& [refusal, code] :
       {std::pair(platform::RegistryResult::NotMade, -5), {platform::RegistryResult::Denied, -4}}) {
    platform::FailingRegistry failing(fakes.registry, 1, refusal);
    fakes.services.registry = &failing;
    EXPECT_EQ(registry.WriteKey(HKEY_LOCAL_MACHINE, "K", "v", false), code);
    fakes.services.registry = &fakes.registry;
  }
  fakes.registry.Write(Hive::LocalMachine, "Software\\Firm\\2.0\\K", "v");
  platform::FailingRegistry failing(fakes.registry, 2);
  fakes.services.registry = &failing;
  KvString text;
  EXPECT_EQ(registry.ReadKey(HKEY_LOCAL_MACHINE, "K", text), -2);
  fakes.services.registry = &fakes.registry;
}

// One value for all and another one for the user, by both kinds of texts.
TEST_F(ZNRegistryTest, EveryFormComesBackForAllAndForAUser) {
  WriteFile(folder / "Tesmar.inf", "[P]\nCompany=F\nProduct=B\nVersion=4\nShortId=BX\n");
  ZNRegistryMFC strings(std::string("P"));
  const auto expectBoth = [&](const auto& section, const auto& key, auto all, auto own) {
    decltype(all) out{};
    EXPECT_EQ(strings.Write(section, key, all), 0);
    EXPECT_EQ(strings.WriteUser(section, key, own), 0);
    EXPECT_EQ(strings.ReadDefault(section, key, &out, own), 0);
    EXPECT_EQ(out, all);
    EXPECT_EQ(strings.ReadUserDefault(section, key, &out, all), 0);
    EXPECT_EQ(out, own);
    EXPECT_EQ(strings.ReadUserDefault("S", "none", &out, all), 0);
    EXPECT_EQ(out, all);
    EXPECT_EQ(strings.ReadUser("S", "k", &out), 0);
    EXPECT_EQ(out, own);
  };
  const auto expectAll = [&](const auto& section, const auto& key) {
    expectBoth(section, key, true, false);
    expectBoth(section, key, 7, -8);
    expectBoth(section, key, 7.5, -8.25);
  };
  const std::string section = "S", key = "k";
  expectAll("S", "k");
  expectAll(section, key);

  const std::string none = "none", other = "default", kept = "all", own = "own";
  EXPECT_EQ(strings.Write(section, key, kept), 0);
  EXPECT_EQ(strings.WriteUser(section, key, own), 0);
  EXPECT_EQ(strings.Write("S", "literal", "a literal"), 0);
  EXPECT_EQ(strings.WriteUser(section, "literal", "a user's"), 0);
  const HKEY machine = HKEY_LOCAL_MACHINE;
  EXPECT_EQ(strings.WriteKey(machine, key, kept, false), 0);
  EXPECT_EQ(strings.WriteKey(machine, key, own, true), -13);
  EXPECT_EQ(strings.AddListItem(machine, "L", "n", "item"), 0);
  std::string text;
  KvString out;
  const int size = sizeof buffer;
  const std::pair<std::function<int()>, std::string> reads[] = {
      {[&] { return strings.Read(section, key, text); }, kept},
      {[&] { return strings.ReadUser(section, key, text); }, own},
      {[&] { return strings.ReadDefault(section, key, text, other); }, kept},
      {[&] { return strings.ReadDefault(section, none, text, other); }, other},
      {[&] { return strings.ReadUserDefault(section, key, text, other); }, own},
      {[&] { return strings.ReadUserDefault(section, none, text, other); }, other},
      {[&] { return strings.ReadPath(section, key, text, other); }, kept + kSlash},
      {[&] { return strings.ReadUserPath(section, key, text, other); }, own + kSlash},
      {[&] { return strings.ReadUserPath(section, none, text, other); }, other + kSlash},
      {[&] { return strings.ReadKey(machine, key, text); }, kept},
      {[&] { return strings.GetErrorText(-8, text); },
       "ZNRegistry - Fehler: Ini-Datei nicht lesbar"},
      {[&] { return strings.Read("S", "literal", out); }, "a literal"},
      {[&] { return strings.ReadUser("S", "literal", buffer, size); }, "a user's"},
      {[&] { return strings.ReadUserDefault("S", "k", out, "default"); }, own},
      {[&] { return strings.ReadUserDefault("S", "none", buffer, size, "default"); }, other},
      {[&] { return strings.ReadUserPath("S", "k", out, "default"); }, own + kSlash},
      {[&] { return strings.ReadUserPath("S", "k", buffer, size, "default"); }, own + kSlash},
      {[&] { return strings.ReadUserPath("S", "k", out); }, own + kSlash},
      {[&] { return strings.ReadUserPath("S", "k", buffer, size); }, own + kSlash},
      {[&] { return strings.ReadPath("S", "none", buffer, size, "default"); }, other + kSlash},
      {[&] { return strings.ReadListItem(machine, "L", "n", 0, buffer, size); }, "item"},
      {[&] { return strings.GetIniPath(buffer, size); }, TextOf(folder.Path()) + kSlash},
  };
  for (std::size_t i = 0; i < std::size(reads); ++i) {
    SCOPED_TRACE(i);
    text.clear(), out.Empty(), buffer[0] = '\0';
    EXPECT_EQ(reads[i].first(), 0);
    EXPECT_EQ(text + out.ToStdString() + buffer, reads[i].second);
  }
  EXPECT_EQ(strings.ReadUserPath(section, none, text, std::string(600, 'x')), -12);
  EXPECT_EQ(text.size(), 511u);
  const int room = static_cast<int>((TextOf(folder.Path()) + kSlash + "Sennet.ini").size()) + 1;
  EXPECT_EQ(strings.GetIniPath(buffer, room), 0);
  EXPECT_EQ(strings.GetIniPath(buffer, room - 1), -9);
  EXPECT_EQ(strings.FlushIniFile(), 0);
}

}  // namespace
