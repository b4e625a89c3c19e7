// The bytes of one stored picture: heads of two forms, and a body of an image file and a
// compressed stream.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "imageio/StoredBitmap.h"
#include "storage/BufferedStream.h"
#include "storage/KvZlib.h"
#include "storage/PictureHead.h"

namespace picbox {

// The 5 bytes, for a stream that is at its start. Without a known tag and a kind from 1 to 3 the
// head is empty and the stream at its start again.
FXBOX_API PictureHead ReadTagHead(IKvStream& stream);
// The rest, at the stream's position; what is cut off counts as 0.
FXBOX_API void ReadSizeHead(IKvStream& stream, PictureHead& head);

FXBOX_API Bytes TagHead(int kind, std::string_view tag);
// An `encoded` of -1 is stored as 1.
FXBOX_API Bytes SizeHead(std::int32_t encoded, std::uint32_t size);

// At most `count` bytes from the stream's position; memory grows with what is there.
FXBOX_API Bytes ReadStored(IKvStream& stream, std::uint64_t count);

// Everything from the stream's position on, piece by piece. Gives the number of bytes that were
// written.
FXBOX_API std::uint64_t CopyRest(IKvStream& from, IKvWrite& to);

// Whether a block of this size can hold the bitmap: not much more than it, where anything else
// would have to be read as well.
FXBOX_API bool FitsBlock(const std::optional<imageio::StoredBitmap>& bitmap, std::uint32_t size);

// Reads a body from the place behind the image file on, piece by piece in the order of the file.
// May throw what the stream throws, and KvStreamException.
class FXBOX_API PictureBody {
 public:
  PictureBody(IKvStream& stream, const PictureHead& head);

  // False when it is cut off.
  bool ReadPosition(std::int32_t& x, std::int32_t& y);
  // A packed bitmap behind its size; nothing when it is cut off or does not fit its size.
  std::optional<Bytes> ReadBitmap();
  // The size and, as far as they are there, the first bytes of a bitmap.
  std::optional<std::uint32_t> ReadSize();
  Bytes ReadStart(std::uint32_t size, std::uint32_t most);
  // Passes over bytes in constant memory; false when they are not all there.
  bool Skip(std::uint64_t count);
  // Reads the rest, a megabyte at most. False when there is no end marker.
  bool ReachesEnd();

 private:
  bool ReadNumber(std::uint32_t& number);

  BufferedReader buffered;
  KvZlibRead zlib;
};

// A whole stream of the new format: bitmaps without `jpeg`, else that file and the mask alone. The
// bitmaps are as they are to be stored.
FXBOX_API Bytes NewStream(std::span<const std::uint8_t> picture, std::span<const std::uint8_t> mask,
                          std::int32_t x, std::int32_t y, std::span<const std::uint8_t> jpeg);

// Writes numbers and bitmaps in the order of a body.
FXBOX_API void WriteNumber(IKvWrite& target, std::uint32_t number);
FXBOX_API void WriteBitmap(IKvWrite& target, std::span<const std::uint8_t> bitmap);

// The bytes of a note: "KVQX", the length of the text with its zero, the text, the number 36, 36
// bytes. All that a reader goes by is there.
FXBOX_API bool IsWholeNote(const Bytes& note);

}  // namespace picbox
