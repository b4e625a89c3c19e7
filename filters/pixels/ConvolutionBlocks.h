// The 3 x 3 convolution in blocks of bytes, for any vector unit.
//
// Included by the sibling files, each of which brings a `Unit`: the operations on its vectors.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/ConvolutionRow.h"

namespace kernels {
namespace {

// The bytes that have a weight, two by two, as the units multiply bytes in pairs: bytes of the
// picture without a sign by weights with one, added in 16 bits.
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
template <class Unit>
class WholeShare {
 public:
  using Vector = typename Unit::Vector;

  explicit WholeShare(const Kernel3x3& kernel) {
    int negative = 0;
    for (const std::int8_t change : kernel.change) negative += change < 0 ? -change : 0;
    const int raised = (255 * negative + kernel.per - 1) / kernel.per;
    start = Unit::Words(raised * kernel.per);
    steps = Unit::Words(kernel.steps);
    factor = Unit::Words(kernel.steps * (1 << 13) / kernel.per);
    per = Unit::Words(kernel.per);
    greatestRest = Unit::Words(kernel.per - 1);
    back = Unit::Words(raised * kernel.steps);
  }

  Vector Start() const { return start; }

  [[gnu::always_inline]] Vector operator()(Vector centre, Vector sum) const {
    const Vector low = Unit::MultiplyHigh(Unit::template ShiftLeft<3>(sum), factor);
    const Vector rest = Unit::Subtract(Unit::Multiply(sum, steps), Unit::Multiply(low, per));
    const Vector quotient = Unit::AddOneWhereGreater(low, rest, greatestRest);
    return Unit::Add(centre, Unit::Subtract(quotient, back));
  }

 private:
  Vector start, steps, factor, per, greatestRest, back;
};

// All other strengths, in doubles.
template <class Unit>
class RealShare {
 public:
  using Vector = typename Unit::Vector;

  explicit RealShare(const Kernel3x3& kernel) : share(kernel.share) {}
  Vector Start() const { return Unit::Words(0); }
  [[gnu::always_inline]] Vector operator()(Vector centre, Vector sum) const {
    return Unit::Scale(centre, sum, share, kConvolutionAllowance);
  }

 private:
  double share;
};

// One row, of which `Share` makes the bytes.
template <class Unit, int kPairs, class Share>
class BlockRow {
 public:
  using Vector = typename Unit::Vector;

  BlockRow(const Kernel3x3& kernel, const ConvolutionRows& convolved)
      : rows(convolved), taps(TapsOf(kernel, convolved)), share(kernel) {
    for (int i = 0; i < kPairs; ++i) weights[i] = Unit::Words(taps.weights[i]);
  }

  [[gnu::always_inline]] void Run(std::uint8_t* result, std::ptrdiff_t bytes) const {
    for (std::ptrdiff_t at = 0; at < bytes; at += Unit::kBytes) {
      // The first and the last pixel have neighbours outside the picture.
      const bool isEdge = at == 0 || at + Unit::kBytes > bytes - 3;
      const bool masked = isEdge || (rows.anyNothing && HasNothing(at));
      const Vector block = masked ? Block<true>(at) : Block<false>(at);
      if (at + Unit::kBytes <= bytes) {
        Unit::Store(result + at, block);
      } else {
        Unit::StoreFront(result + at, block, bytes - at);
      }
    }
  }

 private:
  bool HasNothing(std::ptrdiff_t at) const {
    const auto ends = [&](int row) {
      return Unit::Or(Unit::Load(rows.nothing[row] + at - 3),
                      Unit::Load(rows.nothing[row] + at + 3));
    };
    return Unit::IsAny(Unit::Or(Unit::Or(ends(0), ends(1)), ends(2)));
  }

  // A byte that does not count gives way to the one in the centre.
  template <bool kMasked>
  [[gnu::always_inline]] Vector Tap(int i, std::ptrdiff_t at, Vector centre) const {
    const Vector colour = Unit::Load(taps.colour[i] + at);
    if constexpr (!kMasked) return colour;
    return Unit::Choose(colour, centre, Unit::Load(taps.nothing[i] + at));
  }

  template <bool kMasked>
  [[gnu::always_inline]] Vector Block(std::ptrdiff_t at) const {
    const Vector centre = Unit::Load(rows.colour[1] + at);
    Vector low = share.Start();
    Vector high = low;
#pragma GCC unroll 5
    for (int i = 0; i < kPairs; ++i) {
      const Vector first = Tap<kMasked>(2 * i, at, centre);
      const Vector second = Tap<kMasked>(2 * i + 1, at, centre);
      low = Unit::Add(low, Unit::MultiplyPairs(Unit::UnpackLow(first, second), weights[i]));
      high = Unit::Add(high, Unit::MultiplyPairs(Unit::UnpackHigh(first, second), weights[i]));
    }
    const Vector zero = Unit::Words(0);
    return Unit::Pack(share(Unit::UnpackLow(centre, zero), low),
                      share(Unit::UnpackHigh(centre, zero), high));
  }

  const ConvolutionRows& rows;
  const Taps taps;
  const Share share;
  Vector weights[kPairs];
};

template <class Unit, class Share>
void ConvolveBlocks(const Kernel3x3& kernel, const ConvolutionRows& rows, std::uint8_t* result,
                    int width) {
  const std::ptrdiff_t bytes = 3 * static_cast<std::ptrdiff_t>(width);
  const int pairs = TapsOf(kernel, rows).pairs;
  if (pairs <= 2) {
    BlockRow<Unit, 2, Share>(kernel, rows).Run(result, bytes);
  } else if (pairs == 3) {
    BlockRow<Unit, 3, Share>(kernel, rows).Run(result, bytes);
  } else {
    BlockRow<Unit, Taps::kMostPairs, Share>(kernel, rows).Run(result, bytes);
  }
}

template <class Unit>
void ConvolveBlocks(const Kernel3x3& kernel, const ConvolutionRows& rows, std::uint8_t* result,
                    int width) {
  if (kernel.steps >= 0) {
    ConvolveBlocks<Unit, WholeShare<Unit>>(kernel, rows, result, width);
  } else {
    ConvolveBlocks<Unit, RealShare<Unit>>(kernel, rows, result, width);
  }
}

}  // namespace
}  // namespace kernels
