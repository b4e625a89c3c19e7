#include "filters/detail/RedEye.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "base/Arithmetic.h"
#include "base/Rows.h"

namespace kernels {
namespace {

// Half of a window's width, in pixels at zoom 1. The window of a red eye has one size; that of the
// other kinds grows by half of it up to the end.
constexpr int kRedWindow = 40;
constexpr int kFirstWindow = 10;
constexpr int kEndOfGrowth = 100;

int Redness(const BYTE* pixel) {
  return pixel[base::kRed] - ((pixel[base::kGreen] + pixel[base::kBlue]) >> 1);
}

int Brightness(const BYTE* pixel) {
  return pixel[0] + pixel[1] + pixel[2];
}

// A share of a picture's side as a column or row.
int PlaceOf(double share, int size) {
  return std::clamp(base::TruncateToInt32(share * size), 0, size - 1);
}

// What of a picture's side lies within `reach` of the middle.
struct Span {
  int first, length;
};
Span SpanAround(int middle, double reach, int size) {
  const int first = std::clamp(base::TruncateToInt32(middle - reach), 0, middle);
  const int last = std::clamp(base::TruncateToInt32(middle + reach), middle, size - 1);
  return {first, last - first + 1};
}

// A column and a row of a window.
struct Place {
  int column, row;
};

// The part of the picture around a click, with a map of the pixels that belong to the eye.
class Window {
 public:
  // Places are 16 bits wide where they are stacked.
  static constexpr double kGreatestReach = 32000;

  Window(const base::WritableRows& whole, int clickX, int clickY, double reach)
      : picture(&whole),
        columns(SpanAround(clickX, std::min(reach, kGreatestReach), whole.width)),
        rows(SpanAround(clickY, std::min(reach, kGreatestReach), whole.height)),
        click{clickX - columns.first, clickY - rows.first},
        map(static_cast<std::size_t>(Area())) {}

  int Width() const { return columns.length; }
  int Height() const { return rows.length; }
  std::int64_t Area() const { return std::int64_t{Width()} * Height(); }

  BYTE* Pixel(Place at) const {
    return picture->colour[rows.first + at.row] + base::ColourOffset(columns.first + at.column);
  }
  BYTE& Cell(Place at) {
    return map[static_cast<std::size_t>(at.row) * static_cast<std::size_t>(Width()) +
               static_cast<std::size_t>(at.column)];
  }

  // Maps what belongs to the region and hangs together with the click, on a map that is cleared
  // before; enter(pixel) is called once for each.
  template <class Belongs, class Enter>
  void Fill(Belongs belongs, Enter enter) {
    std::fill(map.begin(), map.end(), BYTE{0});
    FillAlongRows([&](Place at) { return Cell(at) == 0 && belongs(Pixel(at)); },
                  [&](Place at) {
                    Cell(at) = 1;
                    enter(Pixel(at));
                  });
  }

  std::int64_t Count() const { return std::count(map.begin(), map.end(), BYTE{1}); }

  bool TouchesBorder() {
    for (int column = 0; column < Width(); ++column) {
      if (Cell({column, 0}) || Cell({column, Height() - 1})) return true;
    }
    for (int row = 0; row < Height(); ++row) {
      if (Cell({0, row}) || Cell({Width() - 1, row})) return true;
    }
    return false;
  }

  // Of what is mapped in the window without its outermost rows and columns.
  struct Shape {
    std::int64_t area = 0;
    std::int64_t perimeter = 0;

    // By perimeter^2 / (4 pi area), which is 1.27 for a disc. Nothing is not ragged.
    bool IsRagged() const {
      const auto length = static_cast<double>(perimeter);
      return length * length / (static_cast<double>(area) * 12.56) > 3.0;
    }
  };
  Shape Measure() {
    Shape shape;
    for (int row = 1; row < Height() - 1; ++row) {
      for (int column = 1; column < Width() - 1; ++column) {
        if (!Cell({column, row})) continue;
        ++shape.area;
        const bool isInside = Cell({column - 1, row}) && Cell({column + 1, row}) &&
                              Cell({column, row - 1}) && Cell({column, row + 1});
        shape.perimeter += !isInside;
      }
    }
    return shape;
  }

  // Calls change(place, neighbour) for the first and the last mapped place of each row and then of
  // each column, with the neighbour on the outer side.
  template <class Change>
  void ChangeEdges(Change change) {
    for (int row = 0; row < Height(); ++row) {
      ChangeEnds(
          Width(),
          [row](int i) {
            return Place{i, row};
          },
          change);
    }
    for (int column = 0; column < Width(); ++column) {
      ChangeEnds(
          Height(),
          [column](int i) {
            return Place{column, i};
          },
          change);
    }
  }

 private:
  // A run of places whose neighbours in the row that lies in the direction are to be looked at.
  struct Segment {
    std::uint16_t row, left, right;
    std::int16_t direction;
  };

  // On the call stack, whole. What finds no place is dropped.
  class SegmentStack {
   public:
    explicit SegmentStack(int windowHeight) : height(windowHeight) {}

    void Push(int row, int left, int right, int direction) {
      const int next = row + direction;
      if (count == segments.size() || next < 0 || next >= height) return;
      segments[count++] = {static_cast<std::uint16_t>(row), static_cast<std::uint16_t>(left),
                           static_cast<std::uint16_t>(right), static_cast<std::int16_t>(direction)};
    }
    bool IsEmpty() const { return count == 0; }
    Segment Pop() { return segments[--count]; }

   private:
    const int height;
    std::size_t count = 0;
    std::array<Segment, 10000> segments;
  };

  // A scan-line fill: a run that is filled leaves what lies beside it in the next row, and what
  // leaks back past its ends in the row that it came from.
  template <class IsOpen, class Enter>
  void FillAlongRows(IsOpen isOpen, Enter enter) const {
    SegmentStack stack(Height());
    stack.Push(click.row, click.column, click.column, 1);
    stack.Push(click.row + 1, click.column, click.column, -1);
    while (!stack.IsEmpty()) {
      const Segment from = stack.Pop();
      const int row = from.row + from.direction;
      int x = from.left;
      while (x >= 0 && isOpen(Place{x, row})) enter(Place{x--, row});
      int start = x + 1;
      bool isRun = start <= from.left;
      if (isRun) {
        if (start < from.left) stack.Push(row, start, from.left - 1, -from.direction);
        x = from.left + 1;
      }
      do {
        if (isRun) {
          while (x < Width() && isOpen(Place{x, row})) enter(Place{x++, row});
          stack.Push(row, start, x - 1, from.direction);
          if (x > from.right + 1) stack.Push(row, from.right + 1, x - 1, -from.direction);
        }
        ++x;
        while (x <= from.right && !isOpen(Place{x, row})) ++x;
        start = x;
        isRun = true;
      } while (x <= from.right);
    }
  }

  // The outermost places of the line have no neighbour and are not looked at.
  template <class PlaceAt, class Change>
  void ChangeEnds(int length, PlaceAt placeAt, Change change) {
    int first = 1;
    while (first < length - 1 && !Cell(placeAt(first))) ++first;
    if (first >= length - 1) return;
    change(placeAt(first), placeAt(first - 1));
    int last = length - 2;
    while (last > first && !Cell(placeAt(last))) --last;
    change(placeAt(last), placeAt(last + 1));
  }

  const base::WritableRows* picture;
  Span columns, rows;
  Place click;
  std::vector<BYTE> map;  // 1 for what belongs to the eye, row after row
};

// One eye: finds the threshold and the window that part it from what is around it, and fills it.
class Eye {
 public:
  Eye(const base::WritableRows& whole, double givenZoom, const editing::RedEyeClick& click,
      const std::atomic<bool>& abortFlag)
      : picture(whole),
        zoom(givenZoom),
        abort(abortFlag),
        x(PlaceOf(click.x, whole.width)),
        y(PlaceOf(click.y, whole.height)),
        kind(EyeKindOf(ClickedPixel())),
        window(whole, x, y, Reach(kind == EyeKind::Red ? kRedWindow : kFirstWindow)) {}

  void Find(int correction) {
    if (kind == EyeKind::Red) {
      FindRedThreshold(correction);
      return;
    }
    threshold = kind == EyeKind::White ? 3 * correction + 615
                : kind == EyeKind::Cat ? correction + 205
                                       : correction + 50;
    Grow();
  }

  void Recolour(int darkness) {
    const std::array<BYTE, 256> greys = Greys(darkness);
    window.Fill([this](const BYTE* pixel) { return Belongs(pixel, threshold); },
                [&greys](BYTE* pixel) {
                  const BYTE grey = greys[static_cast<std::size_t>(Brightness(pixel) / 3)];
                  std::fill_n(pixel, base::kBytesPerPixel, grey);
                });
    if (kind == EyeKind::Green || kind == EyeKind::Blue) return;
    Spread();
    if (kind != EyeKind::White) Soften();
  }

 private:
  // A step of the threshold towards the end of its range keeps more out of the region, or, with the
  // bright eye of an animal, takes more in.
  static constexpr int kLeastOfCat = 155;
  static constexpr int kGreatestOfColour = 100;

  BYTE* ClickedPixel() const { return picture.colour[y] + base::ColourOffset(x); }

  // No window is smaller than the clicked pixel.
  double Reach(int size) const { return size * zoom > 0 ? size * zoom : 0; }

  bool Belongs(const BYTE* pixel, int least) const {
    const int blue = pixel[base::kBlue];
    const int green = pixel[base::kGreen];
    const int red = pixel[base::kRed];
    switch (kind) {
      case EyeKind::Red:
        return Redness(pixel) >= least;
      case EyeKind::Green:
        return green - ((red + blue) >> 1) >= least;
      case EyeKind::Blue:
        return blue - ((red + green) >> 1) >= least;
      case EyeKind::Cat:
        return (green + blue) >> 1 >= least;
      default:
        return Brightness(pixel) >= least;
    }
  }

  void Map(int least) {
    window.Fill([this, least](const BYTE* pixel) { return Belongs(pixel, least); }, [](BYTE*) {});
  }

  std::int64_t ShareOfWindow(double share) const {
    return static_cast<std::int64_t>(share * static_cast<double>(window.Area()));
  }

  // --- red eyes

  bool IsBadRed(int least) {
    Map(least);
    const Window::Shape shape = window.Measure();
    return shape.IsRagged() || shape.area > ShareOfWindow(0.4);
  }

  // The least threshold that gives a compact region, as far as halving finds it. It is never below
  // 3: from 30 down the halves are 15, 7, 3 and 1, which is not tried.
  int SearchRed() {
    int bad = 0;
    int good = 255;
    for (int least = 30; least > bad + 1 && !abort;) {
      (IsBadRed(least) ? bad : good) = least;
      least = (bad + good) >> 1;
    }
    return good;
  }

  // Between what was found and the redness under the click; a fifth of the way without correction.
  void FindRedThreshold(int correction) {
    const int found = SearchRed();
    const int redness = Redness(ClickedPixel());
    int base = (redness - found) / 5 + found;
    int below = base - found;
    int above = redness - base;
    if (redness < found) {
      base = found + 50;
      below = above = 50;
    }
    threshold = base + correction * (correction < 1 ? below : above) / 50;
  }

  // --- eyes of the other kinds

  bool IsGood() {
    Map(threshold);
    return !window.TouchesBorder() && window.Count() <= ShareOfWindow(0.3);
  }

  // True unless the threshold was at the end of its range; it stays there then.
  bool Step() {
    switch (kind) {
      case EyeKind::White:
        return false;
      case EyeKind::Cat:
        if (--threshold >= kLeastOfCat) return true;
        threshold = kLeastOfCat;
        return false;
      default:
        if (++threshold <= kGreatestOfColour) return true;
        threshold = kGreatestOfColour;
        return false;
    }
  }

  // Steps as long as the region is ragged; true when that made it good.
  bool StepWhileRagged() {
    while (!abort) {
      if (!window.Measure().IsRagged() || !Step()) return false;
      if (IsGood()) return true;
    }
    return false;
  }

  void Grow() {
    int size = kFirstWindow;
    while (!abort && !IsGood() && !StepWhileRagged()) {
      size += size / 2;
      window = Window(picture, x, y, Reach(size));
      if (size >= kEndOfGrowth) return;
      Step();
    }
  }

  // --- the colour

  std::array<BYTE, 256> Greys(int darkness) const {
    const double gamma = darkness * (darkness > 0 ? 0.17 : 0.01) + 1.5;
    const double exponent = kind == EyeKind::Cat ? 2 * gamma : gamma;
    std::array<BYTE, 256> greys;
    for (int mean = 0; mean < 256; ++mean) {
      const double grey = kind == EyeKind::White ? std::max(mean - (gamma - 1) * 30, 0.0)
                                                 : std::pow(mean / 255.0, exponent) * 255;
      greys[static_cast<std::size_t>(mean)] = base::TruncateToByte(grey);
    }
    return greys;
  }

  // Takes one more pixel at each end; of a red eye only what is still red.
  void Spread() {
    window.ChangeEdges([this](Place at, Place beside) {
      BYTE* const pixel = window.Pixel(beside);
      if (kind == EyeKind::Red && Redness(pixel) <= 0) return;
      window.Cell(beside) = 1;
      std::copy_n(window.Pixel(at), base::kBytesPerPixel, pixel);
    });
  }

  void Soften() {
    window.ChangeEdges([this](Place at, Place beside) {
      BYTE* const pixel = window.Pixel(at);
      const BYTE* const outer = window.Pixel(beside);
      for (int channel = 0; channel < base::kBytesPerPixel; ++channel) {
        pixel[channel] = static_cast<BYTE>((outer[channel] + pixel[channel]) >> 1);
      }
    });
  }

  const base::WritableRows& picture;
  const double zoom;
  const std::atomic<bool>& abort;
  const int x, y;  // of the click
  const EyeKind kind;
  int threshold = 0;
  Window window;
};

}  // namespace

EyeKind EyeKindOf(const BYTE* pixel) {
  const int blue = pixel[base::kBlue];
  const int green = pixel[base::kGreen];
  const int red = pixel[base::kRed];
  const auto [least, greatest] = std::minmax({blue, green, red});
  if (blue + green + red >= 691 && greatest - least < 25) return EyeKind::White;
  if (red == greatest) return EyeKind::Red;
  if (green >= 205 || blue >= 205) return EyeKind::Cat;
  return blue > green ? EyeKind::Blue : EyeKind::Green;
}

void RemoveRedEye(const base::WritableRows& picture, double zoom, const editing::RedEyeClick& click,
                  const std::atomic<bool>& abort) {
  Eye eye(picture, zoom, click, abort);
  eye.Find(click.correction);
  eye.Recolour(click.darkness);
}

}  // namespace kernels
