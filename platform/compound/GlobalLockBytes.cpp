// Bytes in global memory, as lock bytes.
#include <ole2.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"
#include "platform/component/SystemInterfaces.h"

namespace {

// The block is as long as the bytes. Belongs to one thread at a time.
class GlobalLockBytes final : public platform::ComObject<GlobalLockBytes, ILockBytes> {
 public:
  static constexpr IID kIid = base::Guid("{2E0C7A54-5B8B-4B0A-9F0E-0B7E2F2B6A11}");

  GlobalLockBytes(HGLOBAL taken, bool isFreed) : block(taken), frees(isFreed) {}

  HGLOBAL Block() const { return block; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    if (!result || !base::SameGuid(iid, kIid)) return ComObject::QueryInterface(iid, result);
    *result = this;
    AddRef();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER offset, void* buffer, ULONG count,
                                   ULONG* read) override {
    if (read) *read = 0;
    if (!buffer) return STG_E_INVALIDPOINTER;
    const SIZE_T size = GlobalSize(block);
    if (offset.QuadPart >= size) return S_OK;
    const auto given = static_cast<ULONG>(std::min<std::uint64_t>(count, size - offset.QuadPart));
    std::memcpy(buffer, static_cast<char*>(GlobalLock(block)) + offset.QuadPart, given);
    GlobalUnlock(block);
    if (read) *read = given;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER offset, const void* buffer, ULONG count,
                                    ULONG* written) override {
    if (written) *written = 0;
    if (!buffer) return STG_E_INVALIDPOINTER;
    if (count == 0) return S_OK;
    if (offset.QuadPart > std::numeric_limits<std::uint64_t>::max() - count) {
      return STG_E_MEDIUMFULL;
    }
    ULARGE_INTEGER end;
    end.QuadPart = offset.QuadPart + count;
    if (end.QuadPart > GlobalSize(block) && FAILED(SetSize(end))) return STG_E_MEDIUMFULL;
    std::memcpy(static_cast<char*>(GlobalLock(block)) + offset.QuadPart, buffer, count);
    GlobalUnlock(block);
    if (written) *written = count;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Flush() override { return S_OK; }

  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
    const HGLOBAL moved = GlobalReAlloc(block, size.QuadPart, GMEM_MOVEABLE | GMEM_ZEROINIT);
    if (!moved) return STG_E_MEDIUMFULL;
    block = moved;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }

  HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD) override {
    if (!result) return STG_E_INVALIDPOINTER;
    *result = {};
    result->type = STGTY_LOCKBYTES;
    result->cbSize.QuadPart = GlobalSize(block);
    return S_OK;
  }

 private:
  friend class ComObject<GlobalLockBytes, ILockBytes>;
  ~GlobalLockBytes() {
    if (frees) GlobalFree(block);
  }

  HGLOBAL block;
  const bool frees;
};

}  // namespace

HRESULT CreateILockBytesOnHGlobal(HGLOBAL block, BOOL freeAtEnd, ILockBytes** result) {
  if (!result) return E_INVALIDARG;
  *result = nullptr;
  const HGLOBAL used = block ? block : GlobalAlloc(GMEM_MOVEABLE, 0);
  if (!used) return E_OUTOFMEMORY;
  const HRESULT status = platform::Guard([&] {
    *result = new GlobalLockBytes(used, freeAtEnd != FALSE);
    return S_OK;
  });
  if (FAILED(status) && !block) GlobalFree(used);
  return status;
}

HRESULT GetHGlobalFromILockBytes(ILockBytes* bytes, HGLOBAL* block) {
  if (!bytes || !block) return E_INVALIDARG;
  const auto own = platform::ComPtr<GlobalLockBytes>::Query(bytes);
  *block = own ? own->Block() : nullptr;
  return own ? S_OK : E_INVALIDARG;
}
