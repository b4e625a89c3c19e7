#include "platform/compound/Stream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/compound/Answer.h"

namespace platform::compound {

HRESULT Stream::QueryInterface(REFIID iid, void** result) {
  const bool isPlain = base::SameGuid(iid, IID_ISequentialStream);
  return ComObject::QueryInterface(isPlain ? IID_IStream : iid, result);
}

// A read that fails leaves zeros, never what lay in the buffer before.
HRESULT Stream::Read(void* buffer, ULONG count, ULONG* read) {
  if (read) *read = 0;
  if (!buffer) return STG_E_INVALIDPOINTER;
  std::size_t done = 0;
  const HRESULT status = Answer([&] {
    content->File();
    if ((mode & kAccessBits) == STGM_WRITE) Fail(STG_E_ACCESSDENIED);
    done = content->Read(position, buffer, count);
    position += done;
  });
  std::memset(static_cast<char*>(buffer) + done, 0, count - done);
  if (read) *read = static_cast<ULONG>(done);
  return status;
}

HRESULT Stream::Write(const void* buffer, ULONG count, ULONG* written) {
  if (written) *written = 0;
  if (!buffer) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    content->File();
    if ((mode & kAccessBits) == STGM_READ) Fail(STG_E_ACCESSDENIED);
    content->Write(position, buffer, count);
    position += count;
    if (written) *written = count;
  });
}

HRESULT Stream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
  return Answer([&] {
    content->File();
    std::uint64_t from = 0;
    if (origin == STREAM_SEEK_CUR) from = position;
    if (origin == STREAM_SEEK_END) from = content->Size();
    if (origin > STREAM_SEEK_END) Fail(STG_E_INVALIDFUNCTION);
    const std::uint64_t to = from + static_cast<std::uint64_t>(move.QuadPart);
    if (to > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) Fail(STG_E_INVALIDFUNCTION);
    position = to;
    if (newPosition) newPosition->QuadPart = to;
  });
}

HRESULT Stream::SetSize(ULARGE_INTEGER size) {
  return Answer([&] {
    content->File();
    if ((mode & kAccessBits) == STGM_READ) Fail(STG_E_ACCESSDENIED);
    content->Resize(size.QuadPart);
  });
}

HRESULT Stream::CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                       ULARGE_INTEGER* written) {
  constexpr std::size_t kPiece = 65536;
  if (read) read->QuadPart = 0;
  if (written) written->QuadPart = 0;
  if (!target) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    std::vector<char> piece(kPiece);
    std::uint64_t left = count.QuadPart;
    while (left > 0) {
      const auto wanted = static_cast<ULONG>(std::min<std::uint64_t>(left, kPiece));
      ULONG got = 0;
      ULONG put = 0;
      HRESULT status = Read(piece.data(), wanted, &got);
      if (FAILED(status)) Fail(status);
      if (got == 0) break;
      if (read) read->QuadPart += got;
      status = target->Write(piece.data(), got, &put);
      if (written) written->QuadPart += put;
      if (FAILED(status)) Fail(status);
      if (put < got) Fail(STG_E_MEDIUMFULL);
      left -= got;
    }
  });
}

HRESULT Stream::Commit(DWORD) {
  return Answer([&] {
    content->File();
    content->Flush();
    content->File().Commit();
  });
}

// There are no transactions to go back in.
HRESULT Stream::Revert() {
  return Answer([&] { content->File(); });
}

HRESULT Stream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
  return STG_E_INVALIDFUNCTION;
}

HRESULT Stream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
  return STG_E_INVALIDFUNCTION;
}

HRESULT Stream::Stat(STATSTG* result, DWORD flags) {
  if (!result) return STG_E_INVALIDPOINTER;
  return Answer([&] {
    *result = StatOf(content->File().Elements().At(content->Element()), mode, flags);
    result->cbSize.QuadPart = content->Size();
  });
}

HRESULT Stream::Clone(IStream** result) {
  return Give(result, [&] {
    content->File();
    return new Stream(content, mode, position);
  });
}

}  // namespace platform::compound
