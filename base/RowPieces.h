// Rows that are worked on piece by piece, while the memory fetches the piece that comes next.
#pragma once

#include <wtypes.h>

#include <algorithm>
#include <cstddef>

#include "base/Export.h"
#include "base/Prefetch.h"
#include "base/Rows.h"

namespace base {

// A row of a picture on its way into a row of another one. Null where nobody wants a plane, or
// where the row is changed in place and nothing is read.
struct RowWay {
  const BYTE* colour = nullptr;
  const BYTE* mask = nullptr;
  BYTE* toColour = nullptr;
  BYTE* toMask = nullptr;

  RowWay From(int x) const {
    return {Skip(colour, ColourOffset(x)), Skip(mask, x), Skip(toColour, ColourOffset(x)),
            Skip(toMask, x)};
  }

  // Asks for the first pixels.
  void Announce(int width) const {
    AnnouncePlane<kForReading>(colour, ColourBytes(width));
    AnnouncePlane<kForReading>(mask, static_cast<std::size_t>(width));
    AnnouncePlane<kForWriting>(toColour, ColourBytes(width));
    AnnouncePlane<kForWriting>(toMask, static_cast<std::size_t>(width));
  }

 private:
  template <class Byte>
  static Byte* Skip(Byte* at, std::ptrdiff_t bytes) {
    return at ? at + bytes : nullptr;
  }
  template <int kUse>
  static void AnnouncePlane(const BYTE* at, std::size_t bytes) {
    if (at) base::Announce<kUse>(at, bytes);
  }
};

// Copies a part of a row by the library's memcpy, which knows the processor. Of a call for a few
// hundred bytes, compilers make a loop of their own that is slower.
FXBOX_API void CopyBytes(BYTE* to, const BYTE* from, std::size_t bytes);

// Of so many pixels both planes, read and written, are 48 cache lines, which is what a processor
// fetches at a time.
inline constexpr int kPiecePixels = 384;

// Calls work(piece, width) for the pieces of a row, from the first on. Processors foresee long rows
// that are read, but hardly what is written, and not that the rows of a picture go down; so each
// piece is asked for ahead of its work, and at the end the front of the row that comes next.
template <class Work>
void ForPieces(const RowWay& row, int width, const RowWay& next, const Work& work) {
  for (int x = 0; x < width; x += kPiecePixels) {
    const int left = width - x;
    if (left > kPiecePixels) {
      row.From(x + kPiecePixels).Announce(std::min(kPiecePixels, left - kPiecePixels));
    } else {
      next.Announce(std::min(kPiecePixels, width));
    }
    work(row.From(x), std::min(kPiecePixels, left));
  }
}

}  // namespace base
