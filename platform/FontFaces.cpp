#include "platform/FontFaces.h"

#include <algorithm>
#include <tuple>

namespace platform {

void SortFaces(std::vector<FontFace>& faces) {
  const auto rank = [](const FontFace& face) {
    return std::tie(face.family, face.style, face.file, face.index);
  };
  std::sort(faces.begin(), faces.end(),
            [&](const FontFace& a, const FontFace& b) { return rank(a) < rank(b); });
  faces.erase(std::unique(faces.begin(), faces.end()), faces.end());
}

}  // namespace platform
