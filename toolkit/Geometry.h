// Places, sizes and colours on the screen.
#pragma once

#include <cstdint>

namespace toolkit {

// Pixels of the screen; x grows to the right, y downwards.
struct Point {
  int x = 0, y = 0;
  bool operator==(const Point&) const = default;
};

struct Size {
  int width = 0, height = 0;
  bool operator==(const Size&) const = default;
};

struct Rect {
  int x = 0, y = 0, width = 0, height = 0;
  bool operator==(const Rect&) const = default;

  int Right() const { return x + width; }
  int Bottom() const { return y + height; }
  bool Contains(Point p) const { return p.x >= x && p.y >= y && p.x < Right() && p.y < Bottom(); }
};

// A place between pixels, for drawing.
struct Spot {
  double x = 0, y = 0;
  bool operator==(const Spot&) const = default;
};

struct Colour {
  std::uint8_t red = 0, green = 0, blue = 0;
  bool operator==(const Colour&) const = default;
};

}  // namespace toolkit
