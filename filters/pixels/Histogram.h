// Histograms of rows, the limits that they suggest, and the ramp between two limits.
#pragma once

#include <array>
#include <cstdint>

#include "filters/pixels/ByteTableKernels.h"

namespace kernels {

// How often each level occurs. A counter wraps at 32 bits.
using Histogram = std::array<std::uint32_t, 256>;

// Counts rows. Neighbours of one level go to different tables, as each count would have to wait for
// the one before it.
class LevelCounter {
 public:
  // Every `stride`-th byte, `count` of them.
  void Add(const std::uint8_t* levels, int count, int stride = 1);
  // (151 G + 77 R + 28 B) / 256 of the pixels of a colour row.
  void AddLuminance(const std::uint8_t* colour, int width);
  // One channel of a colour row: base::kBlue, kGreen or kRed.
  void AddChannel(const std::uint8_t* colour, int width, int channel);

  // Takes what another one has counted.
  LevelCounter& operator+=(const LevelCounter& other);

  Histogram Total() const;

 private:
  static constexpr int kTables = 4;
  std::uint32_t tables_[kTables][256] = {};
};

// The levels that the range of a picture begins and ends with.
struct Limits {
  int low = 0;
  int high = 255;
};

// Leaves out `threshold` counts at either end: the limits are the levels next to those left out.
// Threshold 0 gives 0 and 255. Where one level holds nearly all counts the low limit lies above the
// high one. A threshold beyond all counts stops at the end of the table.
Limits FindLimits(const Histogram& histogram, std::uint64_t threshold);

// Half a percent of the pixels of a rectangle, the share that is left out.
std::uint64_t LimitThreshold(int width, int height);

// 0 up to `low`, 255 from `high` on, straight between; where the limits cross, `high` wins. Any
// limits: an entry keeps its low eight bits.
ByteTable BuildRamp(int low, int high);

}  // namespace kernels
