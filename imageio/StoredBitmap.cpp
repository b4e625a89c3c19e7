#include "imageio/StoredBitmap.h"

#include <algorithm>
#include <cstring>

#include "base/Dib.h"
#include "base/Rows.h"

namespace imageio {
namespace {

constexpr std::uint64_t kMostBitmapBytes = 0x7FFFFFFF;
constexpr std::uint32_t kTableEntryBytes = 4;

base::DibHeader HeaderOf(std::span<const std::uint8_t> block) {
  base::DibHeader header;
  std::memcpy(&header, block.data(), sizeof header);
  return header;
}

std::uint64_t StrideOf(int width, int bits) {
  return (static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(bits) + 31) / 32 * 4;
}

bool IsKnownDepth(int bits) {
  return bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32 || bits == base::kMaskBits;
}

// Entries of the table that the head tells of, as they are or as they are meant.
std::uint64_t ColoursOf(const base::DibHeader& header) {
  const int bits = header.Bits();
  if (bits == base::kMaskBits) return 0;
  if (header.biClrUsed != 0) return header.biClrUsed;
  return bits >= 1 && bits < 9 ? std::uint64_t{1} << bits : 0;
}

std::vector<std::uint8_t> BlankBitmap(int bits, int width, int height, std::uint32_t colours) {
  const std::uint64_t rows = StrideOf(width, bits) * static_cast<std::uint64_t>(height);
  const std::uint64_t head = base::kDibHeaderBytes + colours * kTableEntryBytes;
  if (width < 1 || height < 1 || head + rows > kMostBitmapBytes) return {};
  std::vector<std::uint8_t> bitmap(static_cast<std::size_t>(head + rows));
  base::DibHeader header = {};
  header.biSize = base::kDibHeaderBytes;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<std::uint16_t>(bits);
  header.biSizeImage = static_cast<std::uint32_t>(rows);
  header.biClrUsed = colours;
  std::memcpy(bitmap.data(), &header, sizeof header);
  return bitmap;
}

}  // namespace

std::optional<StoredBitmap> StoredBitmap::ParseHead(std::span<const std::uint8_t> block) {
  if (block.size() < base::kDibHeaderBytes) return std::nullopt;
  const base::DibHeader header = HeaderOf(block);
  const bool isKnown = header.biSize == base::kDibHeaderBytes && header.biCompression == 0 &&
                       IsKnownDepth(header.Bits());
  if (!isKnown || header.biWidth < 1 || header.biHeight < 1) return std::nullopt;
  StoredBitmap bitmap;
  bitmap.block = block;
  bitmap.width = header.biWidth;
  bitmap.height = header.biHeight;
  bitmap.bits = header.Bits();
  const int depth = bitmap.bits < 0 ? -bitmap.bits : bitmap.bits;
  const std::uint64_t colours = ColoursOf(header);
  if (colours > std::uint64_t{1} << depth) return std::nullopt;
  bitmap.colours = static_cast<std::uint32_t>(colours);
  bitmap.rowsAt = base::kDibHeaderBytes + colours * kTableEntryBytes;
  bitmap.stride = StrideOf(bitmap.width, depth);
  return bitmap;
}

std::optional<StoredBitmap> StoredBitmap::Parse(std::span<const std::uint8_t> block) {
  const auto bitmap = ParseHead(block);
  if (!bitmap || bitmap->rowsAt > block.size()) return std::nullopt;
  // By division: the sides are what anybody wrote.
  const auto height = static_cast<std::uint64_t>(bitmap->height);
  return (block.size() - bitmap->rowsAt) / height < bitmap->stride ? std::nullopt : bitmap;
}

unsigned StoredBitmap::IndexOf(const BYTE* row, int x) const {
  const int depth = bits < 0 ? -bits : bits;
  if (depth == 8) return row[x];
  if (depth == 4) return x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15u;
  return (row[x / 8] >> (7 - x % 8)) & 1u;
}

void StoredBitmap::ReadColours(int y, BYTE* to) const {
  const BYTE* row = Row(y);
  if (bits == 24) {
    std::memcpy(to, row, base::ColourBytes(width));
    return;
  }
  const BYTE* table = block.data() + base::kDibHeaderBytes;
  for (int x = 0; x < width; ++x, to += base::kBytesPerPixel) {
    const unsigned index = bits == 32 ? 0 : IndexOf(row, x);
    const BYTE level = static_cast<BYTE>(index);
    const BYTE plain[3] = {level, level, level};
    const BYTE black[3] = {};
    const BYTE* pixel = bits == 32        ? row + 4 * static_cast<std::ptrdiff_t>(x)
                        : bits < 0        ? plain
                        : index < colours ? table + kTableEntryBytes * index
                                          : black;
    std::memcpy(to, pixel, base::kBytesPerPixel);
  }
}

std::uint64_t ClaimedBitmapBytes(std::span<const std::uint8_t> block) {
  if (block.size() < base::kDibHeaderBytes) return 0;
  const base::DibHeader header = HeaderOf(block);
  std::uint64_t rows = header.biSizeImage;
  if (rows == 0 && header.biWidth > 0 && header.biHeight > 0 && IsKnownDepth(header.Bits())) {
    const int bits = header.Bits();
    rows = StrideOf(header.biWidth, bits < 0 ? -bits : bits) *
           static_cast<std::uint64_t>(header.biHeight);
  }
  return header.biSize + rows + ColoursOf(header) * kTableEntryBytes;
}

std::vector<std::uint8_t> BlankColourBitmap(int width, int height) {
  return BlankBitmap(base::kColourBits, width, height, 0);
}

std::vector<std::uint8_t> BlankMaskBitmap(int width, int height) {
  constexpr std::uint32_t kGreys = 256;
  std::vector<std::uint8_t> bitmap = BlankBitmap(8, width, height, kGreys);
  for (std::uint32_t i = 0; !bitmap.empty() && i < kGreys; ++i) {
    std::memset(bitmap.data() + base::kDibHeaderBytes + kTableEntryBytes * i, static_cast<int>(i),
                3);
  }
  return bitmap;
}

std::vector<BYTE*> RowsOf(std::vector<std::uint8_t>& bitmap) {
  const auto layout = StoredBitmap::Parse(bitmap);
  std::vector<BYTE*> rows;
  if (!layout) return rows;
  rows.reserve(static_cast<std::size_t>(layout->Height()));
  for (int y = 0; y < layout->Height(); ++y) rows.push_back(const_cast<BYTE*>(layout->MaskRow(y)));
  return rows;
}

}  // namespace imageio
