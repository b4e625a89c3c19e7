// Compound files through the system's interfaces; the same on both systems.
#include <ole2.h>

#include <cstdlib>

#include "tests/platform/CompoundSupport.h"

namespace testing_support {
namespace {

// The contents of the files in data/.
void Fill(const StoragePtr& root) {
  WriteStream(root, u"Small", Pattern(1000, 1));
  WriteStream(root, u"Empty", "");
  WriteStream(root, u"Large", Pattern(9000, 2));
  WriteStream(root, u"Tiny", "tiny");
  WriteStream(CreateStorage(root, u"Inner"), u"Deep", Pattern(70, 3));
}

#ifdef _WIN32
void WriteTestFiles(const std::filesystem::path& folder) {
  Fill(Create(folder / "windows.box"));
  StoragePtr root;
  STGOPTIONS options = {};
  options.usVersion = 1;
  options.ulSectorSize = 4096;
  EXPECT_EQ(StgCreateStorageEx(Ole(folder / "windows-4096.box").c_str(), kWriting, STGFMT_DOCFILE,
                               0, &options, nullptr, IID_IStorage, root.PutVoid()),
            S_OK);
  Fill(root);
}
#else
void WriteTestFiles(const std::filesystem::path& folder) {
  Fill(Create(folder / "linux.box"));
}
#endif

class CompoundFileTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  std::filesystem::path path = folder / "box";
};

TEST_F(CompoundFileTest, KeepsStreamsOfEverySizeInATree) {
  const std::vector<std::size_t> sizes = {0,    1,    63,   64,    65,    511,   512,
                                          4095, 4096, 4097, 65536, 70000, 300001};
  {
    const StoragePtr root = Create(path);
    const StoragePtr inner = CreateStorage(root, u"Pictures");
    for (const std::size_t size : sizes) {
      const std::u16string name = Numbered(u"s", size);
      WriteStream(root, name, Pattern(size, 1));
      WriteStream(inner, name, Pattern(size, 2));
    }
  }
  const StoragePtr root = Open(path);
  const StoragePtr inner = OpenStorage(root, u"PICTURES");
  for (const std::size_t size : sizes) {
    EXPECT_TRUE(ReadStream(root, Numbered(u"S", size)) == Pattern(size, 1)) << size;
    EXPECT_TRUE(ReadStream(inner, Numbered(u"s", size)) == Pattern(size, 2)) << size;
  }
}

TEST_F(CompoundFileTest, ListsByLengthAndThenByUpperCaseLetters) {
  const StoragePtr root = Create(path);
  for (const char16_t* name : {u"bb", u"A", u"aaa", u"Ba", u"b", u"ab", u"C"}) {
    WriteStream(root, name, "x");
  }
  CreateStorage(root, u"aB2");
  const std::vector<std::u16string> expected = {u"A",  u"b",  u"C",   u"ab",
                                                u"Ba", u"bb", u"aaa", u"aB2"};
  EXPECT_EQ(NamesOf(root), expected);
}

TEST_F(CompoundFileTest, SaysWhyARootDoesNotOpen) {
  const auto open = [](const std::filesystem::path& file, DWORD mode) {
    StoragePtr root;
    return StgOpenStorage(Ole(file).c_str(), nullptr, mode, nullptr, 0, root.Put());
  };
  EXPECT_EQ(open(path, kReading), STG_E_FILENOTFOUND);
  EXPECT_EQ(open(folder / "missing" / "box", kReading), STG_E_PATHNOTFOUND);
  WriteFile(folder / "empty", "");
  WriteFile(folder / "junk", Pattern(5000, 1));
  EXPECT_EQ(open(folder / "empty", kReading), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(open(folder / "junk", kWriting), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(ReadFile(folder / "junk"), Pattern(5000, 1));
  const StoragePtr root = Create(path);
  EXPECT_EQ(open(path, kReading), STG_E_SHAREVIOLATION);
  EXPECT_EQ(open(path, kWriting), STG_E_SHAREVIOLATION);
  EXPECT_EQ(open(path, STGM_READWRITE | STGM_SHARE_DENY_NONE), STG_E_INVALIDFLAG);
  EXPECT_EQ(open(path, STGM_READ | STGM_SHARE_DENY_NONE), STG_E_INVALIDFLAG);
  StoragePtr again;
  EXPECT_EQ(StgCreateDocfile(Ole(path).c_str(), kWriting, 0, again.Put()), STG_E_FILEALREADYEXISTS);
}

TEST_F(CompoundFileTest, SaysWhyAnElementDoesNotOpen) {
  const StoragePtr root = Create(path);
  WriteStream(root, u"stream", "content");
  CreateStorage(root, u"storage");
  StreamPtr stream;
  StoragePtr storage;
  const auto openStream = [&](const char16_t* name, DWORD mode) {
    return root->OpenStream(Ole(name).c_str(), nullptr, mode, 0, stream.Put());
  };
  const auto createStream = [&](const char16_t* name, DWORD mode) {
    return root->CreateStream(Ole(name).c_str(), mode, 0, 0, stream.Put());
  };
  EXPECT_EQ(openStream(u"absent", kReading), STG_E_FILENOTFOUND);
  EXPECT_EQ(openStream(u"storage", kReading), STG_E_FILENOTFOUND);
  EXPECT_EQ(root->OpenStorage(Ole(u"stream").c_str(), nullptr, kReading, nullptr, 0, storage.Put()),
            STG_E_FILENOTFOUND);
  EXPECT_EQ(openStream(u"stream", STGM_READ | STGM_SHARE_DENY_NONE), STG_E_INVALIDFLAG);
  EXPECT_EQ(openStream(u"stream", kReading | STGM_TRANSACTED), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(createStream(u"stream", kWriting), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(createStream(u"12345678901234567890123456789012", kWriting), STG_E_INVALIDNAME);
  EXPECT_EQ(createStream(u"1234567890123456789012345678901", kWriting), S_OK);
  EXPECT_EQ(root->DestroyElement(Ole(u"absent").c_str()), STG_E_FILENOTFOUND);

  const StreamPtr held = OpenStream(root, u"stream", kWriting);
  EXPECT_EQ(openStream(u"STREAM", kReading), STG_E_ACCESSDENIED);
  EXPECT_EQ(root->RenameElement(Ole(u"stream").c_str(), Ole(u"other").c_str()), STG_E_ACCESSDENIED);
  EXPECT_EQ(root->DestroyElement(Ole(u"stream").c_str()), S_OK);
  char buffer[8];
  ULONG read = 0;
  EXPECT_EQ(held->Read(buffer, sizeof buffer, &read), STG_E_REVERTED);
}

TEST_F(CompoundFileTest, AccessGoesDownTheTree) {
  { WriteStream(Create(path), u"stream", "content"); }
  const StoragePtr root = Open(path, kReading);
  StreamPtr stream;
  // With different codes on the two systems.
  EXPECT_TRUE(FAILED(root->OpenStream(Ole(u"stream").c_str(), nullptr, kWriting, 0, stream.Put())));
  EXPECT_TRUE(FAILED(root->CreateStream(Ole(u"new").c_str(), kWriting, 0, 0, stream.Put())));
  stream = OpenStream(root, u"stream");
  EXPECT_EQ(stream->Write("x", 1, nullptr), STG_E_ACCESSDENIED);
  EXPECT_EQ(stream->SetSize(Large(1)), STG_E_ACCESSDENIED);
}

TEST_F(CompoundFileTest, WhatWasOpenedEndsWithItsStorage) {
  StoragePtr root = Create(path);
  StoragePtr inner = CreateStorage(root, u"inner");
  const StreamPtr stream = CreateStream(inner, u"stream");
  WriteAt(stream, 0, "written");
  root.Reset();
  EXPECT_EQ(stream->Write("x", 1, nullptr), STG_E_REVERTED);
  EXPECT_EQ(stream->SetSize(Large(1)), STG_E_REVERTED);
  StreamPtr other;
  EXPECT_EQ(inner->OpenStream(Ole(u"stream").c_str(), nullptr, kReading, 0, other.Put()),
            STG_E_REVERTED);
  inner.Reset();
  root = Open(path);
  EXPECT_EQ(ReadStream(OpenStorage(root, u"inner"), u"stream"), "written");
}

TEST_F(CompoundFileTest, AStorageIsAStorageAndNoStream) {
  const StoragePtr root = Create(path);
  for (const IID& iid : {IID_IUnknown, IID_IStorage}) {
    platform::ComPtr<IUnknown> object;
    EXPECT_EQ(root->QueryInterface(iid, object.PutVoid()), S_OK);
    EXPECT_TRUE(object);
  }
  void* object = this;
  EXPECT_EQ(root->QueryInterface(IID_IStream, &object), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
  EXPECT_TRUE(FAILED(root->QueryInterface(IID_IStorage, nullptr)));
}

TEST_F(CompoundFileTest, RenamesAndDestroys) {
  StoragePtr root = Create(path);
  for (const char16_t* name : {u"a", u"b", u"c"}) {
    WriteStream(CreateStorage(root, name), u"inside", "x");
    WriteStream(root, std::u16string(name) + u"1", Pattern(5000, *name));
  }
  EXPECT_EQ(root->RenameElement(Ole(u"A1").c_str(), Ole(u"Renamed").c_str()), S_OK);
  EXPECT_EQ(root->RenameElement(Ole(u"b1").c_str(), Ole(u"c1").c_str()), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(root->DestroyElement(Ole(u"B").c_str()), S_OK);
  EXPECT_EQ(root->DestroyElement(Ole(u"c1").c_str()), S_OK);
  const std::vector<std::u16string> expected = {u"a", u"c", u"b1", u"Renamed"};
  EXPECT_EQ(NamesOf(root), expected);
  EXPECT_TRUE(ReadStream(root, u"RENAMED") == Pattern(5000, u'a'));
  WriteStream(root, u"reNamed", "x");  // what replaces a stream brings its own letters
  EXPECT_EQ(NamesOf(root).back(), u"reNamed");
  WriteStream(CreateStorage(root, u"d"), u"inside", "x");
  WriteStream(root, u"d", "a stream in place of a storage");
  EXPECT_EQ(NamesOf(root).size(), 5u);
  EXPECT_EQ(ReadStream(root, u"d"), "a stream in place of a storage");
  EXPECT_EQ(OpenStorage(root, u"c")->DestroyElement(Ole(u"inside").c_str()), S_OK);
  root.Reset();
  root = Open(path);
  WriteStream(OpenStorage(root, u"c"), u"new", "x");
}

TEST_F(CompoundFileTest, CopiesMerge) {
  const StoragePtr source = Create(path);
  WriteStream(source, u"both", "of the source");
  WriteStream(CreateStorage(source, u"inner"), u"deep", Pattern(9000, 1));
  WriteStream(source, u"left out", "x");
  const CLSID classId = {1, 2, 3, {4}};
  EXPECT_EQ(OpenStorage(source, u"inner")->SetClass(classId), S_OK);
  const StoragePtr target = Create(folder / "target");
  WriteStream(target, u"both", "of the target, longer");
  WriteStream(CreateStorage(target, u"inner"), u"kept", "x");
  OleText leftOut = Ole(u"left out");
  LPOLESTR excluded[] = {leftOut.data(), nullptr};
  ASSERT_EQ(source->CopyTo(0, nullptr, excluded, target.Get()), S_OK);
  EXPECT_EQ(ReadStream(target, u"both"), "of the source");
  const StoragePtr inner = OpenStorage(target, u"inner");
  EXPECT_TRUE(ReadStream(inner, u"deep") == Pattern(9000, 1));
  EXPECT_EQ(ReadStream(inner, u"kept"), "x");
  EXPECT_EQ(NamesOf(target).size(), 2u);
  STATSTG stat = {};
  ASSERT_EQ(inner->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(stat.clsid, classId);
}

TEST_F(CompoundFileTest, ClonesShareTheBytesButNotThePosition) {
  const StoragePtr root = Create(path);
  const StreamPtr stream = CreateStream(root, u"stream");
  WriteAt(stream, 0, "0123456789");
  SeekTo(stream, 4);
  StreamPtr clone;
  ASSERT_EQ(stream->Clone(clone.Put()), S_OK);
  char byte = 0;
  ASSERT_EQ(clone->Read(&byte, 1, nullptr), S_OK);
  EXPECT_EQ(byte, '4');
  WriteAt(clone, 4, "X");
  ASSERT_EQ(stream->Read(&byte, 1, nullptr), S_OK);
  EXPECT_EQ(byte, 'X');
}

TEST_F(CompoundFileTest, CopiesFromOneStreamToAnother) {
  const StoragePtr root = Create(path);
  const StreamPtr from = CreateStream(root, u"from");
  const StreamPtr to = CreateStream(root, u"to");
  const std::string content = Pattern(200000, 1);
  WriteAt(from, 0, content);
  ULARGE_INTEGER read, written;
  SeekTo(from, 10);
  ASSERT_EQ(from->CopyTo(to.Get(), Large(150000), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 150000u);
  EXPECT_EQ(written.QuadPart, 150000u);
  ASSERT_EQ(from->CopyTo(to.Get(), Large(UINT64_MAX), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 49990u);
  EXPECT_EQ(written.QuadPart, 49990u);
  EXPECT_TRUE(ReadAll(to) == content.substr(10));
  EXPECT_EQ(from->CopyTo(nullptr, Large(1), &read, &written), STG_E_INVALIDPOINTER);
}

TEST_F(CompoundFileTest, LiesInGlobalMemory) {
  const HGLOBAL block = GlobalAlloc(GHND, 0);
  const std::string content = Pattern(30000, 3);
  {
    BytesPtr bytes;
    StoragePtr root;
    ASSERT_EQ(CreateILockBytesOnHGlobal(block, FALSE, bytes.Put()), S_OK);
    ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kWriting | STGM_CREATE, 0, root.Put()),
              S_OK);
    WriteStream(root, u"stream", content);
    HGLOBAL own = nullptr;
    EXPECT_EQ(GetHGlobalFromILockBytes(bytes.Get(), &own), S_OK);
    EXPECT_EQ(own, block);
    root.Reset();
    STATSTG stat = {};
    ASSERT_EQ(bytes->Stat(&stat, STATFLAG_NONAME), S_OK);
    std::string dump(stat.cbSize.QuadPart, '\0');
    ULONG read = 0;
    ASSERT_EQ(bytes->ReadAt(Large(0), dump.data(), static_cast<ULONG>(dump.size()), &read), S_OK);
    EXPECT_EQ(read, dump.size());
    WriteFile(path, dump);
  }
  GlobalFree(block);
  EXPECT_TRUE(ReadStream(Open(path), u"stream") == content);
}

// The files in data/ were written by either system.
TEST_F(CompoundFileTest, ReadsTheOtherSystemsFiles) {
  for (const char* name : {"linux.box", "windows.box", "windows-4096.box"}) {
    const std::filesystem::path copy = folder / name;
    std::filesystem::copy_file(std::filesystem::path(FXBOX_TEST_DATA) / name, copy);
    const StoragePtr root = Open(copy);
    ASSERT_TRUE(root) << name;
    const std::vector<std::u16string> expected = {u"Tiny", u"Empty", u"Inner", u"Large", u"Small"};
    EXPECT_EQ(NamesOf(root), expected) << name;
    const StoragePtr inner = OpenStorage(root, u"Inner");
    EXPECT_EQ(ReadStream(root, u"Empty"), "");
    EXPECT_EQ(ReadStream(root, u"Tiny"), "tiny");
    EXPECT_TRUE(ReadStream(root, u"Small") == Pattern(1000, 1)) << name;
    EXPECT_TRUE(ReadStream(root, u"Large") == Pattern(9000, 2)) << name;
    EXPECT_TRUE(ReadStream(inner, u"Deep") == Pattern(70, 3)) << name;
    WriteStream(inner, u"New", "new");
    EXPECT_EQ(ReadStream(inner, u"New"), "new");
  }
}

// FXBOX_WRITE_DATA=FOLDER makes this system's files anew.
TEST_F(CompoundFileTest, WritesTheFilesOfThisSystem) {
  const char* const target = std::getenv("FXBOX_WRITE_DATA");
  if (!target) GTEST_SKIP() << "only on demand";
  WriteTestFiles(target);
}

}  // namespace
}  // namespace testing_support
