// Shapes of letters as curves, and what they cover of the pixels.
#pragma once

#include <cstdint>
#include <vector>

namespace text {

// A length of 64 is a pixel; y grows upwards.
inline constexpr int kUnit = 64;

struct Point {
  std::int64_t x = 0, y = 0;
};

// A turn about the origin, counter-clockwise. Exact for quarter turns, and the same on every
// system: it takes nothing from the mathematical library but additions and products.
struct Turn {
  double cosine = 1, sine = 0;

  // In tenths of a degree, any number of them.
  static Turn ByTenths(std::int64_t tenths);
  bool IsNone() const { return cosine == 1; }
  // Rounded to units.
  Point operator()(Point point) const;
};

// Closed curves, filled where they wind around. The numbers are those of FreeType's FT_Outline.
struct Outline {
  std::vector<Point> points;
  std::vector<std::uint8_t> tags;   // of each point
  std::vector<std::uint16_t> ends;  // the last point of each curve
  int flags = 0;
};

// In pixels, `right` and `top` behind the last one.
struct Box {
  int left = 0, bottom = 0, right = 0, top = 0;

  bool IsEmpty() const { return left >= right || bottom >= top; }
  std::int64_t Area() const;
  Box CutTo(const Box& other) const;
  Box MovedBy(std::int64_t x, std::int64_t y) const;
};

// How much of each pixel is covered, 0..255; the bottom row first.
struct Coverage {
  Box box;
  std::vector<std::uint8_t> bytes;

  const std::uint8_t* Row(int y) const {
    return bytes.data() + static_cast<std::ptrdiff_t>(y - box.bottom) * (box.right - box.left);
  }
};

Outline Turned(const Outline& outline, const Turn& turn);

// The pixels that an outline can touch when it is moved by `offset`; empty for one without points,
// and for one so far off that no picture reaches it.
Box BoxOf(const Outline& outline, Point offset);

}  // namespace text
