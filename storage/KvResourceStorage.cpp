// A compound file in a resource of a module, read where it lies.
#include <algorithm>
#include <cstring>

#include "platform/ModuleResource.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"
#include "platform/component/SystemInterfaces.h"
#include "storage/KvPrivateStorage.h"

namespace {

constexpr char kResourceName[] = "KvResourceStorage";
constexpr char kResourceType[] = "STORAGE";

// The system's function refuses the priority flag alone on bytes of this kind.
constexpr DWORD kReadFlags = STGM_PRIORITY | STGM_SHARE_DENY_NONE;

// The bytes of the resource, which never change: what writes succeeds and does nothing.
class ILB final : public platform::ComObject<ILB, ILockBytes> {
 public:
  explicit ILB(std::span<const std::byte> resource) : bytes(resource) {}

  HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER offset, void* buffer, ULONG count,
                                   ULONG* read) override {
    const ULONGLONG at = std::min<ULONGLONG>(offset.QuadPart, bytes.size());
    const auto got = static_cast<ULONG>(std::min<ULONGLONG>(count, bytes.size() - at));
    if (got > 0) std::memcpy(buffer, bytes.data() + at, got);
    if (read) *read = got;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER, const void*, ULONG, ULONG* written) override {
    if (written) *written = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Flush() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD) override {
    if (!result) return STG_E_INVALIDPOINTER;
    *result = {};
    result->type = STGTY_LOCKBYTES;
    result->cbSize.QuadPart = bytes.size();
    return S_OK;
  }

 private:
  std::span<const std::byte> bytes;
};

}  // namespace

KvResourceStorage::KvResourceStorage(HMODULE module) : KvPrivateStorage(nullptr) {
  const auto resource = platform::FindModuleResource(module, kResourceName, kResourceType);
  if (resource.empty()) return;
  const auto bytes = platform::ComPtr<ILockBytes>::Attach(new ILB(resource));
  IStorage* opened = nullptr;
  if (SUCCEEDED(
          StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadFlags, nullptr, 0, &opened))) {
    SetElement(opened);
  }
}
