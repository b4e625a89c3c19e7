#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "filters/FilterClasses.h"
#include "tests/support/TestFilters.h"

// Worked examples of the tone filters, above all of what is odd in them.
namespace testing_support {
namespace {

using Bytes = std::vector<BYTE>;

const FilterClass& ClassOf(const std::string& word) {
  const auto table = FilterClasses();
  return *std::find_if(table.begin(), table.end(), [&](const FilterClass& row) {
    return "ZNFilter." + word + ".1" == row.progId;
  });
}

// A row of pixels.
Picture RowOf(const Bytes& colour) {
  Picture picture(static_cast<int>(colour.size() / 3), 1);
  picture.colour = colour;
  return picture;
}

Bytes Pull(const FilterClass& row, const std::string& text, const Picture& picture) {
  Rig rig(picture, row);
  rig.Filter().SetParameter(text.c_str(), 1);
  return rig.PullWhole().colour;
}

TEST(ToneFilters, GiveWorkedValues) {
  const Bytes kSome = {0, 128, 255, 10, 20, 30, 127, 127, 127};
  const struct {
    const char* word;
    const char* text;
    Bytes given, expected;
  } kCases[] = {
      {"BrightnessContrast", "", kSome, kSome},
      {"BrightnessContrast", "Brightness=100", kSome, Bytes(9, 255)},
      {"BrightnessContrast", "Brightness=-100", kSome, Bytes(9, 0)},
      // So steep that no integer holds the products.
      {"BrightnessContrast", "Contrast=2000", kSome, {0, 255, 255, 0, 0, 0, 0, 0, 0}},
      // No saturation leaves the lightness: (20 / 255 + 40 / 255) / 2 * 255.
      {"BrightnessContrast", "Saturation=-100", {20, 30, 40}, {30, 30, 30}},
      {"BrightnessContrast", "Saturation=101", {20, 30, 40}, {0, 30, 60}},
      // 80 percent of 1 is 0: no conversion, which would lose levels.
      {"Exposure", "Green=001", kSome, kSome},
      // 255 * (100 / 255)^3, then ^(1/3).
      {"Exposure", "Red=-100", {100, 0, 255}, {15, 0, 255}},
      {"Exposure", "Blue=100", {100, 0, 255}, {186, 0, 255}},
      {"Exposure2", "", kSome, kSome},
      {"Exposure2", "Red=100, Green=100, Blue=-100", {9, 9, 9}, {9, 9, 9}},
      // Mean 66; 100 takes 100 - 255 * (100 / 255)^3 = 84; 34 * 84 / 85 = 33.
      {"Exposure2", "Blue=-100", {100, 50, 50}, {67, 50, 50}},
      // One level: all of it is white, and black stays.
      {"Histo", "", {0, 0, 0, 99, 99, 99}, {0, 0, 0, 255, 255, 255}},
      {"Histo", "Intensity=100", {90, 90, 90, 99, 99, 99}, {128, 128, 128, 255, 255, 255}},
      {"WhiteBlackGrey", "Mode=1", kSome, kSome},
      {"WhiteBlackGrey", "Mode=7", kSome, kSome},
      {"WhiteBlackGrey", "RedG=000, GreenG=000, Opacity=000", kSome, kSome},
      {"WhiteBlackGrey", "RedG=000, GreenG=000, FilterOn=0", kSome, kSome},
      // A grey channel of 255 has the first branch alone; one of 50 is lifted to the median of 100.
      {"WhiteBlackGrey", "RedG=255, GreenG=100, BlueG=050", {50, 100, 255}, {100, 100, 100}},
      {"WhiteBlackGrey", "RedG=255, GreenG=100, BlueG=050", {25, 200, 128}, {50, 200, 50}},
      {"WhiteBlackGrey", "RedG=0, GreenG=0, BlueG=0, Mode=1", {0, 1, 200}, {255, 255, 255}},
      // The scaled grey 128 * (60, 80, 120) / 80 goes to 128 exactly, whatever rounding says.
      {"WhiteBlackGrey", "RedG=60, GreenG=80, BlueG=120, Mode=1", {192, 128, 96}, {128, 128, 128}},
      {"WhiteBlackGrey",
       "RedG=0, GreenG=0, BlueG=0, Mode=1, Opacity=50",
       {100, 0, 1},
       {177, 127, 128}},
      {"Tonwert", "AutoContrast=0", kSome, kSome},
      {"Tonwert", "AutoContrast=0, Lo=100, Hi=55", {100, 150, 200}, {0, 127, 255}},
      // A low limit below 0 adds its own first entry to all others.
      {"Tonwert", "AutoContrast=0, Lo=-255", {0, 2, 254}, {127, 255, 125}},
      {"Tonwert", "AutoContrast=0, Lo=300, Hi=300", kSome, Bytes(9, 255)},
      // Limits that cross are held apart: 125 and 130.
      {"Tonwert", "Addlo=1000, Addhi=1000", {125, 127, 130}, {0, 102, 255}},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Pull(ClassOf(c.word), c.text, RowOf(c.given)), c.expected) << c.word << " " << c.text;
  }
}

// A text without `Mode` is linear again, and a pull does not wait for the Prepare.
TEST(ToneFilters, GreyPointWorksByPendingParameters) {
  Rig rig(RowOf({50, 100, 200}), ClassOf("WhiteBlackGrey"));
  rig.Filter().SetParameter("RedG=0, GreenG=0, BlueG=0, Mode=1", 1);
  rig.Prepare();
  GuardedRows rows(1, 1);
  const auto pull = [&] {
    EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 1, 1}), S_OK);
    return rows.Whole().colour;
  };
  EXPECT_EQ(pull(), Bytes({255, 255, 255}));
  rig.Filter().SetParameter("RedG=200, GreenG=100, BlueG=50", 1);
  EXPECT_EQ(pull(), Bytes({100, 100, 100}));
  EXPECT_THAT(PendingText(rig.Filter()), testing::HasSubstr("Mode=0"));
}

TEST(ToneFilters, SourcesThatStopEndThePullAsEachFilterSays) {
  for (const auto& [word, failed, stopped] : {std::tuple{"Optimize", E_FAIL, HRESULT{7}},
                                              {"WhiteBlackGrey", E_FAIL, 7},
                                              {"Histo", S_OK, S_OK},
                                              {"BrightnessContrast", S_OK, S_OK},
                                              {"Exposure", S_OK, 1}}) {
    for (const auto& [given, expected] : {std::pair{E_FAIL, failed}, {HRESULT{7}, stopped}}) {
      Rig rig(RowOf({1, 2, 3}), ClassOf(word));
      rig.Prepare();
      rig.source->results = {given};
      GuardedRows rows(1, 1);
      EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 1, 1}), expected) << word;
    }
  }
}

// Whoever filled the first rows of the caller's array is counted, and only they.
TEST(ToneFilters, HistogramCountsTheFirstRowsOfTheArray) {
  Rig rig(Uniform(2, 1, 50, 50, 50), ClassOf("Histo"));
  rig.Prepare();
  GuardedRows rows(2, 2);
  std::fill_n(rows.ColourRows()[0], 6, BYTE{200});
  EXPECT_EQ(rig.Pull(rows, {0, 1, 0, 0, 2, 1}), S_OK);
  EXPECT_EQ(rows.Part(0, 1, 1, 1).colour, Bytes({0, 0, 0}));
  EXPECT_EQ(rows.Part(0, 0, 1, 1).colour, Bytes({200, 200, 200}));
}

// The first request after a change decides how many pixels the limits leave out; a small one leaves
// out none, for all later requests.
TEST(ToneFilters, LimitsComeFromTheFirstRequest) {
  Rig rig(Noise(40, 40, Masks::Nothing, 3), ClassOf("Tonwert"));
  for (auto& byte : rig.source->picture.colour) byte = static_cast<BYTE>(60 + byte / 2);
  rig.Prepare();
  GuardedRows rows(40, 40);
  rig.Pull(rows, {0, 0, 0, 0, 10, 10});
  rig.Pull(rows, {0, 0, 0, 0, 40, 40});
  EXPECT_EQ(rows.Whole().colour, rig.source->picture.colour);
  rig.source->revision++;
  EXPECT_NE(rig.PullWhole().colour, rig.source->picture.colour);
}

// Whether channels are stretched apart is taken as it is set, all else once it is prepared.
TEST(ToneFilters, ChannelsGoApartAtOnce) {
  Picture picture = Noise(20, 20, Masks::Opaque, 4);
  for (std::size_t i = 0; i < picture.colour.size(); ++i) {
    picture.colour[i] = static_cast<BYTE>(picture.colour[i] / (2 + i % 3) + 20);
  }
  const auto pulled = [&](const char* prepared, const char* pending) {
    Rig rig(picture, ClassOf("Tonwert"));
    rig.Filter().SetParameter(prepared, 1);
    rig.PullWhole();
    rig.Filter().SetParameter(pending, 1);
    GuardedRows rows(20, 20);
    EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 20, 20}), S_OK);
    return rows.Whole().colour;
  };
  const Bytes together = pulled("AutoContrastRGB=0", "");
  const Bytes apart = pulled("AutoContrastRGB=1", "");
  EXPECT_NE(together, apart);
  EXPECT_EQ(pulled("AutoContrastRGB=0", "AutoContrastRGB=1, Med=50, Addlo=30"), apart);
  EXPECT_EQ(pulled("AutoContrastRGB=1", "AutoContrastRGB=0, AutoContrast=0"), together);
}

// What one object measures on a preview, another repeats on the picture: pixels of one level come
// out alike.
TEST(ToneFilters, ToneValueRepeatsAMeasurement) {
  const FilterClass& row = ClassOf("Tonwert");
  const std::string own = "AutoContrast=1, AutoContrastRGB=1, AutoTone=1, Hi=000, Med=000, Lo=000";
  Picture preview = Noise(30, 20, Masks::Noise, 11);
  for (auto& byte : preview.colour) byte = static_cast<BYTE>(byte / 3 + 20);
  Picture full(60, 40);
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 60; ++x) std::copy_n(preview.Colour(x / 2, y / 2), 3, full.Colour(x, y));
  }
  Rig first(preview, row);
  first.Filter().SetParameter((own + ", Vis=0").c_str(), 1);
  const Picture expected = first.PullWhole();
  EXPECT_EQ(ActiveText(first.Filter()), own + ", Addhi=000, Addmed=000, Addlo=000,Vis=0");
  first.Filter().SetParameter("ExParam=1", 1);
  const std::string measured = PendingText(first.Filter());
  EXPECT_EQ(measured, ActiveText(first.Filter()));
  EXPECT_THAT(measured, testing::StartsWith("ExBlit=1, AutoContrast=1, "));
  EXPECT_THAT(measured, testing::EndsWith(",Vis=0"));
  const std::string limits = ", WL=1, WH=2, RL=3, RH=4, GL=5, GH=6, BL=7, BH=8, MAUTO=9";
  first.Filter().SetParameter(("ExParam=1,ExBlit=1,Vis=1" + limits).c_str(), 1);
  EXPECT_THAT(PendingText(first.Filter()), testing::EndsWith("Addlo=000" + limits));
  Rig second(full, row);
  second.Filter().SetParameter(measured.c_str(), 1);
  const Picture got = second.PullWhole();
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 60; ++x) {
      ASSERT_TRUE(
          std::equal(got.Colour(x, y), got.Colour(x, y) + 3, expected.Colour(x / 2, y / 2)));
    }
  }
}

}  // namespace
}  // namespace testing_support
