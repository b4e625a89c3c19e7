// A row that is changed as it is copied.
#pragma once

#include <wtypes.h>

#include <algorithm>
#include <cstring>

#include "base/Rows.h"

// Copies a row in pieces that stay in the nearest cache, each of which change(colour, mask, width)
// then changes in place. Either target may be null.
template <class Change>
void CopyChanged(const BYTE* colour, const BYTE* mask, BYTE* toColour, BYTE* toMask, int width,
                 const Change& change) {
  constexpr int kPiece = 512;
  BYTE unwantedColour[base::kBytesPerPixel * kPiece];
  BYTE unwantedMask[kPiece];
  for (int x = 0; x < width; x += kPiece) {
    const int pixels = std::min(kPiece, width - x);
    BYTE* const changedColour = toColour ? toColour + base::ColourOffset(x) : unwantedColour;
    BYTE* const changedMask = toMask ? toMask + x : unwantedMask;
    std::memcpy(changedColour, colour + base::ColourOffset(x), base::ColourBytes(pixels));
    std::memcpy(changedMask, mask + x, static_cast<std::size_t>(pixels));
    change(changedColour, changedMask, pixels);
  }
}
