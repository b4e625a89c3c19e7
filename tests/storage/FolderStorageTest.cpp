// Folders as storages: names, files that appear whole, enumeration, locks.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "platform/RawFile.h"
#include "platform/StoragePath.h"
#include "storage/KvErrors.h"
#include "storage/KvFile.h"
#include "storage/KvPrivateStorage.h"
#include "storage/KvSimpStorage.h"
#include "tests/storage/StorageSupport.h"

using namespace test;

namespace {

namespace fs = std::filesystem;

StoragePtr FolderOn(const fs::path& path) {
  return StoragePtr(
      new KvSimpStorage(platform::StoragePathOf(path).c_str(), OpenModeReadWrite, true, false));
}

// A folder of its own for each test, as a storage and as it is.
struct FolderStorage : testing::Test {
  const TemporaryFolder folder;
  const StoragePtr storage = FolderOn(folder.Path());
};

StoragePtr BoxFolder(const char* path, bool external) {
  return StoragePtr(KvSimpStorage::CreateNewKvStorage(path, OpenModeRead, false, external));
}

}  // namespace

TEST_F(FolderStorage, NamesItsFolders) {
  EXPECT_STREQ(BoxFolder("box/pic", false)->GetPathText(), "box_kv\\pic\\");
  EXPECT_STREQ(BoxFolder("C:\\a", false)->GetPathText(), "C:\\a_kv\\");
  EXPECT_STREQ(BoxFolder("a/b/c", false)->GetPathText(), "a_kv\\b\\c\\");
  EXPECT_STREQ(BoxFolder("/a", false)->GetPathText(), "_kv\\a\\");
  EXPECT_STREQ(BoxFolder("a/b", true)->GetPathText(), "a\\b\\");
  EXPECT_STREQ(BoxFolder("", true)->GetPathText(), ".\\");
  EXPECT_TRUE(BoxFolder("a", true)->IsExternal());
  EXPECT_FALSE(BoxFolder("a", false)->IsExternal());
  EXPECT_EQ(BoxFolder("a", false)->GetStorageKind(), 1);
}

TEST_F(FolderStorage, MakesFoldersWithTheFirstStreamAndRemovesEmptyOnes) {
  const StoragePtr deep = FolderOn(folder / "deep");
  const StoragePtr below(deep->OpenStorage("below", OpenModeReadWrite, true, false));
  EXPECT_EQ(folder.Names(), std::vector<std::string>());
  Put(*below, "a.txt", "one");
  EXPECT_EQ(ReadFile(folder / "deep" / "below" / "a.txt"), "one");
  EXPECT_FALSE(deep->RemoveStorage("below"));
  EXPECT_FALSE(deep->DeleteStream("below"));
  EXPECT_TRUE(below->DeleteStream("a.txt"));
  EXPECT_FALSE(below->DeleteStream("a.txt"));
  EXPECT_TRUE(deep->RemoveStorage("below"));
  EXPECT_TRUE(deep->RemoveStorage(nullptr));
  EXPECT_EQ(folder.Names(), std::vector<std::string>());
  Put(*deep, "in\\name", "two");
  EXPECT_EQ(ReadFile(folder / "deep" / "in" / "name"), "two");
}

TEST_F(FolderStorage, OpensWithoutMaking) {
  // Only a folder outside of boxes is made at once.
  for (const auto& [mode, external] :
       {std::pair(OpenModeRead, true), {OpenModeReadWrite, false}, {OpenModeReadWrite, true}}) {
    EXPECT_FALSE(fs::exists(folder / "at once"));
    const StoragePtr made(new KvSimpStorage(platform::StoragePathOf(folder / "at once").c_str(),
                                            mode, true, external));
  }
  EXPECT_TRUE(fs::remove(folder / "at once"));
  EXPECT_EQ(storage->OpenStream("absent", OpenModeRead), nullptr);
  EXPECT_EQ(storage->OpenStream("absent", OpenModeRead | OpenModeWrite), nullptr);
  fs::create_directory(folder / "folder");
  EXPECT_EQ(storage->OpenStream("folder", OpenModeRead), nullptr);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"folder"});
  EXPECT_TRUE(storage->Exists("folder"));
  EXPECT_FALSE(storage->Exists("absent"));
  IKvStream* made = storage->OpenStream("made", OpenModeReadWrite);
  ASSERT_NE(made, nullptr);
  made->Close();
  EXPECT_TRUE(storage->Exists("made"));
}

TEST_F(FolderStorage, AStreamTakesItsPlaceWhenItIsClosed) {
  Put(*storage, "a", "the content from before");
  IKvStream* stream = storage->OpenStream("a", OpenModeReadWrite);
  char start[4] = {};
  EXPECT_EQ(stream->Read(start, 3), 3u);
  EXPECT_STREQ(start, "the");
  EXPECT_EQ(stream->Write(" new", 4), 4u);
  EXPECT_EQ(ReadFile(folder / "a"), "the content from before");
  EXPECT_EQ(Names(*storage), std::vector<std::string>{"a"});
  stream->Close();
  EXPECT_EQ(ReadFile(folder / "a"), "the new");
  // One that was only looked at stays.
  stream = storage->OpenStream("a", OpenModeReadWrite);
  EXPECT_EQ(stream->GetLength(), 7u);
  EXPECT_EQ(stream->Write("", 0), 0u);
  stream->Close();
  EXPECT_EQ(ReadFile(folder / "a"), "the new");
  stream = storage->CreateStream("a", OpenModeRewrite);
  EXPECT_EQ(stream->GetLength(), 0u);
  stream->Close();
  EXPECT_EQ(ReadFile(folder / "a"), "");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"a"});
}

TEST_F(FolderStorage, AFileThatIsNotClosedLeavesNothing) {
  WriteFile(folder / "a", "before");
  {
    KvFile file(platform::StoragePathOf(folder / "a").c_str(), OpenModeRewrite);
    EXPECT_EQ(file.Write("after", 5), 5u);
  }
  EXPECT_EQ(ReadFile(folder / "a"), "before");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"a"});
}

TEST_F(FolderStorage, StreamsSeekAndResizeAsThoseOfCompoundFilesDo) {
  KvTemporaryStream temporary;
  IKvStream* const file = storage->CreateStream("a", OpenModeReadWrite);
  for (IKvStream* const stream : {file, temporary.Stream()}) {
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->Write("0123456789", 10), 10u);
    EXPECT_EQ(stream->Seek(-7, 1), 3);
    EXPECT_EQ(stream->GetLength(), 10u);
    EXPECT_EQ(stream->GetPosition(), 3u);
    EXPECT_EQ(stream->Seek(0, 2), 10);
    stream->SetLength(5);
    EXPECT_EQ(stream->GetLength(), 5u);
    EXPECT_EQ(stream->GetFile() != nullptr, stream == file);
    EXPECT_EQ(stream->LockRange(0, 5), stream == file);
    EXPECT_EQ(stream->UnlockRange(0, 5), stream == file);
    char buffer[10] = {};
    EXPECT_EQ(stream->Seek(0, 0), 0);
    EXPECT_EQ(stream->Read(buffer, 10), 5u);
    EXPECT_STREQ(buffer, "01234");
    EXPECT_EQ(stream->Read(buffer, 10), 0u);
  }
  file->Close();
  IKvStream* const reader = storage->OpenStream("a", OpenModeRead);
  reader->Seek(3, 0);
  EXPECT_EQ(reader->Seek(0, 3), -1);
  EXPECT_EQ(reader->Seek(0, -1), -1);
  EXPECT_EQ(reader->Seek(-1, 0), -1);
  EXPECT_EQ(reader->GetPosition(), 3u);
  EXPECT_EQ(reader->Write("x", 1), 0u);
  EXPECT_TRUE(CloseChecked(reader)) << "nothing is lost";
}

TEST_F(FolderStorage, FindsNamesWithoutCase) {
  Put(*storage, "Photo.JPG", "one");
  EXPECT_EQ(ReadAll(*storage, "photo.jpg"), "one");
  EXPECT_TRUE(storage->Exists("PHOTO.JPG"));
  Put(*storage, "photo.jpg", "two");
#ifdef _WIN32
  // A system without case may keep the first spelling.
  EXPECT_EQ(folder.Names().size(), 1u);
#else
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"photo.jpg"});
  WriteFile(folder / "PHOTO.jpg", "three");
  EXPECT_EQ(ReadAll(*storage, "photo.jpg") + ReadAll(*storage, "photo.JPG"), "twothree");
  fs::remove(folder / "PHOTO.jpg");
#endif
  EXPECT_EQ(ReadAll(*storage, "Photo.JPG"), "two");
  EXPECT_TRUE(storage->DeleteStream("PHOTO.jpg"));
  Put(*storage, "f\xFCr", "x");
  EXPECT_EQ(Names(*storage), std::vector<std::string>{"f\xFCr"});
  EXPECT_TRUE(fs::exists(folder.Path() / fs::path(u"f\u00FCr")));
  EXPECT_EQ(ReadAll(*storage, "F\xDCR"), "x");
}

TEST_F(FolderStorage, EnumeratesSortedAndWithoutHiddenNames) {
  EXPECT_EQ(Names(*storage), std::vector<std::string>());
  for (const char* name : {"b.txt", "a.jpg", ".fxbox-1.jpg", "noext"}) Put(*storage, name, "x");
  fs::create_directory(folder / "sub");
  EXPECT_EQ(Names(*storage), (std::vector<std::string>{"a.jpg", "b.txt", "noext", "sub/"}));
  EXPECT_EQ(Names(*storage, "*.*"), Names(*storage));
  EXPECT_EQ(Names(*storage, "*.T?T"), std::vector<std::string>{"b.txt"});
  EXPECT_EQ(Names(*storage, "?.*"), (std::vector<std::string>{"a.jpg", "b.txt"}));
  EXPECT_EQ(Names(*storage, "*o*t"), std::vector<std::string>{"noext"});
  KvString name;
  unsigned attributes = 0;
  EXPECT_FALSE(storage->FindNext(name, attributes));
}

TEST_F(FolderStorage, WaitsForALockedFile) {
  WriteFile(folder / "a", "before");
  int error = 0;
  auto holder = platform::RawFile::Open(folder / "a", platform::FileUse::Change, error);
  ASSERT_TRUE(holder);
  // Readers are not kept out.
  EXPECT_EQ(ReadAll(*storage, "a"), "before");
  const auto start = std::chrono::steady_clock::now();
  try {
    storage->OpenStream("a", OpenModeReadWrite);
    FAIL() << "the file is locked";
  } catch (const KvFileException& failure) {
    EXPECT_TRUE(failure.Cause() == FileCause::LockViolation ||
                failure.Cause() == FileCause::SharingViolation);
  }
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(390));

  std::thread release([&holder] {
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    holder.reset();
  });
  Put(*storage, "a", "after");
  release.join();
  EXPECT_EQ(ReadFile(folder / "a"), "after");
}

// Who creates is thrown at, who looks finds nothing. A missing file is no news, other trouble is.
TEST_F(FolderStorage, SaysWhyAFileCannotBeOpened) {
  WriteFile(folder / "file", "x");
  fs::create_directory(folder / "folder");
  const struct {
    const char* name;
    unsigned mode;
    bool isMissing, isTold;
  } cases[] = {{"absent", OpenModeRead, true, false},
               {"file/below", OpenModeRead | OpenModeWrite, true, false},
               {"file/below", OpenModeReadWrite, true, true},
               {"absent/a", OpenModeReadWrite, true, true},
               {"folder", OpenModeRead, false, true},
               {"folder", OpenModeReadWrite, false, true}};
  LogOfTest log;
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << c.mode);
    const std::string path = platform::StoragePathOf(folder / c.name);
    std::string told;
    try {
      EXPECT_FALSE(KvFile(path.c_str(), c.mode).IsOpen());
      if (c.isTold) told = "Error processing file '" + path + "'; ";
      EXPECT_FALSE(c.isMissing && c.isTold);
    } catch (const KvFileException& error) {
      EXPECT_TRUE(c.isMissing && c.isTold);
      told = "Could not create or open File " + path + " in Mode b (#" +
             std::to_string(error.SystemError()) + "); Openmode for File " + path +
             " was Create(8), Write(2) ; " + error.Message().ToStdString() + "; ";
    }
    EXPECT_EQ(log.Lines(), told);
  }
}
