#include "filters/pixels/resampling/Resampling.h"

#include <cstring>

#include "base/Workers.h"

namespace kernels {
namespace {

// A row is compared with itself, moved by a byte: equal throughout means that all bytes are those
// of the first.
bool IsOpaqueRow(const std::uint8_t* mask, int width) {
  return mask[0] == 0 && std::memcmp(mask, mask + 1, static_cast<std::size_t>(width) - 1) == 0;
}

// After an abort it may be false.
bool IsOpaque(const base::RowView& picture, const std::atomic<bool>& abort) {
  const int least = base::RowsPerBand(picture.width, 1 << 19);
  return base::ForEachBand(picture.height, least, [&](int first, int end) {
    while (first < end && !abort && IsOpaqueRow(picture.mask[first], picture.width)) ++first;
    return first == end;
  });
}

bool IsEnlargement(double ratioX, double ratioY) {
  return ratioX > 1.0 || ratioY > 1.0;
}

}  // namespace

bool CanEnlarge(int width, double ratioX, double ratioY) {
  return width >= kLeastEnlargedWidth && IsEnlargement(ratioX, ratioY);
}

bool Resample(const base::RowView& from, const base::WritableRows& to, const Resampling& how,
              const std::atomic<bool>& abort) {
  const bool opaque = IsOpaque(from, abort);
  if (IsEnlargement(how.ratioX, how.ratioY)) return Enlarge(from, to, opaque, abort);
  return Reduce(from, to, how, opaque, abort);
}

}  // namespace kernels
