// The picture box over a host's storage whose streams throw: nothing stays open, no half picture.
#include <gtest/gtest.h>

#include <memory>

#include "imageio/StoredBitmap.h"
#include "storage/KvErrors.h"
#include "storage/KvPrivateStorage.h"
#include "storage/kvPicBox.h"
#include "tests/storage/StorageSupport.h"

using namespace test;

namespace {

// What the streams of a test share.
struct Plan {
  int callsLeft = 1 << 20;  // of Read, Write and SetLength, until one throws
  bool isMemoryShort = false;
  int open = 0;

  void Call() {
    if (callsLeft-- != 0) return;
    if (isMemoryShort) throw std::bad_alloc();
    throw KvStreamException(-1, "broken");
  }
};

class ThrowingStream final : public IKvStream {
 public:
  ThrowingStream(IKvStream* real, Plan& shared) : inner(real), plan(shared) { ++plan.open; }

  unsigned Read(void* to, unsigned count) override { return plan.Call(), inner->Read(to, count); }
  unsigned Write(const void* from, unsigned count) override {
    return plan.Call(), inner->Write(from, count);
  }
  unsigned GetLength() override { return inner->GetLength(); }
  unsigned GetPosition() override { return inner->GetPosition(); }
  long Seek(long offset, int origin) override { return inner->Seek(offset, origin); }
  int LockRange(unsigned, unsigned) override { return 0; }
  int UnlockRange(unsigned, unsigned) override { return 0; }
  void Close() override {
    --plan.open;
    inner->Close();
    delete this;
  }
  void SetLength(unsigned length) override { plan.Call(), inner->SetLength(length); }
  KvFile* GetFile() override { return nullptr; }

 private:
  IKvStream* inner;
  Plan& plan;
};

// A storage, and what is opened from it, around another.
class ThrowingStorage final : public IKvStorage {
 public:
  ThrowingStorage(IKvStorage* real, Plan& shared) : inner(real), plan(shared) {}

  IKvStream* CreateStream(const char* name, unsigned mode) override {
    return Around(inner->CreateStream(name, mode));
  }
  IKvStream* OpenStream(const char* name, unsigned mode) override {
    return Around(inner->OpenStream(name, mode));
  }
  bool DeleteStream(const char* name) override { return inner->DeleteStream(name); }
  IKvStorage* CreateStorage(const char* name, unsigned mode, bool a, bool b) override {
    return Around(inner->CreateStorage(name, mode, a, b));
  }
  IKvStorage* OpenStorage(const char* name, unsigned mode, bool a, bool b) override {
    return Around(inner->OpenStorage(name, mode, a, b));
  }
  bool RemoveStorage(const char*) override { return false; }
  bool FindFirst(KvString& name, unsigned& kind) override { return inner->FindFirst(name, kind); }
  bool FindNext(KvString& name, unsigned& kind) override { return inner->FindNext(name, kind); }
  bool Exists(const char*) override { return false; }
  void Close() override {
    inner->Close();
    delete this;
  }
  void Flush() override {}
  const char* GetPathText() override { return ""; }
  KvString GetPath() override { return {}; }
  bool IsNative() override { return false; }
  bool IsExternal() override { return false; }
  int GetStorageKind() override { return inner->GetStorageKind(); }

 private:
  IKvStream* Around(IKvStream* real) { return real ? new ThrowingStream(real, plan) : nullptr; }
  IKvStorage* Around(IKvStorage* real) { return real ? new ThrowingStorage(real, plan) : nullptr; }

  IKvStorage* inner;
  Plan& plan;
};

// The four ways to write; true when it was done.
bool Write(kvPicBox& box, int way) {
  const picbox::Bytes picture = imageio::BlankColourBitmap(3, 2);
  KvString ext;
  switch (way) {
    case 0:
      return box.AddFile("a", picture, imageio::BlankMaskBitmap(3, 2), 0, 0, true, false, false) >
             0;
    case 1:
      return box.AddFile("a", picture, {}, 0, 0, false, true, false) > 0;
    case 2:
      return box.WriteImageInfo("a", "note", nullptr);
    default:
      return box.CopyImage("from", box, "a", true, ext, false);
  }
}

}  // namespace

TEST(ThrowingStreams, LeaveNothingOpenAndNoHalfPicture) {
  LogOfTest log;
  for (int way = 0; way < 8; ++way) {
    bool isDone = false;
    for (int calls = 0; !isDone && calls < 100; ++calls) {
      SCOPED_TRACE(testing::Message() << "way " << way << ", call " << calls);
      Plan plan;
      plan.isMemoryShort = way > 3;
      const StoragePtr storage(new ThrowingStorage(new KvMemoryStorage(0), plan));
      kvPicBox box(storage.get(), OpenModeReadWrite);
      ASSERT_GT(
          box.AddFile("from", imageio::BlankColourBitmap(3, 2), {}, 0, 0, false, false, false), 0u);
      plan.callsLeft = calls;
      try {
        isDone = Write(box, way % 4);
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(plan.isMemoryShort);
      }
      EXPECT_EQ(plan.open, 0);
      plan.callsLeft = 1 << 20;
      const std::string told = log.Lines();
      if (way % 4 < 2) {
        EXPECT_EQ(told, isDone || way > 3 ? "" : "PicBox AddFile Error on a; ");
        EXPECT_EQ(box.Exists("a", "JPG"), isDone);
        EXPECT_EQ(box.HasFailed(), !isDone && way < 2);
      }
    }
    EXPECT_TRUE(isDone) << way;
  }
}
