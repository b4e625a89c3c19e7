// The forms in which sizes and rectangles stand on the command line.
#pragma once

#include <string>

namespace program {

// In pixels. Pictures of the pipeline have sides of at least 1.
struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

// Part of a picture; y counts upwards from the bottom row, as everywhere in the pipeline.
struct Rectangle {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rectangle&) const = default;
};

// "640x480". `option` is named in the message of the UsageError for anything else.
Size ParseSize(const std::string& text, const std::string& option);
// The same, or "640" for a square.
Size ParseBox(const std::string& text, const std::string& option);
// "X,Y,WIDTH,HEIGHT"; the corner may lie outside the picture, the sides are at least 1.
Rectangle ParseRectangle(const std::string& text, const std::string& option);

// The part of the rectangle that lies within a picture of this size; its sides are 0 where there is
// none.
Rectangle CutTo(const Rectangle& rectangle, Size picture);

}  // namespace program
