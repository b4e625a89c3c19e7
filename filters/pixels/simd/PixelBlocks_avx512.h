// Blocks of 64 pixels of a colour row in AVX-512 vectors: taken apart into channels, put together,
// walked along a row.
//
// For files that are compiled for AVX-512 with byte permutes (VBMI), which get a copy of their own
// each.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace kernels {
namespace {

constexpr int kPixels = 64;  // of a block
constexpr std::size_t kBlockBytes = 3 * kPixels;

// A block as it lies in the row.
struct Block {
  __m512i part0, part1, part2;
};

// Which byte of one vector, or of two, each byte of a permuted one comes from.
struct alignas(64) Permutation {
  std::uint8_t from[64];
  operator __m512i() const { return _mm512_load_si512(from); }
};

// One channel of the pixels of a block each.
struct Planes {
  __m512i blue, green, red;
};

// The bytes of a channel lie 3 apart. Those in the first two parts are gathered by one permute of
// both, those in the third by another, which leaves the first ones alone.
constexpr int kInFirstParts = 128;

constexpr Permutation FromFirstParts(int channel) {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    const int at = 3 * i + channel;
    p.from[i] = static_cast<std::uint8_t>(at < kInFirstParts ? at : 0);
  }
  return p;
}
constexpr Permutation FromLastPart(int channel) {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    const int at = 3 * i + channel;
    p.from[i] = static_cast<std::uint8_t>(at < kInFirstParts ? i : 64 + at - kInFirstParts);
  }
  return p;
}

// The way back: blue and green of a part by one permute, then red among them.
constexpr Permutation BlueAndGreen(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) {
    const int at = 64 * part + j;
    p.from[j] = static_cast<std::uint8_t>(at % 3 == 1 ? 64 + at / 3 : at / 3);
  }
  return p;
}
constexpr Permutation AndRed(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) {
    const int at = 64 * part + j;
    p.from[j] = static_cast<std::uint8_t>(at % 3 == 2 ? 64 + at / 3 : j);
  }
  return p;
}

constexpr Permutation kFromFirstParts[] = {FromFirstParts(0), FromFirstParts(1), FromFirstParts(2)};
constexpr Permutation kFromLastPart[] = {FromLastPart(0), FromLastPart(1), FromLastPart(2)};
constexpr Permutation kBlueAndGreen[] = {BlueAndGreen(0), BlueAndGreen(1), BlueAndGreen(2)};
constexpr Permutation kAndRed[] = {AndRed(0), AndRed(1), AndRed(2)};

[[gnu::always_inline]] inline Planes Split(const Block& block) {
  const auto plane = [&](int channel) {
    const __m512i first =
        _mm512_permutex2var_epi8(block.part0, kFromFirstParts[channel], block.part1);
    return _mm512_permutex2var_epi8(first, kFromLastPart[channel], block.part2);
  };
  return {plane(0), plane(1), plane(2)};
}

[[gnu::always_inline]] inline Block Join(const Planes& planes) {
  const auto part = [&](int number) {
    const __m512i two = _mm512_permutex2var_epi8(planes.blue, kBlueAndGreen[number], planes.green);
    return _mm512_permutex2var_epi8(two, kAndRed[number], planes.red);
  };
  return {part(0), part(1), part(2)};
}

// Fetches what a block further on in the row will need: the processor's own look-ahead stops at
// each page. Behind the row it does no harm. No loop and no call: GCC takes either for one without
// effect.
[[gnu::always_inline]] inline void Prefetch(const std::uint8_t* block) {
  const char* const at = reinterpret_cast<const char*>(block) + 3072;
  _mm_prefetch(at, _MM_HINT_T0);
  _mm_prefetch(at + 64, _MM_HINT_T0);
  _mm_prefetch(at + 128, _MM_HINT_T0);
}

[[gnu::always_inline]] inline Block LoadBlock(const std::uint8_t* at) {
  return {_mm512_loadu_si512(at), _mm512_loadu_si512(at + 64), _mm512_loadu_si512(at + 128)};
}

[[gnu::always_inline]] inline void StoreBlock(std::uint8_t* at, const Block& block) {
  _mm512_storeu_si512(at, block.part0);
  _mm512_storeu_si512(at + 64, block.part1);
  _mm512_storeu_si512(at + 128, block.part2);
}

template <class Change>
[[gnu::always_inline]] inline void ChangeBlock(std::uint8_t* at, const Change& change) {
  StoreBlock(at, change(LoadBlock(at)));
}

// Changes a row block by block; the last pixels go through a block aside.
template <class Change>
[[gnu::always_inline]] inline void ChangeRow(std::uint8_t* colour, int width,
                                             const Change& change) {
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes) {
    Prefetch(colour);
    ChangeBlock(colour, change);
  }
  if (width <= 0) return;
  std::uint8_t rest[kBlockBytes] = {};
  const std::size_t bytes = 3 * static_cast<std::size_t>(width);
  __builtin_memcpy(rest, colour, bytes);
  ChangeBlock(rest, change);
  __builtin_memcpy(colour, rest, bytes);
}

}  // namespace
}  // namespace kernels
