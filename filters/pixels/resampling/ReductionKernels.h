// Sums over the windows of one row of a reduced picture, and the sharpening that follows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/simd/Simd.h"

namespace kernels {

// A run of neighbouring source pixels in a window.
struct ReductionRun {
  std::int32_t first;   // source pixel
  std::int32_t taps;    // at most kMostTaps, and none below 1
  std::size_t weights;  // place of the first tap's weight in a row of weights
};
// So many taps of a row, and of a window, have sums below 2^32.
inline constexpr int kMostTaps = 256;
// A run's weights are followed by zeros up to a multiple of this.
inline constexpr int kWeightBlock = 16;

// Source rows under the windows, and their weights.
struct ReductionRows {
  const std::uint8_t* const* colour;
  const std::uint8_t* const* mask;  // not read for opaque pictures
  int count;
  const std::uint16_t* weights;  // of the first row
  std::size_t weightStride;      // from one row's weights to the next row's
  int ahead = 0;                 // so many more rows are there, which come next and may be fetched
};

// Sums of byte x weight by channel, and of the weights, over the taps whose colours count: those
// whose mask is not 255.
struct ColourSums {
  std::uint32_t channel[3];
  std::uint32_t weight;
};

// How a reduced picture is sharpened: weights of a byte and of its four neighbours, in 65536ths.
struct SharpenWeights {
  std::int64_t centre, cross;
};

// Rows around the one that is sharpened, padded: pixel -1 and pixel `width` may be read.
struct SharpenRows {
  const std::uint8_t *above, *centre, *below;              // colour
  const std::uint8_t *maskAbove, *maskCentre, *maskBelow;  // three bytes a pixel; not read for
                                                           // opaque pictures
};

// Functions with the same results at every level, byte for byte. No entry is null.
struct ReductionKernels {
  // One sum for each of `count` runs. The rows are `width` pixels long. In at most 128 rows there
  // are at most kMostTaps taps under each run.
  void (*sumColours)(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                     ColourSums* sums);
  // The same for a picture with a mask. Opacities are (255 - mask) x weight over all taps.
  void (*sumMasked)(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                    ColourSums* sums, std::uint32_t* opacities);
  // Each channel of `count` pixels: (sum + weight / 2) / weight, and 0 where there is no weight.
  void (*divide)(std::uint8_t* colour, const ColourSums* sums, int count);
  // `bytes` bytes of a row, three a pixel. Neighbours whose mask is 255 are replaced by the byte
  // itself, and bytes whose own mask is 255 stay.
  void (*sharpen)(std::uint8_t* to, int bytes, const SharpenRows& rows, SharpenWeights weights);
  void (*sharpenMasked)(std::uint8_t* to, int bytes, const SharpenRows& rows,
                        SharpenWeights weights);

  // For Choose.
  static const ReductionKernels& Plain();
  static const ReductionKernels& Avx2();
  static const ReductionKernels& Avx512();
};

}  // namespace kernels
