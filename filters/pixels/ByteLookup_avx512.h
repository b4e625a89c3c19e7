// 64 bytes through a table at once, with AVX-512 byte permutes (VBMI).
//
// For files that are compiled for it, which get a copy of their own each.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "filters/pixels/ByteTableKernels.h"

namespace kernels {
namespace {

// The whole table in four registers.
class ByteLookup {
 public:
  explicit ByteLookup(const ByteTable& table) {
    const auto* const entries = reinterpret_cast<const std::uint8_t*>(&table);
    quarter0_ = _mm512_loadu_si512(entries);
    quarter1_ = _mm512_loadu_si512(entries + 64);
    quarter2_ = _mm512_loadu_si512(entries + 128);
    quarter3_ = _mm512_loadu_si512(entries + 192);
  }

  // The permutes look at seven bits; the eighth chooses between the halves.
  [[gnu::always_inline]] __m512i operator()(__m512i bytes) const {
    const __m512i low = _mm512_permutex2var_epi8(quarter0_, bytes, quarter1_);
    const __m512i high = _mm512_permutex2var_epi8(quarter2_, bytes, quarter3_);
    return _mm512_mask_mov_epi8(low, _mm512_movepi8_mask(bytes), high);
  }

 private:
  __m512i quarter0_, quarter1_, quarter2_, quarter3_;
};

}  // namespace
}  // namespace kernels
