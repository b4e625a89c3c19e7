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
        numbers(std::make_unique_for_overwrite<Real[]>(pitch * static_cast<std::size_t>(height))) {}

  Real* Row(int y) { return numbers.get() + pitch * static_cast<std::size_t>(y); }

 private:
  // An odd number of cache lines, so that the numbers of a column spread over the whole cache.
  static std::size_t RowPitch(std::size_t count) {
    constexpr std::size_t kLine = 64 / sizeof(Real);
    return (WholeRowBlocks(count) / kLine | 1) * kLine;
  }

  std::size_t pitch;
  std::unique_ptr<Real[]> numbers;
};

using FloatImage = RealRows<float, 3>;
using FloatPlane = RealRows<float, 1>;
using DoubleImage = RealRows<double, 3>;

}  // namespace kernels
