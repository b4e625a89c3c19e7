// What stands in front of a stored picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/Export.h"

namespace picbox {

using Bytes = std::vector<std::uint8_t>;

enum PictureKind { kNoKind = 0, kPictureAndMask = 1, kPictureAlone = 2, kMaskAlone = 3 };

// What stands in front of the body. All numbers are little-endian:
//   5 bytes: kind, a tag of 4 upper-case letters; the new format alone
//   1 byte: 0 when nothing follows; else
//   4 bytes: encoded, 0 when the picture is a bitmap in the compressed part; else
//   4 bytes: the size of the image file that follows
struct FXBOX_API PictureHead {
  int kind = kNoKind;
  std::string tag;  // in upper case; empty for the tag "TYPE" of a type that is not known
  bool isPresent = false;
  std::uint32_t encoded = 0;
  std::uint32_t encodedSize = 0;
  unsigned bytes = 0;  // as many as were really there
};

}  // namespace picbox
