// The point kernels over vectors of any width, and what the two vector units share of the others.
//
// Sepia and grey mix a number of a pixel with each of its channels. Products take bytes in pairs,
// of which the second factors have a sign.
#pragma once

#include "filters/pixels/MaskMixLoops.h"
#include "filters/pixels/PointKernelLoops.h"
#include "filters/pixels/PointKernelTable.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

// The weights of a pair of bytes: the even one's and the odd one's.
[[gnu::always_inline]] inline Bytes Weights(int even, int odd) {
  return (Bytes)All<Words>(even + odd * 256);
}

// 128 taken off all bytes by turning their top bit: products may then use the whole range of a
// byte.
[[gnu::always_inline]] inline Bytes Centred(Bytes bytes) {
  return bytes ^ All<Bytes>(128);
}

// --- out of pairs (green, blue) and (red, red)

// Of centred bytes. The weights sum to 256: the upper byte is the lightness, centred as well, and
// no sum leaves 16 bits.
[[gnu::always_inline]] inline Words Lightness256(Bytes greenBlue, Bytes redTwice) {
  return MultiplyPairs(Weights(151, 28), greenBlue) + MultiplyPairs(Weights(77, 0), redTwice);
}

// (71 B + 707 G + 222 R) / 1000 = (sum / 8) / 125. The sum needs 18 bits, its eighth 15: the
// multiples of 8 in the weights are divided beforehand, the rest of the sum apart. 33555 / 2^22 is
// close enough to 1 / 125 for any eighth.
[[gnu::always_inline]] inline Words Grey64(Bytes greenBlue, Bytes redTwice) {
  const Words eighths =
      MultiplyPairs(greenBlue, Weights(88, 8)) + MultiplyPairs(redTwice, Weights(27, 0));
  const Words rest =
      MultiplyPairs(greenBlue, Weights(3, 7)) + MultiplyPairs(redTwice, Weights(6, 0));
  return MultiplyHigh(eighths + (rest >> 3), All<Words>(33555));
}

// The weighted shift, and what takes a sum that is 255 x 128 too low to 32768 too low: the limits
// of a lane with sign are then 0 and 65535.
constexpr int SepiaOffset(int shift, int fade) {
  return shift * fade - 128;
}
constexpr int kSepiaShift[] = {-55, -13, 49};

// Eight times a hundredth of the sum of a pair and a rest: 5243 / 2^19 is close enough to 1 / 100
// for sums up to 25500.
[[gnu::always_inline]] inline Words EighthsOfPercent(Bytes pairs, Bytes mix) {
  return MultiplyHigh(MultiplyPairs(pairs, mix), All<Words>(5243));
}

// --- byte by byte

// change(numbers) makes bytes of as many bytes, both in 16-bit lanes; the last ones go through a
// vector aside.
template <class Change>
[[gnu::always_inline]] inline void ChangeBytes(std::uint8_t* bytes, std::size_t count,
                                               const Change& change) {
  const auto changed = [&](Bytes old) __attribute__((always_inline)) {
    const Bytes none = {};
    return Pack(change((Words)UnpackLow(old, none)), change((Words)UnpackHigh(old, none)));
  };
  for (; count >= kVectorBytes; count -= kVectorBytes, bytes += kVectorBytes) {
    __builtin_prefetch(bytes + 3072);
    Store(bytes, changed(Load<Bytes>(bytes)));
  }
  std::uint8_t rest[kVectorBytes] = {};
  __builtin_memcpy(rest, bytes, count);
  Store(rest, changed(Load<Bytes>(rest)));
  __builtin_memcpy(bytes, rest, count);
}

inline void InvertInBlocks(std::uint8_t* bytes, std::size_t count, int percent) {
  if (percent < 0 || percent > 100) return Invert(bytes, count, percent);
  const auto whole = All<Words>(255 * percent);
  const auto share = All<Words>(100 - 2 * percent);  // wraps; the sum comes right
  ChangeBytes(bytes, count, [&](Words byte) { return Hundredths(whole + share * byte); });
}

inline void FadeInBlocks(std::uint8_t* mask, std::size_t count, std::uint8_t keep) {
  const auto kept = All<Words>(keep);
  ChangeBytes(mask, count, [&](Words byte) { return 255 - PartsOf255((255 - byte) * kept); });
}

inline void ShiftColoursLoop(std::uint8_t* colour, int width, const ColourOffsets& offsets) {
  const auto above = [](int offset) { return All<Bytes>(offset > 0 ? offset : 0); };
  const Block raise = Join({above(offsets.blue), above(offsets.green), above(offsets.red)});
  const Block lower = Join({above(-offsets.blue), above(-offsets.green), above(-offsets.red)});
  ChangeRow(
      colour, width, [&](const Block& block) __attribute__((always_inline)) {
        return Block{SubtractLimited(AddLimited(block.part0, raise.part0), lower.part0),
                     SubtractLimited(AddLimited(block.part1, raise.part1), lower.part1),
                     SubtractLimited(AddLimited(block.part2, raise.part2), lower.part2)};
      });
}

}  // namespace
}  // namespace kernels
