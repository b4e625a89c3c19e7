// What storages throw, and the box that tells of a file.
#include <gtest/gtest.h>

#include "platform/RawFile.h"
#include "platform/fake/FakeServices.h"
#include "storage/KvErrors.h"

namespace {

std::vector<std::string> Shown(const KvFileException& error) {
  platform::RecordingDesktop desktop;
  platform::Services services = platform::CurrentServices();
  services.desktop = &desktop;
  const platform::ScopedServices scoped(services);
  ReportFileError(error);
  std::vector<std::string> texts;
  for (const auto& message : desktop.messages) texts.push_back(message.text);
  return texts;
}

}  // namespace

TEST(StreamException, SharesItsTextBetweenCopies) {
  const auto* first = new KvStreamException(-6, "Zlib-Fehler");
  KvStreamException second(*first);
  const char* text = first->Message();
  delete first;
  EXPECT_EQ(second.Message(), text);
  EXPECT_STREQ(second.Message(), "Zlib-Fehler");
  EXPECT_EQ(second.Code(), -6);
}

TEST(KvError, SaysWhatWhereAndWhy) {
  const CKvError error("PicBox File may be not opened", 0x88870004, "Sources/kvPicBox", 490);
  EXPECT_STREQ(error.Text(), "CGalleryError-Exception: PicBox File may be not opened");
  EXPECT_STREQ(error.Location(), "Sources/kvPicBox(490)");
  EXPECT_EQ(error.Code(), 0x88870004u);
}

TEST(FileError, IsShownWithItsCause) {
  using List = std::vector<std::string>;
  const std::string line = "Error processing file 'a\\b.jpg'";
  EXPECT_EQ(Shown({FileCause::None, "a\\b.jpg"}), List());
  EXPECT_EQ(Shown({FileCause::Generic, "a\\b.jpg"}), List{line});
  EXPECT_EQ(Shown({FileCause::NotFound, "a\\b.jpg"}),
            List{line + "\nThe file could not be located."});
  EXPECT_EQ(Shown({FileCause::DiskFull, "a\\b.jpg"}), List{line + "\nThe disk is full."});
  EXPECT_EQ(Shown({FileCause::EndOfFile, "a\\b.jpg"}),
            List{line + "\nThe end of file was reached."});
  EXPECT_EQ(Shown({static_cast<FileCause>(15), "a\\b.jpg"}), List{line});
  EXPECT_EQ(KvFileException(platform::kLockViolation, "x").Cause(), FileCause::LockViolation);
  EXPECT_EQ(KvFileException(platform::kDiskFull, "x").Cause(), FileCause::DiskFull);
}
