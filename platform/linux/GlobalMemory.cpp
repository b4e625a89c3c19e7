// Global memory of winbase.h: blocks of the heap behind handles that stay when a block moves.
#include <winbase.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

// What a moveable handle leads to. The handle is its address with a mark, which no pointer to bytes
// has.
struct alignas(std::max_align_t) Record {
  void* bytes = nullptr;
  UINT locks = 0;
};
constexpr std::uintptr_t kMark = 2;

// Stands in front of the bytes of every block.
struct alignas(std::max_align_t) Head {
  Record* record;  // null for a fixed block, whose bytes are its handle
  SIZE_T size;
};

bool IsMoveable(HGLOBAL handle) {
  return (reinterpret_cast<std::uintptr_t>(handle) & kMark) != 0;
}
Record* RecordOf(HGLOBAL handle) {
  return reinterpret_cast<Record*>(reinterpret_cast<std::uintptr_t>(handle) - kMark);
}
HGLOBAL HandleOf(Record* record) {
  return reinterpret_cast<HGLOBAL>(reinterpret_cast<std::uintptr_t>(record) + kMark);
}
void* BytesOf(HGLOBAL handle) {
  return IsMoveable(handle) ? RecordOf(handle)->bytes : handle;
}
Head* HeadOf(const void* bytes) {
  return static_cast<Head*>(const_cast<void*>(bytes)) - 1;
}

// Gives a block of the new size with the bytes of the old one, which may be null; null, with the
// old one as it was, when there is no memory.
void* Resize(void* bytes, SIZE_T size, bool clear) {
  if (size > std::numeric_limits<SIZE_T>::max() - sizeof(Head)) return nullptr;
  const SIZE_T before = bytes ? HeadOf(bytes)->size : 0;
  auto* const head =
      static_cast<Head*>(std::realloc(bytes ? HeadOf(bytes) : nullptr, sizeof(Head) + size));
  if (!head) return nullptr;
  if (!bytes) head->record = nullptr;
  head->size = size;
  void* const result = head + 1;
  if (clear && size > before) std::memset(static_cast<char*>(result) + before, 0, size - before);
  return result;
}

thread_local DWORD lastError = 0;

}  // namespace

HGLOBAL GlobalAlloc(UINT flags, SIZE_T size) {
  void* const bytes = Resize(nullptr, size, (flags & GMEM_ZEROINIT) != 0);
  if (!bytes || !(flags & GMEM_MOVEABLE)) return bytes;
  auto* const record = static_cast<Record*>(std::malloc(sizeof(Record)));
  if (!record) {
    std::free(HeadOf(bytes));
    return nullptr;
  }
  *record = {bytes, 0};
  HeadOf(bytes)->record = record;
  return HandleOf(record);
}

HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T size, UINT flags) {
  if (!block) return nullptr;
  if (flags & GMEM_MODIFY) return block;  // there is no flag that could change
  void* const bytes = Resize(BytesOf(block), size, (flags & GMEM_ZEROINIT) != 0);
  if (!bytes || !IsMoveable(block)) return bytes;
  RecordOf(block)->bytes = bytes;
  return block;
}

void* GlobalLock(HGLOBAL block) {
  if (!block || !IsMoveable(block)) return block;
  Record* const record = RecordOf(block);
  if (record->locks < 0xFF) ++record->locks;
  return record->bytes;
}

BOOL GlobalUnlock(HGLOBAL block) {
  if (!block || !IsMoveable(block)) return TRUE;
  Record* const record = RecordOf(block);
  if (record->locks == 0) return FALSE;
  return --record->locks > 0;
}

SIZE_T GlobalSize(HGLOBAL block) {
  return block ? HeadOf(BytesOf(block))->size : 0;
}

UINT GlobalFlags(HGLOBAL block) {
  if (!block) return GMEM_INVALID_HANDLE;
  return IsMoveable(block) ? RecordOf(block)->locks : 0;
}

HGLOBAL GlobalHandle(const void* pointer) {
  if (!pointer) return nullptr;
  Record* const record = HeadOf(pointer)->record;
  return record ? HandleOf(record) : const_cast<void*>(pointer);
}

HGLOBAL GlobalFree(HGLOBAL block) {
  if (!block) return nullptr;
  void* const bytes = BytesOf(block);
  if (IsMoveable(block)) std::free(RecordOf(block));
  std::free(HeadOf(bytes));
  return nullptr;
}

DWORD GetLastError() {
  return lastError;
}

void SetLastError(DWORD error) {
  lastError = error;
}
