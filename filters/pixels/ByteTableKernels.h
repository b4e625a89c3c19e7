// Bytes through tables: one table for all bytes of a row, or one for each channel.
//
// Rows and widths as in PointKernels.h. The two rows are the same or do not overlap; a table lies
// outside both.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/ByteTable.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

using base::ByteTable;

struct ChannelTables {
  ByteTable blue, green, red;
};

// Replaces each byte by its entry.
void MapBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
              const ByteTable& table);

// Replaces each byte by its entry in the table of its channel.
void MapChannels(std::uint8_t* to, const std::uint8_t* from, int width,
                 const ChannelTables& tables);

// The same functions, byte for byte, at the speed of a vector unit.
struct ByteTableKernels {
  void (*mapBytes)(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                   const ByteTable& table);
  void (*mapChannels)(std::uint8_t* to, const std::uint8_t* from, int width,
                      const ChannelTables& tables);

  // For Choose.
  static const ByteTableKernels& Plain();
  static const ByteTableKernels& Avx2();
  static const ByteTableKernels& Avx512();
};

}  // namespace kernels
