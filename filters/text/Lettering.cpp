// The overlay of a text: pieces of coverage, found by the cell of the picture that they lie in.
#include <algorithm>
#include <array>
#include <map>
#include <tuple>

#include "base/Rows.h"
#include "filters/pixels/Compose.h"
#include "filters/text/Overlay.h"

namespace text {
namespace {

constexpr int kCellWidth = 256;  // also what is composed at once
constexpr int kCellHeight = 64;
// A letter of more pixels is drawn as far as the picture reaches, each time that it stands there.
constexpr std::int64_t kMostShared = std::int64_t{1} << 20;

// A letter's coverage, with its border where it has one; `edge` holds the letter as well.
struct Stamp {
  Coverage fill, edge;
};

struct Print {
  std::shared_ptr<const Stamp> stamp;
  int x = 0, y = 0;  // of the stamp's own origin
};

class Lettering final : public Overlay {
 public:
  Lettering(const LetterInk& ink, const Box& picture)
      : ink_(ink),
        columns_((picture.right + kCellWidth - 1) / kCellWidth),
        cells_(static_cast<std::size_t>(columns_) *
               static_cast<std::size_t>((picture.top + kCellHeight - 1) / kCellHeight)),
        picture_(picture) {}

  bool IsEmpty() const { return prints_.empty(); }
  void Add(const Print& print);
  void ComposeRow(std::uint8_t* colour, std::uint8_t* mask, int x, int y, int count) const override;

 private:
  using Bytes = std::array<std::uint8_t, kCellWidth>;
  // What a piece of a row is covered with, and from where to where.
  struct Piece {
    Bytes fill = {}, edge = {};
    int first = kCellWidth, end = 0;
  };

  void Gather(const Print& print, int x, int y, int count, Piece& piece) const;
  void Lay(const Piece& piece, std::uint8_t* colour, std::uint8_t* mask) const;

  LetterInk ink_;
  int columns_;
  std::vector<std::vector<std::uint32_t>> cells_;
  Box picture_;
  std::vector<Print> prints_;
};

Box OuterBox(const Stamp& stamp) {
  return stamp.edge.bytes.empty() ? stamp.fill.box : stamp.edge.box;
}

void Lettering::Add(const Print& print) {
  const Box seen = OuterBox(*print.stamp).MovedBy(print.x, print.y).CutTo(picture_);
  if (seen.IsEmpty()) return;
  const auto number = static_cast<std::uint32_t>(prints_.size());
  prints_.push_back(print);
  for (int row = seen.bottom / kCellHeight; row <= (seen.top - 1) / kCellHeight; ++row) {
    for (int column = seen.left / kCellWidth; column <= (seen.right - 1) / kCellWidth; ++column) {
      cells_[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
             static_cast<std::size_t>(column)]
          .push_back(number);
    }
  }
}

// The greater of what is there and what is added: letters that join have the same edges there.
void Deepen(Coverage const& coverage, int offsetX, int y, int x, int count, std::uint8_t* to,
            int& first, int& end) {
  if (coverage.bytes.empty() || y < coverage.box.bottom || y >= coverage.box.top) return;
  const int from = std::max(coverage.box.left + offsetX, x);
  const int until = std::min(coverage.box.right + offsetX, x + count);
  if (from >= until) return;
  const std::uint8_t* const row = coverage.Row(y) - coverage.box.left - offsetX;
  for (int at = from; at < until; ++at) to[at - x] = std::max(to[at - x], row[at]);
  first = std::min(first, from - x);
  end = std::max(end, until - x);
}

void Lettering::Gather(const Print& print, int x, int y, int count, Piece& piece) const {
  const Stamp& stamp = *print.stamp;
  Deepen(stamp.fill, print.x, y - print.y, x, count, piece.fill.data(), piece.first, piece.end);
  Deepen(stamp.edge, print.x, y - print.y, x, count, piece.edge.data(), piece.first, piece.end);
}

void Lettering::Lay(const Piece& piece, std::uint8_t* colour, std::uint8_t* mask) const {
  std::array<std::uint8_t, 3 * kCellWidth> overColour;
  Bytes overMask;
  for (int i = piece.first; i < piece.end; ++i) {
    const auto at = static_cast<std::size_t>(i);
    const int fill = piece.fill[at];
    const int covered = std::max<int>(fill, piece.edge[at]);
    const auto mixed = [&](std::uint8_t ofFill, std::uint8_t ofEdge) {
      return covered == 0
                 ? ofFill
                 : static_cast<std::uint8_t>((ofFill * fill + ofEdge * (covered - fill)) / covered);
    };
    overColour[3 * at] = mixed(ink_.fill.blue, ink_.edge.blue);
    overColour[3 * at + 1] = mixed(ink_.fill.green, ink_.edge.green);
    overColour[3 * at + 2] = mixed(ink_.fill.red, ink_.edge.red);
    overMask[at] = static_cast<std::uint8_t>(255 - covered * ink_.opacity / 100);
  }
  const auto first = static_cast<std::size_t>(piece.first);
  kernels::ComposeRow(colour ? colour + 3 * first : nullptr, mask + first,
                      overColour.data() + 3 * first, overMask.data() + first,
                      piece.end - piece.first);
}

void Lettering::ComposeRow(std::uint8_t* colour, std::uint8_t* mask, int x, int y,
                           int count) const {
  const int end = x + count;
  for (int from = x; from < end;) {
    const int column = from / kCellWidth;
    const int until = std::min((column + 1) * kCellWidth, end);
    const auto& cell =
        cells_[static_cast<std::size_t>(y / kCellHeight) * static_cast<std::size_t>(columns_) +
               static_cast<std::size_t>(column)];
    if (!cell.empty()) {
      Piece piece;
      for (const std::uint32_t number : cell) {
        Gather(prints_[number], from, y, until - from, piece);
      }
      if (piece.first < piece.end) {
        Lay(piece, colour ? colour + base::ColourOffset(from - x) : nullptr, mask + (from - x));
      }
    }
    from = until;
  }
}

// --- drawing

// How much is drawn before the rest is left out: bounds for time and memory under any text.
class Budget {
 public:
  explicit Budget(const Box& picture)
      : printed_(64 * picture.Area() + (1 << 26)), kept_(8 * picture.Area() + (1 << 26)) {}
  bool TakePrint(std::int64_t area) { return (printed_ -= area + 64) > 0; }
  bool TakeStamp(std::int64_t area) { return (kept_ -= area) > 0; }

 private:
  std::int64_t printed_, kept_;
};

// A point as whole pixels and the rest of one.
struct SplitPoint {
  std::int64_t pixelX, pixelY;
  int restX, restY;
};

SplitPoint Split(Point point) {
  const auto rest = [](std::int64_t units) {
    return static_cast<int>(((units % kUnit) + kUnit) % kUnit);
  };
  const int x = rest(point.x);
  const int y = rest(point.y);
  return {(point.x - x) / kUnit, (point.y - y) / kUnit, x, y};
}

class Drawing {
 public:
  Drawing(FontChoice& fonts, const LetterInk& ink, const Placement& placement)
      : fonts_(fonts),
        ink_(ink),
        placement_(placement),
        budget_(placement.Picture()),
        lettering_(std::make_shared<Lettering>(ink, placement.Picture())) {}

  std::shared_ptr<const Overlay> Draw(std::vector<PlacedGlyph> glyphs) {
    // A letter twice at the same place is the letter.
    std::sort(glyphs.begin(), glyphs.end());
    glyphs.erase(std::unique(glyphs.begin(), glyphs.end()), glyphs.end());
    for (const PlacedGlyph& glyph : glyphs) {
      if (!DrawGlyph(glyph)) break;
    }
    return lettering_->IsEmpty() ? nullptr : lettering_;
  }

 private:
  struct Shapes {
    std::shared_ptr<const Outline> fill, edge;  // turned; the edge is null without a border
  };
  using StampKey = std::tuple<std::size_t, std::uint32_t, int, int>;

  // False when the budget is spent.
  bool DrawGlyph(const PlacedGlyph& glyph) {
    const Shapes& shapes = ShapesOf(glyph);
    const Point turned = placement_.turn(glyph.at);
    const SplitPoint at = Split({placement_.anchor.x + turned.x, placement_.anchor.y + turned.y});
    const Outline& outer = shapes.edge ? *shapes.edge : *shapes.fill;
    const Box box = BoxOf(outer, {at.restX, at.restY});
    if (box.IsEmpty()) return true;
    const Box once = box.MovedBy(at.pixelX, at.pixelY);
    const Placement::Steps steps = placement_.StepsFor(once);
    for (std::int64_t y = steps.firstY; y <= steps.lastY; ++y) {
      for (std::int64_t x = steps.firstX; x <= steps.lastX; ++x) {
        const std::int64_t moveX = at.pixelX + x * placement_.stepX;
        const std::int64_t moveY = at.pixelY + y * placement_.stepY;
        if (!PrintAt(glyph, shapes, at, box, moveX, moveY)) return false;
      }
    }
    return true;
  }

  bool PrintAt(const PlacedGlyph& glyph, const Shapes& shapes, const SplitPoint& at, const Box& box,
               std::int64_t moveX, std::int64_t moveY) {
    const Box seen = box.MovedBy(moveX, moveY).CutTo(placement_.Picture());
    if (seen.IsEmpty()) return true;
    if (!budget_.TakePrint(seen.Area())) return false;
    std::shared_ptr<const Stamp> stamp;
    const bool isShared = box.Area() <= kMostShared;
    const Box drawn = isShared ? box : seen.MovedBy(-moveX, -moveY);
    auto& known = stamps_[{glyph.font, glyph.glyph, at.restX, at.restY}];
    if (isShared && known) {
      stamp = known;
    } else {
      if (!budget_.TakeStamp(drawn.Area())) return false;
      stamp = MakeStamp(shapes, {at.restX, at.restY}, drawn);
      if (isShared) known = stamp;
    }
    lettering_->Add({stamp, static_cast<int>(moveX), static_cast<int>(moveY)});
    return true;
  }

  std::shared_ptr<const Stamp> MakeStamp(const Shapes& shapes, Point rest, const Box& box) {
    Stamp stamp;
    stamp.fill = rasterizer_.Cover(*shapes.fill, rest, BoxOf(*shapes.fill, rest).CutTo(box));
    if (shapes.edge) stamp.edge = rasterizer_.Cover(*shapes.edge, rest, box);
    return std::make_shared<const Stamp>(std::move(stamp));
  }

  const Shapes& ShapesOf(const PlacedGlyph& glyph) {
    Shapes& shapes = shapes_[{glyph.font, glyph.glyph}];
    if (shapes.fill) return shapes;
    const ChosenFont& chosen = fonts_.At(glyph.font);
    const LetterStyle style{ink_.size, chosen.makeBold, chosen.makeSlanted};
    shapes.fill = TurnedShape(chosen.font->OutlineOf(glyph.glyph, style, 0));
    if (ink_.border > 0) {
      shapes.edge = TurnedShape(chosen.font->OutlineOf(glyph.glyph, style, ink_.border));
    }
    return shapes;
  }

  std::shared_ptr<const Outline> TurnedShape(std::shared_ptr<const Outline> shape) const {
    if (placement_.turn.IsNone()) return shape;
    return std::make_shared<const Outline>(Turned(*shape, placement_.turn));
  }

  FontChoice& fonts_;
  const LetterInk& ink_;
  const Placement& placement_;
  Budget budget_;
  Rasterizer rasterizer_;
  std::map<std::pair<std::size_t, std::uint32_t>, Shapes> shapes_;
  std::map<StampKey, std::shared_ptr<const Stamp>> stamps_;
  std::shared_ptr<Lettering> lettering_;
};

// The first and the last step at which [low, high) reaches into [0, size).
std::pair<std::int64_t, std::int64_t> StepsAlong(int low, int high, int size, int step) {
  if (step == 0)
    return low < size && high > 0 ? std::pair<std::int64_t, std::int64_t>{0, 0}
                                  : std::pair<std::int64_t, std::int64_t>{0, -1};
  const auto floored = [step](std::int64_t value) {
    return value >= 0 ? value / step : -((-value + step - 1) / step);
  };
  // high + k step > 0 and low + k step < size.
  return {floored(-std::int64_t{high}) + 1, floored(std::int64_t{size} - 1 - low)};
}

}  // namespace

Placement::Steps Placement::StepsFor(const Box& box) const {
  const auto [firstX, lastX] = StepsAlong(box.left, box.right, pictureWidth, stepX);
  const auto [firstY, lastY] = StepsAlong(box.bottom, box.top, pictureHeight, stepY);
  return {firstX, lastX, firstY, lastY};
}

std::shared_ptr<const Overlay> DrawLetters(const TextBlock& block, FontChoice& fonts,
                                           const LetterInk& ink, const Placement& placement) {
  if (block.glyphs.empty() || ink.opacity <= 0 || placement.Picture().IsEmpty()) return nullptr;
  return Drawing(fonts, ink, placement).Draw(block.glyphs);
}

}  // namespace text
