#include "host/ChainCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "host/ChainTexts.h"
#include "host/FilterFacts.h"
#include "host/Texts.h"

namespace host {
namespace {

using testing::HasSubstr;

class ChainCheck : public testing::Test {
 protected:
  std::string Check(const std::string& text, const char* open = "(", const char* close = ")") {
    return CheckChainText({text, open, close}, filters, *creator.Get());
  }
  // The message, whose words have to be those of the place; empty when the text passed.
  std::string Message(const std::string& text, const char* open = "(", const char* close = ")") {
    try {
      Check(text, open, close);
      return {};
    } catch (const ChainError& error) {
      const ChainPlace& place = error.Place();
      std::string front, at;
      if (place.item > 0) front = "chain item " + std::to_string(place.item);
      if (!place.filter.empty()) front += " (" + place.filter + ")";
      if (place.line > 0) at = "character " + std::to_string(place.character);
      if (place.line > 0 && text.find('\n') != text.npos) {
        at = "line " + std::to_string(place.line) + ", " + at;
      }
      EXPECT_THAT(error.what(), testing::AllOf(testing::StartsWith(front), HasSubstr(at)));
      return error.what();
    }
  }

  const platform::ComPtr<IAnimFilterCreator> creator = MakeCreator();
  std::vector<FilterEntry> filters = ListFilters(*creator.Get());
};

TEST_F(ChainCheck, TakesBothLayoutsAndBlanksBetweenItems) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {
      {"", ""},
      {" \r\n\t", ""},
      {"ZNFilter.Sepia.1(Sepia=050)", "ZNFilter.Sepia.1(Sepia=050)"},
      {"\n ZNFilter.Sepia.1(Sepia=050)\n\nZNFilter.Zero.1()  ",
       "ZNFilter.Sepia.1(Sepia=050)ZNFilter.Zero.1()"},
      {"(ZNFilter.Sepia.1(Sepia=050)\n(ZNFilter.Zero.1()",
       "(ZNFilter.Sepia.1(Sepia=050)(ZNFilter.Zero.1()"},
      // Within the parameters all stays as it is.
      {"ZNFilter.RGBColor.1( Red=1 ,\n Green=\t+2)", "ZNFilter.RGBColor.1( Red=1 ,\n Green=\t+2)"}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(Check(text), expected) << text;
}

TEST_F(ChainCheck, TakesWhatTheFilterKeeps) {
  for (const char* item :
       {"Sepia.1()", "Sepia.1( )", "Sepia.1(Sepia=0)", "Sepia.1(Sepia= +99)",
        "Sepia.1(Sepia=50,Version=3,Vis=0)", "Sepia.1(Sepia=50,)", "Sepia.1(Sepia=50, )",
        "Sepia.1(ExtraParam=|ANY THING|,Sepia=1)", "Sepia.1(ExBlit=1)",
        // What a class prints of its measurements; numbered keys.
        "AdoptColor.1(ExBlit=1, LightA=1.5, LightB=-.5e-3)",
        "Tonwert.1(ExBlit=1, WL=3, BH=250, MAUTO=-5)", "RedEye.1(N=2, X1=.5, X17=0.25, F128=-5)",
        // What is read and not printed, or out of the dialogs' range and kept.
        "Scale.1(ScaleThrough=1, MaximumHorizontalSize=99999)",
        "Shadow.1(LightOn=0,LightIntensity=50,ShadowOn=1,ShadowDensity=3)",
        "RGBColor.1(Red=-500)ZNFilter.Rotate.1(Angle=12345.6789)", "Rotate.1(Angle=12.00045)",
        "PrintPad.1(PadColor=0xFF8000)", "PrintPad.1(PadColor=0Xff8000)",
        // As people write texts.
        "Text.1(Text=two words)", "Text.1(Text=%C3%A4%zz,Font=,Size=060)", "Text.1(Text=)",
        "WaterSign.1(Text=a%3Db)"}) {
    EXPECT_EQ(Message("ZNFilter." + std::string(item)), "") << item;
  }
}

TEST_F(ChainCheck, NamesItemAndPlaceOfWhatItRefuses) {
  const struct {
    const char* text;
    const char* message;
  } cases[] = {
      {"ZNFilter.Zero.1()\n  ZNFilter.Sepia.1(Sepia=1,\nQqqqqqqq=1)",
       "chain item 2 (ZNFilter.Sepia.1): unknown key \"Qqqqqqqq\" at line 3, character 1"},
      {"Sepia(Sepia=050)",
       "chain item 1: unknown filter \"Sepia\" at character 1, did you mean \"ZNFilter.Sepia.1\"?"},
      {"\n\nNobody(A=1)", "chain item 1: unknown filter \"Nobody\" at line 3, character 1"},
      {"ZNFilter.Sepia.1(50)",
       "chain item 1 (ZNFilter.Sepia.1): \"50\" at character 18 is not Key=number"},
      {"ZNFilter.Sepia.1(Sepia=50,,)",
       "chain item 1 (ZNFilter.Sepia.1): a parameter is missing at character 27"},
      {"ZNFilter.Zero.1()ZNFilter.Sepia.1(Sepia=500)",
       "chain item 2 (ZNFilter.Sepia.1): \"Sepia=500\" at character 35: the filter takes 043 "
       "instead"},
      {"ZNFilter.Sepia.1(Sepia=050) and more",
       "chain item 2: \"(\" is missing behind \"and more\" at character 29"},
      {"ZNFilter.Sepia.1)Sepia=050(",
       "chain item 1: \"(\" is missing behind \"ZNFilter.Sepia.1)Sepia=050(\" at character 1"},
      {"(ZNFilter.Zero.1()ZNFilter.Zero.1()",
       "chain item 2: \"(\" is missing ahead of \"ZNFilter.Zero.1()\" at character 19"}};
  for (const auto& [text, message] : cases) EXPECT_EQ(Message(text), message) << text;
  const struct {
    const char* message;
    std::vector<const char*> items;
  } kinds[] = {
      {"is not Key=whole number",
       {"Sepia.1(Sepia=)", "Sepia.1(Sepia= )", "Sepia.1(Sepia=x)", "Sepia.1(Sepia=-)",
        "Sepia.1(Sepia=1x)", "Sepia.1(Sepia=1 2)", "Sepia.1(Sepia=1.5)", "Sepia.1(Sepia=0x10)",
        "Sepia.1(Sepia=1e3)", "Sepia.1(Sepia=%d)", "Sepia.1(Sepia=\n)", "RedEye.1(N=2, E2=0.5)"}},
      {"is not Key=number",
       {"AdoptColor.1(LightA=)", "AdoptColor.1(LightA=.)", "AdoptColor.1(LightA=1.5.5)",
        "AdoptColor.1(LightA=e3)", "AdoptColor.1(LightA=1e)", "AdoptColor.1(LightA=1ee5)",
        "AdoptColor.1(LightA=inf)", "AdoptColor.1(LightA=nan)", "AdoptColor.1(LightA=1,5)"}},
      {"unknown key", {"RedEye.1(N=2, X=0.5)", "Text.1(Text=a,Siez=9)"}},
      {": the filter takes ",
       {"Sepia.1(Sepia=-5)", "Sepia.1(Sepia=99999999999)", "Sepia.1(Sepia=10,Sepia=20)",
        "Rotate.1(MirrorOn=2)", "UnsharpMask.1(OnLuminanceOnly=1,On=0)", "Tonwert.1(AutoTone=7)",
        "Rotate.1(Angle=1e999)", "PrintPad.1(PadColor=0x1FFFFFFFFFFFFFFFFF)"}}};
  for (const auto& [message, items] : kinds) {
    for (const std::string item : items) {
      EXPECT_THAT(Message("ZNFilter." + item), HasSubstr(message)) << item;
    }
  }
  // Markers that tell nothing apart, and a text that ends within.
  EXPECT_NE(Message("ZNFilter.Zero.1()", "", ")"), "");
  EXPECT_NE(Message("ZNFilter.Zero.1||", "|", "|"), "");
  EXPECT_THROW(Check(std::string("ZNFilter.Sepia.1(Sepia=050)\0ZNFilter.Zero.1()", 45)),
               ChainError);
}

// What the library prints and what dialogs start with has to pass, for every class.
TEST_F(ChainCheck, TakesTheLibrarysOwnTexts) {
  ASSERT_EQ(std::count_if(filters.begin(), filters.end(), IsOwnClass), 46);
  for (const FilterEntry& entry : filters) {
    EXPECT_EQ(Message(entry.progId + "(" + NewFilterText(*creator.Get(), entry.progId) + ")"), "");
    const std::string text = FactsOf(entry, *creator.Get()).defaultText.value_or("");
    EXPECT_EQ(Message(entry.progId + "(" + text + ")"), "");
  }
}

// And what a dialog can set, which the filter prints rounded or stores in another form.
TEST_F(ChainCheck, TakesEveryNumberThatADialogOffers) {
  for (const FilterEntry& entry : filters) {
    for (const KeyFacts& key : FactsOf(entry, *creator.Get()).keys) {
      const std::string front = entry.progId + "(" + key.key + "=";
      const double step = std::max(1.0, std::floor((key.greatest - key.least) / 300));
      for (double value = std::ceil(key.least); value <= key.greatest && key.kind != "hexadecimal";
           value += step) {
        const std::string text = front + std::to_string(static_cast<int>(value)) + ")";
        ASSERT_EQ(Message(text), "");
      }
    }
  }
}

TEST(ChainTexts, ComeInAsPeopleWriteThem) {
  EXPECT_EQ(ChainTextOf("\xEF\xBB\xBF"
                        "a\xC3\xBC"),
            "a\xFC");
  EXPECT_EQ(ChainTextOf("a\xFC"), "a\xFC") << "is in the code page already";
  EXPECT_EQ(Quoted(std::string(40, 'a') + '\xFC'), '"' + std::string(40, 'a') + "...\"");
  EXPECT_EQ(Quoted(std::string(39, 'a') + '\xFC'), '"' + std::string(39, 'a') + "\xC3\xBC\"");
  EXPECT_EQ(host::WithoutRemarks("//a\nb // c\r\n//\n\n d//\n//end"), "\nb // c\r\n\n\n d//\n\n");
  EXPECT_EQ(host::WithoutRemarks("/ /\n/"), "/ /\n/");
  EXPECT_EQ(host::WithoutRemarks(""), "");
}

TEST_F(ChainCheck, ClassesHaveTheirFacts) {
  const struct {
    const char *name, *preview, *example, *lastKey, *kind, *range;
    std::optional<std::string> start;
  } cases[] = {
      {"Sepia", "exact", "(Sepia=075)", "Sepia", "whole number", "0 to 100", "000"},
      {"Sharpen", "100 %", "(Sharpness=075)", "Sharpness", "whole number", "0 to 100", "000"},
      {"Tonwert", "measured", "(AutoContrast=1)", "Addlo", "whole number", "-100 to 100", "000"},
      {"RedEye", "scaled", "(N=1, X1=0.75, Y1=0.75, E1=025, F1=025)", "F1", "whole number",
       "-50 to 50", std::nullopt},
      {"Rotate", "exact", "(Angle=12.5)", "AlignLeftBottom", "0 or 1", "0 to 1", "1"},
      {"Text", "scaled", "(Size=180,PosY=180,Outline=040,Text=Sunrise)", "Text", "text", "", ""}};
  for (const auto& c : cases) {
    const std::string progId = "ZNFilter." + std::string(c.name) + ".1";
    const FilterFacts facts = FactsOf(*FindFilter(filters, progId), *creator.Get());
    EXPECT_EQ(facts.progId, progId);
    EXPECT_EQ(facts.preview, c.preview) << c.name;
    EXPECT_EQ(facts.example, progId + c.example);
    const KeyFacts& key = facts.keys.back();
    EXPECT_EQ(key.key, c.lastKey);
    EXPECT_EQ(key.kind, c.kind) << c.name;
    EXPECT_EQ(RangeText(key), c.range) << c.name;
    EXPECT_EQ(key.defaultValue, c.start) << c.name;
  }
  EXPECT_EQ(FindFilter(filters, "ZNFilter.Nobody.1"), nullptr);
}

TEST(Suggestions, AreNearOrHoldTheWord) {
  const std::vector<std::string> words = {"Scale", "Sepa", "ZNFilter.Sepia.1", "Rotate"};
  const std::pair<const char*, const char*> cases[] = {{"Sepia", "ZNFilter.Sepia.1"},
                                                       {"Sxpa", "Sepa"},
                                                       {"Rxtxte", "Rotate"},
                                                       {"Rxxxte", ""},
                                                       {"xyzRotate", ""},
                                                       {"Sc", ""},
                                                       {"Sca", "Scale"},
                                                       {"Nobody", ""},
                                                       {"", ""}};
  for (const auto& [misspelt, meant] : cases) {
    EXPECT_EQ(Suggestion(misspelt, words),
              *meant ? ", did you mean \"" + std::string(meant) + "\"?" : "")
        << misspelt;
  }
}

// Each text goes to the next filter that writes one; a font that is not there is told.
TEST_F(ChainCheck, TextsAndFontsFindTheirFilters) {
  const ChainText chain{
      "ZNFilter.WaterSign.1(Picture=)ZNFilter.Sepia.1(Sepia=1)ZNFilter.WaterSign.1(Picture=a)"
      "ZNFilter.Text.1(Text=old,Size=040)"};
  EXPECT_EQ(WithTexts(chain, filters, {"a b", "(c)"}).text,
            "ZNFilter.WaterSign.1(Picture=,Text=a%20b)ZNFilter.Sepia.1(Sepia=1)"
            "ZNFilter.WaterSign.1(Picture=a)ZNFilter.Text.1(Text=%28c%29,Size=040)");
  EXPECT_EQ(WithTexts(chain, filters, {}).text, chain.text);
  EXPECT_THROW(WithTexts(chain, filters, {"1", "2", "3"}), ChainError);
  std::vector<std::string> told;
  const ChainText fonts{
      "ZNFilter.Text.1(Font=,Text=a)ZNFilter.Sepia.1(Font=No)ZNFilter.Text.1(Font=No%20Such,Text="
      "b)"};
  const auto tell = [&](const std::string& words) { told.push_back(words); };
  EXPECT_EQ(WithFullPaths(fonts, filters, "nowhere", tell).text, fonts.text);
  EXPECT_EQ(WithFullPaths(fonts, filters, "nowhere").text, fonts.text);
  ASSERT_EQ(told.size(), 1u);
  EXPECT_THAT(told[0], testing::StartsWith("chain item 3 (ZNFilter.Text.1): the font \"No Such\" "
                                           "is not there, taking \""));
  try {
    WithFullPaths({"ZNFilter.Zero.1()ZNFilter.WaterSign.1(Picture=none.png)"}, filters, "nowhere");
    FAIL();
  } catch (const ChainError& error) {
    EXPECT_EQ(error.Place().item, 2);
    EXPECT_EQ(error.Place().line, 0);
    EXPECT_EQ(error.Place().filter, "ZNFilter.WaterSign.1");
  }
}

}  // namespace
}  // namespace host
