#include "storage/StgElements.h"

#include <algorithm>
#include <cstring>

#include "platform/StoragePath.h"
#include "platform/component/OleText.h"

namespace stg {
namespace {

LARGE_INTEGER Distance(std::int64_t offset) {
  LARGE_INTEGER distance = {};
  distance.QuadPart = offset;
  return distance;
}

class CompoundStream final : public CheckedStream {
 public:
  explicit CompoundStream(IStream* owned) : stream(platform::ComPtr<IStream>::Attach(owned)) {}

  unsigned Read(void* buffer, unsigned count) override {
    if (!buffer) return 0;
    ULONG got = count;
    const HRESULT status = stream->Read(buffer, count, &got);
    // Old memory must not pass for data.
    if (FAILED(status)) std::memset(buffer, 0, count);
    return got;
  }

  unsigned Write(const void* buffer, unsigned count) override {
    if (!buffer) return 0;
    ULONG put = count;
    const HRESULT status = stream->Write(buffer, count, &put);
    if (FAILED(status)) put = std::min<ULONG>(put, count - (count > 0 ? 1 : 0));
    if (put < count) hasFailed = true;
    isWritten = true;
    return put;
  }

  unsigned GetLength() override {
    const std::uint64_t position = Move(0, STREAM_SEEK_CUR);
    const std::uint64_t length = Move(0, STREAM_SEEK_END);
    Move(static_cast<std::int64_t>(position), STREAM_SEEK_SET);
    return static_cast<unsigned>(length);
  }
  unsigned GetPosition() override { return static_cast<unsigned>(Move(0, STREAM_SEEK_CUR)); }
  long Seek(long offset, int origin) override {
    return static_cast<long>(static_cast<std::uint32_t>(Move(offset, static_cast<DWORD>(origin))));
  }
  int LockRange(unsigned, unsigned) override { return 0; }
  int UnlockRange(unsigned, unsigned) override { return 0; }

  void Close() override { delete this; }
  void SetLength(unsigned length) override {
    ULARGE_INTEGER size = {};
    size.QuadPart = length;
    if (FAILED(stream->SetSize(size))) hasFailed = true;
    isWritten = true;
  }
  KvFile* GetFile() override { return nullptr; }
  void GetStat(STATSTG* out) override { stream->Stat(out, STATFLAG_DEFAULT); }

  void Abandon() override { Close(); }
  bool Finish() override {
    if (!isWritten || hasFailed) return !hasFailed;
    const HRESULT status = stream->Commit(STGC_DEFAULT);
    return SUCCEEDED(status) || status == E_NOTIMPL;
  }

 private:
  std::uint64_t Move(std::int64_t offset, DWORD origin) {
    ULARGE_INTEGER position = {};
    stream->Seek(Distance(offset), origin, &position);
    return position.QuadPart;
  }

  platform::ComPtr<IStream> stream;
  bool isWritten = false;
  bool hasFailed = false;
};

unsigned AttributesOf(DWORD type) {
  return type == STGTY_STORAGE ? kStorageElement : type == STGTY_STREAM ? kStreamElement : 0;
}

}  // namespace

DWORD FlagsOf(unsigned mode) {
  const bool reads = (mode & OpenModeRead) != 0;
  const bool writes = (mode & OpenModeWrite) != 0;
  const DWORD access = !writes ? STGM_READ : reads ? STGM_READWRITE : STGM_WRITE;
  return STGM_SHARE_EXCLUSIVE | access | ((mode & OpenModeCreate) ? STGM_CREATE : 0);
}

bool IsHeld(HRESULT status) {
  return status == STG_E_ACCESSDENIED || status == STG_E_SHAREVIOLATION ||
         status == STG_E_LOCKVIOLATION;
}

bool IsAbsent(HRESULT status) {
  return status == STG_E_FILENOTFOUND || status == STG_E_PATHNOTFOUND;
}

WideName WideNameOf(const char* name) {
  return platform::ToOleText(name ? name : "");
}

WideName WidePathOf(const char* path) {
  const std::u16string wide = platform::WideStoragePath(path ? path : "");
  return {wide.begin(), wide.end()};
}

bool Enumeration::First(IStorage* storage, KvString& name, unsigned& attributes) {
  elements.Reset();
  if (!storage || FAILED(storage->EnumElements(0, nullptr, 0, elements.Put()))) return false;
  elements->Reset();
  return Deliver(name, attributes);
}

bool Enumeration::Next(KvString& name, unsigned& attributes) {
  return elements && Deliver(name, attributes);
}

bool Enumeration::Deliver(KvString& name, unsigned& attributes) {
  STATSTG element = {};
  ULONG count = 0;
  if (FAILED(elements->Next(1, &element, &count)) || count != 1) {
    elements.Reset();
    return false;
  }
  name = platform::TakeOleText(element.pwcsName);
  attributes = AttributesOf(element.type);
  return true;
}

IKvStream* WrapStream(IStream* owned) {
  return owned ? new CompoundStream(owned) : nullptr;
}

}  // namespace stg
