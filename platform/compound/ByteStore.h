// The bytes below a compound file: a file of the system, or an object that the host hands in.
#pragma once

#include <objidl.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/component/ComPtr.h"

namespace platform::compound {

// All operations throw Failure. One thread at a time.
class ByteStore {
 public:
  virtual ~ByteStore() = default;
  // Gives the number of bytes that are there; fewer than `count` only at the end.
  virtual std::size_t Read(std::uint64_t offset, void* buffer, std::size_t count) = 0;
  // Makes the store longer where needed.
  virtual void Write(std::uint64_t offset, const void* buffer, std::size_t count) = 0;
  virtual std::uint64_t Size() = 0;
  virtual void SetSize(std::uint64_t size) = 0;
  // All that was written before is on the disk when it returns.
  virtual void Sync() = 0;
};

// Holds a reference to the bytes.
std::unique_ptr<ByteStore> StoreOn(ILockBytes* bytes);

}  // namespace platform::compound
