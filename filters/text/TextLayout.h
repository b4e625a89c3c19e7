// Where the letters of a text stand: lines, directions, scripts, fonts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "filters/text/FontChoice.h"
#include "filters/text/Outline.h"

namespace text {

enum class Align { Left, Centre, Right };

struct PlacedGlyph {
  std::size_t font = 0;  // its number in the choice
  std::uint32_t glyph = 0;
  Point at;  // from the anchor of the text

  auto operator<=>(const PlacedGlyph& other) const {
    return std::tie(font, glyph, at.x, at.y) <=>
           std::tie(other.font, other.glyph, other.at.x, other.at.y);
  }
  bool operator==(const PlacedGlyph& other) const { return (*this <=> other) == 0; }
};

// A text before it is turned. Its anchor lies at half of its height; it stands at the left edge,
// the centre or the right edge of each line.
struct TextBlock {
  std::vector<PlacedGlyph> glyphs;
  std::int64_t width = 0;  // of the widest line
  std::int64_t height = 0;
};

// UTF-8 as characters. Bytes that belong to none become the replacement character. Tabs are blanks;
// all other control characters but the line feed are left out.
std::u32string CharactersOf(std::string_view utf8);

// Every line feed starts a line. `size` is that of the font, in units.
TextBlock LayOutText(std::u32string_view characters, FontChoice& fonts, int size, Align align);

}  // namespace text
