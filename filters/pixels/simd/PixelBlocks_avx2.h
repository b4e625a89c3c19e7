// Blocks of 32 pixels of a colour row in AVX2 vectors: taken apart into channels, put together,
// walked along a row.
//
// For files that are compiled for AVX2, which get a copy of their own each.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace kernels {
namespace {

constexpr int kPixels = 32;  // of a block
constexpr std::size_t kBlockBytes = 3 * kPixels;

// One channel of the pixels of a block each.
struct Planes {
  __m256i blue, green, red;
};

// A block as it lies in the row.
struct Block {
  __m256i part0, part1, part2;
};

// One pattern of 16 bytes for both halves of a vector.
struct alignas(16) Pattern {
  std::uint8_t bytes[16];
  operator __m256i() const {
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(bytes)));
  }
};

// Three pieces of 16 bytes hold 16 pixels. Because 3 and 16 have no common divisor, the bytes of
// one channel stand at different places in each piece: blends gather them in one vector, one
// shuffle sorts them.

// Where a piece holds bytes of the channel.
constexpr Pattern Holds(int channel, int piece) {
  Pattern p = {};
  for (int j = 0; j < 16; ++j) {
    p.bytes[j] = static_cast<std::uint8_t>((16 * piece + j) % 3 == channel ? 255 : 0);
  }
  return p;
}

// Where each pixel's byte of the channel lies in its piece.
constexpr Pattern Places(int channel) {
  Pattern p = {};
  for (int i = 0; i < 16; ++i) p.bytes[i] = static_cast<std::uint8_t>((3 * i + channel) % 16);
  return p;
}

// The way back: which pixel has its byte of the channel at each place.
constexpr Pattern Pixels(int channel) {
  Pattern p = {};
  for (int i = 0; i < 16; ++i) p.bytes[(3 * i + channel) % 16] = static_cast<std::uint8_t>(i);
  return p;
}

constexpr Pattern kHolds[3][3] = {{Holds(0, 0), Holds(0, 1), Holds(0, 2)},
                                  {Holds(1, 0), Holds(1, 1), Holds(1, 2)},
                                  {Holds(2, 0), Holds(2, 1), Holds(2, 2)}};
constexpr Pattern kPlaces[] = {Places(0), Places(1), Places(2)};
constexpr Pattern kPixelAt[] = {Pixels(0), Pixels(1), Pixels(2)};

inline __m256i Load(const std::uint8_t* at) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
}

inline void Store(std::uint8_t* at, __m256i v) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), v);
}

[[gnu::always_inline]] inline Planes Split(const Block& block) {
  // Lower halves: the three pieces of the first 16 pixels; upper halves: those of the others.
  const __m256i piece0 = _mm256_permute2x128_si256(block.part0, block.part1, 0x30);
  const __m256i piece1 = _mm256_permute2x128_si256(block.part0, block.part2, 0x21);
  const __m256i piece2 = _mm256_permute2x128_si256(block.part1, block.part2, 0x30);
  const auto plane = [&](int channel) {
    const __m256i two = _mm256_blendv_epi8(piece0, piece1, kHolds[channel][1]);
    return _mm256_shuffle_epi8(_mm256_blendv_epi8(two, piece2, kHolds[channel][2]),
                               kPlaces[channel]);
  };
  return {plane(0), plane(1), plane(2)};
}

[[gnu::always_inline]] inline Block Join(const Planes& planes) {
  const __m256i blue = _mm256_shuffle_epi8(planes.blue, kPixelAt[0]);
  const __m256i green = _mm256_shuffle_epi8(planes.green, kPixelAt[1]);
  const __m256i red = _mm256_shuffle_epi8(planes.red, kPixelAt[2]);
  const auto piece = [&](int number) {
    const __m256i two = _mm256_blendv_epi8(blue, green, kHolds[1][number]);
    return _mm256_blendv_epi8(two, red, kHolds[2][number]);
  };
  const __m256i piece0 = piece(0);
  const __m256i piece1 = piece(1);
  const __m256i piece2 = piece(2);
  return {_mm256_permute2x128_si256(piece0, piece1, 0x20),
          _mm256_permute2x128_si256(piece2, piece0, 0x30),
          _mm256_permute2x128_si256(piece1, piece2, 0x31)};
}

// Fetches what a block further on in the row will need: the processor's own look-ahead stops at
// each page. Behind the row it does no harm. No loop and no call: GCC takes either for one without
// effect.
[[gnu::always_inline]] inline void Prefetch(const std::uint8_t* block) {
  const char* const at = reinterpret_cast<const char*>(block) + 3072;
  _mm_prefetch(at, _MM_HINT_T0);
  _mm_prefetch(at + 64, _MM_HINT_T0);
}

[[gnu::always_inline]] inline Block LoadBlock(const std::uint8_t* at) {
  return {Load(at), Load(at + 32), Load(at + 64)};
}

[[gnu::always_inline]] inline void StoreBlock(std::uint8_t* at, const Block& block) {
  Store(at, block.part0);
  Store(at + 32, block.part1);
  Store(at + 64, block.part2);
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
