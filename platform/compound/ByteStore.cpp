#include "platform/compound/ByteStore.h"

#include <algorithm>
#include <limits>

#include "platform/compound/Format.h"

namespace platform::compound {
namespace {

ULARGE_INTEGER Large(std::uint64_t value) {
  ULARGE_INTEGER result;
  result.QuadPart = value;
  return result;
}

ULONG Limited(std::size_t count) {
  return static_cast<ULONG>(std::min<std::size_t>(count, std::numeric_limits<ULONG>::max()));
}

class LockBytesStore final : public ByteStore {
 public:
  explicit LockBytesStore(ILockBytes* shared) : bytes(shared) {}

  std::size_t Read(std::uint64_t offset, void* buffer, std::size_t count) override {
    std::size_t done = 0;
    while (done < count) {
      ULONG read = 0;
      const HRESULT status = bytes->ReadAt(Large(offset + done), static_cast<char*>(buffer) + done,
                                           Limited(count - done), &read);
      if (FAILED(status)) Fail(status);
      if (read == 0 || read > count - done) break;
      done += read;
    }
    return done;
  }

  void Write(std::uint64_t offset, const void* buffer, std::size_t count) override {
    for (std::size_t done = 0; done < count;) {
      ULONG written = 0;
      const HRESULT status =
          bytes->WriteAt(Large(offset + done), static_cast<const char*>(buffer) + done,
                         Limited(count - done), &written);
      if (FAILED(status)) Fail(status);
      if (written == 0 || written > count - done) Fail(STG_E_WRITEFAULT);
      done += written;
    }
  }

  std::uint64_t Size() override {
    STATSTG stat = {};
    const HRESULT status = bytes->Stat(&stat, STATFLAG_NONAME);
    if (FAILED(status)) Fail(status);
    return stat.cbSize.QuadPart;
  }

  void SetSize(std::uint64_t size) override {
    const HRESULT status = bytes->SetSize(Large(size));
    if (FAILED(status)) Fail(status);
  }

  void Sync() override {
    const HRESULT status = bytes->Flush();
    if (FAILED(status)) Fail(status);
  }

 private:
  ComPtr<ILockBytes> bytes;
};

}  // namespace

std::unique_ptr<ByteStore> StoreOn(ILockBytes* bytes) {
  return std::make_unique<LockBytesStore>(bytes);
}

}  // namespace platform::compound
