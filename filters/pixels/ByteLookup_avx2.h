// 32 bytes through a table at once, with AVX2.
//
// For files that are compiled for AVX2, which get a copy of their own each.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "filters/pixels/ByteTableKernels.h"

namespace kernels {
namespace {

// The table in 16 parts of 16 entries, each of which a shuffle looks up by the lower four bits of a
// byte and leaves at 0 where the top bit is set. A byte is brought down by 16 from part to part, so
// that it leaves the range of the parts above its own; as each part holds what differs from the
// part before it, the found entries of the others cancel out. Both halves of the table work so.
class ByteLookup {
 public:
  explicit ByteLookup(const ByteTable& table) {
    const auto* const entries = reinterpret_cast<const std::uint8_t*>(&table);
    for (int half = 0; half < 2; ++half) {
      __m256i before = _mm256_setzero_si256();
      for (int i = 8 * half; i < 8 * half + 8; ++i) {
        const __m256i part = _mm256_broadcastsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries + 16 * i)));
        parts_[i] = _mm256_xor_si256(part, before);
        before = part;
      }
    }
  }

  [[gnu::always_inline]] __m256i operator()(__m256i bytes) const {
    const __m256i top = _mm256_set1_epi8(-128);
    return _mm256_xor_si256(LookUp(parts_, bytes),
                            LookUp(parts_ + 8, _mm256_xor_si256(bytes, top)));
  }

 private:
  // Of bytes below 128; the others, which saturate at -128, give 0.
  [[gnu::always_inline]] static __m256i LookUp(const __m256i* parts, __m256i bytes) {
    const __m256i step = _mm256_set1_epi8(16);
    __m256i found = _mm256_shuffle_epi8(parts[0], bytes);
#pragma GCC unroll 7
    for (int i = 1; i < 8; ++i) {
      bytes = _mm256_subs_epi8(bytes, step);
      found = _mm256_xor_si256(found, _mm256_shuffle_epi8(parts[i], bytes));
    }
    return found;
  }

  __m256i parts_[16];
};

}  // namespace
}  // namespace kernels
