#include "picture/KvSharedHeap.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/Services.h"

// What all processes see.
struct KvSharedHeap::Header {
  std::uint32_t nextHandle;
  std::uint32_t marker;  // kMade once the first one is done with it
};

struct KvSharedHeap::Node {
  void* view;
  std::uint32_t handle;
  std::unique_ptr<platform::SharedBlock> mapping;
};

namespace {

constexpr std::uint32_t kMade = 0xFFFFFFFF;
constexpr unsigned kSpareBytes = 4;  // behind every block

}  // namespace

// Holds the mutex of the heap. A dead owner leaves head and list whole: each change is one store.
class KvSharedHeap::Turn {
 public:
  explicit Turn(const KvSharedHeap& heap) : mutex(heap.mutex.get()) {
    using Wait = platform::NamedMutex::Wait;
    if (!mutex) return;
    Wait result;
    do {
      result = mutex->WaitFor(platform::NamedMutex::kNoLimit);
    } while (result == Wait::TimedOut);
    if (result == Wait::Failed) mutex = nullptr;
  }
  ~Turn() {
    if (mutex) mutex->Release();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  explicit operator bool() const { return mutex != nullptr; }

 private:
  platform::NamedMutex* mutex;
};

KvSharedHeap::KvSharedHeap(const char* newId, IKvSharedHeapInitFirst* init, unsigned size)
    : id(newId) {
  static_assert(sizeof(Header) == 8);
  if (id.IsEmpty()) return;
  mutex = platform::CurrentServices().mutexes->Open((id + "Mutex").ToStdString());
  Open(init, size);
  if (!header) mutex.reset();
}

void KvSharedHeap::Open(IKvSharedHeapInitFirst* init, unsigned size) {
  const Turn turn(*this);
  if (!turn) return;
  headerBlock = platform::CurrentServices().sharedMemory->Map(id.ToStdString(), sizeof(Header));
  if (!headerBlock || headerBlock->Size() < sizeof(Header)) return;
  header = static_cast<Header*>(headerBlock->Memory());
  if (header->nextHandle != 0 && header->marker == kMade) {
    void* const root = GetData(0, nullptr);
    if (init) init->Init(false, root, this);
    return;
  }
  // The system may still be closing the blocks of a first one that died in its Init: its root block
  // is cleared, and the numbers of its other blocks are not given again.
  if (init) {
    void* const root = AllocAs(0, (std::max)(size, size + kSpareBytes));
    if (root) std::memset(root, 0, size);
    header->nextHandle = (std::max)(header->nextHandle, std::uint32_t{1});
    init->Init(true, root, this);
  }
  header->marker = kMade;
}

KvSharedHeap::~KvSharedHeap() {
  const Turn turn(*this);
  nodes.clear();
  headerBlock.reset();
}

std::unique_ptr<platform::SharedBlock> KvSharedHeap::MapBlock(std::uint32_t handle,
                                                              std::size_t bytes) const {
  const std::string name = id.ToStdString() + "_" + std::to_string(handle);
  return platform::CurrentServices().sharedMemory->Map(name, bytes);
}

void* KvSharedHeap::Append(std::unique_ptr<platform::SharedBlock> block, std::uint32_t handle,
                           void** node) {
  void* const view = block ? block->Memory() : nullptr;
  nodes.push_back({view, handle, std::move(block)});
  if (node) *node = &nodes.back();
  return view;
}

void* KvSharedHeap::Alloc(unsigned long size) {
  std::uint32_t handle = 0;
  {
    const Turn turn(*this);
    if (!turn) return nullptr;
    handle = header->nextHandle++;
  }
  return AllocAs(handle, size);
}

void* KvSharedHeap::AllocAs(std::uint32_t handle, unsigned long size) {
  const std::size_t bytes = std::size_t{size} + kSpareBytes;
  auto block = bytes > size ? MapBlock(handle, bytes) : nullptr;
  // Something else may have the name.
  if (block && block->Size() < bytes) block.reset();
  const Turn turn(*this);
  return turn ? Append(std::move(block), handle, nullptr) : nullptr;
}

void KvSharedHeap::Free(void* view) {
  const Turn turn(*this);
  if (!turn) return;
  const auto node = std::find_if(nodes.begin(), nodes.end(),
                                 [view](const Node& each) { return each.view == view; });
  if (node != nodes.end()) nodes.erase(node);
}

unsigned long KvSharedHeap::GetHandle(void* view) {
  const Turn turn(*this);
  if (!turn) return 0;
  const auto node = std::find_if(nodes.begin(), nodes.end(),
                                 [view](const Node& each) { return each.view == view; });
  return node != nodes.end() ? node->handle : 0;
}

void* KvSharedHeap::GetData(unsigned long handle, void** node) {
  if (node) *node = nullptr;
  const Turn turn(*this);
  if (!turn || handle >= header->nextHandle) return nullptr;
  const auto number = static_cast<std::uint32_t>(handle);
  return Append(MapBlock(number, kSpareBytes), number, node);
}

void KvSharedHeap::ReleaseData(void* data) {
  const Turn turn(*this);
  if (turn) nodes.remove_if([data](const Node& each) { return &each == data; });
}

std::size_t KvSharedHeap::SizeOf(const void* view) {
  const Turn turn(*this);
  if (!turn || !view) return 0;
  const auto node = std::find_if(nodes.begin(), nodes.end(),
                                 [view](const Node& each) { return each.view == view; });
  return node != nodes.end() ? node->mapping->Size() : 0;
}
