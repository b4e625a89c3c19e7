// The arithmetic of the filters that change each pixel by itself, on plain rows.
//
// A colour row holds 3 bytes a pixel in the order blue, green, red; a mask row holds 1 byte a
// pixel, 0 opaque and 255 nothing there. Every function works in place unless it names a source,
// takes rows at any alignment, does nothing at a width below 1 and may run on any number of
// threads. One pixel is a row of width 1. Percentages are taken as they come: where one lies
// outside 0..100 the exact result keeps its low eight bits, unless a limit is stated.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/ColourConversion.h"
#include "filters/pixels/simd/MaskedRow.h"

namespace kernels {

// What is added to each channel, -255..255.
struct ColourOffsets {
  int blue = 0;
  int green = 0;
  int red = 0;
};

// Sepia and picture mixed: keep 255 leaves the picture, 0 gives full sepia. Limited to 0..255.
void Sepia(std::uint8_t* colour, int width, std::uint8_t keep);

// The negative mixed in: 0 percent leaves the bytes, 100 inverts them.
void Invert(std::uint8_t* bytes, std::size_t count, int percent);

// Keep 255 leaves the mask, 0 makes everything transparent.
void Fade(std::uint8_t* mask, std::size_t count, std::uint8_t keep);

// Grey mixed in: 0 percent leaves the picture, 100 gives grey.
void BlackWhite(std::uint8_t* colour, int width, int percent);

// The offset of a channel at a percentage of 255, truncated. What lies beyond 255 either way is
// cut: it changes no result of ShiftColours.
int ColourOffset(int percent);

// Adds the offsets. Limited to 0..255.
void ShiftColours(std::uint8_t* colour, int width, const ColourOffsets& offsets);

// A plain mix with a colour.
void MixColour(std::uint8_t* colour, int width, Colour mixed, int percent);

// Copies nothing where they are the same.
void CopyMaskedRow(const MaskedRow& to, const GivenMaskedRow& from, int width);

// Fills what is transparent with a colour and makes what is opaque transparent, by a percentage.
void InvertMask(const MaskedRow& to, const GivenMaskedRow& from, int width, Colour fill,
                int percent);

// Puts a colour of the given transparency behind the picture.
void PutBackground(const MaskedRow& to, const GivenMaskedRow& from, int width, Colour background,
                   int percent);

// The form for a single pixel, whose arithmetic differs. Where a percentage above 100 leaves
// nothing to divide by, the colour stays.
void PutBackgroundPixel(std::uint8_t* colour, std::uint8_t* mask, Colour background, int percent);

}  // namespace kernels
