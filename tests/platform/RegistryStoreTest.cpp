// The registry service on Linux: processes at the same time, and folders in every state.
#include <sys/stat.h>

#include "platform/SystemServices.h"
#include "tests/platform/LinuxSupport.h"

namespace platform {
namespace {

using testing_support::AsOrdinaryUser;
using testing_support::ExitStatus;
using testing_support::ScopedVariable;
using testing_support::StartProcess;
using testing_support::TemporaryConfiguration;
using testing_support::WriteFile;

constexpr Hive kClasses = Hive::ClassesRoot;
namespace fs = std::filesystem;

class RegistryStoreTest : public testing::Test {
 protected:
  TemporaryConfiguration configuration;
  Registry& registry = SystemRegistry();
};

// Each writes whole values of its own letter to a common key, makes keys of its own beside the
// other's, and deletes and makes again a tree that the other reads.
int WriteMany(char letter) {
  Registry& registry = SystemRegistry();
  int failures = 0;
  for (int i = 0; i < 20; ++i) {
    const std::string own = std::string("Both\\Deep\\") + letter + std::to_string(i);
    failures += registry.Write(kClasses, own, own) != RegistryResult::Done;
    failures +=
        registry.Write(kClasses, "Common", std::string(9000, letter)) != RegistryResult::Done;
    registry.DeleteTree(kClasses, "Tree");
    failures += registry.Write(kClasses, "Tree\\Leaf", "full") != RegistryResult::Done;
  }
  return failures;
}

bool IsOneWhole(const std::optional<std::string>& text) {
  return !text || (text->size() == 9000 && text->find_first_not_of((*text)[0]) == text->npos);
}

TEST_F(RegistryStoreTest, TwoProcessesWriteAtOnce) {
  const pid_t first = StartProcess([] { return WriteMany('a'); });
  const pid_t second = StartProcess([] { return WriteMany('b'); });
  int torn = 0;
  for (int i = 0; i < 100; ++i) {
    torn += !IsOneWhole(registry.Read(kClasses, "Common"));
    const auto leaf = registry.Read(kClasses, "Tree\\Leaf");
    torn += leaf && *leaf != "full";
  }
  EXPECT_EQ(ExitStatus(first), 0);
  EXPECT_EQ(ExitStatus(second), 0);
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(registry.Subkeys(kClasses, "Both\\Deep").size(), 40u);
}

TEST_F(RegistryStoreTest, GoesOnWhereAKilledProcessStopped) {
  registry.Write(kClasses, "A", "old");
  const fs::path store = configuration.Store();
  for (const char* left : {".new/.value.new", ".new/Below/.value", ".old/B/.value",
                           "HKEY_CLASSES_ROOT/A/.value.new"}) {
    fs::create_directories((store / left).parent_path());
    WriteFile(store / left, "half");
  }
  EXPECT_EQ(registry.Read(kClasses, "A"), "old");
  EXPECT_EQ(registry.Subkeys(kClasses, ""), std::vector<std::string>{"A"});
  EXPECT_EQ(registry.Write(kClasses, "C", "new"), RegistryResult::Done);
  EXPECT_TRUE(registry.Subkeys(kClasses, "C").empty());
  EXPECT_EQ(registry.DeleteTree(kClasses, "A"), RegistryResult::Done);
  EXPECT_EQ(registry.Read(kClasses, "A"), std::nullopt);
  EXPECT_FALSE(fs::exists(store / ".new") || fs::exists(store / ".old"));
}

TEST_F(RegistryStoreTest, ForeignThingsInTheFolderDoNoHarm) {
  registry.Write(kClasses, "A", "a");
  const fs::path root = configuration.Store() / "HKEY_CLASSES_ROOT";
  WriteFile(root / "file", "not a key");
  fs::create_directories(root / "%4z%z4%4");
  fs::create_symlink("nowhere", root / "link");
  fs::create_directories(root / "D" / ".value");
  EXPECT_EQ(registry.Subkeys(kClasses, ""), (std::vector<std::string>{"%4z%z4%4", "A", "D"}));
  EXPECT_EQ(registry.Read(kClasses, "file"), std::nullopt);
  EXPECT_EQ(registry.Read(kClasses, "D"), std::nullopt);
  EXPECT_EQ(registry.Write(kClasses, "file\\below", "x"), RegistryResult::Failed);
  EXPECT_EQ(registry.WriteShared(kClasses, "file\\below", "x", false), RegistryResult::NotMade);
  EXPECT_EQ(registry.Write(kClasses, "D", "x"), RegistryResult::Failed);
  EXPECT_EQ(registry.Write(kClasses, "%4z%z4%4", "x"), RegistryResult::Done);
  EXPECT_EQ(registry.Read(kClasses, "%4Z%Z4%4"), "x");
}

TEST_F(RegistryStoreTest, FilesGetTheUsualPermissions) {
  const mode_t before = umask(026);
  registry.Write(kClasses, "Key", "value");
  umask(before);
  int files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(configuration.Store())) {
    if (!entry.is_regular_file()) continue;
    EXPECT_EQ(entry.status().permissions(), fs::perms(0640)) << entry.path();
    ++files;
  }
  EXPECT_GT(files, 0);
}

TEST_F(RegistryStoreTest, WithoutAHomeThereIsNothing) {
  for (const char* home : {static_cast<const char*>(nullptr), "", "relative"}) {
    const ScopedVariable noConfiguration("XDG_CONFIG_HOME", home);
    const ScopedVariable noHome("HOME", home);
    EXPECT_EQ(registry.Read(kClasses, "A"), std::nullopt);
    EXPECT_TRUE(registry.Subkeys(kClasses, "").empty());
    EXPECT_EQ(registry.Write(kClasses, "A", "x"), RegistryResult::Failed);
    EXPECT_EQ(registry.DeleteTree(kClasses, "A"), RegistryResult::NotFound);
  }
  const ScopedVariable relative("XDG_CONFIG_HOME", "relative");
  const ScopedVariable home("HOME", configuration.folder.Path().c_str());
  EXPECT_EQ(registry.Write(kClasses, "A", "x"), RegistryResult::Done);
  EXPECT_TRUE(fs::exists(configuration.folder / ".config/fxbox4/registry/HKEY_CLASSES_ROOT/A"));
}

TEST_F(RegistryStoreTest, AnUnwritableStoreIsReadAllTheSame) {
  registry.Write(kClasses, "A\\B", "x");
  chmod(configuration.folder.Path().c_str(), 0755);
  for (const auto& entry : fs::recursive_directory_iterator(configuration.folder.Path())) {
    chmod(entry.path().c_str(), entry.is_directory() ? 0555 : 0444);
  }
  EXPECT_EQ(AsOrdinaryUser([&] {
              const bool same = registry.Read(kClasses, "A\\B") == "x";
              const bool refused =
                  registry.Write(kClasses, "A\\B", "y") == RegistryResult::Denied &&
                  registry.Write(kClasses, "A\\C", "y") == RegistryResult::Denied &&
                  registry.DeleteTree(kClasses, "A") == RegistryResult::Denied;
              return same && refused && registry.Read(kClasses, "A\\B") == "x" ? 0 : 1;
            }),
            0);
  for (const auto& entry : fs::recursive_directory_iterator(configuration.folder.Path())) {
    if (entry.is_directory()) chmod(entry.path().c_str(), 0755);
  }
}

}  // namespace
}  // namespace platform
