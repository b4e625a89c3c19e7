// One face of a font file: which letters it has, how they follow each other, and their outlines.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <tuple>
#include <vector>

#include "filters/text/Outline.h"

namespace text {

// How letters are made. Sizes as in Outline.h.
struct LetterStyle {
  int size = 0;           // of the font, above 0
  bool makeBold = false;  // where the face itself is not
  bool makeSlanted = false;

  auto operator<=>(const LetterStyle&) const = default;
};

// A letter, or several in one, by its number in the font, where it stands behind the one before.
struct ShapedGlyph {
  std::uint32_t glyph = 0;
  Point offset;              // from where the pen is
  std::int64_t advance = 0;  // of the pen, to the right
};

// A piece of a line that goes one way, in one script.
struct TextRun {
  std::u32string_view line;
  std::size_t start = 0, length = 0;
  bool isRightToLeft = false;
  std::uint32_t script = 0;  // four letters, as HarfBuzz has them
};

struct LineMetrics {
  std::int64_t ascent = 0, descent = 0;  // above and below the base line, both downwards positive
};

// Any thread; calls wait for each other.
class Font {
 public:
  // Keeps the bytes. Null where they are no font with outlines.
  static std::shared_ptr<Font> Open(std::vector<std::uint8_t> bytes, int index);
  ~Font();
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;

  bool HasLetter(char32_t letter);
  LineMetrics MetricsAt(int size);
  // In the order in which they stand from left to right. Nothing where the font is broken.
  std::vector<ShapedGlyph> Shape(const TextRun& run, const LetterStyle& style);
  // Of a glyph at the origin; grown by `border` on all sides where that is above 0. Without points
  // where it shows nothing, or is broken.
  std::shared_ptr<const Outline> OutlineOf(std::uint32_t glyph, const LetterStyle& style,
                                           int border);

 private:
  struct Faces;
  using OutlineKey = std::tuple<std::uint32_t, LetterStyle, int>;

  Font();
  Outline LoadOutline(std::uint32_t glyph, const LetterStyle& style, int border);

  std::unique_ptr<Faces> faces;
  std::map<OutlineKey, std::shared_ptr<const Outline>> outlines;
};

// Turns outlines into coverage. One thread at a time.
class Rasterizer {
 public:
  Rasterizer();
  ~Rasterizer();
  Rasterizer(const Rasterizer&) = delete;
  Rasterizer& operator=(const Rasterizer&) = delete;

  // Fills what `box` holds of the outline moved by `offset`. All zero where that cannot be done.
  Coverage Cover(const Outline& outline, Point offset, const Box& box);

 private:
  struct Library;
  std::unique_ptr<Library> library;
};

// Four letters of the script that a character belongs to; 0 for those that go along with any other.
std::uint32_t ScriptOf(char32_t letter);
// Whether a mark goes along with the letter before it.
bool IsMark(char32_t letter);

}  // namespace text
