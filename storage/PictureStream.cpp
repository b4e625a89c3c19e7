#include "storage/PictureStream.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "base/Dib.h"
#include "storage/PictureNames.h"

using imageio::StoredBitmap;

namespace picbox {
namespace {

constexpr unsigned kTagHeadBytes = 5;
constexpr std::string_view kTags[] = {"JPG", "JPEG", "TIF", "TIFF", "GIF",
                                      "BMP", "PNG",  "PSD", "PCD",  "TYPE"};
constexpr std::string_view kUnknownTag = "TYPE";
constexpr BYTE kPresent = 8;
constexpr std::uint64_t kPieceBytes = 1 << 20;
// More than any writer leaves behind what is read. Compressed zeros could go on for ever.
constexpr std::uint32_t kMostBehind = 1 << 20;

bool IsTag(std::string_view text) {
  return std::find(std::begin(kTags), std::end(kTags), text) != std::end(kTags);
}

std::uint32_t NumberAt(const BYTE* bytes) {
  return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

void StoreNumber(BYTE* at, std::uint32_t number) {
  for (int i = 0; i < 4; ++i) at[i] = static_cast<BYTE>(number >> (8 * i));
}

// Bytes that are missing count as 0.
std::uint32_t ReadHeadNumber(IKvStream& stream, PictureHead& head) {
  BYTE number[4] = {};
  head.bytes += std::min(stream.Read(number, 4), 4u);
  return NumberAt(number);
}

// Adds to `bytes` until they are so many or there are no more: memory grows with what is there.
Bytes ReadGrowing(IKvRead& source, std::uint64_t count, Bytes bytes = {}) {
  while (bytes.size() < count) {
    const auto piece = static_cast<unsigned>(std::min(kPieceBytes, count - bytes.size()));
    const std::size_t before = bytes.size();
    bytes.resize(before + piece);
    const unsigned got = std::min(source.Read(bytes.data() + before, piece), piece);
    bytes.resize(before + got);
    if (got < piece) break;
  }
  return bytes;
}

class MemoryWriter final : public IKvWrite {
 public:
  explicit MemoryWriter(Bytes& to) : bytes(&to) {}
  unsigned Write(const void* from, unsigned count) override {
    const auto* first = static_cast<const std::uint8_t*>(from);
    bytes->insert(bytes->end(), first, first + count);
    return count;
  }

 private:
  Bytes* bytes;
};

}  // namespace

// --- heads

PictureHead ReadTagHead(IKvStream& stream) {
  PictureHead head;
  BYTE bytes[kTagHeadBytes] = {};
  const bool isWhole = stream.Read(bytes, kTagHeadBytes) == kTagHeadBytes;
  const char* letters = reinterpret_cast<const char*>(bytes + 1);
  const std::string tag = UpperText({letters, strnlen(letters, kTagHeadBytes - 1)});
  if (!isWhole || bytes[0] < kPictureAndMask || bytes[0] > kMaskAlone || !IsTag(tag)) {
    stream.Seek(0, 0);
    return head;
  }
  head.kind = bytes[0];
  if (tag != kUnknownTag) head.tag = tag;
  head.bytes = kTagHeadBytes;
  return head;
}

void ReadSizeHead(IKvStream& stream, PictureHead& head) {
  BYTE present = 0;
  head.bytes += std::min(stream.Read(&present, 1), 1u);
  head.isPresent = present != 0;
  if (!head.isPresent) return;
  head.encoded = ReadHeadNumber(stream, head);
  if (head.encoded != 0) head.encodedSize = ReadHeadNumber(stream, head);
}

Bytes TagHead(int kind, std::string_view tag) {
  std::string known = UpperText(tag);
  if (!IsTag(known)) known = kUnknownTag;
  known.resize(kTagHeadBytes - 1, '\0');
  Bytes head(kTagHeadBytes);
  head[0] = static_cast<std::uint8_t>(kind);
  std::memcpy(head.data() + 1, known.data(), known.size());
  return head;
}

Bytes SizeHead(std::int32_t encoded, std::uint32_t size) {
  Bytes head(encoded != 0 ? 9 : 5);
  head[0] = kPresent;
  StoreNumber(head.data() + 1, encoded == -1 ? 1 : static_cast<std::uint32_t>(encoded));
  if (encoded != 0) StoreNumber(head.data() + 5, size);
  return head;
}

Bytes ReadStored(IKvStream& stream, std::uint64_t count) {
  const unsigned length = stream.GetLength();
  const std::uint64_t left = length - std::min(length, stream.GetPosition());
  return ReadGrowing(stream, std::min(count, left));
}

std::uint64_t CopyRest(IKvStream& from, IKvWrite& to) {
  Bytes block(kPieceBytes);
  std::uint64_t done = 0;
  std::uint64_t left = from.GetLength() - std::min(from.GetPosition(), from.GetLength());
  while (left > 0) {
    const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(left, kPieceBytes));
    const unsigned got = std::min(from.Read(block.data(), wanted), wanted);
    const unsigned put = got > 0 ? to.Write(block.data(), got) : 0;
    done += put;
    left -= got;
    if (got == 0 || put < got) break;
  }
  return done;
}

// --- bodies

bool FitsBlock(const std::optional<StoredBitmap>& bitmap, std::uint32_t size) {
  return bitmap && bitmap->Bytes() <= size && size - bitmap->Bytes() <= kMostBehind;
}

PictureBody::PictureBody(IKvStream& stream, const PictureHead& head)
    : buffered(
          (stream.Seek(static_cast<long>(head.bytes + std::min<std::uint64_t>(head.encodedSize,
                                                                              stream.GetLength())),
                       0),
           stream)),
      zlib(&buffered) {}

bool PictureBody::ReadNumber(std::uint32_t& number) {
  BYTE bytes[4] = {};
  const bool isWhole = zlib.Read(bytes, 4) == 4;
  number = NumberAt(bytes);
  return isWhole;
}

bool PictureBody::ReadPosition(std::int32_t& x, std::int32_t& y) {
  std::uint32_t first = 0, second = 0;
  const bool isWhole = ReadNumber(first) && ReadNumber(second);
  x = static_cast<std::int32_t>(first);
  y = static_cast<std::int32_t>(second);
  return isWhole;
}

std::optional<std::uint32_t> PictureBody::ReadSize() {
  std::uint32_t size = 0;
  if (!ReadNumber(size)) return std::nullopt;
  return size;
}

std::optional<Bytes> PictureBody::ReadBitmap() {
  const auto size = ReadSize();
  if (!size) return std::nullopt;
  Bytes bitmap = ReadStart(*size, sizeof(base::DibHeader));
  if (!FitsBlock(StoredBitmap::ParseHead(bitmap), *size)) return std::nullopt;
  bitmap = ReadGrowing(zlib, *size, std::move(bitmap));
  if (bitmap.size() < *size) return std::nullopt;
  return bitmap;
}

Bytes PictureBody::ReadStart(std::uint32_t size, std::uint32_t most) {
  return ReadGrowing(zlib, std::min(size, most));
}

bool PictureBody::Skip(std::uint64_t count) {
  BYTE block[4096];
  while (count > 0) {
    const auto piece = static_cast<unsigned>(std::min<std::uint64_t>(count, sizeof block));
    if (zlib.Read(block, piece) != piece) return false;
    count -= piece;
  }
  return true;
}

bool PictureBody::ReachesEnd() {
  BYTE block[4096];
  std::uint32_t behind = 0;
  unsigned got = sizeof block;
  for (; got == sizeof block && behind < kMostBehind; behind += got) {
    got = zlib.Read(block, sizeof block);
  }
  return zlib.IsComplete();
}

Bytes NewStream(std::span<const std::uint8_t> picture, std::span<const std::uint8_t> mask,
                std::int32_t x, std::int32_t y, std::span<const std::uint8_t> jpeg) {
  const int kind = mask.empty() ? kPictureAlone : kPictureAndMask;
  Bytes bytes = TagHead(kind, "JPG");
  const Bytes sizes = SizeHead(jpeg.empty() ? 0 : 1, static_cast<std::uint32_t>(jpeg.size()));
  bytes.insert(bytes.end(), sizes.begin(), sizes.end());
  bytes.insert(bytes.end(), jpeg.begin(), jpeg.end());
  MemoryWriter memory(bytes);
  {
    KvZlibWrite zlib(&memory);
    WriteNumber(zlib, static_cast<std::uint32_t>(x));
    WriteNumber(zlib, static_cast<std::uint32_t>(y));
    if (jpeg.empty()) WriteBitmap(zlib, picture);
    if (!mask.empty()) WriteBitmap(zlib, mask);
  }
  return bytes;
}

bool IsWholeNote(const Bytes& note) {
  constexpr std::size_t kHeadBytes = 8;
  constexpr std::size_t kBlockBytes = 36;
  if (note.size() < kHeadBytes || std::memcmp(note.data(), "KVQX", 4) != 0) return false;
  const std::uint64_t behind = kHeadBytes + std::uint64_t{NumberAt(note.data() + 4)};
  return note.size() == behind + 4 + kBlockBytes && NumberAt(note.data() + behind) == kBlockBytes;
}

void WriteNumber(IKvWrite& target, std::uint32_t number) {
  BYTE bytes[4];
  StoreNumber(bytes, number);
  target.Write(bytes, sizeof bytes);
}

void WriteBitmap(IKvWrite& target, std::span<const std::uint8_t> bitmap) {
  WriteNumber(target, static_cast<std::uint32_t>(bitmap.size()));
  target.Write(bitmap.data(), static_cast<unsigned>(bitmap.size()));
}

}  // namespace picbox
