// A picture that several processes see and change at once.
#pragma once

#include "picture/KvSharedHeap.h"
#include "picture/MemoryPicture.h"

// Processes agree on a picture by the id of a heap (KvSharedHeap) alone. Who comes first makes the
// picture; who comes later attaches to it, whatever picture he would have made. It lives until the
// last of them ends, in whatever way.
//
// Changes of pixels are seen at once by all. Nothing guards the pixels; the other processes are
// trusted not to change the heads of the bitmaps.
class FXBOX_API SharedPicture : public MemoryPicture, public IKvSharedHeapInitFirst {
 public:
  // Attaches to a picture; not valid when nobody shares one.
  explicit SharedPicture(const char* id);
  // As the constructors of MemoryPicture. Not valid also when the id is in use for something else.
  SharedPicture(const char* id, const char* name, int width, int height, bool wantImage,
                bool wantMask);
  SharedPicture(const char* id, const char* name, const BYTE* image, const BYTE* mask, int value3,
                int value4, int value1, int value2);
  ~SharedPicture() override;

  // Whether the picture came from this object instead of being there before.
  bool IsFirst() const { return isFirst; }
  // Bytes of the block, 0 without one.
  std::size_t BlockSize() const { return blockSize; }

  void Init(bool first, void* rootBlock, IKvSharedHeap* heap) override;

 private:
  void OpenHeap(const char* id);
  void Share(KvSharedHeap& opened, BYTE* root);
  // False when the block went away with its last user, so that the picture can be shared anew.
  bool AttachTo(KvSharedHeap& opened, std::uint32_t handle);

  KvSharedHeap* heap = nullptr;
  std::size_t blockSize = 0;
  const Content* content = nullptr;  // while the heap is being opened
  bool isFirst = false;
};
