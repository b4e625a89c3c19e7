#include "platform/compound/Storage.h"

#include "platform/compound/Answer.h"
#include "platform/compound/ElementEnumerator.h"
#include "platform/compound/Stream.h"
#include "platform/compound/TreeCopy.h"

namespace platform::compound {

Storage::Storage(std::shared_ptr<CompoundFile> holder, Id element, DWORD flags, std::u16string path)
    : file(std::move(holder)), id(element), mode(flags), name(std::move(path)) {
  if (id != kRoot) file->Enter(id, this);
}

// What is open below it keeps what was written and is of no more use.
Storage::~Storage() {
  if (!file) return;
  if (id != kRoot) file->Forget(id);
  Answer([this] {
    file->LeaveBelow(id, true);
    id == kRoot ? file->Close() : file->Commit();
  });
}

void Storage::Leave(bool) {
  file.reset();
}

CompoundFile& Storage::File() const {
  if (!file) Fail(STG_E_REVERTED);
  return *file;
}

void Storage::NeedWriting() const {
  File();
  if ((mode & kAccessBits) == STGM_READ) Fail(STG_E_ACCESSDENIED);
}

bool Storage::IsWithin(const Storage& other) const {
  return file && file == other.file && file->Elements().IsBelow(id, other.id);
}

HRESULT Storage::QueryInterface(REFIID iid, void** result) {
  if (!result || !base::SameGuid(iid, kIid)) return ComObject::QueryInterface(iid, result);
  *result = this;
  AddRef();
  return S_OK;
}

// --- elements

void Storage::CheckChild(const OLECHAR* child, DWORD flags, bool isNew) const {
  File();
  if (!child || !IsValidName(child)) Fail(STG_E_INVALIDNAME);
  if ((flags & kShareBits) != STGM_SHARE_EXCLUSIVE || (flags & kAccessBits) == kAccessBits) {
    Fail(STG_E_INVALIDFLAG);
  }
  if (flags & (STGM_DELETEONRELEASE | STGM_TRANSACTED | STGM_PRIORITY | STGM_CONVERT)) {
    Fail(STG_E_INVALIDFUNCTION);
  }
  if ((flags & kAccessBits) > (mode & kAccessBits)) Fail(STG_E_ACCESSDENIED);
  if (isNew) NeedWriting();
}

Id Storage::FindChild(const OLECHAR* child, Type type) const {
  const Id found = file->Elements().Find(id, child);
  if (found == kNone || file->Elements().At(found).type != type) Fail(STG_E_FILENOTFOUND);
  if (file->IsOpen(found)) Fail(STG_E_ACCESSDENIED);
  return found;
}

// The element of the name that is there already, if it may be replaced.
Id Storage::MakeRoomFor(const OLECHAR* child, DWORD flags) const {
  const Id found = file->Elements().Find(id, child);
  if (found == kNone) return kNone;
  if (!(flags & STGM_CREATE)) Fail(STG_E_FILEALREADYEXISTS);
  if (file->IsOpen(found)) Fail(STG_E_ACCESSDENIED);
  return found;
}

// A stream that takes another's place leaves it the file until it is written out itself.
HRESULT Storage::CreateStream(const OLECHAR* child, DWORD flags, DWORD reserved1, DWORD reserved2,
                              IStream** result) {
  return Give(result, [&] {
    if (reserved1 || reserved2) Fail(STG_E_INVALIDPARAMETER);
    CheckChild(child, flags, true);
    Directory& elements = file->Elements();
    Id found = MakeRoomFor(child, flags);
    file->Prepare(found == kNone ? Change::Adds : Change::Replaces);
    if (found != kNone && elements.At(found).type == Type::Storage) {
      file->Destroy(found);
      found = kNone;
    }
    if (found == kNone) {
      found = elements.Add(id, child, Type::Stream);
    } else if (elements.At(found).name != child) {
      elements.Rename(found, child);  // the same letters in another case
    }
    auto content = std::make_shared<StreamContent>(file, found);
    content->Resize(0);
    return new Stream(std::move(content), flags);
  });
}

HRESULT Storage::OpenStream(const OLECHAR* child, void* reserved1, DWORD flags, DWORD reserved2,
                            IStream** result) {
  return Give(result, [&] {
    if (reserved1 || reserved2) Fail(STG_E_INVALIDPARAMETER);
    CheckChild(child, flags, false);
    const Id found = FindChild(child, Type::Stream);
    return new Stream(std::make_shared<StreamContent>(file, found), flags);
  });
}

HRESULT Storage::CreateStorage(const OLECHAR* child, DWORD flags, DWORD reserved1, DWORD reserved2,
                               IStorage** result) {
  return Give(result, [&] {
    if (reserved1 || reserved2) Fail(STG_E_INVALIDPARAMETER);
    CheckChild(child, flags, true);
    const Id found = MakeRoomFor(child, flags);
    file->Prepare(Change::Adds);
    if (found != kNone) file->Destroy(found);
    const Id made = file->Elements().Add(id, child, Type::Storage);
    file->Elements().List(made);
    return new Storage(file, made, flags);
  });
}

HRESULT Storage::OpenStorage(const OLECHAR* child, IStorage* priority, DWORD flags, SNB exclude,
                             DWORD reserved, IStorage** result) {
  return Give(result, [&] {
    if (priority || exclude) Fail(STG_E_INVALIDFUNCTION);
    if (reserved) Fail(STG_E_INVALIDPARAMETER);
    CheckChild(child, flags, false);
    return new Storage(file, FindChild(child, Type::Storage), flags);
  });
}

HRESULT Storage::EnumElements(DWORD, void*, DWORD, IEnumSTATSTG** result) {
  return Give(result, [&] {
    std::vector<Entry> entries;
    for (const Id child : File().Elements().Children(id)) {
      entries.push_back(file->Elements().At(child));
    }
    return new ElementEnumerator(std::move(entries));
  });
}

HRESULT Storage::DestroyElement(const OLECHAR* child) {
  if (!child) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    NeedWriting();
    const Id found = file->Elements().Find(id, child);
    if (found == kNone) Fail(STG_E_FILENOTFOUND);
    file->Destroy(found);
  });
}

HRESULT Storage::RenameElement(const OLECHAR* oldName, const OLECHAR* newName) {
  if (!oldName || !newName) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    NeedWriting();
    if (!IsValidName(newName)) Fail(STG_E_INVALIDNAME);
    Directory& elements = file->Elements();
    const Id found = elements.Find(id, oldName);
    const Id there = elements.Find(id, newName);
    if (found == kNone) Fail(STG_E_FILENOTFOUND);
    if (there != kNone && there != found) Fail(STG_E_FILEALREADYEXISTS);
    if (file->IsOpen(found)) Fail(STG_E_ACCESSDENIED);
    file->Prepare(Change::Adds);
    elements.Rename(found, newName);
  });
}

// No times are written, so that equal steps give equal bytes.
HRESULT Storage::SetElementTimes(const OLECHAR* child, const FILETIME*, const FILETIME*,
                                 const FILETIME*) {
  return Answer([&] {
    NeedWriting();
    if (child && file->Elements().Find(id, child) == kNone) Fail(STG_E_FILENOTFOUND);
  });
}

// --- copies

HRESULT Storage::CopyTo(DWORD excludedCount, const IID* excluded, SNB exclude, IStorage* target) {
  if (!target) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    File();
    const auto own = ComPtr<Storage>::Query(target);
    if (own && own->IsWithin(*this)) Fail(STG_E_ACCESSDENIED);
    CopyTree(this, target, CopyFilter::Of(excludedCount, excluded, exclude));
  });
}

HRESULT Storage::MoveElementTo(const OLECHAR* child, IStorage* target, const OLECHAR* newName,
                               DWORD flags) {
  if (!child || !target || !newName) return STG_E_INVALIDPOINTER;
  if (flags > STGMOVE_COPY) return STG_E_INVALIDFLAG;
  return Answer([&] {
    File();
    CopyElement(this, child, target, newName);
    const HRESULT status = flags == STGMOVE_MOVE ? DestroyElement(child) : S_OK;
    if (FAILED(status)) Fail(status);
  });
}

// --- the storage itself

HRESULT Storage::Commit(DWORD) {
  return Answer([&] {
    File();
    if ((mode & kAccessBits) == STGM_READ) return;
    if (id == kRoot) file->FlushOpen();
    file->Commit();
  });
}

// There are no transactions to go back in.
HRESULT Storage::Revert() {
  return Answer([&] { File(); });
}

HRESULT Storage::SetClass(REFCLSID classId) {
  return Answer([&] {
    NeedWriting();
    file->Prepare(Change::Adds);
    file->Elements().At(id).classId = classId;
    file->Elements().Touch(id);
  });
}

HRESULT Storage::SetStateBits(DWORD bits, DWORD mask) {
  return Answer([&] {
    NeedWriting();
    file->Prepare(Change::Adds);
    std::uint32_t& stored = file->Elements().At(id).stateBits;
    stored = (stored & ~mask) | (bits & mask);
    file->Elements().Touch(id);
  });
}

HRESULT Storage::Stat(STATSTG* result, DWORD flags) {
  if (!result) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    Entry entry = File().Elements().At(id);
    if (id == kRoot && !name.empty()) entry.name = name;
    *result = StatOf(entry, mode, flags);
  });
}

}  // namespace platform::compound
