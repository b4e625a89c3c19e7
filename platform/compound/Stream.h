// A stream of a compound file as component.
#pragma once

#include <objidl.h>

#include <memory>

#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"
#include "platform/compound/StreamContent.h"

namespace platform::compound {

class Stream final : public ComObject<Stream, IStream> {
 public:
  Stream(std::shared_ptr<StreamContent> shared, DWORD flags, std::uint64_t start = 0)
      : content(std::move(shared)), mode(flags), position(start) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override;
  HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* written) override;
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                 ULARGE_INTEGER* newPosition) override;
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
  HRESULT STDMETHODCALLTYPE Revert() override;
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                       DWORD type) override;
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                         DWORD type) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD flags) override;
  HRESULT STDMETHODCALLTYPE Clone(IStream** result) override;

 private:
  friend class ComObject<Stream, IStream>;
  ~Stream() = default;

  std::shared_ptr<StreamContent> content;
  const DWORD mode;
  std::uint64_t position;
};

}  // namespace platform::compound
