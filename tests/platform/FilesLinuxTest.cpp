// Replacing files where Linux has links, permissions and descriptors with names.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>

#include <thread>

#include "platform/RawFile.h"
#include "platform/SystemServices.h"
#include "tests/platform/LinuxSupport.h"

namespace platform {
namespace {

using testing_support::AsOrdinaryUser;
using testing_support::ReadFile;
using testing_support::TemporaryFolder;
using testing_support::WriteFile;
namespace fs = std::filesystem;

using Names = std::vector<std::string>;

bool WriteNew(const fs::path& path) {
  return WriteFile(path, "new");
}

mode_t ModeOf(const fs::path& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class FilesLinuxTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  Files& files = SystemFiles();
};

TEST_F(FilesLinuxTest, KeepsPermissionsOrTakesTheUsualOnes) {
  const mode_t before = umask(027);
  EXPECT_EQ(files.Replace(folder / "fresh", WriteNew), std::nullopt);
  EXPECT_EQ(ModeOf(folder / "fresh"), 0640u);
  for (const mode_t mode : {0600u, 0666u, 0755u}) {
    WriteFile(folder / "old", "old");
    chmod((folder / "old").c_str(), mode);
    EXPECT_EQ(files.Replace(folder / "old", WriteNew), std::nullopt);
    EXPECT_EQ(ModeOf(folder / "old"), mode);
  }
  umask(before);
}

TEST_F(FilesLinuxTest, FollowsLinks) {
  fs::create_directory(folder / "sub");
  WriteFile(folder / "sub/file", "old");
  fs::create_symlink("sub/file", folder / "relative");
  fs::create_symlink(folder / "relative", folder / "second");
  fs::create_symlink("sub/made", folder / "dangling");
  fs::create_symlink("loop", folder / "loop");
  EXPECT_EQ(files.Replace(folder / "second", WriteNew), std::nullopt);
  EXPECT_EQ(ReadFile(folder / "sub/file"), "new");
  EXPECT_EQ(files.Replace(folder / "dangling", WriteNew), std::nullopt);
  EXPECT_EQ(ReadFile(folder / "sub/made"), "new");
  EXPECT_TRUE(files.Replace(folder / "loop", WriteNew).has_value());
  for (const char* link : {"relative", "second", "dangling", "loop"}) {
    EXPECT_TRUE(fs::is_symlink(folder / link)) << link;
  }
  EXPECT_EQ(folder.Names(), (Names{"dangling", "loop", "relative", "second", "sub"}));
}

TEST_F(FilesLinuxTest, WritesThroughAnOpenDescriptor) {
  const fs::path path = folder / "output";
  const int descriptor = open(path.c_str(), O_RDWR | O_CREAT, 0600);
  ASSERT_GE(descriptor, 0);
  struct stat before = {}, after = {};
  fstat(descriptor, &before);
  const fs::path name = "/dev/fd/" + std::to_string(descriptor);
  EXPECT_EQ(files.Replace(name, WriteNew), std::nullopt);
  stat(path.c_str(), &after);
  EXPECT_EQ(after.st_ino, before.st_ino);
  EXPECT_EQ(ReadFile(path), "new");
  close(descriptor);
}

// A pipe whose reader has left, or reads all.
TEST_F(FilesLinuxTest, PipesGetAllOrFail) {
  const fs::path pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  signal(SIGPIPE, SIG_IGN);
  const std::string bytes(300000, 'x');
  const auto write = [&](const fs::path& path) { return WriteFile(path, bytes); };
  for (const bool leaves : {false, true}) {
    std::string got;
    std::thread reader([&] {
      std::ifstream stream(pipe, std::ios::binary);
      got.resize(leaves ? 10 : bytes.size());
      stream.read(got.data(), static_cast<std::streamsize>(got.size()));
    });
    const auto failure = files.Replace(pipe, write);
    reader.join();
    EXPECT_EQ(failure, leaves ? std::optional<std::string>("Broken pipe") : std::nullopt);
    EXPECT_EQ(got, bytes.substr(0, got.size()));
  }
}

TEST_F(FilesLinuxTest, TellsHowMuchAFullDiskTook) {
  const auto writeToTheEnd = [this] {
    testing_support::LimitFileSize(1000);
    alarm(10);
    int error = 0;
    const auto file = RawFile::Open(folder / "file", FileUse::MakeNew, error);
    return file->WriteAt(990, "0123456789abcdef", 16) == 10 ? 0 : 1;
  };
  EXPECT_EQ(testing_support::ExitStatus(testing_support::StartProcess(writeToTheEnd)), 0);
}

TEST_F(FilesLinuxTest, RespectsPermissions) {
  WriteFile(folder / "file", "old");
  fs::create_directory(folder / "open");
  WriteFile(folder / "open/protected", "old");
  chmod((folder / "file").c_str(), 0666);
  chmod((folder / "open/protected").c_str(), 0444);
  chmod((folder / "open").c_str(), 0777);
  chmod(folder.Path().c_str(), 0555);
  EXPECT_EQ(AsOrdinaryUser([&] {
              const std::string denied = "Permission denied";
              const bool refused = files.Replace(folder / "file", WriteNew) == denied &&
                                   files.Replace(folder / "fresh", WriteNew) == denied &&
                                   files.Replace(folder / "open/protected", WriteNew) == denied;
              const bool made = files.Replace(folder / "open/fresh", WriteNew) == std::nullopt;
              return refused && made ? 0 : 1;
            }),
            0);
  chmod(folder.Path().c_str(), 0755);
  EXPECT_EQ(folder.Names(), (Names{"file", "open"}));
  EXPECT_EQ(ReadFile(folder / "file"), "old");
  EXPECT_EQ(ReadFile(folder / "open/protected"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder / "open"), {}), 2);
}

}  // namespace
}  // namespace platform
