// A picture as the screen shows it: reduced or enlarged, over squares where nothing is there.
#pragma once

#include <cstddef>
#include <cstdint>

#include "toolkit/Painter.h"

namespace toolkit {

// The part of `place` that lies in a canvas of this size, counted from the corner of `place`.
Rect SeenPart(const Rect& place, Size area);

// Renders the part `seen` of a picture that is shown in the size `shown`. Pixels are 32 bits,
// 0x00RRGGBB, the top row first, `stride` bytes from row to row. A shown pixel is the mean of those
// that it covers, or when enlarged the one that it lies in.
void RenderShown(const PictureRows& picture, Size shown, const Rect& seen, void* pixels,
                 std::ptrdiff_t stride);

}  // namespace toolkit
