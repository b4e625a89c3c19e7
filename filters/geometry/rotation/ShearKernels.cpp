#include "filters/geometry/rotation/ShearKernels.h"

#include "filters/geometry/rotation/ShearKernelLoops.h"

namespace kernels {

Quad BlendQuads(Quad previous, Quad current, PixelPart part) {
  const int maskP = static_cast<int>(previous >> kMaskShift);
  const int maskC = static_cast<int>(current >> kMaskShift);
  const int weightP = (255 - maskP) * (16384 - part.of16384);
  const int weightC = (255 - maskC) * part.of16384;
  const int whole = weightP + weightC;
  const int mask = maskP + (((maskC - maskP) * part.of16384 + 8192) >> 14);
  if (whole == 0 || mask == 255) return kNothing;

  Quad result = static_cast<Quad>(mask) << kMaskShift;
  for (int shift = 0; shift < kMaskShift; shift += 8) {
    const int p = static_cast<int>(previous >> shift & 255);
    const int c = static_cast<int>(current >> shift & 255);
    const int between =
        maskP == maskC ? p + ((c - p) * part.of32 + 16) / 32 : (p * weightP + c * weightC) / whole;
    result |= static_cast<Quad>(between) << shift;
  }
  return result;
}

void JoinQuads(const std::uint8_t* colour, const std::uint8_t* mask, Quad* quads, int count) {
  for (int i = 0; i < count; ++i, colour += 3) {
    quads[i] = colour[0] | static_cast<Quad>(colour[1]) << 8 | static_cast<Quad>(colour[2]) << 16 |
               static_cast<Quad>(mask[i]) << kMaskShift;
  }
}

void SplitQuads(const Quad* quads, std::uint8_t* colour, std::uint8_t* mask, int count) {
  for (int i = 0; i < count; ++i, colour += 3) {
    colour[0] = static_cast<std::uint8_t>(quads[i]);
    colour[1] = static_cast<std::uint8_t>(quads[i] >> 8);
    colour[2] = static_cast<std::uint8_t>(quads[i] >> 16);
    mask[i] = static_cast<std::uint8_t>(quads[i] >> kMaskShift);
  }
}

void TransposeQuads(const Quad* from, std::ptrdiff_t fromStride, Quad* to, std::ptrdiff_t toStride,
                    int width, int height) {
  for (int x = 0; x < width; ++x, to += toStride) {
    const Quad* at = from + x;
    for (int y = 0; y < height; ++y, at += fromStride) to[y] = *at;
  }
}

const ShearKernelTable& ShearKernelTable::Plain() {
  static constexpr ShearKernelTable kPlain = {JoinQuads, SplitQuads, TransposeQuads, BlendSame,
                                              BlendEach};
  return kPlain;
}

}  // namespace kernels
