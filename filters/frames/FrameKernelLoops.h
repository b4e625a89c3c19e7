// Loops of the frame kernels that the compiler widens by itself: every file that includes this has
// a copy of its own, compiled for the processors of that file.
#pragma once

#include "filters/frames/FrameKernels.h"
#include "filters/pixels/PointKernelLoops.h"

namespace kernels {
namespace {

using Word = std::uint16_t;

inline void AddReliefLoop(std::uint8_t* colour, const std::uint8_t* relief, int width,
                          bool isInner) {
  const std::uint8_t turn = isInner ? 255 : 0;
  for (; width >= kMixedPixels; width -= kMixedPixels) {
    std::uint8_t spread[kMixedBytes];
    SpreadMasks(spread, relief);
    for (int i = 0; i < kMixedBytes; ++i) {
      const int added = (spread[i] ^ turn) - (turn ? 127 : 128);
      const int sum = colour[i] + added;
      colour[i] = static_cast<std::uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
    }
    colour += kMixedBytes;
    relief += kMixedPixels;
  }
  AddRelief(colour, relief, width, isInner);
}

// The sum of a column of three.
inline Word Column(const MaskRows3& rows, int x) {
  return static_cast<Word>(rows.previous[x] + rows.centre[x] + rows.next[x]);
}

// (4 x the sum of nine + the centre) / 37. 28340 / 2^20 is close enough to 1 / 37 for all such
// sums.
inline std::uint8_t Blurred(int columns, std::uint8_t centre) {
  const auto sum = static_cast<Word>(columns * 4 + centre);
  return static_cast<std::uint8_t>(static_cast<Word>(sum * 28340u >> 16) >> 4);
}

inline std::uint8_t Least(std::uint8_t a, std::uint8_t b) {
  return a < b ? a : b;
}

inline void SmoothLoop(std::uint8_t* __restrict to, const MaskRows3& rows, int count,
                       const MaskWeights&) {
  const auto column = [&rows](int x) {
    return static_cast<Word>(rows.previous[x] + 2 * rows.centre[x] + rows.next[x]);
  };
  for (int x = 0; x < count; ++x) {
    to[x] = static_cast<std::uint8_t>(
        static_cast<Word>(column(x - 1) + 2 * column(x) + column(x + 1)) >> 4);
  }
}

inline void GrowLoop(std::uint8_t* __restrict to, const MaskRows3& rows, int count,
                     const MaskWeights&) {
  const auto column = [&rows](int x) { return Least(rows.previous[x], rows.next[x]); };
  for (int x = 0; x < count; ++x) {
    const std::uint8_t beside = Least(Least(column(x - 1), column(x)), column(x + 1));
    to[x] = Least(beside, Least(rows.centre[x], rows.centre[x + 1]));
  }
}

inline void BlurLoop(std::uint8_t* __restrict to, const MaskRows3& rows, int count,
                     const MaskWeights&) {
  for (int x = 0; x < count; ++x) {
    to[x] = Blurred(static_cast<Word>(Column(rows, x - 1) + Column(rows, x) + Column(rows, x + 1)),
                    rows.centre[x]);
  }
}

inline void FractionLoop(std::uint8_t* __restrict to, const MaskRows3& rows, int count,
                         const MaskWeights& weights) {
  const std::int32_t centre = weights.centre;
  const std::int32_t around = weights.around;
  for (int x = 0; x < count; ++x) {
    const int all = Column(rows, x - 1) + Column(rows, x) + Column(rows, x + 1);
    to[x] = static_cast<std::uint8_t>((rows.centre[x] * centre + (all - rows.centre[x]) * around) >>
                                      18);
  }
}

template <class Sum>
inline void ReliefRow(std::uint8_t* __restrict to, const MaskRows3& rows, int count,
                      const std::int32_t (&weights)[9]) {
  Sum w[9];
  for (int i = 0; i < 9; ++i) w[i] = weights[i];
  for (int x = 0; x < count; ++x) {
    Sum sum = 0;
    for (int i = 0; i < 3; ++i) {
      sum += w[i] * rows.previous[x + i - 1] + w[3 + i] * rows.centre[x + i - 1] +
             w[6 + i] * rows.next[x + i - 1];
    }
    const Sum value = sum / 4096 + 128;
    to[x] = static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
  }
}

inline void ReliefLoop(std::uint8_t* __restrict to, const MaskRows3& rows, int count,
                       const MaskWeights& weights) {
  // Nine times 2^19 times 255 stays below 2^31.
  constexpr std::int32_t kFits = 1 << 19;
  bool fits = true;
  for (const std::int32_t weight : weights.relief) fits &= weight >= -kFits && weight <= kFits;
  if (fits) {
    ReliefRow<std::int32_t>(to, rows, count, weights.relief);
  } else {
    ReliefRow<std::int64_t>(to, rows, count, weights.relief);
  }
}

}  // namespace
}  // namespace kernels
