#include "picture/SharedPicture.h"

#include <cstring>
#include <new>

namespace {

// The root block holds the number of the picture's block; 0, its own, says that there is none yet.
constexpr unsigned kRootBytes = 4;

std::uint32_t ReadHandle(const BYTE* root) {
  std::uint32_t handle;
  std::memcpy(&handle, root, sizeof handle);
  return handle;
}

void WriteHandle(BYTE* root, unsigned long handle) {
  const auto written = static_cast<std::uint32_t>(handle);
  std::memcpy(root, &written, sizeof written);
}

}  // namespace

SharedPicture::SharedPicture(const char* id) {
  OpenHeap(id);
}

SharedPicture::SharedPicture(const char* id, const char*, int newWidth, int newHeight,
                             bool wantImage, bool wantMask) {
  const Content blank = BlankContent(newWidth, newHeight, wantImage, wantMask);
  content = &blank;
  OpenHeap(id);
}

SharedPicture::SharedPicture(const char* id, const char*, const BYTE* imageDib, const BYTE* maskDib,
                             int value3, int value4, int value1, int value2) {
  const Content copied = ContentOf(imageDib, maskDib, {value1, value2, value3, value4});
  content = &copied;
  OpenHeap(id);
}

SharedPicture::~SharedPicture() {
  Attach(nullptr);
  // The views go with the heap, all at one time for who opens it.
  delete heap;
}

void SharedPicture::OpenHeap(const char* id) {
  shared = true;
  try {
    heap = new KvSharedHeap(id, this, kRootBytes);
  } catch (const std::bad_alloc&) {
    Attach(nullptr);
  }
  content = nullptr;
}

void SharedPicture::Init(bool first, void* rootBlock, IKvSharedHeap* opened) {
  auto& owner = static_cast<KvSharedHeap&>(*opened);
  auto* const root = static_cast<BYTE*>(rootBlock);
  if (owner.SizeOf(root) < kRootBytes) return;
  const std::uint32_t handle = first ? 0 : ReadHandle(root);
  if (handle != 0 && AttachTo(owner, handle)) return;
  if (content) Share(owner, root);
}

// The number goes into the root block last: who dies before has shared nothing.
void SharedPicture::Share(KvSharedHeap& opened, BYTE* root) {
  const auto bytes = static_cast<unsigned long>(content->Bytes());
  auto* const fresh = bytes != 0 ? static_cast<BYTE*>(opened.Alloc(bytes)) : nullptr;
  if (!fresh) return;
  content->WriteTo(fresh);
  Attach(fresh);
  blockSize = bytes;
  isFirst = true;
  WriteHandle(root, opened.GetHandle(fresh));
}

bool SharedPicture::AttachTo(KvSharedHeap& opened, std::uint32_t handle) {
  void* node = nullptr;
  auto* const view = static_cast<BYTE*>(opened.GetData(handle, &node));
  const std::size_t bytes = opened.SizeOf(view);
  // A few zeros, or a page of them, stand where the block is gone.
  const bool isGone = view && IsBlank(view, bytes);
  const std::size_t used = isGone ? 0 : PictureBytes(view, bytes);
  if (used != 0) {
    Attach(view);
    blockSize = used;
    return true;
  }
  opened.ReleaseData(node);
  return !isGone;
}
