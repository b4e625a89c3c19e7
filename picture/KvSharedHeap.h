// Blocks of memory that several processes share: they find each other by a common identifier alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>

#include "base/Export.h"
#include "base/KvString.h"

namespace platform {
class NamedMutex;
class SharedBlock;
}  // namespace platform

// Gives out shared blocks. Any thread may call; waiting for other processes is without limit.
class FXBOX_API IKvSharedHeap {
 public:
  // The view of a new block of at least `size` zeros. Null when there is no memory for it.
  virtual void* Alloc(unsigned long size) = 0;
  // Ends this process's view. A block goes with its last view in any process, however that process
  // ends. What is not a view of this heap is ignored.
  virtual void Free(void* view) = 0;
  // The number of a block, the same in every process. 0 for what is not a view of this heap, and
  // for the root block.
  virtual unsigned long GetHandle(void* view) = 0;
  // A further view of the block with this number, null when no block has it. When the block is gone
  // by now the view is one of a few zeros. `node`, when not null, receives what ReleaseData wants.
  virtual void* GetData(unsigned long handle, void** node) = 0;
  virtual void ReleaseData(void* node) = 0;
  virtual ~IKvSharedHeap() = default;
};

class FXBOX_API IKvSharedHeapInitFirst {
 public:
  // Called while the heap is being opened and all other processes wait: with `first` by the one
  // that makes it, whose root block is all zeros, else with the root block as it was left. Should
  // the first one die in here the next one is the first. The block is null where there was no
  // memory.
  virtual void Init(bool first, void* rootBlock, IKvSharedHeap* heap) = 0;

 protected:
  ~IKvSharedHeapInitFirst() = default;
};

// A heap is known by its id to all processes of the user. It begins with the first one that opens
// it and ends with the last. When it cannot be opened, which no operation reports, the heap is
// inert: every operation gives 0 or does nothing. So it is with an empty id.
//
// The system's names are the id for the head, ID_n for block n, and IDMutex for the mutex that
// guards them; on Windows they may not hold a backslash.
class FXBOX_API KvSharedHeap : public IKvSharedHeap {
 public:
  // `init`, which may be null, gets a root block of `size` bytes, and is not used afterwards. What
  // it throws leaves here.
  KvSharedHeap(const char* id, IKvSharedHeapInitFirst* init, unsigned size);
  ~KvSharedHeap() override;
  KvSharedHeap(const KvSharedHeap&) = delete;
  KvSharedHeap& operator=(const KvSharedHeap&) = delete;

  void* Alloc(unsigned long size) override;
  void Free(void* view) override;
  unsigned long GetHandle(void* view) override;
  void* GetData(unsigned long handle, void** node) override;
  void ReleaseData(void* node) override;

  const KvString& GetId() const { return id; }
  // Bytes that may be used from the view on, at least those asked for when the block was made; 0
  // for what is not a view of this heap.
  std::size_t SizeOf(const void* view);

 private:
  struct Header;
  struct Node;
  class Turn;

  void Open(IKvSharedHeapInitFirst* init, unsigned size);
  void* AllocAs(std::uint32_t handle, unsigned long size);
  std::unique_ptr<platform::SharedBlock> MapBlock(std::uint32_t handle, std::size_t bytes) const;
  void* Append(std::unique_ptr<platform::SharedBlock> block, std::uint32_t handle, void** node);

  KvString id;
  std::unique_ptr<platform::NamedMutex> mutex;  // null: inert
  std::unique_ptr<platform::SharedBlock> headerBlock;
  Header* header = nullptr;
  std::list<Node> nodes;
};
