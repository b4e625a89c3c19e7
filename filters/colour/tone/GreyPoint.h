// Grey point: the tables that turn a picked colour into a neutral grey.
#pragma once

#include "filters/pixels/Histogram.h"

namespace kernels {

// A picked colour, as it comes from outside: any numbers.
struct GreyPoint {
  int blue = 255, green = 255, red = 255;
};

// One limit pair a channel.
struct ChannelLimits {
  Limits blue, green, red;
};

// 32-bit results, of which a pixel takes the low eight bits.
struct GreyTable {
  std::array<std::int32_t, 256> entries;
};
struct GreyTables {
  GreyTable blue, green, red;
};

// Two straight pieces that bend at the picked level and lead it to the median of the three.
GreyTables BuildLinearGrey(const GreyPoint& grey);

// Gammas that lead the picked colour, scaled so that its median becomes 128, to 128.
GreyTables BuildCurvedGrey(const GreyPoint& grey);

// The same between limits, which are widened to 10 levels at least. The picked colour goes through
// the ramps of the limits first.
GreyTables BuildCurvedGrey(const GreyPoint& grey, const ChannelLimits& limits);

// What becomes of a byte when the table's entry has a share of `percent` and the byte the rest. Low
// eight bits.
ByteTable MixWithLevels(const GreyTable& table, int percent);

}  // namespace kernels
