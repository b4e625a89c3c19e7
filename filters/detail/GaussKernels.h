// The row arithmetic of the Gaussian filters, chosen by vector unit.
//
// A blurred value is always its centre plus the weighted mean of the neighbours' deviations from
// it, c + sum(w * ((a + b) - 2c)), the pairs from near to far: a flat area and an even slope stay
// exactly as they are at every kernel. The sums are the same in each lane and in this order on
// every vector unit, so that the bytes are equal.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/detail/FloatImage.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// What the steps work with.
struct GaussNumbers {
  const float* weights;  // for each distance 0..radius
  int radius;
  float threshold;  // sharpening: least deviation that counts; selective: greatest
  float amount;     // sharpening: share of the deviation that is added
};

// The most pixels of a row that are finished at once, and the most of their numbers.
inline constexpr int kMostFinishedPixels = 8 * static_cast<int>(kRowBlock);
// The most rows that are worked on at once.
inline constexpr int kMostRows = 16;
// From this radius on rows are blurred together. A narrow window is done with a row so soon that
// the row should stay in the nearest cache.
inline constexpr int kWideRadius = 5;

// Rows that are blurred along.
struct GaussLines {
  int count;  // 1..kMostRows
  // What is blurred, a byte for each number. Each row has radius * channels numbers ahead of it and
  // behind its last block, and 16 bytes more that may be read.
  const std::uint8_t* bytes[kMostRows];
  // The colours that come next, which are fetched meanwhile.
  const std::uint8_t* next[kMostRows];
};

// How a filter does its work on the rows of an Image. Counts of numbers reach the next whole block
// (FloatImage.h); pixels are exact. No two rows overlap.
template <class Image>
struct GaussSteps {
  using Real = typename Image::Real;

  // What is blurred of a colour row.
  void (*pick)(const std::uint8_t* colour, std::uint8_t* bytes, int pixels);
  // Along the rows: `count` numbers of each. The scratch holds all numbers of kMostRows lines.
  void (*blurLines)(const GaussLines& lines, const GaussNumbers& numbers, Real* scratch,
                    Real* const* blurred, std::size_t count);
  // Across the rows: row i of `rowCount` colour rows from rows[i - radius]..rows[i + radius], from
  // the number `first` of each on, a whole number of blocks. Writes the pixels, truncated and
  // limited to 0..255.
  void (*finish)(std::uint8_t* const* colours, int rowCount, const Real* const* rows,
                 std::size_t first, const GaussNumbers& numbers, int pixels);
};

struct GaussKernelTable {
  GaussSteps<FloatImage> blur;
  // What the blur takes away is added: on all channels, or on the largest one, which the others
  // follow in proportion.
  GaussSteps<FloatImage> sharpen;
  GaussSteps<FloatPlane> sharpenBrightness;
  // Neighbours that differ too much are left out. In double precision: a neighbour more or less
  // changes a pixel by several levels.
  GaussSteps<DoubleImage> selectiveBlur;

  // For Choose.
  static const GaussKernelTable& Plain();
  static const GaussKernelTable& Avx2();
  static const GaussKernelTable& Avx512();
};

}  // namespace kernels
