// The pictures of icons, out of the module's resource.
#pragma once

#include <wtypes.h>

#include <string>
#include <vector>

namespace core {

// Packed bitmaps: the picture and its mask. Both are empty when there is no such picture.
struct IconPicture {
  std::vector<BYTE> colour;
  std::vector<BYTE> mask;
};
IconPicture ReadIconPicture(const std::string& name);

}  // namespace core
