#include "base/Dib.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace base {
namespace {

constexpr std::uint32_t kStandardColours[16] = {
    0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0xC0C0C0,
    0x808080, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};

std::uint32_t ColoursOf(int bits) {
  return bits == 4 ? 16 : bits == 8 ? 256 : 0;
}

DibHeader HeaderOf(const BYTE* dib) {
  DibHeader header;
  std::memcpy(&header, dib, sizeof header);
  return header;
}

}  // namespace

std::uint32_t StandardDibColour(std::size_t index) {
  return kStandardColours[index % 16];
}

std::optional<std::size_t> DibBytes(int bits, std::int64_t width, std::int64_t height) {
  constexpr std::int64_t kLimit = std::numeric_limits<std::int32_t>::max();
  if (width < 1 || height < 1 || width > kLimit || height > kLimit) return std::nullopt;
  const std::int64_t stride = DibStride(bits, width);
  const auto fixed = static_cast<std::int64_t>(kDibHeaderBytes + DibColourTableBytes(bits));
  if (stride > (kLimit - fixed) / height) return std::nullopt;
  return static_cast<std::size_t>(stride * height + fixed);
}

void BuildDib(BYTE* at, int bits, int width, int height, bool isCleared) {
  DibHeader header = {};
  header.biSize = kDibHeaderBytes;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<std::uint16_t>(bits);
  header.biSizeImage = static_cast<std::uint32_t>(DibStride(bits, width) * height);
  header.biClrUsed = ColoursOf(bits);
  std::memcpy(at, &header, sizeof header);
  for (std::uint32_t i = 0; i < header.biClrUsed; ++i) {
    std::memcpy(at + kDibHeaderBytes + 4 * i, &kStandardColours[i % 16], 4);
  }
  if (isCleared) FillDib(at, std::abs(bits) == 8 ? 255 : 0);
}

void FillDib(BYTE* dib, BYTE value) {
  const DibHeader header = HeaderOf(dib);
  const std::int64_t rows = std::abs(static_cast<std::int64_t>(header.biHeight));
  std::memset(DibRows(dib), value,
              static_cast<std::size_t>(DibStride(header.Bits(), header.biWidth) * rows));
}

BYTE* DibRows(BYTE* dib) {
  const DibHeader header = HeaderOf(dib);
  return dib + header.biSize + DibColourTableBytes(header.Bits());
}

}  // namespace base
