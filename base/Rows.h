// The picture data that travels through the pipeline: row arrays of colour and mask.
#pragma once

#include <wtypes.h>

#include <cstddef>

namespace base {

// A colour row holds 3 bytes a pixel in the order blue, green, red; a mask row 1 byte a pixel, 0
// fully opaque, 255 nothing there. Row 0 is the bottom row of the picture.
inline constexpr int kBytesPerPixel = 3;
inline constexpr int kBlue = 0;
inline constexpr int kGreen = 1;
inline constexpr int kRed = 2;
inline constexpr BYTE kOpaque = 0;
inline constexpr BYTE kNothing = 255;

// Byte offset of a pixel in a colour row.
constexpr std::ptrdiff_t ColourOffset(int x) {
  return static_cast<std::ptrdiff_t>(x) * kBytesPerPixel;
}

// Number of colour bytes of a run of pixels.
constexpr std::size_t ColourBytes(int width) {
  return width > 0 ? static_cast<std::size_t>(width) * kBytesPerPixel : 0;
}

}  // namespace base
