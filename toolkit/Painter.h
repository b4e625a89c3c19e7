// What a canvas is drawn with.
#pragma once

#include <span>
#include <string>

#include "toolkit/Geometry.h"

namespace toolkit {

// Rows of a picture as the pipeline has them: three bytes a pixel (blue, green, red), a mask byte
// beside each (0 opaque, 255 nothing there), row 0 at the bottom. The rows stay the caller's and
// are looked at while the call lasts. Without mask rows all is opaque.
struct PictureRows {
  int width = 0, height = 0;
  const std::uint8_t* const* colourRows = nullptr;
  const std::uint8_t* const* maskRows = nullptr;
};

enum class TextAlign { Left, Centre, Right };

// Lives while a paint event lasts. Places are pixels of the canvas, from its left top corner; what
// lies outside is cut off. Lines and round shapes are smoothed. A thickness is in pixels.
class Painter {
 public:
  virtual Size Area() = 0;
  virtual void FillRect(const Rect& place, Colour colour) = 0;
  virtual void DrawLines(std::span<const Spot> corners, Colour colour, double thickness) = 0;
  // A closed shape, filled.
  virtual void FillShape(std::span<const Spot> corners, Colour colour) = 0;
  virtual void DrawCircle(Spot centre, double radius, Colour colour, double thickness) = 0;
  virtual void FillCircle(Spot centre, double radius, Colour colour) = 0;
  // One line of UTF-8 text with its left top corner at `place`, in the font of the controls.
  virtual void WriteText(Point place, const std::string& text, Colour colour) = 0;
  // The same within a place, in the middle of its height: what is too long ends in dots.
  virtual void WriteLine(const Rect& place, const std::string& text, Colour colour,
                         TextAlign align = TextAlign::Left) = 0;
  // The whole picture, smoothed when it is made smaller. A pattern of squares shows where nothing
  // is there.
  virtual void DrawPicture(const Rect& place, const PictureRows& picture) = 0;
  // Darkens the rectangle, by 0 (not at all) to 1 (black).
  virtual void Shade(const Rect& place, double strength) = 0;

 protected:
  ~Painter() = default;
};

}  // namespace toolkit
