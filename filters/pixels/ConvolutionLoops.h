// The 3 x 3 convolution over vectors of any width.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/ConvolutionRow.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

// The bytes that have a weight, two by two, as vectors are multiplied: bytes of the picture without
// a sign by weights with one, added in 16 bits.
struct Taps {
  static constexpr int kMostPairs = 5;

  const std::uint8_t* colour[2 * kMostPairs];
  const std::uint8_t* nothing[2 * kMostPairs];
  int weights[kMostPairs];  // the first of a pair in the lower byte, the second in the upper
  int pairs;
};

inline Taps TapsOf(const Kernel3x3& kernel, const ConvolutionRows& rows) {
  Taps taps = {};
  int count = 0;
  for (int i = 0; i < 9; ++i) {
    if (kernel.change[i] == 0) continue;
    const int offset = 3 * (i % 3 - 1);
    taps.colour[count] = rows.colour[i / 3] + offset;
    taps.nothing[count] = rows.nothing[i / 3] + offset;
    const int weight = kernel.change[i] & 255;
    taps.weights[count / 2] |= count % 2 ? weight << 8 : weight;
    ++count;
  }
  taps.pairs = (count + 1) / 2;
  for (; count < 2 * Taps::kMostPairs; ++count) {  // without weight
    taps.colour[count] = rows.colour[1];
    taps.nothing[count] = rows.nothing[1];
  }
  return taps;
}

// Whole strengths, in 16 bits. The sum S is raised by a multiple of `per`, so that it is not
// negative; it stays below 2^13. With the factor F = steps * 2^13 / per, truncated, S * F / 2^13 is
// too low by less than S / 2^13, that is by less than 1, and truncated it is the quotient
// S * steps / per or one less: the rest tells which.
class WholeShare {
 public:
  explicit WholeShare(const Kernel3x3& kernel) {
    int negative = 0;
    for (const std::int8_t change : kernel.change) negative += change < 0 ? -change : 0;
    const int raised = (255 * negative + kernel.per - 1) / kernel.per;
    start = All<Words>(raised * kernel.per);
    steps = All<Words>(kernel.steps);
    factor = All<Words>(kernel.steps * (1 << 13) / kernel.per);
    per = All<Words>(kernel.per);
    greatestRest = All<Shorts>(kernel.per - 1);
    back = All<Words>(raised * kernel.steps);
  }

  Words Start() const { return start; }

  [[gnu::always_inline]] Words operator()(Words centre, Words sum) const {
    const Words low = MultiplyHigh(sum << 3, factor);
    const Words rest = sum * steps - low * per;
    const Words quotient = AddOneWhereLess(low, greatestRest, (Shorts)rest);
    return centre + (quotient - back);
  }

 private:
  Words start, steps, factor, per, back;
  Shorts greatestRest;
};

// All other strengths, in doubles.
class RealShare {
 public:
  explicit RealShare(const Kernel3x3& kernel) : share(kernel.share) {}
  Words Start() const { return Words{}; }
  [[gnu::always_inline]] Words operator()(Words centre, Words sum) const {
    return ChangeAsDoubles(
        (Shorts)centre, (Shorts)sum, [this](Doubles c, Doubles s) __attribute__((always_inline)) {
          const Doubles value = c + share * s + kConvolutionAllowance;
          return Min(Max(value, Doubles{}), All<Doubles>(255));
        });
  }

 private:
  double share;
};

// One row, of which `Share` makes the bytes.
template <int kPairs, class Share>
class BlockRow {
 public:
  BlockRow(const Kernel3x3& kernel, const ConvolutionRows& convolved)
      : rows(convolved), taps(TapsOf(kernel, convolved)), share(kernel) {
    for (int i = 0; i < kPairs; ++i) weights[i] = (Bytes)All<Words>(taps.weights[i]);
  }

  [[gnu::always_inline]] void Run(std::uint8_t* result, std::ptrdiff_t bytes) const {
    for (std::ptrdiff_t at = 0; at < bytes; at += kVectorBytes) {
      AnnounceAhead(at);
      // The first and the last pixel have neighbours outside the picture.
      const bool isEdge = at == 0 || at + kVectorBytes > bytes - 3;
      const bool masked = isEdge || (rows.anyNothing && HasNothing(at));
      const Bytes block = masked ? Block<true>(at) : Block<false>(at);
      if (at + kVectorBytes <= bytes) {
        Store(result + at, block);
      } else {
        StoreFront(result + at, block, bytes - at);
      }
    }
  }

 private:
  [[gnu::always_inline]] void AnnounceAhead(std::ptrdiff_t at) const {
    __builtin_prefetch(rows.ahead.colour + at);
    __builtin_prefetch(rows.ahead.mask + at / 3);
    __builtin_prefetch(rows.ahead.toColour + at, 1);
    __builtin_prefetch(rows.ahead.toMask + at / 3, 1);
  }

  bool HasNothing(std::ptrdiff_t at) const {
    const auto ends = [&](int row) {
      return Load<Bytes>(rows.nothing[row] + at - 3) | Load<Bytes>(rows.nothing[row] + at + 3);
    };
    return IsAny(ends(0) | ends(1) | ends(2));
  }

  // A byte that does not count gives way to the one in the centre.
  template <bool kMasked>
  [[gnu::always_inline]] Bytes Tap(int i, std::ptrdiff_t at, Bytes centre) const {
    const auto colour = Load<Bytes>(taps.colour[i] + at);
    if constexpr (!kMasked) return colour;
    return Where(Load<Bytes>(taps.nothing[i] + at), centre, colour);
  }

  template <bool kMasked>
  [[gnu::always_inline]] Bytes Block(std::ptrdiff_t at) const {
    const auto centre = Load<Bytes>(rows.colour[1] + at);
    Words low = share.Start();
    Words high = low;
#pragma GCC unroll 5
    for (int i = 0; i < kPairs; ++i) {
      const Bytes first = Tap<kMasked>(2 * i, at, centre);
      const Bytes second = Tap<kMasked>(2 * i + 1, at, centre);
      low += MultiplyPairs(UnpackLow(first, second), weights[i]);
      high += MultiplyPairs(UnpackHigh(first, second), weights[i]);
    }
    return Pack(share((Words)UnpackLow(centre, Bytes{}), low),
                share((Words)UnpackHigh(centre, Bytes{}), high));
  }

  const ConvolutionRows& rows;
  const Taps taps;
  const Share share;
  Bytes weights[kPairs];
};

template <class Share>
void ConvolveBlocks(const Kernel3x3& kernel, const ConvolutionRows& rows, std::uint8_t* result,
                    int width) {
  const std::ptrdiff_t bytes = 3 * static_cast<std::ptrdiff_t>(width);
  const int pairs = TapsOf(kernel, rows).pairs;
  if (pairs <= 2) {
    BlockRow<2, Share>(kernel, rows).Run(result, bytes);
  } else if (pairs == 3) {
    BlockRow<3, Share>(kernel, rows).Run(result, bytes);
  } else {
    BlockRow<Taps::kMostPairs, Share>(kernel, rows).Run(result, bytes);
  }
}

inline void ConvolveLoop(const Kernel3x3& kernel, const ConvolutionRows& rows, std::uint8_t* result,
                         int width) {
  if (kernel.steps >= 0) {
    ConvolveBlocks<WholeShare>(kernel, rows, result, width);
  } else {
    ConvolveBlocks<RealShare>(kernel, rows, result, width);
  }
}

inline void SpreadNothingLoop(std::uint8_t* nothing, const std::uint8_t* mask, int width) {
  for (; width >= kPixels; width -= kPixels, nothing += kBlockBytes, mask += kPixels) {
    StoreBlock(nothing, Spread((Bytes)(Load<Bytes>(mask) == 255)));
  }
  ConvolutionKernels::Plain().spreadNothing(nothing, mask, width);
}

constexpr ConvolutionKernels kConvolutionLoops = {ConvolveLoop, SpreadNothingLoop};

}  // namespace
}  // namespace kernels
