#include "picture/PackedDib.h"

#include <objbase.h>
#include <winbase.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "base/Dib.h"
#include "base/Rows.h"

namespace picture {
namespace {

using imageio::BmpCompression;
using imageio::BmpLayout;
using imageio::ImageError;

constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t kColourEntryBytes = 4;

[[noreturn]] void Refuse() {
  throw ImageError("the bitmap is damaged");
}

// --- pixels of up to 8 bits within bytes

int IndexAt(const BYTE* packed, std::int64_t x, int bits) {
  const std::int64_t at = x * bits;
  return packed[at / 8] >> (8 - bits - at % 8) & ((1 << bits) - 1);
}

// Into zeros.
void PutIndex(BYTE* packed, std::int64_t x, int bits, int index) {
  const std::int64_t at = x * bits;
  packed[at / 8] = static_cast<BYTE>(packed[at / 8] | index << (8 - bits - at % 8));
}

void AppendColour(std::vector<BYTE>& colours, std::uint32_t rgb) {
  for (int i = 0; i < 4; ++i, rgb >>= 8) colours.push_back(static_cast<BYTE>(rgb));
}

std::vector<BYTE> ColoursOf(const BmpLayout& layout) {
  std::vector<BYTE> colours;
  for (std::size_t i = 0; i < layout.colours; ++i) {
    const BYTE* const entry = &layout.palette[3 * i];
    colours.insert(colours.end(), {entry[0], entry[1], entry[2], 0});
  }
  return colours;
}

std::vector<std::uint32_t> FieldsOf(const BmpLayout& layout) {
  if (layout.compression == BmpCompression::None || layout.HasRuns()) return {};
  return {layout.red.Mask(), layout.green.Mask(), layout.blue.Mask()};
}

}  // namespace

// --- reading

DibReader::DibReader(imageio::Source& from, bool isFile)
    : source(&from), head(from), rowsAt(ReadFileHead(head, isFile)), layout(head, !isFile) {
  const std::uint64_t tableInFront = isFile || layout.bits <= 8 ? 0 : layout.coloursTold;
  rowsAt = std::max(rowsAt, head.Position() + tableInFront * kColourEntryBytes);
  CheckSizes(isFile);
}

std::uint64_t DibReader::ReadFileHead(imageio::Cursor& cursor, bool isFile) {
  if (!isFile) return 0;
  BYTE bytes[imageio::kBmpFileHeadBytes];
  cursor.NeedBytes(bytes, sizeof bytes);
  return imageio::BmpRowsAt(bytes);
}

void DibReader::CheckSizes(bool isFile) {
  const std::int64_t width = layout.width;
  const std::int64_t height = layout.height;
  if (layout.planes != 1 || width < 1 || height < 1 || width > kMost || height > kMost) Refuse();
  if (!isFile && layout.bits <= 8 && layout.coloursTold > 1u << layout.bits) Refuse();
  if (rowsAt > source->Size()) Refuse();
  const auto there = static_cast<std::int64_t>(source->Size() - rowsAt);
  if (layout.HasRuns()) {
    // Memory grows with the data, not with what a head says.
    if (layout.topDown || width > ((1 << 20) + 1024 * there) / height) Refuse();
    return;
  }
  // A file may end with the last pixel.
  const std::int64_t spare = isFile ? layout.RowBytes() - layout.UsedRowBytes() : 0;
  if (height > (there + spare) / layout.RowBytes()) Refuse();
}

std::uint64_t DibReader::RowsBytes() const {
  if (layout.HasRuns()) return source->Size() - rowsAt;
  return static_cast<std::uint64_t>(layout.RowBytes() * layout.height);
}

void DibReader::ForEachRow(const TakeRow& take) const {
  if (layout.HasRuns()) {
    UnpackRuns(take);
    return;
  }
  std::vector<BYTE> packed(static_cast<std::size_t>(layout.UsedRowBytes()));
  std::uint64_t at = rowsAt;
  for (std::int64_t stored = 0; stored < layout.height; ++stored) {
    if (source->ReadAt(at, packed.data(), packed.size()) != packed.size()) Refuse();
    take(layout.height - 1 - layout.RowOf(stored), packed.data());
    at += static_cast<std::uint64_t>(layout.RowBytes());
  }
}

void DibReader::UnpackRuns(const TakeRow& take) const {
  imageio::BmpRuns runs(*source, rowsAt, layout);
  std::vector<BYTE> indexes(static_cast<std::size_t>(layout.width));
  std::vector<BYTE> packed(static_cast<std::size_t>(layout.UsedRowBytes()));
  for (std::int64_t y = 0; y < layout.height; ++y) {
    runs.ReadRow(indexes);
    std::fill(packed.begin(), packed.end(), BYTE{0});
    for (std::size_t x = 0; x < indexes.size(); ++x) {
      PutIndex(packed.data(), static_cast<std::int64_t>(x), layout.bits, indexes[x]);
    }
    take(y, packed.data());
  }
}

void DibReader::ForEachColourRow(const TakeRow& take) const {
  std::vector<BYTE> colour(base::ColourBytes(static_cast<int>(layout.width)));
  ForEachRow([&](std::int64_t y, const BYTE* packed) {
    layout.StorePixels(packed, {colour.data(), nullptr});
    take(y, colour.data());
  });
}

// --- blocks

GlobalBlock::GlobalBlock(DibHandle block)
    : handle(block),
      size(block ? GlobalSize(block) : 0),
      bytes(size != 0 ? static_cast<BYTE*>(GlobalLock(block)) : nullptr) {
  if (!bytes) Refuse();
}

GlobalBlock::~GlobalBlock() {
  GlobalUnlock(handle);
}

LockedDib::LockedDib(DibHandle dib)
    : block(dib), source(block.Bytes(), block.Size()), reader(source, false) {}

BYTE* LockedDib::Row(std::int64_t y) const {
  const BmpLayout& layout = reader.Layout();
  const std::int64_t stored = layout.topDown ? layout.height - 1 - y : y;
  return block.Bytes() + reader.RowsAt() + stored * layout.RowBytes();
}

BYTE* LockedDib::Colours() const {
  const BmpLayout& layout = reader.Layout();
  constexpr std::uint32_t kLeastHead = 40;
  if (layout.colours == 0 || layout.headBytes < kLeastHead) return nullptr;
  return block.Bytes() + reader.RowsAt() - kColourEntryBytes * layout.colours;
}

FreshDib::FreshDib(int bits, std::int64_t width, std::int64_t height, std::span<const BYTE> colours,
                   std::span<const std::uint32_t> fields) {
  const std::int64_t rowCount = height < 0 ? -height : height;
  if (width < 1 || width > kMost || rowCount < 1 || rowCount > kMost) Refuse();
  rowBytes = (width * std::abs(bits) + 31) / 32 * 4;
  const std::size_t inFront = base::kDibHeaderBytes + fields.size_bytes() + colours.size();
  if (rowBytes > (kMost - static_cast<std::int64_t>(inFront)) / rowCount) Refuse();
  const auto rowsSize = static_cast<std::size_t>(rowBytes * rowCount);
  block = GlobalAlloc(GHND, inFront + rowsSize);
  BYTE* const bytes = block ? static_cast<BYTE*>(GlobalLock(block)) : nullptr;
  if (!bytes) throw std::bad_alloc();
  base::DibHeader header = {};
  header.biSize = base::kDibHeaderBytes;
  header.biWidth = static_cast<std::int32_t>(width);
  header.biHeight = static_cast<std::int32_t>(height);
  header.biPlanes = 1;
  header.biBitCount = static_cast<std::uint16_t>(bits);
  header.biCompression =
      static_cast<std::uint32_t>(fields.empty() ? BmpCompression::None : BmpCompression::BitFields);
  header.biSizeImage = static_cast<std::uint32_t>(rowsSize);
  header.biClrUsed = static_cast<std::uint32_t>(colours.size() / kColourEntryBytes);
  std::memcpy(bytes, &header, sizeof header);
  std::copy(fields.begin(), fields.end(), reinterpret_cast<std::uint32_t*>(bytes + sizeof header));
  std::copy(colours.begin(), colours.end(), bytes + sizeof header + fields.size_bytes());
  rows = bytes + inFront;
}

FreshDib::~FreshDib() {
  if (!block) return;
  GlobalUnlock(block);
  GlobalFree(block);
}

DibHandle FreshDib::Release() {
  GlobalUnlock(block);
  return std::exchange(block, nullptr);
}

std::vector<BYTE> GreyColours() {
  std::vector<BYTE> colours;
  for (std::uint32_t i = 0; i < 256; ++i) AppendColour(colours, i * 0x10101);
  return colours;
}

std::vector<BYTE> StandardColours(int bits) {
  std::vector<BYTE> colours;
  if (bits == 1) {
    AppendColour(colours, 0);
    AppendColour(colours, 0xFFFFFF);
  }
  const std::size_t count = bits == 4 || bits == 8 ? std::size_t{1} << bits : 0;
  for (std::size_t i = 0; i < count; ++i) AppendColour(colours, base::StandardDibColour(i));
  return colours;
}

DibHandle CopyDib(const DibReader& reader) {
  const BmpLayout& layout = reader.Layout();
  const auto used = static_cast<std::size_t>(layout.UsedRowBytes());
  FreshDib fresh(reader.SignedBits(), reader.Width(), reader.Height(), ColoursOf(layout),
                 FieldsOf(layout));
  reader.ForEachRow(
      [&](std::int64_t y, const BYTE* packed) { std::memcpy(fresh.Row(y), packed, used); });
  return fresh.Release();
}

// --- another size

namespace {

// The nearest pixel of the source for each of `to`.
DibHandle ScaleIndexes(const DibReader& reader, const Nearest& across, const Nearest& down) {
  const int bits = reader.Layout().bits;
  FreshDib fresh(reader.SignedBits(), across.to, down.to, ColoursOf(reader.Layout()));
  reader.ForEachRow([&](std::int64_t y, const BYTE* packed) {
    const std::int64_t line = reader.Height() - 1 - y;
    const std::int64_t first = down.FirstTarget(line);
    const std::int64_t behind = down.FirstTarget(line + 1);
    if (first == behind) return;
    BYTE* const row = fresh.Row(down.to - 1 - first);
    for (std::int64_t x = 0; x < across.to; ++x) {
      PutIndex(row, x, bits, IndexAt(packed, across.SourceOf(x), bits));
    }
    for (std::int64_t i = first + 1; i < behind; ++i) {
      std::memcpy(fresh.Row(down.to - 1 - i), row, fresh.RowBytes());
    }
  });
  return fresh.Release();
}

// Takes the rows of a reduced picture, its lowest first, and repeats their pixels.
class RepeatingSink final : public imageio::RowSink {
 public:
  RepeatingSink(FreshDib& target, const Nearest& pixels, const Nearest& lines)
      : fresh(&target), across(pixels), down(lines), colour(base::ColourBytes(Int(pixels.from))) {}

  imageio::RowBuffer Begin(int) override { return {colour.data(), nullptr}; }
  bool End(int y) override {
    for (std::int64_t i = down.FirstTarget(y); i < down.FirstTarget(std::int64_t{y} + 1); ++i) {
      BYTE* to = fresh->Row(i);
      for (std::int64_t x = 0; x < across.to; ++x, to += base::kBytesPerPixel) {
        std::memcpy(to, &colour[base::ColourBytes(Int(across.SourceOf(x)))], base::kBytesPerPixel);
      }
    }
    return true;
  }

 private:
  static int Int(std::int64_t value) { return static_cast<int>(value); }

  FreshDib* fresh;
  Nearest across, down;
  std::vector<BYTE> colour;
};

DibHandle ScaleColours(const DibReader& reader, std::int64_t width, std::int64_t height) {
  const std::int64_t reducedWidth = std::min(width, reader.Width());
  const std::int64_t reducedHeight = std::min(height, reader.Height());
  FreshDib fresh(base::kColourBits, width, height);
  RepeatingSink repeating(fresh, {reducedWidth, width}, {reducedHeight, height});
  imageio::AreaMean mean(repeating, static_cast<int>(reader.Width()),
                         static_cast<int>(reader.Height()), static_cast<int>(reducedWidth),
                         static_cast<int>(reducedHeight), false);
  // Stored rows may come from the top, while the mean takes them in either order.
  reader.ForEachColourRow([&](std::int64_t y, const BYTE* colour) {
    std::memcpy(mean.Begin(static_cast<int>(y)).colour, colour,
                base::ColourBytes(static_cast<int>(reader.Width())));
    mean.End(static_cast<int>(y));
  });
  return fresh.Release();
}

}  // namespace

DibHandle ScaleDib(const DibReader& reader, std::int64_t width, std::int64_t height) {
  if (width < 1 || height < 1) Refuse();
  if (reader.Layout().bits > 8) return ScaleColours(reader, width, height);
  return ScaleIndexes(reader, {reader.Width(), width}, {reader.Height(), height});
}

}  // namespace picture
