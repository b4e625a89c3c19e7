// Desktop and protected files of Windows.
#include <windows.h>

#include "platform/SystemServices.h"
#include "tests/platform/Support.h"

namespace platform {
namespace {

TEST(WindowsServicesTest, AQuietDesktopWritesToTheErrorOutput) {
  _putenv("FXBOX_QUIET=1");
  testing::internal::CaptureStderr();
  SystemDesktop().ShowMessage("text", "Fxbox4.dll");
  SystemDesktop().Beep(440, 10000);
  const std::string shown = testing::internal::GetCapturedStderr();
  _putenv("FXBOX_QUIET=");
  EXPECT_EQ(shown.substr(0, shown.find_first_of("\r\n")), "Fxbox4.dll: text");
}

TEST(WindowsServicesTest, AProtectedOrOpenFileStays) {
  const testing_support::TemporaryFolder folder;
  const std::filesystem::path file = folder / "file";
  testing_support::WriteFile(file, "old");
  const auto write = [](const std::filesystem::path& path) {
    return testing_support::WriteFile(path, "new");
  };
  SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_TRUE(SystemFiles().Replace(file, write).has_value());
  SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
  const HANDLE open =
      CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_TRUE(SystemFiles().Replace(file, write).has_value());
  CloseHandle(open);
  EXPECT_EQ(testing_support::ReadFile(file), "old");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

}  // namespace
}  // namespace platform
