#include "picture/MemoryPicture.h"

#include <algorithm>
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
constexpr std::size_t kSizeFieldBytes = 4;
constexpr std::size_t kLargestBlock = std::numeric_limits<std::int32_t>::max();

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

MemoryPicture::Content MemoryPicture::BlankContent(int newWidth, int newHeight, bool wantImage,
                                                   bool wantMask) {
  Content content;
  content.width = newWidth < 1 ? 1 : newWidth;
  content.height = newHeight < 1 ? 1 : newHeight;
  const auto imageBytes =
      wantImage ? base::DibBytes(base::kColourBits, content.width, content.height) : 0;
  const auto maskBytes =
      wantMask ? base::DibBytes(base::kMaskBits, content.width, content.height) : 0;
  if (!imageBytes || !maskBytes) return content;
  content.imageBytes = *imageBytes;
  content.maskBytes = *maskBytes;
  content.statedBytes = *imageBytes + *maskBytes + kFixedBytes;
  content.values[2] = content.values[3] = content.width;
  content.isPossible = true;
  return content;
}

MemoryPicture::Content MemoryPicture::ContentOf(const BYTE* imageDib, const BYTE* maskDib,
                                                const int (&newValues)[4]) {
  Content content;
  const auto imageBytes = BytesOf(imageDib);
  const auto maskBytes = BytesOf(maskDib);
  if (!imageBytes || !maskBytes) return content;
  content.image = imageDib;
  content.mask = maskDib;
  content.imageBytes = *imageBytes;
  content.maskBytes = *maskBytes;
  // The stated size takes the width for the height as well; readers know it so.
  content.statedBytes =
      BytesOf(imageDib, true).value_or(0) + BytesOf(maskDib, true).value_or(0) + kFixedBytes;
  std::copy_n(newValues, 4, content.values);
  content.isPossible = true;
  return content;
}

std::size_t MemoryPicture::Content::Bytes() const {
  const std::size_t total = imageBytes + maskBytes + kFixedBytes;
  return isPossible && total <= kLargestBlock ? total : 0;
}

void MemoryPicture::Content::WriteTo(BYTE* newBlock) const {
  std::memset(newBlock, 0, kImageAt);
  WriteField(newBlock + kTotalAt, statedBytes);
  std::memcpy(newBlock + kValuesAt, values, sizeof values);
  WriteField(newBlock + kImageSizeAt, imageBytes);
  WriteField(newBlock + kImageAt + imageBytes, maskBytes);
  BYTE* const imageAt = newBlock + kImageAt;
  BYTE* const maskAt = newBlock + kFixedBytes + imageBytes;
  if (image) {
    std::memcpy(imageAt, image, imageBytes);
  } else if (imageBytes != 0) {
    base::BuildDib(imageAt, base::kColourBits, width, height, isCleared);
  }
  if (mask) {
    std::memcpy(maskAt, mask, maskBytes);
  } else if (maskBytes != 0) {
    base::BuildDib(maskAt, base::kMaskBits, width, height, isCleared);
  }
}

MemoryPicture::MemoryPicture(const char*, int newWidth, int newHeight, bool wantImage,
                             bool wantMask) {
  Build(BlankContent(newWidth, newHeight, wantImage, wantMask));
}

MemoryPicture::MemoryPicture(const char*, int newWidth, int newHeight) {
  Content content = BlankContent(newWidth, newHeight, true, true);
  content.isCleared = false;
  Build(content);
}

MemoryPicture::MemoryPicture(const char*, const BYTE* imageDib, const BYTE* maskDib, int value3,
                             int value4, int value1, int value2) {
  Build(ContentOf(imageDib, maskDib, {value1, value2, value3, value4}));
}

bool MemoryPicture::CanHold(int width, int height) {
  return BlankContent(width, height, true, true).Bytes() != 0;
}

MemoryPicture::~MemoryPicture() {
  if (!shared) platform::FreeLarge(block);
}

void MemoryPicture::Build(const Content& content) {
  const std::size_t bytes = content.Bytes();
  block = bytes != 0 ? static_cast<BYTE*>(platform::AllocateLarge(bytes)) : nullptr;
  if (!block) return;
  content.WriteTo(block);
  Attach(block);
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

bool MemoryPicture::IsBlank(const BYTE* picture, std::size_t bytes) {
  return bytes < kFixedBytes || ReadField(picture + kTotalAt) == 0;
}

std::size_t MemoryPicture::PictureBytes(const BYTE* picture, std::size_t bytes) {
  std::size_t used = kImageAt;
  if (!picture || bytes < kFixedBytes) return 0;
  for (int plane = 0; plane < 2; ++plane) {
    const BYTE* const dib = picture + used;
    const std::size_t stated = ReadField(dib - kSizeFieldBytes);
    if (stated > bytes - used || (stated != 0 && stated < base::kDibHeaderBytes)) return 0;
    if (stated != 0 && BytesOf(dib) != stated) return 0;
    used += stated;
    // The size of the mask follows the image.
    if (plane == 0 && (used += kSizeFieldBytes) > bytes) return 0;
  }
  return used;
}

std::size_t MemoryPicture::BlockBytes() const {
  const std::size_t imageBytes = ReadField(block + kImageSizeAt);
  return kFixedBytes + imageBytes + ReadField(block + kImageAt + imageBytes);
}

void MemoryPicture::Clear() {
  if (image) base::FillDib(image, 0);
  if (mask) base::FillDib(mask, 255);
}
