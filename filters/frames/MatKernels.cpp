#include "filters/frames/MatKernels.h"

#include <algorithm>
#include <cstring>

#include "base/Arithmetic.h"
#include "base/Rows.h"

namespace kernels {
namespace {

// Shares, products and their sum are of single precision.
ByteTable BuildGlazeTable(std::uint8_t colour, int percent) {
  const auto kept = static_cast<float>(percent / 100.0);
  const float laid = 1.0f - kept;
  const float added = static_cast<float>(colour) * laid;
  ByteTable table;
  for (int c = 0; c < 256; ++c) {
    const float shown = static_cast<float>(c) * kept;
    table[static_cast<std::size_t>(c)] = base::TruncateToByte(shown + added);
  }
  return table;
}

ByteTable BuildTintTable(std::uint8_t colour, int percent) {
  const std::int64_t kept = std::int64_t{percent} * 255 / 100;
  const std::int64_t added = colour * (255 - kept) / 255;
  ByteTable table;
  for (int c = 0; c < 256; ++c) {
    table[static_cast<std::size_t>(c)] = base::LowByte(c * kept / 255 + added);
  }
  return table;
}

}  // namespace

ChannelTables BuildGlazeTables(Colour colour, int percent) {
  return {BuildGlazeTable(colour.blue, percent), BuildGlazeTable(colour.green, percent),
          BuildGlazeTable(colour.red, percent)};
}

ChannelTables BuildTintTables(Colour colour, int percent) {
  return {BuildTintTable(colour.blue, percent), BuildTintTable(colour.green, percent),
          BuildTintTable(colour.red, percent)};
}

void FillColour(std::uint8_t* row, int width, Colour colour) {
  if (width < 1) return;
  row[base::kBlue] = colour.blue;
  row[base::kGreen] = colour.green;
  row[base::kRed] = colour.red;
  // What is filled is copied behind itself, twice as much each time.
  const std::size_t bytes = base::ColourBytes(width);
  for (std::size_t filled = base::kBytesPerPixel; filled < bytes; filled *= 2) {
    std::memcpy(row + filled, row, std::min(filled, bytes - filled));
  }
}

}  // namespace kernels
