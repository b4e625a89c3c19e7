#include "filters/text/TextLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "tests/filters/text/TestFonts.h"

namespace {

using testing_support::TestFonts;
using text::Align;
using text::FontChoice;
using text::TextBlock;

constexpr int kSize = 20 * text::kUnit;

TextBlock LayOut(const char* utf8, FontChoice& fonts, Align align = Align::Left) {
  return text::LayOutText(text::CharactersOf(utf8), fonts, kSize, align);
}

TextBlock LayOut(const char* utf8, Align align = Align::Left) {
  FontChoice fonts("DejaVu Sans", false, false);
  return LayOut(utf8, fonts, align);
}

TEST(TextCharacters, AreDecodedAndCleaned) {
  const struct {
    std::string utf8;
    std::u32string characters;
  } cases[] = {{"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", U"a\u00E4\u20AC\U0001F600"},
               {"\x80z\xC3", U"\uFFFDz\uFFFD"},
               {"\xC0\xAFz", U"\uFFFD\uFFFDz"},  // overlong
               {"\xE0\x80\xAFz", U"\uFFFDz"},
               {"\xED\xA0\x80z", U"\uFFFDz"},  // half of a pair
               {"\xF5\x80\x80\x80z", U"\uFFFD\uFFFD\uFFFD\uFFFDz"},
               {"a\tb\r\nc\x01\x7F\xC2\x85"
                "d",
                U"a b\ncd"},
               {std::string("a\0b", 3), U"ab"}};
  for (const auto& c : cases) EXPECT_EQ(text::CharactersOf(c.utf8), c.characters) << c.utf8;
}

TEST(TextLayout, LinesStandUnderEachOther) {
  TestFonts fonts;
  const TextBlock one = LayOut("Ab");
  const TextBlock three = LayOut("Ab\n\nAb");
  // DejaVu Sans rises 1901 and falls 483 of 2048 units.
  EXPECT_EQ(one.height, (1901 * kSize + 1024) / 2048 + (483 * kSize + 1024) / 2048);
  EXPECT_EQ(three.height, 3 * one.height);
  EXPECT_EQ(LayOut("").height, 0);
  EXPECT_EQ(three.width, one.width);
  ASSERT_EQ(three.glyphs.size(), 4u);
  EXPECT_EQ(three.glyphs[0].at.y - three.glyphs[2].at.y, 2 * one.height);
  EXPECT_EQ(three.glyphs[0].at.y + three.glyphs[2].at.y, 2 * one.glyphs[0].at.y);
}

TEST(TextLayout, AlignsEachLineAtTheAnchor) {
  TestFonts fonts;
  const std::int64_t wide = LayOut("MMMM").width;
  const std::int64_t narrow = LayOut("i").width;
  const auto starts = [](Align align) {
    const TextBlock block = LayOut("MMMM\ni", align);
    return std::pair(block.glyphs.front().at.x, block.glyphs.back().at.x);
  };
  EXPECT_EQ(starts(Align::Left), std::pair(std::int64_t{0}, std::int64_t{0}));
  EXPECT_EQ(starts(Align::Right), std::pair(-wide, -narrow));
  EXPECT_EQ(starts(Align::Centre), std::pair(-(wide / 2), -(narrow / 2)));
}

TEST(TextLayout, ShapesLigaturesMarksAndJoinedLetters) {
  TestFonts fonts;
  // "fi" is one glyph; a mark stands over its letter and takes no room.
  EXPECT_EQ(LayOut("fi").glyphs.size(), 1u);
  EXPECT_EQ(LayOut("xq\xCC\x83").width, LayOut("xq").width);
  // The letter beh has another form at the start of a word than alone.
  const TextBlock alone = LayOut("\xD8\xA8");
  const TextBlock word = LayOut("\xD8\xA8\xD8\xA8");
  ASSERT_EQ(word.glyphs.size(), 2u);
  EXPECT_NE(word.glyphs[0].glyph, alone.glyphs[0].glyph);
  EXPECT_NE(word.glyphs[0].glyph, word.glyphs[1].glyph);
}

TEST(TextLayout, LettersFromRightToLeftStandInTheirOrder) {
  TestFonts fonts;
  const TextBlock alef = LayOut("\xD7\x90");
  const TextBlock bet = LayOut("\xD7\x91");
  const TextBlock both = LayOut("\xD7\x90\xD7\x91");
  ASSERT_EQ(both.glyphs.size(), 2u);
  EXPECT_EQ(both.glyphs[0].glyph, bet.glyphs[0].glyph);  // the second letter at the left
  EXPECT_EQ(both.glyphs[1].glyph, alef.glyphs[0].glyph);
  EXPECT_EQ(both.glyphs[1].at.x, bet.width);
  // In a line of letters from the left the piece is turned round, and the number in it is not.
  const TextBlock mixed = LayOut(
      "a\xD7\x90\xD7\x91"
      "12b");
  ASSERT_EQ(mixed.glyphs.size(), 6u);
  EXPECT_EQ(mixed.glyphs[0].glyph, LayOut("a").glyphs[0].glyph);
  EXPECT_EQ(mixed.glyphs[1].glyph, LayOut("1").glyphs[0].glyph);
  EXPECT_EQ(mixed.glyphs[2].glyph, LayOut("2").glyphs[0].glyph);
  EXPECT_EQ(mixed.glyphs[3].glyph, bet.glyphs[0].glyph);
  EXPECT_EQ(mixed.glyphs[4].glyph, alef.glyphs[0].glyph);
  EXPECT_EQ(mixed.glyphs[5].glyph, LayOut("b").glyphs[0].glyph);
}

TEST(FontChoice, TakesTheFamilyItsStyleAndFallbacks) {
  TestFonts fonts;
  EXPECT_EQ(text::ChooseFamily("dejavu SERIF").family, "DejaVu Serif");
  EXPECT_FALSE(text::ChooseFamily("dejavu SERIF").isSubstitute);
  EXPECT_EQ(text::ChooseFamily("No Such Font").family, "DejaVu Sans");
  EXPECT_TRUE(text::ChooseFamily("No Such Font").isSubstitute);
  EXPECT_FALSE(text::ChooseFamily("").isSubstitute);
  // Sans has a bold face, serif gets it made, as all get their slant.
  const FontChoice sans("DejaVu Sans", true, true);
  EXPECT_FALSE(sans.First().makeBold);
  EXPECT_TRUE(sans.First().makeSlanted);
  const FontChoice serif("DejaVu Serif", true, false);
  EXPECT_TRUE(serif.First().makeBold);
  // Serif has no Arabic letters: the fallback family writes them.
  FontChoice fallback("DejaVu Serif", false, false);
  EXPECT_EQ(fallback.NumberFor(U'a'), 0u);
  EXPECT_EQ(fallback.NumberFor(U'\u0628'), 1u);
  EXPECT_EQ(fallback.NumberFor(U'\U000F0000'), 0u);  // in no font
  const TextBlock mixed = LayOut("a\xD8\xA8", fallback);
  ASSERT_EQ(mixed.glyphs.size(), 2u);
  EXPECT_EQ(mixed.glyphs[0].font, 0u);
  EXPECT_EQ(mixed.glyphs[1].font, 1u);
}

TEST(FontChoice, BrokenFontsAreMissingFonts) {
  TestFonts fonts;
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / "fxbox-broken-fonts";
  std::filesystem::create_directories(folder);
  std::ifstream whole(std::filesystem::path(FXBOX_TEST_FONTS) / "DejaVuSans.ttf", std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(whole)), {});
  ASSERT_GT(bytes.size(), 100000u);
  int number = 0;
  const auto write = [&](const std::string& content) {
    const auto file = folder / (std::to_string(number++) + ".ttf");
    std::ofstream(file, std::ios::binary) << content;
    fonts.AddFile(("Broken " + std::to_string(number)).c_str(), "Book", 400, file);
    return "Broken " + std::to_string(number);
  };
  for (const std::string& content :
       {std::string(), std::string("no font"), bytes.substr(0, 5000)}) {
    const FontChoice choice(write(content), false, false);
    ASSERT_FALSE(choice.IsEmpty());
    EXPECT_TRUE(choice.At(0).font == FontChoice("", false, false).At(0).font);
  }
  // With bytes changed all over the file anything may be drawn, or nothing.
  for (int seed = 1; seed <= 20; ++seed) {
    std::string changed = bytes;
    for (std::size_t i = 300 + static_cast<std::size_t>(seed); i < changed.size(); i += 997) {
      changed[i] = static_cast<char>(changed[i] + seed);
    }
    FontChoice choice(write(changed), true, true);
    const TextBlock block = LayOut("Agf\xCC\x83\xD8\xA8", choice);
    for (const text::PlacedGlyph& glyph : block.glyphs) {
      const text::ChosenFont& chosen = choice.At(glyph.font);
      chosen.font->OutlineOf(glyph.glyph, {kSize, chosen.makeBold, chosen.makeSlanted}, 64);
    }
  }
  std::filesystem::remove_all(folder);
}

TEST(Turn, QuartersAreExactAndTurnsAddUp) {
  const text::Point point{1000, 64};
  const auto turned = [&](std::int64_t tenths) { return text::Turn::ByTenths(tenths)(point); };
  EXPECT_EQ(turned(900).x, -64);
  EXPECT_EQ(turned(900).y, 1000);
  EXPECT_EQ(turned(-1800).x, -1000);
  EXPECT_EQ(turned(2700 + 36000).y, -1000);
  EXPECT_TRUE(text::Turn::ByTenths(-7200).IsNone());
  // 30 degrees: cosine 0.8660, sine 0.5.
  EXPECT_NEAR(text::Turn::ByTenths(300).sine, 0.5, 1e-15);
  EXPECT_NEAR(text::Turn::ByTenths(300).cosine, 0.86602540378443865, 1e-15);
  EXPECT_NEAR(text::Turn::ByTenths(1500).cosine, -0.86602540378443865, 1e-15);
}

}  // namespace
