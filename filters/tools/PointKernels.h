// The arithmetic of the filters that change each pixel by itself, on plain rows.
//
// A colour row holds 3 bytes a pixel in the order blue, green, red; a mask row holds 1 byte a
// pixel, 0 opaque and 255 nothing there. Every function works in place unless it names a source,
// takes rows at any alignment, does nothing at a width below 1 and may run on any number of
// threads. One pixel is a row of width 1. Percentages are taken as they come: where one lies
// outside 0..100 the exact result keeps its low eight bits, unless a limit is stated.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/Export.h"
#include "filters/tools/ColourConversion.h"

namespace kernels {

// One result for each byte.
using ByteTable = std::array<std::uint8_t, 256>;

// What is added to each channel, -255..255.
struct ColourOffsets {
  int blue = 0;
  int green = 0;
  int red = 0;
};

// Sepia and picture mixed: keep 255 leaves the picture, 0 gives full sepia. Limited to 0..255.
FXBOX_API void Sepia(std::uint8_t* colour, int width, std::uint8_t keep);

// Replaces each byte by its entry. `table` has 256 entries and lies outside the row.
FXBOX_API void MapBytes(std::uint8_t* bytes, std::size_t count, const std::uint8_t* table);

// The negative mixed in: 0 percent leaves a byte, 100 inverts it.
FXBOX_API ByteTable BuildInvertTable(int percent);

// For mask bytes: keep 255 leaves the mask, 0 makes everything transparent.
FXBOX_API ByteTable BuildTransparencyTable(std::uint8_t keep);

// Grey mixed in: 0 percent leaves the picture, 100 gives grey.
FXBOX_API void BlackWhite(std::uint8_t* colour, int width, int percent);

// The offset of a channel at a percentage of 255, truncated. What lies beyond 255 either way is
// cut: it changes no result of ShiftColours.
FXBOX_API int ColourOffset(int percent);

// Adds the offsets. Limited to 0..255.
FXBOX_API void ShiftColours(std::uint8_t* colour, int width, const ColourOffsets& offsets);

// Two colours that a picture is drawn with: the first in the shadows, the second in the highlights.
struct DuoColours {
  double hue1, lightness1, saturation1;
  double hue2, lightness2, saturation2;
  double share;  // of the drawn picture in the result, 1.0 at 100 percent
};
FXBOX_API DuoColours MakeDuoColours(Colour shadows, Colour highlights, int percent);

// Limited to 0..255.
FXBOX_API void DuoColour(std::uint8_t* colour, int width, const DuoColours& duo);

// How light a picture is, pixels weighted by their opacity; the extremes count every pixel.
struct LightnessStatistics {
  double sum = 0.0;
  double total = 0.0;
  double maximum = 0.0;
  double minimum = 1.0;

  // 0 where nothing is opaque.
  double Mean() const { return total != 0.0 ? sum / total : 0.0; }
};

// Lightness l becomes l * factor + offset.
struct LightnessMap {
  double factor = 1.0;
  double offset = 0.0;
};

// Adds a row. The sums depend on the order of rows in their last bits: start at row 0.
FXBOX_API void AddLightness(const std::uint8_t* colour, const std::uint8_t* mask, int width,
                            LightnessStatistics& statistics);

// The map that brings the mean to `target`, with the spread compressed only as far as keeps the
// extremes between black and white.
FXBOX_API LightnessMap FitLightness(const LightnessStatistics& statistics, double target);

// A colour that a picture takes hue and saturation from.
struct AdoptedColour {
  double hue, saturation;
  LightnessMap map;
  int percent;  // of the coloured picture in the result; 0 copies the source
};

// Writes the coloured source row. A mapped lightness is limited to 0..2, not to 1: the low eight
// bits of what lies above white are kept. The rows are the same or do not overlap.
FXBOX_API void AdoptColour(std::uint8_t* colour, const std::uint8_t* source, int width,
                           const AdoptedColour& adopted);

// The form for a single pixel, which knows no lightness: a plain mix with the colour.
FXBOX_API void MixColour(std::uint8_t* colour, int width, Colour mixed, int percent);

// Fills what is transparent with a colour and makes what is opaque transparent, by a percentage.
FXBOX_API void InvertMask(std::uint8_t* colour, std::uint8_t* mask, int width, Colour fill,
                          int percent);

// Puts a colour of the given transparency behind the picture.
FXBOX_API void PutBackground(std::uint8_t* colour, std::uint8_t* mask, int width, Colour background,
                             int percent);

// The form for a single pixel, whose arithmetic differs. Where a percentage above 100 leaves
// nothing to divide by, the colour stays.
FXBOX_API void PutBackgroundPixel(std::uint8_t* colour, std::uint8_t* mask, Colour background,
                                  int percent);

}  // namespace kernels
