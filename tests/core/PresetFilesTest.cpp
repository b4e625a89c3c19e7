#include "core/PresetFiles.h"

#include <gmock/gmock.h>

#include "platform/PathText.h"
#include "platform/fake/FakeServices.h"
#include "settings/ZNRegistry.h"
#include "tests/platform/Support.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PresetFiles, FoundThroughTheSettings) {
  testing_support::TemporaryFolder folder;
  platform::FakeServices fakes;
  platform::ScopedServices scope{fakes.services};
  fakes.process.program = folder / "Program.exe";
  EXPECT_FALSE(core::FindPresetFolders("Gradation")) << "without a product";
  testing_support::WriteFile(
      folder / "Tesmar.inf",
      "[ZNGallery]\r\nCompany=A\r\nProduct=B\r\nVersion=1\r\nShortId=ID\r\n");
  EXPECT_FALSE(core::FindPresetFolders("Gradation")) << "without a folder";
  testing_support::WriteFile(folder / "Sennet.ini", "[ZNGallery_#_Locations]\r\nFilter=" +
                                                        platform::PathText(folder.Path()) + "\r\n");
  const auto folders = core::FindPresetFolders("Gradation");
  ASSERT_TRUE(folders);
  EXPECT_EQ(folders->user, folder.Path() / "Filter" / "Gradation_User");
  EXPECT_EQ(folders->factory, folder.Path() / "Filter" / "Gradation_Factory");
}

TEST(PresetFiles, ListedReadAndWrittenWhole) {
  testing_support::TemporaryFolder folder;
  EXPECT_THAT(core::ListPresets(folder / "none"), IsEmpty());
  const fs::path file = core::PresetFile(folder.Path(), "My set 1");
  EXPECT_FALSE(core::ReadPresetText(file));
  EXPECT_FALSE(core::ReadPresetText(folder.Path()));
  const std::string text("a\0\r\n", 4);
  EXPECT_EQ(core::WritePresetText(file, text), std::nullopt);
  EXPECT_EQ(core::ReadPresetText(file), text);
  testing_support::WriteFile(folder / "A.FP2", "");
  testing_support::WriteFile(folder / "B.fp3", "");
  fs::create_directory(folder / "C.fp2");
  EXPECT_THAT(core::ListPresets(folder.Path()), ElementsAre("A", "My set 1"));

  platform::FailingFiles failing(*platform::CurrentServices().files, 1, true);
  platform::Services services = platform::CurrentServices();
  services.files = &failing;
  platform::ScopedServices scope(services);
  EXPECT_TRUE(core::WritePresetText(file, "other"));
  EXPECT_EQ(core::ReadPresetText(file), text);
}

TEST(PresetFiles, Names) {
  for (const char* good : {"a", "Z9 ", "My set 1"}) EXPECT_TRUE(core::IsPresetName(good)) << good;
  for (const char* bad : {"", "a.b", "../a", "a/b", "\xe4", "a_b"}) {
    EXPECT_FALSE(core::IsPresetName(bad)) << bad;
  }
}

}  // namespace
