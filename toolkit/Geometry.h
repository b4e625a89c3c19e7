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

// `share` (0 to 1) of the second colour in the first one.
inline Colour MixedColour(Colour first, Colour second, double share) {
  const auto mixed = [share](int from, int to) {
    return static_cast<std::uint8_t>(from + (to - from) * share + 0.5);
  };
  return {mixed(first.red, second.red), mixed(first.green, second.green),
          mixed(first.blue, second.blue)};
}

}  // namespace toolkit
