#include "tests/filters/geometry/RotationModel.h"

#include <array>
#include <cmath>
#include <map>

namespace testing_support {
namespace {

using Pixel = std::array<int, 4>;
constexpr Pixel kNone = {0, 0, 0, 255};

// Pixels by their places; where there is none there is nothing.
struct Plane : std::map<std::pair<int, int>, Pixel> {
  Pixel At(int x, int y) const {
    const auto found = find({x, y});
    return found == end() ? kNone : found->second;
  }
};

Pixel Mixed(const Pixel& p, const Pixel& c, int f14, int f5) {
  Pixel mixed = c;
  const int wide = (p[3] - c[3]) * f14 + (255 - p[3]) * 16384;
  const bool straight = p[3] == c[3] || wide == 0;
  for (std::size_t i = 0; i < 3; ++i) {
    mixed[i] =
        straight
            ? p[i] + static_cast<int>((c[i] - p[i]) * f5 * 0.03125 + 0.5)
            : ((c[i] * (255 - c[3]) - p[i] * (255 - p[3])) * f14 + (255 - p[3]) * 16384 * p[i]) /
                  wide;
  }
  if (!straight) mixed[3] = p[3] + (((c[3] - p[3]) * f14 + 8192) >> 14);
  return mixed[3] == 255 ? kNone : mixed;
}

// Moves lines: pixel number i of line number l is taken by get(l, i) and put by put(l, i, pixel).
template <class Get, class Put>
void Shear(int firstLine, int lines, int length, double middle, double factor, double rest, Get get,
           Put put) {
  for (int l = firstLine; l < firstLine + lines; ++l) {
    double d = (l - middle) * factor - rest;
    const int way = d <= 0 ? -1 : 1;
    d = std::fabs(d);
    const int m = static_cast<int>(d);
    const int f14 = static_cast<int>((d - m) * 16384 + 0.5);
    const int f5 = static_cast<int>((d - m) * 32);
    // From the end that leads, one step ahead of it.
    Pixel previous = kNone;
    for (int step = -1; step < length; ++step) {
      const auto place = [&](int s) { return way > 0 ? length - 1 - s : s; };
      const Pixel current = get(l, place(step + 1));
      const Pixel pixel = f14 == 0 ? previous : Mixed(previous, current, f14, f5);
      put(l, place(step) + way * m, pixel[3] == 255 ? kNone : pixel);
      previous = current;
    }
  }
}

Plane QuarterTurned(const Picture& s, int q, bool mirror, int& width, int& height) {
  const int w = s.width - 1;
  const int h = s.height - 1;
  width = q % 2 ? s.height : s.width;
  height = q % 2 ? s.width : s.height;
  Plane plane;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const std::pair<int, int> from[2][4] = {{{y, x}, {h - x, y}, {h - y, w - x}, {x, w - y}},
                                              {{y, w - x}, {h - x, w - y}, {h - y, x}, {x, y}}};
      const auto [row, column] = from[mirror][q];
      const BYTE* const c = s.Colour(column, row);
      plane[{x, y}] = {c[0], c[1], c[2], s.Mask(column, row)};
    }
  }
  return plane;
}

}  // namespace

Picture TurnByModel(const Picture& given, const kernels::RotationGeometry& g, bool mirror) {
  int w = 0;
  int h = 0;
  Plane first = QuarterTurned(given, g.quarterTurns, mirror, w, h);
  Plane last;
  if (g.isQuarterTurn) {
    last = first;
  } else {
    const int reachX = static_cast<int>(std::abs(g.rowReach)) / 2;
    const int reachY = static_cast<int>(std::abs(g.columnReach)) / 2;
    Plane second, third;
    Shear(
        0, h, w, (h - 1) * 0.5, g.rowShear, 0, [&](int l, int i) { return first.At(i, l); },
        [&](int l, int i, const Pixel& p) {
          second[{i, l}] = p;
        });
    Shear(
        -reachX, w + 2 * reachX, h, (w - 1) * 0.5, g.columnShear, g.restY,
        [&](int l, int i) { return second.At(l, i); },
        [&](int l, int i, const Pixel& p) {
          third[{l, i}] = p;
        });
    Shear(
        -reachY - 3, h + 2 * reachY + 6, w + 2 * reachX, (h - 1) * 0.5, g.rowShear, g.restX,
        [&](int l, int i) { return third.At(i - reachX, l); },
        [&](int l, int i, const Pixel& p) {
          last[{i + static_cast<int>(g.PlaceX()), l + static_cast<int>(g.PlaceY())}] = p;
        });
  }
  Picture result(static_cast<int>(g.width), static_cast<int>(g.height));
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x) {
      const Pixel p = last.At(x, y);
      for (int i = 0; i < 3; ++i)
        result.Colour(x, y)[i] = static_cast<BYTE>(p[static_cast<std::size_t>(i)]);
      result.Mask(x, y) = static_cast<BYTE>(p[3]);
    }
  }
  return result;
}

}  // namespace testing_support
