#include "filters/pixels/Histogram.h"

#include <algorithm>

#include "base/Arithmetic.h"
#include "base/Rows.h"
#include "filters/pixels/LuminanceKernels.h"

namespace kernels {

void LevelCounter::Add(const std::uint8_t* levels, int count, int stride) {
  int i = 0;
  for (; i + kTables <= count; i += kTables) {
    for (auto& table : tables_) {
      ++table[*levels];
      levels += stride;
    }
  }
  for (; i < count; ++i, levels += stride) ++tables_[0][*levels];
}

void LevelCounter::AddLuminance(const std::uint8_t* colour, int width) {
  constexpr int kPart = 2048;
  std::uint8_t levels[kPart];
  for (; width > 0; width -= kPart, colour += base::ColourOffset(kPart)) {
    const int part = std::min(kPart, width);
    Choose<LuminanceKernelTable>().luminance(levels, colour, part);
    Add(levels, part);
  }
}

void LevelCounter::AddChannel(const std::uint8_t* colour, int width, int channel) {
  Add(colour + channel, width, base::kBytesPerPixel);
}

LevelCounter& LevelCounter::operator+=(const LevelCounter& other) {
  for (int k = 0; k < kTables; ++k) {
    for (int i = 0; i < 256; ++i) tables_[k][i] += other.tables_[k][i];
  }
  return *this;
}

Histogram LevelCounter::Total() const {
  Histogram total = {};
  for (const auto& table : tables_) {
    for (std::size_t i = 0; i < total.size(); ++i) total[i] += table[i];
  }
  return total;
}

Limits FindLimits(const Histogram& histogram, std::uint64_t threshold) {
  Limits limits;
  std::uint64_t sum = 0;
  while (sum < threshold && limits.low < 256) {
    sum += histogram[static_cast<std::size_t>(limits.low++)];
  }
  sum = 0;
  while (sum < threshold && limits.high >= 0) {
    sum += histogram[static_cast<std::size_t>(limits.high--)];
  }
  return {std::min(limits.low, 255), std::max(limits.high, 0)};
}

std::uint64_t LimitThreshold(int width, int height) {
  const auto pixels =
      static_cast<std::uint64_t>(std::int64_t{std::max(width, 0)} * std::max(height, 0));
  return pixels * 5 / 1000;
}

ByteTable BuildRamp(int low, int high) {
  // A table has no entries beyond 0..255, whatever the limits.
  const int firstInside = std::clamp(low, -1, 255) + 1;
  const int firstWhite = std::clamp(high, 0, 256);
  ByteTable ramp = {};
  std::fill(ramp.begin() + firstWhite, ramp.end(), std::uint8_t{255});
  const auto span = static_cast<double>(std::int64_t{high} - low);
  const double slope = static_cast<float>(255.0 / span);
  for (int i = firstInside; i < firstWhite; ++i) {
    const double rise = static_cast<double>(std::int64_t{i} - low) * slope;
    ramp[static_cast<std::size_t>(i)] =
        base::LowByte(std::int64_t{base::TruncateToInt32(rise)} + ramp[0]);
  }
  return ramp;
}

}  // namespace kernels
