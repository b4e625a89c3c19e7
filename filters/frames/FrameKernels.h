// The arithmetic of shadow and light, on plain rows.
//
// Rows and widths as in PointKernels.h. No two rows of a call overlap unless it says so.
#pragma once

#include <cstdint>

#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/Compose.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// Adds a relief, of which 128 is flat, to the colours; or takes it off, which turns the light.
void AddRelief(std::uint8_t* colour, const std::uint8_t* relief, int width, bool isInner);

// What is left of a shadow outside a shape that falls on a picture inside it.
void KeepInside(std::uint8_t* mask, const std::uint8_t* pictureMask, int width);

// Weakens opacity by a density of `percent` percent, both cut as integers; `percent` counts as 50
// to 100. Beyond 100 the low eight bits are kept.
ByteTable BuildAttenuationTable(int density, int percent);

// Three rows of a mask by increasing index, each at the first pixel that is worked on; one more can
// be read on either side.
struct MaskRows3 {
  const std::uint8_t* previous;
  const std::uint8_t* centre;
  const std::uint8_t* next;
};

// What a pass weighs with. Those without weights take no notice.
struct MaskWeights {
  std::int32_t relief[9] = {};  // 4096 is 1; by increasing row and column
  std::int32_t centre = 0;      // 2^18 is 1
  std::int32_t around = 0;      // for each of the eight neighbours
};

// One row of a pass over a mask: writes `count` pixels.
using MaskRowFunction = void (*)(std::uint8_t* to, const MaskRows3& rows, int count,
                                 const MaskWeights& weights);

// The functions of a vector unit, byte for byte alike. No entry is null.
struct FrameKernels {
  decltype(&ComposeRow) compose;
  decltype(&AddRelief) addRelief;
  MaskRowFunction smooth;  // weights 1 2 1 / 2 4 2 / 1 2 1 over 16
  MaskRowFunction relief;  // the weights given, 128 added, limited to 0..255
  MaskRowFunction grow;  // the least of all neighbours and the centre, but for the one at the left
  MaskRowFunction blur;  // four times all nine and the centre, over 37
  MaskRowFunction fraction;  // the weights given

  // For Choose.
  static const FrameKernels& Plain();
  static const FrameKernels& Avx2();
  static const FrameKernels& Avx512();
};

}  // namespace kernels
