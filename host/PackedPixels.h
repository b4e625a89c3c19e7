// Pictures in the memory of others: interleaved pixels, top row first, as most programs hold them.
#pragma once

#include <wtypes.h>

#include <cstddef>

#include "base/Export.h"
#include "host/Sizes.h"
#include "imageio/ImageFile.h"

namespace host {

// Bytes of a pixel: red, green, blue, and with 4 channels alpha (255 is opaque). `step` leads from
// a row to the one below and may be negative.
template <class Byte>
struct PackedRows {
  Byte* top = nullptr;
  std::ptrdiff_t step = 0;
  Size size;
  int channels = 3;

  Byte* Row(int fromTop) const { return top + step * fromTop; }
};

// Fills rows of the pipeline with the picture. Without alpha everything is opaque. `rows.mask` may
// be null. False when `progress` stopped it.
FXBOX_API bool Unpack(const PackedRows<const BYTE>& from, const imageio::Rows& rows,
                      const imageio::Progress& progress = {});

// The other way; a missing mask is opaque.
FXBOX_API void Pack(const imageio::Rows& rows, const PackedRows<BYTE>& into);

// Exchanges red and blue in place.
FXBOX_API void SwapRedAndBlue(BYTE* row, int width);

// Whether every mask byte says so.
FXBOX_API bool IsOpaque(const imageio::Rows& rows, Size size);

}  // namespace host
