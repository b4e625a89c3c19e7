#include "base/RowWriter.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "base/RowPieces.h"

namespace base {

#ifdef __SSE2__
namespace {

constexpr std::size_t kLine = 64;
constexpr std::size_t kVector = sizeof(__m128i);

// Bytes up to the next cache line, which is written as a whole.
std::size_t ToLine(const BYTE* at) {
  return -reinterpret_cast<std::uintptr_t>(at) % kLine;
}

template <class Value>
void StreamLine(BYTE* to, const Value& value) {
  for (std::size_t at = 0; at < kLine; at += kVector) {
    _mm_stream_si128(reinterpret_cast<__m128i*>(to + at), value(at));
  }
}

// Processors foresee what is read, but hardly what is written.
void CopyInPieces(BYTE* to, const BYTE* from, std::size_t bytes) {
  constexpr std::size_t kMost = 24 * kLine;
  while (bytes > 0) {
    const std::size_t piece = std::min(bytes, kMost);
    bytes -= piece;
    Announce<kForReading>(from + piece, std::min(bytes, kMost));
    Announce<kForWriting>(to + piece, std::min(bytes, kMost));
    CopyBytes(to, from, piece);
    to += piece, from += piece;
  }
}

}  // namespace

RowWriter::~RowWriter() {
  if (isDirect) _mm_sfence();
}

void RowWriter::Copy(BYTE* to, const BYTE* from, std::size_t bytes) const {
  if (isDirect && bytes >= 2 * kLine) {
    const std::size_t ahead = ToLine(to);
    std::memcpy(to, from, ahead);
    to += ahead, from += ahead, bytes -= ahead;
    for (; bytes >= kLine; to += kLine, from += kLine, bytes -= kLine) {
      StreamLine(to, [from](std::size_t at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + at));
      });
    }
  }
  CopyInPieces(to, from, bytes);
}

void RowWriter::Fill(BYTE* to, BYTE value, std::size_t bytes) const {
  if (isDirect && bytes >= 2 * kLine) {
    const std::size_t ahead = ToLine(to);
    std::memset(to, value, ahead);
    to += ahead, bytes -= ahead;
    const __m128i values = _mm_set1_epi8(static_cast<char>(value));
    for (; bytes >= kLine; to += kLine, bytes -= kLine) {
      StreamLine(to, [values](std::size_t) { return values; });
    }
  }
  std::memset(to, value, bytes);
}

#else

RowWriter::~RowWriter() = default;

void RowWriter::Copy(BYTE* to, const BYTE* from, std::size_t bytes) const {
  std::memcpy(to, from, bytes);
}

void RowWriter::Fill(BYTE* to, BYTE value, std::size_t bytes) const {
  std::memset(to, value, bytes);
}

#endif

}  // namespace base
