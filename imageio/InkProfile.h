// The colours that four inks give on paper, by the profile that a picture file brings.
#pragma once

#include <wtypes.h>

#include <memory>

#include "imageio/ImageFile.h"

namespace imageio {

// How the inks of a row lie: four bytes a pixel, and so many others behind them.
struct InkLayout {
  bool isInverted = false;  // 255 is no ink
  int others = 0;
};

// Turns inks into the colours of sRGB. White paper is white and the darkest print is black, as far
// as the profile tells what that is.
class InkProfile {
 public:
  // Takes the profile out of the metadata: the rows are of sRGB from then on. Null, and the
  // metadata stay, where there is none, or none of cyan, magenta, yellow and black that can be
  // used.
  static std::unique_ptr<InkProfile> Take(Metadata& metadata, const InkLayout& layout);

  // Writes blue, green and red of `count` pixels.
  void Convert(const BYTE* inks, BYTE* colour, int count) const;

 private:
  struct Closer {
    void operator()(void* transform) const;
  };
  explicit InkProfile(void* opened) : transform(opened) {}

  std::unique_ptr<void, Closer> transform;
};

}  // namespace imageio
