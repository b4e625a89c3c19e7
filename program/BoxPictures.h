// What the box commands tell of a picture, and how pictures go in and out of a box.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "imageio/ImageFile.h"
#include "program/BoxFile.h"

namespace program {

using PictureBytes = picbox::Bytes;

// Nothing where a value does not apply or cannot be read.
struct PictureDetails {
  std::string name;
  const char* generation = "";
  int kind = 0;
  std::string tag;
  unsigned headerSize = 0;
  std::optional<std::int32_t> x, y;
  std::optional<int> width, height, bits;
  std::optional<std::uint32_t> colours;
  std::uint64_t bytes = 0;
  std::optional<std::uint64_t> encodedBytes;
  std::optional<std::string> text;   // of the note, in the code page
  std::optional<std::string> block;  // 36 bytes
};

// Reads no more than it needs to know; the note only with `withNote`.
PictureDetails Describe(BoxFile& box, const BoxEntry& entry, bool withNote);

// The faults of a picture, in words; empty when it is whole. Reads all of it.
std::string FaultOf(BoxFile& box, const BoxEntry& entry);

// The names of notes that cannot be read.
std::vector<std::string> BrokenNotes(BoxFile& box);

// The picture as a file in memory that any decoder reads: as it is stored, or made of its bitmaps
// in this format. A FileError where there is no picture.
PictureBytes PictureFileOf(BoxFile& box, const BoxEntry& entry, imageio::Format format);

// Splits "BOX::NAME"; nothing for any other text.
struct BoxAndName {
  std::string box;
  std::string name;  // in the code page
};
std::optional<BoxAndName> SplitBoxInput(const std::string& input);
// The bytes of a picture file for the picture "BOX::NAME".
PictureBytes ReadBoxInput(const BoxAndName& input);

}  // namespace program
