#include "imageio/BmpLayout.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "base/Rows.h"
#include "imageio/Decoder.h"

namespace imageio {
namespace {

// The oldest head: 16-bit sizes, 3 bytes a palette entry.
constexpr std::uint32_t kCoreHeadBytes = 12;
constexpr std::uint32_t kLongestHead = 4096;

std::uint32_t Word(const BYTE* at) {
  return at[0] | at[1] * 256u;
}
std::uint32_t Long(const BYTE* at) {
  return Word(at) | Word(at + 2) << 16;
}

}  // namespace

BmpField::BmpField(std::uint32_t bits) : mask(bits) {
  if (mask == 0) return;
  shift = std::countr_zero(mask);
  highest = mask >> shift;
}

BYTE BmpField::Of(std::uint32_t pixel) const {
  return mask == 0 ? BYTE{0} : ScaleToByte((pixel & mask) >> shift, highest);
}

BmpLayout::BmpLayout(Cursor& cursor, bool takesPlanes) {
  BYTE first[4];
  cursor.NeedBytes(first, sizeof first);
  headBytes = Long(first);
  if (headBytes < kCoreHeadBytes || headBytes > kLongestHead) {
    throw ImageError("the head of the picture is damaged");
  }
  std::vector<BYTE> bytes(headBytes);
  std::memcpy(bytes.data(), first, sizeof first);
  cursor.NeedBytes(bytes.data() + sizeof first, headBytes - sizeof first);
  ReadHead(bytes, takesPlanes);
  ReadFields(bytes, cursor);
  ReadPalette(bytes, cursor);
}

void BmpLayout::ReadHead(const std::vector<BYTE>& bytes, bool takesPlanes) {
  if (bytes.size() == kCoreHeadBytes) {
    planes = static_cast<int>(Word(&bytes[8]));
    bits = static_cast<int>(Word(&bytes[10]));
    width = Word(&bytes[4]);
    height = Word(&bytes[6]);
  } else if (bytes.size() < 16) {
    throw ImageError("the head of the picture is damaged");
  } else {
    width = static_cast<std::int32_t>(Long(&bytes[4]));
    height = static_cast<std::int32_t>(Long(&bytes[8]));
    topDown = height < 0;
    if (topDown) height = -height;
    planes = static_cast<int>(Word(&bytes[12]));
    bits = static_cast<int>(Word(&bytes[14]));
    if (bytes.size() >= 20) compression = BmpCompression{Long(&bytes[16])};
    if (bytes.size() >= 32) {
      aMetreX = Long(&bytes[24]);
      aMetreY = Long(&bytes[28]);
    }
  }
  constexpr int kPlaneBits = 0xFFF8;
  isPlane = takesPlanes && bits == kPlaneBits && compression == BmpCompression::None;
  if (isPlane) bits = 8;
  constexpr int kDepths[] = {1, 2, 4, 8, 16, 24, 32};
  const bool fields =
      compression == BmpCompression::BitFields || compression == BmpCompression::AlphaBitFields;
  const bool fits =
      compression == BmpCompression::None || (compression == BmpCompression::Rle8 && bits == 8) ||
      (compression == BmpCompression::Rle4 && bits == 4) || (fields && (bits == 16 || bits == 32));
  if (!fits || std::find(std::begin(kDepths), std::end(kDepths), bits) == std::end(kDepths)) {
    throw ImageError("the kind of picture is not supported");
  }
}

// Where each channel lies in a pixel: told within a long head, behind a head of 40 bytes, or by
// custom.
void BmpLayout::ReadFields(const std::vector<BYTE>& bytes, Cursor& cursor) {
  constexpr std::size_t kFieldsAt = 40;
  std::array<BYTE, 16> fields = {};
  if (compression == BmpCompression::None) {
    red = BmpField(bits == 16 ? 0x7C00 : 0xFF0000);
    green = BmpField(bits == 16 ? 0x03E0 : 0x00FF00);
    blue = BmpField(bits == 16 ? 0x001F : 0x0000FF);
    return;
  }
  if (HasRuns()) return;
  if (bytes.size() > kFieldsAt) {
    const std::size_t count = std::min(bytes.size() - kFieldsAt, fields.size());
    std::memcpy(fields.data(), &bytes[kFieldsAt], count);
  } else {
    cursor.NeedBytes(fields.data(), compression == BmpCompression::AlphaBitFields ? 16 : 12);
  }
  red = BmpField(Long(&fields[0]));
  green = BmpField(Long(&fields[4]));
  blue = BmpField(Long(&fields[8]));
  alpha = BmpField(Long(&fields[12]));
}

void BmpLayout::ReadPalette(const std::vector<BYTE>& bytes, Cursor& cursor) {
  if (bytes.size() >= 36) coloursTold = Long(&bytes[32]);
  if (bits > 8) return;
  if (isPlane) {
    for (std::size_t i = 0; i < palette.size(); ++i) palette[i] = static_cast<BYTE>(i / 3);
    return;
  }
  const std::uint32_t most = 1u << bits;
  colours = coloursTold == 0 ? most : std::min(coloursTold, most);
  const std::size_t entryBytes = bytes.size() == kCoreHeadBytes ? 3 : 4;
  for (std::uint32_t i = 0; i < colours; ++i) {
    BYTE entry[4];
    cursor.NeedBytes(entry, entryBytes);
    std::memcpy(&palette[3 * i], entry, 3);
  }
}

void BmpLayout::StoreIndex(int index, BYTE* colour) const {
  std::memcpy(colour, palette.data() + 3 * index, base::kBytesPerPixel);
}

void BmpLayout::StorePixels(const BYTE* packed, const RowBuffer& row) const {
  BYTE* colour = row.colour;
  if (bits == 24) {
    std::memcpy(colour, packed, base::ColourBytes(static_cast<int>(width)));
    return;
  }
  for (int x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
    if (bits <= 8) {
      const std::int64_t at = std::int64_t{x} * bits;
      StoreIndex(packed[at / 8] >> (8 - bits - at % 8) & ((1 << bits) - 1), colour);
      continue;
    }
    const std::uint32_t pixel = bits == 16 ? Word(packed) : Long(packed);
    packed += bits / 8;
    colour[base::kBlue] = blue.Of(pixel);
    colour[base::kGreen] = green.Of(pixel);
    colour[base::kRed] = red.Of(pixel);
    if (row.mask != nullptr) row.mask[x] = static_cast<BYTE>(255 - alpha.Of(pixel));
  }
}

void BmpRuns::Put(int value, std::vector<BYTE>& indexes) {
  if (x < indexes.size()) indexes[x] = static_cast<BYTE>(value);
  if (x <= indexes.size()) ++x;  // what lies beyond the row is dropped
}

void BmpRuns::Run(int count, int value, std::vector<BYTE>& indexes) {
  for (int i = 0; i < count; ++i) {
    Put(nibbles ? (i % 2 == 0 ? value >> 4 : value & 15) : value, indexes);
  }
}

void BmpRuns::Literal(int count, std::vector<BYTE>& indexes) {
  int byte = 0;
  for (int i = 0; i < count; ++i) {
    if (!nibbles || i % 2 == 0) byte = cursor.NeedByte();
    Put(nibbles ? (i % 2 == 0 ? byte >> 4 : byte & 15) : byte, indexes);
  }
  const int bytes = nibbles ? (count + 1) / 2 : count;
  if (bytes % 2 != 0) cursor.NeedByte();
}

void BmpRuns::ReadRow(std::vector<BYTE>& indexes) {
  std::fill(indexes.begin(), indexes.end(), BYTE{0});
  if (blankRows > 0) {
    --blankRows;
    return;
  }
  while (!ended) {
    const int count = cursor.NeedByte();
    const int value = cursor.NeedByte();
    if (count > 0) {
      Run(count, value, indexes);
    } else if (value == 0) {
      x = 0;
      return;
    } else if (value == 1) {
      ended = true;
    } else if (value == 2) {
      x = std::min(x + cursor.NeedByte(), indexes.size());
      const int rows = cursor.NeedByte();
      blankRows = std::max(0, rows - 1);
      if (rows > 0) return;
    } else {
      Literal(value, indexes);
    }
  }
}

}  // namespace imageio
