// Compound files in global memory, and the temporary stream in one of them.
#include <ole2.h>

#include <algorithm>
#include <fstream>
#include <vector>

#include "platform/Services.h"
#include "platform/StoragePath.h"
#include "storage/KvPrivateStorage.h"
#include "storage/StgElements.h"

namespace {

constexpr DWORD kMakeExclusive = STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr char kTemporaryName[] = "TempStream";
constexpr ULONG kPieceBytes = 1 << 20;

// False when the bytes cannot be read or the file cannot be written.
bool WriteTo(const std::filesystem::path& file, ILockBytes& bytes) {
  STATSTG stat = {};
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out || FAILED(bytes.Stat(&stat, STATFLAG_NONAME))) return false;
  std::vector<char> piece(kPieceBytes);
  ULARGE_INTEGER at = {};
  while (at.QuadPart < stat.cbSize.QuadPart) {
    // Bytes behind the end would be a fault.
    const auto count =
        static_cast<ULONG>(std::min<ULONGLONG>(kPieceBytes, stat.cbSize.QuadPart - at.QuadPart));
    ULONG got = 0;
    if (FAILED(bytes.ReadAt(at, piece.data(), count, &got)) || got == 0) return false;
    out.write(piece.data(), static_cast<std::streamsize>(got));
    at.QuadPart += got;
  }
  return static_cast<bool>(out.flush());
}

}  // namespace

KvMemoryStorage::KvMemoryStorage(int size) : KvPrivateStorage(nullptr) {
  block = GlobalAlloc(GHND, static_cast<SIZE_T>(size < 0 ? 0 : size));
  if (!block || FAILED(CreateILockBytesOnHGlobal(block, FALSE, &bytes))) return;
  IStorage* made = nullptr;
  if (SUCCEEDED(StgCreateDocfileOnILockBytes(bytes, kMakeExclusive, 0, &made))) SetElement(made);
}

KvMemoryStorage::~KvMemoryStorage() {
  ReleaseElement();
  if (bytes) {
    // Where the block was moved, the bytes know.
    GetHGlobalFromILockBytes(bytes, &block);
    bytes->Release();
  }
  if (block) GlobalFree(block);
}

void KvMemoryStorage::DumpToFile(const char* target) {
  if (!Element()) return;
  Element()->Commit(STGC_DEFAULT);
  ReleaseElement();
  const auto write = [this](const std::filesystem::path& file) { return WriteTo(file, *bytes); };
  platform::CurrentServices().files->Replace(platform::PathOfStorage(target ? target : ""), write);
}

KvTemporaryStream::KvTemporaryStream()
    : storage(0), stream(storage.CreateStream(kTemporaryName, OpenModeReadWrite)) {}

KvTemporaryStream::~KvTemporaryStream() {
  if (stream) stream->Close();
}
