// Named blocks of shared memory.
#include <sys/mman.h>

#include "platform/SystemServices.h"
#include "platform/linux/SharedObject.h"

namespace platform {
namespace {

class MappedBlock final : public SharedBlock {
 public:
  MappedBlock(SharedObject opened, void* mapped) : object(std::move(opened)), memory(mapped) {}
  ~MappedBlock() override { munmap(memory, object.Size()); }

  void* Memory() override { return memory; }
  std::size_t Size() override { return object.Size(); }

 private:
  const SharedObject object;
  void* const memory;
};

bool MakeBlock(const SharedObject& object, std::size_t bytes) {
  return object.Resize(bytes);
}

class SharedMemoryService final : public SharedMemory {
 public:
  std::unique_ptr<SharedBlock> Map(const std::string& name, std::size_t bytes) override {
    for (int i = 0; i < kMostTriesToShare; ++i) {
      auto object = SharedObject::Open("block", name, bytes, MakeBlock);
      if (!object) return nullptr;
      if (object->Size() == 0) continue;
      void* const memory = object->Map(object->Size());
      return memory ? std::make_unique<MappedBlock>(std::move(*object), memory) : nullptr;
    }
    return nullptr;
  }
};

}  // namespace

SharedMemory& SystemSharedMemory() {
  static SharedMemoryService memory;
  return memory;
}

}  // namespace platform
