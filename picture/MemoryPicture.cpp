#include "picture/MemoryPicture.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "platform/LargeBlock.h"

namespace {

constexpr std::size_t kTotalAt = 4;
constexpr std::size_t kValuesAt = 12;
constexpr std::size_t kImageSizeAt = 28;
constexpr std::size_t kImageAt = 32;
constexpr std::size_t kFixedBytes = 36;

std::uint32_t ReadField(const BYTE* at) {
  std::uint32_t value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

void WriteField(BYTE* at, std::size_t value) {
  const auto field = static_cast<std::uint32_t>(value);
  std::memcpy(at, &field, sizeof field);
}

base::DibHeader HeaderOf(const BYTE* dib) {
  base::DibHeader header;
  std::memcpy(&header, dib, sizeof header);
  return header;
}

std::int64_t RowsOf(const base::DibHeader& header) {
  return std::abs(static_cast<std::int64_t>(header.biHeight));
}

std::optional<std::size_t> BytesOf(const BYTE* dib, bool square = false) {
  if (!dib) return 0;
  const base::DibHeader header = HeaderOf(dib);
  if (header.biSize != base::kDibHeaderBytes) return std::nullopt;
  return base::DibBytes(header.Bits(), header.biWidth, square ? header.biWidth : RowsOf(header));
}

// Null when there is no memory for it.
std::unique_ptr<BYTE* []> RowTable(BYTE* dib) {
  const base::DibHeader header = HeaderOf(dib);
  const std::int64_t rows = RowsOf(header);
  const std::int64_t stride = base::DibStride(header.Bits(), header.biWidth);
  std::unique_ptr<BYTE*[]> table(new (std::nothrow) BYTE*[static_cast<std::size_t>(rows)]);
  if (!table) return table;
  BYTE* row = base::DibRows(dib);
  for (std::int64_t i = 0; i < rows; ++i, row += stride) table[static_cast<std::size_t>(i)] = row;
  return table;
}

}  // namespace

MemoryPicture::MemoryPicture(const char*, int newWidth, int newHeight, bool wantImage,
                             bool wantMask) {
  const int w = newWidth < 1 ? 1 : newWidth;
  const int h = newHeight < 1 ? 1 : newHeight;
  const auto imageBytes = wantImage ? base::DibBytes(base::kColourBits, w, h) : 0;
  const auto maskBytes = wantMask ? base::DibBytes(base::kMaskBits, w, h) : 0;
  if (!imageBytes || !maskBytes) return;
  if (!Allocate(*imageBytes, *maskBytes, *imageBytes + *maskBytes + kFixedBytes, {0, 0, w, w})) {
    return;
  }
  if (wantImage) base::BuildDib(block + kImageAt, base::kColourBits, w, h);
  if (wantMask) base::BuildDib(block + kFixedBytes + *imageBytes, base::kMaskBits, w, h);
  Attach(block);
}

MemoryPicture::MemoryPicture(const char*, const BYTE* imageDib, const BYTE* maskDib, int value3,
                             int value4, int value1, int value2) {
  const auto imageBytes = BytesOf(imageDib);
  const auto maskBytes = BytesOf(maskDib);
  if (!imageBytes || !maskBytes) return;
  // The stated size takes the width for the height as well; readers know it so.
  const std::size_t stated =
      BytesOf(imageDib, true).value_or(0) + BytesOf(maskDib, true).value_or(0) + kFixedBytes;
  if (!Allocate(*imageBytes, *maskBytes, stated, {value1, value2, value3, value4})) return;
  if (imageDib) std::memcpy(block + kImageAt, imageDib, *imageBytes);
  if (maskDib) std::memcpy(block + kFixedBytes + *imageBytes, maskDib, *maskBytes);
  Attach(block);
}

MemoryPicture::~MemoryPicture() {
  if (!shared) std::free(block);
}

bool MemoryPicture::Allocate(std::size_t imageBytes, std::size_t maskBytes, std::size_t statedBytes,
                             const int (&newValues)[4]) {
  const std::size_t total = imageBytes + maskBytes + kFixedBytes;
  if (total > std::numeric_limits<std::int32_t>::max()) return false;
  // The system's zeros cost nothing until they are overwritten.
  block = static_cast<BYTE*>(std::calloc(1, total));
  if (!block) return false;
  platform::AnnounceWholeUse(block, total);
  WriteField(block + kTotalAt, statedBytes);
  std::memcpy(block + kValuesAt, newValues, sizeof newValues);
  WriteField(block + kImageSizeAt, imageBytes);
  WriteField(block + kImageAt + imageBytes, maskBytes);
  return true;
}

void MemoryPicture::Attach(BYTE* newBlock) {
  block = newBlock;
  imageRows.reset();
  maskRows.reset();
  image = mask = nullptr;
  width = height = 0;
  if (!block) return;
  std::memcpy(values, block + kValuesAt, sizeof values);
  const std::size_t imageBytes = ReadField(block + kImageSizeAt);
  if (imageBytes != 0) {
    image = block + kImageAt;
    imageRows = RowTable(image);
    if (!imageRows) return;
    const base::DibHeader header = HeaderOf(image);
    width = header.biWidth;
    height = static_cast<int>(RowsOf(header));
  }
  if (ReadField(block + kImageAt + imageBytes) != 0) {
    mask = block + kFixedBytes + imageBytes;
    maskRows = RowTable(mask);
    if (!maskRows) width = height = 0;
  }
}

void MemoryPicture::Clear() {
  if (image) base::FillDib(image, 0);
  if (mask) base::FillDib(mask, 255);
}
