// A watermark that is a picture: read from a file, scaled, turned, laid over once or again and
// again.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "base/Export.h"
#include "filters/text/Overlay.h"

namespace text {

// Why a picture cannot be drawn, in words for the user.
class FXBOX_API SignError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Full path of a file on this machine, in UTF-8. Throws SignError for relative paths, shares,
// devices and anything that is no regular file.
FXBOX_API void CheckSignPath(const std::string& path);

struct Sign {
  std::string path;
  int height = 1;  // pixels before it is turned
  Align align = Align::Centre;
  int opacity = 100;  // percent, 0..100
  bool repeats = false;
  double spacing = 0;  // pixels between repetitions
};

// Reads the file; takes the steps of the placement from the picture's size. Null where nothing can
// be seen. Throws SignError.
std::shared_ptr<const Overlay> DrawSign(const Sign& sign, Placement placement);

// How far repetitions of a block lie apart, in pixels.
int StepFor(double length, double spacing, const Placement& placement);

}  // namespace text
