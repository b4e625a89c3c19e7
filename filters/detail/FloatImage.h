// Pictures of floating point: FloatImage with the three channels of each pixel, FloatPlane with
// one, DoubleImage in double precision.
#pragma once

#include <cstddef>
#include <memory>

namespace kernels {

// Loops over a row run in blocks of this many numbers, whatever the vector unit: a row may be read
// and written up to the next whole block.
inline constexpr std::size_t kRowBlock = 48;

constexpr std::size_t WholeRowBlocks(std::size_t count) {
  return (count + kRowBlock - 1) / kRowBlock * kRowBlock;
}

// One block of memory with the channels of a pixel side by side. It holds nothing until it is
// written, so that a large one costs nothing ahead. The constructor throws when there is no memory.
template <class RealType, int channelCount>
class RealRows {
 public:
  using Real = RealType;
  static constexpr int kChannels = channelCount;

  RealRows(int width, int height)
      : pitch(RowPitch(static_cast<std::size_t>(width) * kChannels)),
        lines(std::make_unique_for_overwrite<Line[]>(pitch * static_cast<std::size_t>(height))) {}

  Real* Row(int y) { return lines[pitch * static_cast<std::size_t>(y)].numbers; }

 private:
  // Of the cache. Vectors that begin with one cross none.
  static constexpr std::size_t kLineNumbers = 64 / sizeof(Real);
  struct alignas(64) Line {
    Real numbers[kLineNumbers];
  };

  // In lines: an odd number, so that the numbers of a column spread over the whole cache.
  static std::size_t RowPitch(std::size_t count) {
    return WholeRowBlocks(count) / kLineNumbers | 1;
  }

  std::size_t pitch;
  std::unique_ptr<Line[]> lines;
};

using FloatImage = RealRows<float, 3>;
using FloatPlane = RealRows<float, 1>;
using DoubleImage = RealRows<double, 3>;

}  // namespace kernels
