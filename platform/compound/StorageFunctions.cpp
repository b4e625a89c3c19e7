// The functions of objbase.h that make and open compound files.
#include <objbase.h>

#include "platform/compound/Answer.h"
#include "platform/compound/FileStore.h"
#include "platform/compound/Storage.h"

using platform::ComPtr;
using platform::compound::Answer;
using platform::compound::ByteStore;
using platform::compound::CompoundFile;
using platform::compound::Fail;
using platform::compound::FileAccess;
using platform::compound::Give;
using platform::compound::kAccessBits;
using platform::compound::kRoot;
using platform::compound::kShareBits;
using platform::compound::Storage;

namespace {

// Passes a store that the file does not own: that of a file which is being made.
class BorrowedStore final : public ByteStore {
 public:
  explicit BorrowedStore(ByteStore& lent) : store(lent) {}
  std::size_t Read(std::uint64_t offset, void* buffer, std::size_t count) override {
    return store.Read(offset, buffer, count);
  }
  void Write(std::uint64_t offset, const void* buffer, std::size_t count) override {
    store.Write(offset, buffer, count);
  }
  std::uint64_t Size() override { return store.Size(); }
  void SetSize(std::uint64_t size) override { store.SetSize(size); }
  void Sync() override { store.Sync(); }

 private:
  ByteStore& store;
};

CompoundFile::Access AccessOf(DWORD mode) {
  return (mode & kAccessBits) == STGM_READ ? CompoundFile::Access::Read
                                           : CompoundFile::Access::Write;
}

// Transactions are not offered: what is written goes to the disk by itself, old or new.
void CheckMode(DWORD mode) {
  const bool reads = (mode & kAccessBits) == STGM_READ;
  const DWORD share = mode & kShareBits;
  if ((mode & kAccessBits) == kAccessBits || (mode & STGM_CONVERT)) Fail(STG_E_INVALIDFLAG);
  if (mode & STGM_TRANSACTED) Fail(STG_E_UNIMPLEMENTEDFUNCTION);
  if (mode & STGM_PRIORITY) {
    if (!reads) Fail(STG_E_INVALIDFLAG);
    return;
  }
  const bool isShared = reads && share == STGM_SHARE_DENY_WRITE;
  if (share != STGM_SHARE_EXCLUSIVE && !isShared) Fail(STG_E_INVALIDFLAG);
}

void CheckOpenMode(DWORD mode) {
  CheckMode(mode);
  if (mode & (STGM_CREATE | STGM_DELETEONRELEASE)) Fail(STG_E_INVALIDFLAG);
}

void CheckCreateMode(DWORD mode) {
  CheckMode(mode);
  if ((mode & kAccessBits) == STGM_READ) Fail(STG_E_INVALIDFLAG);
}

FileAccess FileAccessOf(DWORD mode) {
  const bool isShared = (mode & STGM_PRIORITY) || (mode & kShareBits) == STGM_SHARE_DENY_WRITE;
  return {(mode & kAccessBits) != STGM_READ, !isShared};
}

void WriteEmptyFile(ByteStore& store) {
  const auto file =
      CompoundFile::Create(std::make_unique<BorrowedStore>(store), CompoundFile::Access::Write);
  file->Commit();
  file->Close();
}

// A compound file that is there is emptied with its next commit; anything else is kept.
std::shared_ptr<CompoundFile> CreateOrEmpty(const OLECHAR* path, DWORD mode) {
  try {
    return CompoundFile::Open(platform::compound::CreateFile(path, &WriteEmptyFile),
                              CompoundFile::Access::Write);
  } catch (const platform::compound::Failure& failure) {
    if (failure.code != STG_E_FILEALREADYEXISTS || !(mode & STGM_CREATE)) throw;
  }
  auto file = CompoundFile::Open(platform::compound::OpenFile(path, FileAccessOf(mode)),
                                 CompoundFile::Access::Write);
  file->Prepare(platform::compound::Change::Replaces);
  file->DestroyAllBelow(kRoot);
  file->Elements().At(kRoot).classId = {};
  file->Elements().At(kRoot).stateBits = 0;
  file->Elements().Touch(kRoot);
  file->Commit();
  return file;
}

std::shared_ptr<CompoundFile> CreateUnnamed() {
  auto store = platform::compound::CreateUnnamedFile();
  WriteEmptyFile(*store);
  return CompoundFile::Open(std::move(store), CompoundFile::Access::Write);
}

}  // namespace

HRESULT StgCreateDocfile(const OLECHAR* path, DWORD mode, DWORD reserved, IStorage** result) {
  return Give(result, [&] {
    if (reserved) Fail(STG_E_INVALIDPARAMETER);
    CheckCreateMode(mode);
    if (mode & STGM_DELETEONRELEASE && path) Fail(STG_E_UNIMPLEMENTEDFUNCTION);
    const auto file = path ? CreateOrEmpty(path, mode) : CreateUnnamed();
    return new Storage(file, kRoot, mode, path ? path : u"");
  });
}

HRESULT StgOpenStorage(const OLECHAR* path, IStorage* priority, DWORD mode, SNB exclude,
                       DWORD reserved, IStorage** result) {
  return Give(result, [&] {
    if (!path) Fail(STG_E_INVALIDNAME);
    if (reserved || priority || exclude) Fail(STG_E_INVALIDPARAMETER);
    CheckOpenMode(mode);
    auto store = platform::compound::OpenFile(path, FileAccessOf(mode));
    return new Storage(CompoundFile::Open(std::move(store), AccessOf(mode)), kRoot, mode, path);
  });
}

HRESULT StgIsStorageFile(const OLECHAR* path) {
  if (!path) return STG_E_INVALIDNAME;
  return Answer([&] {
    const auto store = platform::compound::OpenFile(path, {false, false});
    std::uint8_t bytes[platform::compound::kHeadSize] = {};
    store->Read(0, bytes, sizeof bytes);
    if (!platform::compound::HasSignature(bytes)) Fail(S_FALSE);
  });
}

HRESULT StgCreateDocfileOnILockBytes(ILockBytes* bytes, DWORD mode, DWORD reserved,
                                     IStorage** result) {
  return Give(result, [&] {
    if (!bytes) Fail(STG_E_INVALIDPOINTER);
    if (reserved) Fail(STG_E_INVALIDPARAMETER);
    CheckCreateMode(mode);
    auto file =
        CompoundFile::Create(platform::compound::StoreOn(bytes), CompoundFile::Access::Write);
    file->Commit();
    return new Storage(std::move(file), kRoot, mode);
  });
}

// The object decides who may have the bytes: it has no name that others could open.
HRESULT StgOpenStorageOnILockBytes(ILockBytes* bytes, IStorage* priority, DWORD mode, SNB exclude,
                                   DWORD reserved, IStorage** result) {
  return Give(result, [&] {
    if (!bytes) Fail(STG_E_INVALIDPOINTER);
    if (reserved || priority || exclude) Fail(STG_E_INVALIDPARAMETER);
    CheckOpenMode(mode);
    auto file = CompoundFile::Open(platform::compound::StoreOn(bytes), AccessOf(mode));
    return new Storage(std::move(file), kRoot, mode);
  });
}

HRESULT StgIsStorageILockBytes(ILockBytes* bytes) {
  if (!bytes) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    std::uint8_t head[platform::compound::kHeadSize] = {};
    platform::compound::StoreOn(bytes)->Read(0, head, sizeof head);
    if (!platform::compound::HasSignature(head)) Fail(S_FALSE);
  });
}
