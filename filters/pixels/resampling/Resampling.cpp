#include "filters/pixels/resampling/Resampling.h"

#include <cstring>

namespace kernels {
namespace {

// A row is compared with itself, moved by a byte: equal throughout means that all bytes are those
// of the first.
bool IsOpaque(const Raster& picture) {
  const auto rest = static_cast<std::size_t>(picture.width) - 1;
  for (int y = 0; y < picture.height; ++y) {
    const std::uint8_t* const mask = picture.mask[y];
    if (mask[0] != 0 || std::memcmp(mask, mask + 1, rest) != 0) return false;
  }
  return true;
}

}  // namespace

bool Resample(const Raster& from, const Raster& to, const Resampling& how,
              const std::atomic<bool>& abort) {
  const bool opaque = IsOpaque(from);
  if (how.ratioX > 1.0 || how.ratioY > 1.0) return Enlarge(from, to, opaque, abort);
  return Reduce(from, to, how, opaque, abort);
}

}  // namespace kernels
