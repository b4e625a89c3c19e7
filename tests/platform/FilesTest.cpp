// Files that appear whole or not at all, on every system.
#include <stdexcept>

#include "platform/RawFile.h"
#include "platform/SystemServices.h"
#include "platform/TemporaryFile.h"
#include "tests/platform/Support.h"

namespace platform {
namespace {

using testing_support::ReadFile;
using testing_support::TemporaryFolder;
using testing_support::WriteFile;
namespace fs = std::filesystem;

using Names = std::vector<std::string>;

Files::WriteFile Writes(const std::string& bytes, bool answer = true) {
  return [=](const fs::path& temporary) { return WriteFile(temporary, bytes) && answer; };
}

class FilesTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  fs::path target = folder / "picture.png";
  Files& files = SystemFiles();
};

TEST_F(FilesTest, MakesAndReplacesAFile) {
  fs::path seen;
  const auto write = [&](const fs::path& temporary) {
    seen = temporary;
    return fs::is_empty(temporary) && WriteFile(temporary, "first");
  };
  EXPECT_EQ(files.Replace(target, write), std::nullopt);
  EXPECT_EQ(ReadFile(target), "first");
  EXPECT_EQ(seen.parent_path(), folder.Path());
  EXPECT_EQ(seen.extension(), ".png");
  const auto writeAgain = [&](const fs::path& temporary) {
    return WriteFile(temporary, "second") && ReadFile(target) == "first";
  };
  EXPECT_EQ(files.Replace(target, writeAgain), std::nullopt);
  EXPECT_EQ(ReadFile(target), "second");
  EXPECT_EQ(folder.Names(), Names{"picture.png"});
}

TEST_F(FilesTest, AFailureLeavesNothingBehind) {
  const auto throws = [](const fs::path& temporary) -> bool {
    WriteFile(temporary, "half");
    throw std::runtime_error("broken");
  };
  for (const bool existed : {false, true}) {
    if (existed) WriteFile(target, "old");
    EXPECT_EQ(files.Replace(target, Writes("half", false)), "");
    EXPECT_THROW(files.Replace(target, throws), std::runtime_error);
    EXPECT_EQ(folder.Names(), existed ? Names{"picture.png"} : Names{});
    EXPECT_EQ(ReadFile(target), existed ? "old" : "");
  }
}

TEST_F(FilesTest, GivesTheReasonWithoutCallingTheWriter) {
  fs::create_directory(folder / "sub");
  for (const fs::path& bad : {folder / "sub", folder / "missing/picture.png", fs::path()}) {
    bool called = false;
    const auto reason = files.Replace(bad, [&](const fs::path&) { return called = true; });
    ASSERT_TRUE(reason.has_value()) << bad;
    EXPECT_FALSE(reason->empty()) << bad;
    EXPECT_EQ(reason->find_first_of("\r\n"), reason->npos);
    EXPECT_FALSE(called) << bad;
  }
  EXPECT_EQ(folder.Names(), Names{"sub"});
}

TEST_F(FilesTest, TakesNamesOfAnyLengthAndAlphabet) {
  const std::u8string names[] = {u8"Gr\u00FC\u00DFe \u65E5\u672C.tif", std::u8string(250, u8'n'),
                                 u8"a." + std::u8string(200, u8'e')};
  for (const std::u8string& name : names) {
    const fs::path path = folder.Path() / fs::path(name);
    EXPECT_EQ(files.Replace(path, Writes("x")), std::nullopt);
    EXPECT_EQ(ReadFile(path), "x");
  }
}

#ifdef _WIN32
constexpr char kNullDevice[] = "NUL";
#else
constexpr char kNullDevice[] = "/dev/null";
#endif

TEST_F(FilesTest, ADeviceGetsTheFinishedBytes) {
  const fs::path device = kNullDevice;
  for (const bool result : {true, false}) {
    fs::path seen;
    const auto write = [&](const fs::path& path) { return WriteFile(seen = path, "x") && result; };
    EXPECT_EQ(files.Replace(device, write), result ? std::nullopt : std::optional<std::string>(""));
    EXPECT_NE(seen, device);
    EXPECT_FALSE(fs::exists(seen));
  }
}

// A killed program's file has nobody who holds it; the one that is being written has.
TEST_F(FilesTest, LeftOversGoWithTheNextFile) {
  WriteFile(folder / ".fxbox-0123456789ab.png", "half");
  WriteFile(folder / ".fxbox-0123456789ab", "half");
  for (const char* other : {".fxbox-notes", ".fxbox-0123456789az.png", "x.fxbox-0123456789ab"}) {
    WriteFile(folder / other, "kept");
  }
  const auto write = [&](const fs::path& temporary) {
    // Another run in the same folder, in the middle of this one.
    EXPECT_EQ(files.Replace(folder / "second.png", Writes("second")), std::nullopt);
    return fs::exists(temporary) && WriteFile(temporary, "first");
  };
  EXPECT_EQ(files.Replace(target, write), std::nullopt);
  EXPECT_EQ(ReadFile(target), "first");
  EXPECT_EQ(folder.Names(), (Names{".fxbox-0123456789az.png", ".fxbox-notes", "picture.png",
                                   "second.png", "x.fxbox-0123456789ab"}));
}

TEST_F(FilesTest, ATemporaryNameKeepsAnExtensionOfUsualLength) {
  const std::string longest = "." + std::string(15, 'x');
  for (const std::string& extension : {std::string(), std::string(".png"), longest}) {
    const fs::path name = TemporaryPathBeside(target.parent_path() / ("picture" + extension));
    EXPECT_EQ(name.parent_path(), target.parent_path());
    EXPECT_EQ(name.extension(), extension);
    EXPECT_TRUE(IsTemporaryName(name.filename()));
  }
  EXPECT_EQ(TemporaryPathBeside("picture" + longest + "x").extension(), "");
}

TEST_F(FilesTest, ReadsAndWritesAtAnyPlace) {
  int error = 0;
  const auto open = [&](const fs::path& path, FileUse use) {
    return RawFile::Open(path, use, error);
  };
  EXPECT_FALSE(open(target, FileUse::Change));
  EXPECT_EQ(error, kFileNotFound);
  EXPECT_FALSE(open(target / "below", FileUse::MakeNew));
  EXPECT_EQ(error, kPathNotFound);
  EXPECT_FALSE(open("", FileUse::Read));
  EXPECT_EQ(error, kPathNotFound);
  EXPECT_FALSE(open(target.parent_path(), FileUse::Read));
  EXPECT_EQ(error, kNotAFile);
  {
    const auto file = open(target, FileUse::MakeNew);
    ASSERT_TRUE(file);
    EXPECT_EQ(error, kNoError);
    EXPECT_EQ(file->WriteAt(3, "picture", 7), 7u);
    EXPECT_EQ(file->Length(), 10u);
    char bytes[20] = {};
    EXPECT_EQ(file->ReadAt(2, bytes, sizeof bytes), 8u);
    EXPECT_EQ(std::string(bytes, 8), std::string("\0picture", 8));
    EXPECT_TRUE(file->SetLength(5));
  }
  EXPECT_FALSE(open(target, FileUse::MakeNew)) << "it is there already";
  const auto file = open(target, FileUse::Change);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->Length(), 5u);
  EXPECT_FALSE(open(target, FileUse::Change)) << "one writes at a time";
}

int variableOfThisProgram = 0;

TEST_F(FilesTest, KnowsTheModuleOfAnAddress) {
  const fs::path program = files.ModuleOf(&variableOfThisProgram);
  EXPECT_TRUE(program.is_absolute());
  EXPECT_TRUE(fs::exists(program));
  EXPECT_EQ(program.stem().string().find("tmp"), std::string::npos);
  int onTheStack = 0;
  EXPECT_TRUE(files.ModuleOf(&onTheStack).empty());
  EXPECT_TRUE(files.ModuleOf(nullptr).empty());
}

}  // namespace
}  // namespace platform
