// The storages over compound files: how long they wait for what, and what they say to absent
// elements.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/StoragePath.h"
#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"
#include "storage/KvPrivateStorage.h"
#include "storage/KvStorage.h"
#include "tests/storage/MemoryStream.h"
#include "tests/storage/StorageSupport.h"

using namespace test;
using platform::StoragePathOf;

namespace {

// An element that answers every call with one status and counts them.
class RefusingStorage final : public platform::ComObject<RefusingStorage, IStorage> {
 public:
  explicit RefusingStorage(HRESULT answer) : status(answer) {}

  HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR*, DWORD mode, DWORD, DWORD,
                                         IStream**) override {
    return Count(creates, mode);
  }
  HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR*, void*, DWORD mode, DWORD,
                                       IStream**) override {
    return Count(opens, mode);
  }
  HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR*, DWORD mode, DWORD, DWORD,
                                          IStorage**) override {
    return Count(creates, mode);
  }
  HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR*, IStorage*, DWORD mode, SNB, DWORD,
                                        IStorage**) override {
    return Count(opens, mode);
  }
  HRESULT STDMETHODCALLTYPE CopyTo(DWORD, const IID*, SNB, IStorage*) override { return status; }
  HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*,
                                          DWORD) override {
    return status;
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return status; }
  HRESULT STDMETHODCALLTYPE Revert() override { return status; }
  HRESULT STDMETHODCALLTYPE EnumElements(DWORD, void*, DWORD, IEnumSTATSTG**) override {
    return status;
  }
  HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR*) override { return status; }
  HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR*, const OLECHAR*) override {
    return status;
  }
  HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*,
                                            const FILETIME*) override {
    return status;
  }
  HRESULT STDMETHODCALLTYPE SetClass(REFCLSID) override { return status; }
  HRESULT STDMETHODCALLTYPE SetStateBits(DWORD, DWORD) override { return status; }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD flags) override { return Count(opens, flags); }

  HRESULT status;
  int creates = 0;
  int opens = 0;
  DWORD lastMode = 0;

 private:
  HRESULT Count(int& calls, DWORD mode) {
    ++calls;
    lastMode = mode;
    return status;
  }
};

StoragePtr OpenBox(const std::string& path, unsigned mode) {
  return StoragePtr(KvStorage::CreateNewKvStorage(path.c_str(), mode, false, false));
}

}  // namespace

TEST(CompoundStorage, WaitsForWhatIsHeldAndMakesWhatIsAbsent) {
  using Call = bool (*)(KvStorage & storage, unsigned mode);
  const Call createStream = [](KvStorage& s, unsigned mode) { return !s.CreateStream("a", mode); };
  const Call openStream = [](KvStorage& s, unsigned mode) { return !s.OpenStream("a", mode); };
  const Call createStorage = [](KvStorage& s, unsigned mode) {
    return !s.CreateStorage("a", mode, false, false);
  };
  const Call openStorage = [](KvStorage& s, unsigned mode) {
    return !s.OpenStorage("a", mode, false, false);
  };
  constexpr unsigned kChange = OpenModeRead | OpenModeWrite;
  struct Case {
    Call call;
    HRESULT answer;
    unsigned mode;
    int opens, creates;  // until it gives up
  };
  std::vector<Case> cases = {{openStream, STG_E_READFAULT, OpenModeReadWrite, 1, 0}};
  for (const HRESULT held : {STG_E_ACCESSDENIED, STG_E_SHAREVIOLATION, STG_E_LOCKVIOLATION}) {
    cases.push_back({createStream, held, kChange, 0, 100});
    cases.push_back({createStorage, held, kChange, 0, 100});
    cases.push_back({openStorage, held, kChange, 3, 0});
    cases.push_back({openStream, held, kChange, held == STG_E_ACCESSDENIED ? 100 : 1, 0});
  }
  for (const HRESULT absent : {STG_E_FILENOTFOUND, STG_E_PATHNOTFOUND}) {
    cases.push_back({openStream, absent, OpenModeReadWrite, 1, 1});
    cases.push_back({openStorage, absent, OpenModeReadWrite, 1, 1});
    cases.push_back({openStream, absent, OpenModeRead, 1, 0});
    cases.push_back({openStorage, absent, kChange, 1, 0});
  }
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases.data());
    auto* element = new RefusingStorage(c.answer);
    KvStorage storage(element);
    EXPECT_TRUE(c.call(storage, c.mode));
    EXPECT_EQ(element->opens, c.opens);
    EXPECT_EQ(element->creates, c.creates);
  }
}

TEST(CompoundStorage, OpensExclusivelyInEveryMode) {
  auto* element = new RefusingStorage(E_FAIL);
  KvStorage storage(element);
  const std::pair<unsigned, DWORD> kModes[] = {{1, 0x10},   {2, 0x11},     {3, 0x12},
                                               {9, 0x1010}, {0xA, 0x1011}, {0xB, 0x1012}};
  for (const auto& [mode, flags] : kModes) {
    storage.CreateStream("a", mode);
    EXPECT_EQ(element->lastMode, flags) << mode;
    storage.OpenStream("a", mode);
    EXPECT_EQ(element->lastMode, flags & ~DWORD{0x1000}) << mode;
  }
  storage.GetStat(nullptr);
  EXPECT_EQ(element->lastMode, 0u) << "with the name";
}

TEST(CompoundStorage, WithoutAnElementDoesNothing) {
  KvStorage empty(nullptr);
  KvString name;
  unsigned attributes = 0;
  EXPECT_FALSE(empty.IsBad());
  EXPECT_STREQ(empty.GetPathText(), "");
  EXPECT_FALSE(empty.CreateStream("a", OpenModeReadWrite) || empty.DeleteStream("a"));
  EXPECT_EQ(empty.OpenStorage("a", OpenModeReadWrite, false, false), nullptr);
  EXPECT_FALSE(empty.FindFirst(name, attributes) || empty.FindNext(name, attributes));
  EXPECT_TRUE(empty.CopyTo(&empty) && empty.CopyTo(nullptr));
  KvStorage absent("\\absent", OpenModeRead, false, false);
  EXPECT_TRUE(absent.IsBad());
  EXPECT_EQ(absent.GetPath(), "");
  EXPECT_EQ(KvStorage::CreateNewKvStorage("", OpenModeRead, false, false), nullptr);
}

TEST(CompoundStorage, KeepsElementsInAFile) {
  const TemporaryFolder folder;
  const std::string path = StoragePathOf(folder / "box.kv");
  const std::string large = MixedBytes(100000);
  EXPECT_EQ(OpenBox(path, OpenModeRead), nullptr);
  EXPECT_EQ(folder.Names(), std::vector<std::string>());
  {
    const StoragePtr box = OpenBox(path, OpenModeReadWrite);
    ASSERT_TRUE(box);
    EXPECT_EQ(box->GetStorageKind(), 3);
    EXPECT_EQ(box->GetPath(), StoragePathOf(folder.Path()).c_str());
    EXPECT_STREQ(box->GetPathText(), path.c_str());
    Put(*box, "large", large);
    Put(*box, "small", "tiny");
    Put(*box, "f\xFCr", "umlaut");
    const StoragePtr below(box->OpenStorage("below", OpenModeReadWrite, false, false));
    ASSERT_TRUE(below);
    Put(*below, "inner", "deep");
    EXPECT_FALSE(box->RemoveStorage("below"));
  }
  const StoragePtr box = OpenBox(path, OpenModeRead | OpenModeWrite);
  ASSERT_TRUE(box);
  EXPECT_EQ(Names(*box), (std::vector<std::string>{"f\xFCr", "below/", "large", "small"}));
  EXPECT_TRUE(box->Exists("large"));
  EXPECT_FALSE(box->Exists("LARGE"));
  EXPECT_EQ(ReadAll(*box, "LARGE"), large);
  EXPECT_EQ(ReadAll(*box, "small"), "tiny");
  EXPECT_TRUE(box->DeleteStream("below"));
  EXPECT_FALSE(box->Exists("below"));
  EXPECT_EQ(box->OpenStream("absent", OpenModeRead), nullptr);
}

TEST(CompoundStorage, ASecondUserWaitsForTheFirst) {
  const TemporaryFolder folder;
  const std::string path = StoragePathOf(folder / "box");
  StoragePtr first = OpenBox(path, OpenModeReadWrite);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(OpenBox(path, OpenModeRead | OpenModeWrite), nullptr);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(950));
  std::thread release([&first] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    first.reset();
  });
  EXPECT_NE(OpenBox(path, OpenModeRead | OpenModeWrite), nullptr);
  release.join();
}

TEST(CompoundStorage, ReadersWhoShareKeepOutWritersAlone) {
  const auto isShared = [](const std::string& path) {
    const std::unique_ptr<KvStorage> opened(KvStorage::OpenShared(path.c_str()));
    return !opened->IsBad();
  };
  const TemporaryFolder folder;
  const std::string path = StoragePathOf(folder / "box");
  EXPECT_FALSE(isShared(path));
  OpenBox(path, OpenModeReadWrite);
  const StoragePtr first(KvStorage::OpenShared(path.c_str()));
  EXPECT_TRUE(isShared(path));
  EXPECT_EQ(OpenBox(path, OpenModeRead | OpenModeWrite), nullptr);
}

TEST(CompoundStorage, NeverTakesAnotherFile) {
  const TemporaryFolder folder;
  for (const char* content : {"", "no compound file", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 cut"}) {
    WriteFile(folder / "file", content);
    EXPECT_EQ(OpenBox(StoragePathOf(folder / "file"), OpenModeReadWrite), nullptr);
    EXPECT_EQ(ReadFile(folder / "file"), content);
  }
}

TEST(CompoundStorage, CopiesEverything) {
  const TemporaryFolder folder;
  StoragePtr from = OpenBox(StoragePathOf(folder / "from"), OpenModeReadWrite);
  StoragePtr to = OpenBox(StoragePathOf(folder / "to"), OpenModeReadWrite);
  Put(*from, "a", "one");
  Put(*to, "b", "two");
  EXPECT_TRUE(static_cast<KvStorage&>(*from).CopyTo(static_cast<KvStorage*>(to.get())));
  EXPECT_EQ(Names(*to), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(ReadAll(*to, "a"), "one");
}

TEST(PrivateStorage, AnswersAtOnceAndCommitsAtItsClose) {
  const TemporaryFolder folder;
  auto* held = new RefusingStorage(STG_E_ACCESSDENIED);
  KvPrivateStorage refusing(held);
  EXPECT_EQ(refusing.CreateStream("a", 3), nullptr);
  EXPECT_EQ(refusing.OpenStream("a", OpenModeReadWrite), nullptr);
  EXPECT_EQ(refusing.OpenStorage("a", OpenModeReadWrite, false, false), nullptr);
  EXPECT_EQ(held->creates, 2);
  EXPECT_EQ(held->opens, 2);

  const std::string path = StoragePathOf(folder / "box");
  StoragePtr box(new KvPrivateStorage(path.c_str(), OpenModeRead));
  EXPECT_EQ(folder.Names(), std::vector<std::string>());
  box.reset(new KvPrivateStorage(path.c_str(), OpenModeReadWrite));
  Put(*box, "a", "one");
  EXPECT_FALSE(box->Exists("a"));
  EXPECT_EQ(box->GetPath(), "");
  EXPECT_STREQ(box->GetPathText(), path.c_str());
  EXPECT_EQ(box->GetStorageKind(), 2);
  box.reset();
  box.reset(new KvPrivateStorage(path.c_str(), OpenModeRead));
  EXPECT_EQ(ReadAll(*box, "a"), "one");
}

TEST(MemoryStorage, IsDumpedOnce) {
  const TemporaryFolder folder;
  const std::string path = StoragePathOf(folder / "dump");
  KvMemoryStorage memory(0);
  Put(memory, "a", MixedBytes(50000));
  memory.DumpToFile(path.c_str());
  EXPECT_EQ(memory.CreateStream("b", OpenModeReadWrite), nullptr);
  std::filesystem::rename(folder / "dump", folder / "dump.copy");
  memory.DumpToFile(path.c_str());
  EXPECT_FALSE(std::filesystem::exists(folder / "dump"));
  const StoragePtr box = OpenBox(StoragePathOf(folder / "dump.copy"), OpenModeRead);
  ASSERT_TRUE(box);
  EXPECT_EQ(ReadAll(*box, "a"), MixedBytes(50000));
}

// Not every system keeps who only writes from reading.
TEST(MemoryStorage, NeverGivesOldMemoryForAReadThatFails) {
  KvMemoryStorage memory(0);
  IKvStream* stream = memory.CreateStream("a", OpenModeWrite | OpenModeCreate);
  std::string block(9, '\0');
  stream->Write(block.data(), 9);
  stream->Seek(0, 0);
  block.assign(9, 'x');
  stream->Read(block.data(), 9);
  EXPECT_EQ(block, std::string(9, '\0'));
  stream->Close();
}

TEST(ResourceStorage, WithoutTheResourceDoesNothing) {
  KvResourceStorage resource(nullptr);
  EXPECT_EQ(resource.GetStorageKind(), 5);
  EXPECT_EQ(resource.OpenStorage("Pictures", OpenModeRead, false, false), nullptr);
  EXPECT_EQ(resource.OpenStream("a", OpenModeReadWrite), nullptr);
}
