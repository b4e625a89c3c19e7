// Named blocks of shared memory: the system's mappings, which end with their last view.
#include <windows.h>

#include "platform/SystemServices.h"
#include "platform/windows/Handle.h"

namespace platform {
namespace {

class MappedBlock final : public SharedBlock {
 public:
  MappedBlock(Handle opened, void* mapped) : mapping(std::move(opened)), memory(mapped) {
    MEMORY_BASIC_INFORMATION region = {};
    if (VirtualQuery(memory, &region, sizeof region) != 0) size = region.RegionSize;
  }
  ~MappedBlock() override { UnmapViewOfFile(memory); }

  void* Memory() override { return memory; }
  std::size_t Size() override { return size; }

 private:
  const Handle mapping;
  void* const memory;
  std::size_t size = 0;
};

class SharedMemoryService final : public SharedMemory {
 public:
  std::unique_ptr<SharedBlock> Map(const std::string& name, std::size_t bytes) override {
    Handle mapping(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                      static_cast<DWORD>(std::uint64_t{bytes} >> 32),
                                      static_cast<DWORD>(bytes), name.c_str()));
    if (!mapping) return nullptr;
    void* const memory = MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, 0);
    return memory ? std::make_unique<MappedBlock>(std::move(mapping), memory) : nullptr;
  }
};

}  // namespace

SharedMemory& SystemSharedMemory() {
  static SharedMemoryService memory;
  return memory;
}

}  // namespace platform
