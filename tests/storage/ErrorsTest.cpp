// What storages throw, and the box that tells of a file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/RawFile.h"
#include "platform/StoragePath.h"
#include "platform/SystemMessage.h"
#include "platform/fake/FakeServices.h"
#include "settings/ZNDebugMonitor.h"
#include "storage/KvErrors.h"
#include "storage/KvSimpStorage.h"
#include "storage/KvStorage.h"
#include "tests/storage/StorageSupport.h"

using namespace test;

namespace {

std::string Shown(const KvFileException& error) {
  platform::FakeServices fakes;
  const platform::ScopedServices scope(fakes.services);
  ReportFileError(error);
  std::string texts;
  for (const auto& message : fakes.desktop.messages) texts += message.text;
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

TEST(FileError, IsShownWithItsCause) {
  const std::string line = "Error processing file 'a\\b.jpg'";
  EXPECT_EQ(Shown({FileCause::None, "a\\b.jpg"}), "");
  EXPECT_EQ(Shown({FileCause::Generic, "a\\b.jpg"}), line);
  EXPECT_EQ(Shown({FileCause::NotFound, "a\\b.jpg"}), line + "\nThe file could not be located.");
  EXPECT_EQ(Shown({FileCause::EndOfFile, "a\\b.jpg"}), line + "\nThe end of file was reached.");
  EXPECT_EQ(KvFileException(platform::kLockViolation, "x").Cause(), FileCause::LockViolation);
  EXPECT_EQ(KvFileException(platform::kDiskFull, "x").Cause(), FileCause::DiskFull);
}

// Reports go to the monitor, for who asks for their topic.
TEST(StorageReports, NameTheOperationAndTheObject) {
  using testing::HasSubstr;
  const TemporaryFolder folder;
  WriteFile(folder / "ZNDebug.txt", "KvStorage KvStorage_Quillan KVExeption");
  platform::FakeServices fakes;
  fakes.process.program = folder / "Test";
  fakes.process.stateFolder = folder.Path();
  const platform::ScopedServices scope(fakes.services);
  EndDebugMonitor();
  const std::string path = platform::StoragePathOf(folder / "box");
  SetLastError(0);
  EXPECT_EQ(KvStorage::CreateNewKvStorage(path.c_str(), OpenModeRead, false, false), nullptr);
  EXPECT_NE(GetLastError(), 0u);
  EXPECT_THAT(fakes.desktop.debugOutput,
              testing::IsSupersetOf({path + "\n", std::string(" in new KVStorage\n \n")}));
  const std::string reason = platform::SystemMessage(STG_E_FILENOTFOUND).substr(0, 9);
  EXPECT_THAT(fakes.desktop.debugOutput, testing::Contains(testing::StartsWith(reason)));
  fakes.desktop.debugOutput.clear();
  const std::string other = platform::StoragePathOf(folder / "other"), name(40, 'n');
  const StoragePtr box(
      KvStorage::CreateNewKvStorage(other.c_str(), OpenModeReadWrite, false, false));
  EXPECT_EQ(box->CreateStream(name.c_str(), OpenModeReadWrite), nullptr);
  EXPECT_EQ(box->CreateStorage(name.c_str(), OpenModeReadWrite, false, false), nullptr);
  EXPECT_EQ(box->OpenStream("absent", OpenModeRead), nullptr);
  EXPECT_EQ(box->OpenStorage("absent", OpenModeRead, false, false), nullptr);
  std::string told;  // behind the system's text
  int count = 0;
  for (const std::string& line : fakes.desktop.debugOutput) {
    if (line.find("KvStorage_Quillan") == line.npos && count++ % 3 != 0) told += line;
  }
  EXPECT_EQ(told, name + "\n\n\n" + name + "\n\n\nabsent\n\n\n on OpenStorage with absent\n\n\n");
  const CKvError error("what", 1, "where", 2);
  EXPECT_STREQ(error.Text(), "CGalleryError-Exception: what");
  EXPECT_EQ(fakes.desktop.debugOutput.back(), "where(2):what\n");
  const StoragePtr boxes(new KvSimpStorage(path.c_str(), OpenModeReadWrite, true, false));
  Put(*boxes, "below\\a", "x");
  const std::string noFolder = path + "\\below\\a\\b";
  EXPECT_THROW(boxes->CreateStream("below\\a\\b\\c", OpenModeReadWrite), KvFileException);
  const KvSimpStorage external(noFolder.c_str(), OpenModeReadWrite, true, true);
  for (const std::string& made : {noFolder + "\\c (", noFolder + "\\ ("}) {
    EXPECT_THAT(
        fakes.desktop.debugOutput,
        testing::Contains(HasSubstr("Operation CreateDirectory schlug fehl f\xFCr " + made)));
  }
  EXPECT_FALSE(boxes->DeleteStream("absent"));
  EXPECT_THAT(fakes.desktop.debugOutput.back(),
              HasSubstr("Operation DeleteStream schlug fehl f\xFCr " + path + "\\absent ("));
  EXPECT_FALSE(boxes->DeleteStream("below"));
  EXPECT_THAT(fakes.desktop.debugOutput.back(), HasSubstr("\\below ("));
  EXPECT_FALSE(boxes->RemoveStorage("below"));
  EXPECT_THAT(fakes.desktop.debugOutput.back(),
              HasSubstr("Operation RemoveStorage schlug fehl f\xFCr " + path + "\\below ("));
}
