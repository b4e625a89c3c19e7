// BMP pictures: all uncompressed depths, bit fields and run lengths, with headers old and new.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "base/Dib.h"
#include "base/Rows.h"
#include "imageio/Decoder.h"

namespace imageio {
namespace {

constexpr std::uint32_t kFileHeadBytes = 14;
constexpr std::uint32_t kCoreHeadBytes =
    12;  // the oldest head: 16-bit sizes, 3 bytes a palette entry
constexpr std::uint32_t kLongestHead = 4096;

enum Compression : std::uint32_t {
  kNone = 0,
  kRle8 = 1,
  kRle4 = 2,
  kBitFields = 3,
  kAlphaBitFields = 6
};

std::uint32_t Word(const BYTE* at) {
  return at[0] | at[1] * 256u;
}
std::uint32_t Long(const BYTE* at) {
  return Word(at) | Word(at + 2) << 16;
}

// One channel of a pixel of 16 or 32 bits.
class BitField {
 public:
  BitField() = default;
  explicit BitField(std::uint32_t bits) : mask(bits) {
    if (mask == 0) return;
    shift = std::countr_zero(mask);
    highest = mask >> shift;
  }
  bool Empty() const { return mask == 0; }
  BYTE Of(std::uint32_t pixel) const {
    return mask == 0 ? BYTE{0} : ScaleToByte((pixel & mask) >> shift, highest);
  }

 private:
  std::uint32_t mask = 0;
  int shift = 0;
  std::uint32_t highest = 0;
};

// Unpacks run lengths row by row.
class RunReader {
 public:
  RunReader(Source& source, std::uint64_t position, bool fourBits)
      : cursor(source, position), nibbles(fourBits) {}

  // Palette indexes of the next row; what the file leaves out is 0.
  void ReadRow(std::vector<BYTE>& indexes);

 private:
  void Run(int count, int value, std::vector<BYTE>& indexes);
  void Literal(int count, std::vector<BYTE>& indexes);
  void Put(int value, std::vector<BYTE>& indexes);

  Cursor cursor;
  bool nibbles;
  std::size_t x = 0;
  int blankRows = 0;
  bool ended = false;
};

void RunReader::Put(int value, std::vector<BYTE>& indexes) {
  if (x < indexes.size()) indexes[x] = static_cast<BYTE>(value);
  if (x <= indexes.size()) ++x;  // what lies beyond the row is dropped
}

void RunReader::Run(int count, int value, std::vector<BYTE>& indexes) {
  for (int i = 0; i < count; ++i) {
    Put(nibbles ? (i % 2 == 0 ? value >> 4 : value & 15) : value, indexes);
  }
}

void RunReader::Literal(int count, std::vector<BYTE>& indexes) {
  int byte = 0;
  for (int i = 0; i < count; ++i) {
    if (!nibbles || i % 2 == 0) byte = cursor.NeedByte();
    Put(nibbles ? (i % 2 == 0 ? byte >> 4 : byte & 15) : byte, indexes);
  }
  const int bytes = nibbles ? (count + 1) / 2 : count;
  if (bytes % 2 != 0) cursor.NeedByte();
}

void RunReader::ReadRow(std::vector<BYTE>& indexes) {
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

class BmpDecoder final : public Decoder {
 public:
  explicit BmpDecoder(Source& from) : source(&from) {
    std::array<BYTE, kFileHeadBytes + 4> first;
    Cursor cursor(*source);
    cursor.NeedBytes(first.data(), first.size());
    const std::uint32_t headBytes = Long(first.data() + kFileHeadBytes);
    if (headBytes < kCoreHeadBytes || headBytes > kLongestHead) {
      throw ImageError("the head of the picture is damaged");
    }
    std::vector<BYTE> bytes(headBytes);
    std::memcpy(bytes.data(), first.data() + kFileHeadBytes, 4);
    cursor.NeedBytes(bytes.data() + 4, headBytes - 4);
    ReadHead(bytes);
    ReadFields(bytes, cursor);
    ReadPalette(bytes, cursor);
    dataPosition = std::max<std::uint64_t>(Long(first.data() + 10), cursor.Position());
  }

  bool Decode(RowSink& sink) override {
    return compression == kRle8 || compression == kRle4 ? DecodeRuns(sink) : DecodeRows(sink);
  }

 private:
  void ReadHead(const std::vector<BYTE>& bytes);
  void ReadFields(const std::vector<BYTE>& bytes, Cursor& cursor);
  void ReadPalette(const std::vector<BYTE>& bytes, Cursor& cursor);
  bool DecodeRuns(RowSink& sink);
  bool DecodeRows(RowSink& sink);
  void StorePixels(const BYTE* packed, const RowBuffer& row) const;
  void StoreIndex(int index, BYTE* colour) const {
    std::memcpy(colour, palette.data() + 3 * index, base::kBytesPerPixel);
  }
  int RowOf(int stored) const { return topDown ? stored : head.size.height - 1 - stored; }

  Source* source;
  int bits = 0;
  std::uint32_t compression = kNone;
  bool topDown = false;
  BitField red, green, blue, alpha;
  std::array<BYTE, 3 * 256> palette = {};
  std::uint64_t dataPosition = 0;
};

void BmpDecoder::ReadHead(const std::vector<BYTE>& bytes) {
  if (bytes.size() == kCoreHeadBytes) {
    bits = static_cast<int>(Word(&bytes[10]));
    SetSize(Word(&bytes[4]), Word(&bytes[6]));
  } else if (bytes.size() < 16) {
    throw ImageError("the head of the picture is damaged");
  } else {
    const auto height = std::int64_t{static_cast<std::int32_t>(Long(&bytes[8]))};
    topDown = height < 0;
    SetSize(static_cast<std::int32_t>(Long(&bytes[4])), topDown ? -height : height);
    bits = static_cast<int>(Word(&bytes[14]));
    if (bytes.size() >= 20) compression = Long(&bytes[16]);
  }
  constexpr int kDepths[] = {1, 2, 4, 8, 16, 24, 32};
  const bool fields = compression == kBitFields || compression == kAlphaBitFields;
  const bool fits = compression == kNone || (compression == kRle8 && bits == 8) ||
                    (compression == kRle4 && bits == 4) || (fields && (bits == 16 || bits == 32));
  if (!fits || std::find(std::begin(kDepths), std::end(kDepths), bits) == std::end(kDepths)) {
    throw ImageError("the kind of picture is not supported");
  }
}

// Where each channel lies in a pixel: told within a long head, behind a head of 40 bytes, or by
// custom.
void BmpDecoder::ReadFields(const std::vector<BYTE>& bytes, Cursor& cursor) {
  constexpr std::size_t kFieldsAt = 40;
  std::array<BYTE, 16> fields = {};
  if (compression == kNone) {
    red = BitField(bits == 16 ? 0x7C00 : 0xFF0000);
    green = BitField(bits == 16 ? 0x03E0 : 0x00FF00);
    blue = BitField(bits == 16 ? 0x001F : 0x0000FF);
    return;
  }
  if (compression == kRle8 || compression == kRle4) return;
  if (bytes.size() > kFieldsAt) {
    const std::size_t count = std::min(bytes.size() - kFieldsAt, fields.size());
    std::memcpy(fields.data(), &bytes[kFieldsAt], count);
  } else {
    cursor.NeedBytes(fields.data(), compression == kAlphaBitFields ? 16 : 12);
  }
  red = BitField(Long(&fields[0]));
  green = BitField(Long(&fields[4]));
  blue = BitField(Long(&fields[8]));
  alpha = BitField(Long(&fields[12]));
  head.hasMask = !alpha.Empty();
}

void BmpDecoder::ReadPalette(const std::vector<BYTE>& bytes, Cursor& cursor) {
  if (bits > 8) return;
  const std::uint32_t most = 1u << bits;
  const std::uint32_t told = bytes.size() >= 36 ? Long(&bytes[32]) : 0;
  const std::uint32_t count = told == 0 ? most : std::min(told, most);
  const std::size_t entryBytes = bytes.size() == kCoreHeadBytes ? 3 : 4;
  for (std::uint32_t i = 0; i < count; ++i) {
    BYTE entry[4];
    cursor.NeedBytes(entry, entryBytes);
    std::memcpy(&palette[3 * i], entry, 3);
  }
}

bool BmpDecoder::DecodeRuns(RowSink& sink) {
  RunReader reader(*source, dataPosition, compression == kRle4);
  std::vector<BYTE> indexes(static_cast<std::size_t>(head.size.width));
  for (int stored = 0; stored < head.size.height; ++stored) {
    const int y = RowOf(stored);
    reader.ReadRow(indexes);
    BYTE* colour = sink.Begin(y).colour;
    for (const BYTE index : indexes) {
      StoreIndex(index, colour);
      colour += base::kBytesPerPixel;
    }
    if (!sink.End(y)) return false;
  }
  return true;
}

bool BmpDecoder::DecodeRows(RowSink& sink) {
  Cursor cursor(*source, dataPosition);
  const std::int64_t usedBits = std::int64_t{bits} * head.size.width;
  std::vector<BYTE> packed(static_cast<std::size_t>((usedBits + 7) / 8));
  const auto padding = static_cast<std::uint64_t>((usedBits + 31) / 32 * 4) - packed.size();
  for (int stored = 0; stored < head.size.height; ++stored) {
    const int y = RowOf(stored);
    cursor.NeedBytes(packed.data(), packed.size());
    cursor.Skip(padding);
    StorePixels(packed.data(), sink.Begin(y));
    if (!sink.End(y)) return false;
  }
  return true;
}

void BmpDecoder::StorePixels(const BYTE* packed, const RowBuffer& row) const {
  const int width = head.size.width;
  BYTE* colour = row.colour;
  if (bits == 24) {
    std::memcpy(colour, packed, base::ColourBytes(width));
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

}  // namespace

std::unique_ptr<Decoder> OpenBmp(Source& source) {
  return std::make_unique<BmpDecoder>(source);
}

}  // namespace imageio
