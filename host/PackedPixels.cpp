#include "host/PackedPixels.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/Rows.h"

namespace host {
namespace {

using base::kBytesPerPixel;

constexpr BYTE kOpaqueAlpha = 255;

// The channels are constants so that the compiler unrolls the loops.
template <int Channels>
void UnpackRow(const BYTE* from, BYTE* colour, BYTE* mask, int width) {
  for (int x = 0; x < width; ++x, from += Channels, colour += kBytesPerPixel) {
    colour[base::kRed] = from[0];
    colour[base::kGreen] = from[1];
    colour[base::kBlue] = from[2];
    if (Channels == 4 && mask) mask[x] = static_cast<BYTE>(kOpaqueAlpha - from[3]);
  }
  if (Channels == 3 && mask) std::memset(mask, base::kOpaque, static_cast<std::size_t>(width));
}

template <int Channels>
void PackRow(const BYTE* colour, const BYTE* mask, BYTE* into, int width) {
  for (int x = 0; x < width; ++x, into += Channels, colour += kBytesPerPixel) {
    into[0] = colour[base::kRed];
    into[1] = colour[base::kGreen];
    into[2] = colour[base::kBlue];
    if (Channels == 4) into[3] = mask ? static_cast<BYTE>(kOpaqueAlpha - mask[x]) : kOpaqueAlpha;
  }
}

}  // namespace

bool Unpack(const PackedRows<const BYTE>& from, const imageio::Rows& rows,
            const imageio::Progress& progress) {
  const auto unpack = from.channels == 4 ? UnpackRow<4> : UnpackRow<3>;
  const auto [width, height] = from.size;
  for (int y = 0; y < height; ++y) {
    if (progress && !progress(static_cast<double>(y) / height)) return false;
    unpack(from.Row(height - 1 - y), rows.colour[y], rows.mask ? rows.mask[y] : nullptr, width);
  }
  return !progress || progress(1);
}

void Pack(const imageio::Rows& rows, const PackedRows<BYTE>& into) {
  const auto pack = into.channels == 4 ? PackRow<4> : PackRow<3>;
  for (int y = 0; y < into.size.height; ++y) {
    pack(rows.colour[y], rows.mask ? rows.mask[y] : nullptr, into.Row(into.size.height - 1 - y),
         into.size.width);
  }
}

void SwapRedAndBlue(BYTE* row, int width) {
  for (BYTE* const end = row + base::ColourOffset(width); row < end; row += kBytesPerPixel) {
    std::swap(row[base::kRed], row[base::kBlue]);
  }
}

bool IsOpaque(const imageio::Rows& rows, Size size) {
  for (int y = 0; rows.mask && y < size.height; ++y) {
    const BYTE* const row = rows.mask[y];
    if (std::any_of(row, row + size.width, [](BYTE mask) { return mask != base::kOpaque; })) {
      return false;
    }
  }
  return true;
}

}  // namespace host
