#include "filters/text/TextLayout.h"

#include <fribidi.h>

#include <algorithm>

namespace text {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCharacter = 0x10FFFF;

// Takes a character from the front.
char32_t TakeCharacter(std::string_view& utf8) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned char first = byte(0);
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  char32_t character = length < 2 ? first : first & (0x7Fu >> length);
  std::size_t taken = 1;
  while (taken < length && taken < utf8.size() && (byte(taken) & 0xC0) == 0x80) {
    character = character << 6 | (byte(taken++) & 0x3Fu);
  }
  utf8.remove_prefix(taken);
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isWhole = length > 0 && taken == length;
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  const bool isGood =
      isWhole && character >= kLeast[length] && character <= kLastCharacter && !isSurrogate;
  return isGood ? character : kReplacement;
}

bool IsControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

// --- lines

using Levels = std::vector<FriBidiLevel>;

// Even levels go to the right, odd ones to the left; all 0 where the library has no memory.
Levels LevelsOf(std::u32string_view line) {
  const auto length = static_cast<FriBidiStrIndex>(line.size());
  const auto* const characters = reinterpret_cast<const FriBidiChar*>(line.data());
  Levels levels(line.size(), 0);
  std::vector<FriBidiCharType> types(line.size());
  std::vector<FriBidiBracketType> brackets(line.size());
  fribidi_get_bidi_types(characters, length, types.data());
  fribidi_get_bracket_types(characters, length, types.data(), brackets.data());
  FriBidiParType direction = FRIBIDI_PAR_ON;
  if (fribidi_get_par_embedding_levels_ex(types.data(), brackets.data(), length, &direction,
                                          levels.data()) == 0) {
    std::fill(levels.begin(), levels.end(), FriBidiLevel{0});
  }
  return levels;
}

struct Run {
  std::size_t start = 0, length = 0;
  FriBidiLevel level = 0;
  std::uint32_t script = 0;
  std::size_t font = 0;
};

// The runs of a line in the order of its characters.
std::vector<Run> SplitIntoRuns(std::u32string_view line, FontChoice& fonts) {
  const Levels levels = LevelsOf(line);
  std::vector<Run> runs;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const std::uint32_t script = ScriptOf(line[i]);
    Run* const last = runs.empty() ? nullptr : &runs.back();
    // Marks stay with their letter as long as its font has them.
    const bool stays =
        last && IsMark(line[i]) && (fonts.At(last->font).font->HasLetter(line[i]) || script == 0);
    const std::size_t font = stays ? last->font : fonts.NumberFor(line[i]);
    const bool sameScript = last && (script == 0 || last->script == 0 || script == last->script);
    if (last && last->level == levels[i] && sameScript && last->font == font) {
      ++last->length;
      if (last->script == 0) last->script = script;
    } else {
      runs.push_back({i, 1, levels[i], script, font});
    }
  }
  return runs;
}

// From left to right: from the highest level down to the lowest odd one, what lies at it or above
// is turned round.
void PutInVisualOrder(std::vector<Run>& runs) {
  FriBidiLevel highest = 0;
  for (const Run& run : runs) highest = std::max(highest, run.level);
  for (FriBidiLevel level = highest; level > 0; --level) {
    const auto isInner = [level](const Run& run) { return run.level >= level; };
    for (auto from = runs.begin(); from != runs.end();) {
      from = std::find_if(from, runs.end(), isInner);
      const auto to = std::find_if_not(from, runs.end(), isInner);
      std::reverse(from, to);
      from = to;
    }
  }
}

struct Line {
  std::vector<PlacedGlyph> glyphs;  // from the left end of the base line
  std::int64_t width = 0;
};

Line LayOutLine(std::u32string_view characters, FontChoice& fonts, int size) {
  Line line;
  if (characters.empty()) return line;
  std::vector<Run> runs = SplitIntoRuns(characters, fonts);
  PutInVisualOrder(runs);
  for (const Run& run : runs) {
    const ChosenFont& chosen = fonts.At(run.font);
    const TextRun piece{characters, run.start, run.length, run.level % 2 == 1, run.script};
    for (const ShapedGlyph& shaped :
         chosen.font->Shape(piece, {size, chosen.makeBold, chosen.makeSlanted})) {
      line.glyphs.push_back(
          {run.font, shaped.glyph, {line.width + shaped.offset.x, shaped.offset.y}});
      line.width += shaped.advance;
    }
  }
  return line;
}

std::vector<std::u32string_view> SplitLines(std::u32string_view characters) {
  std::vector<std::u32string_view> lines;
  for (;;) {
    const std::size_t end = characters.find(U'\n');
    lines.push_back(characters.substr(0, end));
    if (end == std::u32string_view::npos) return lines;
    characters.remove_prefix(end + 1);
  }
}

std::int64_t Indent(std::int64_t width, Align align) {
  if (align == Align::Left) return 0;
  return align == Align::Centre ? -(width / 2) : -width;
}

}  // namespace

std::u32string CharactersOf(std::string_view utf8) {
  std::u32string characters;
  while (!utf8.empty()) {
    const char32_t character = TakeCharacter(utf8);
    if (character == U'\t') {
      characters += U' ';
    } else if (character == U'\n' || !IsControl(character)) {
      characters += character;
    }
  }
  return characters;
}

TextBlock LayOutText(std::u32string_view characters, FontChoice& fonts, int size, Align align) {
  TextBlock block;
  if (characters.empty() || fonts.IsEmpty()) return block;
  const LineMetrics metrics = fonts.First().font->MetricsAt(size);
  const std::int64_t lineHeight = metrics.ascent + metrics.descent;
  const std::vector<std::u32string_view> lines = SplitLines(characters);
  block.height = lineHeight * static_cast<std::int64_t>(lines.size());
  std::int64_t baseLine = block.height / 2 - metrics.ascent;
  for (const std::u32string_view part : lines) {
    const Line line = LayOutLine(part, fonts, size);
    const std::int64_t left = Indent(line.width, align);
    for (PlacedGlyph glyph : line.glyphs) {
      glyph.at = {glyph.at.x + left, glyph.at.y + baseLine};
      block.glyphs.push_back(glyph);
    }
    block.width = std::max(block.width, line.width);
    baseLine -= lineHeight;
  }
  return block;
}

}  // namespace text
