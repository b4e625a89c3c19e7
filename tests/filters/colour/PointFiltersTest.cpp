#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "filters/FilterClasses.h"
#include "tests/filters/ClassOf.h"
#include "tests/filters/colour/PointModel.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

// One number as it may come: a percentage, a byte, beyond either, and the ends of 32 bits.
int RandomNumber(std::mt19937& random) {
  const int ends[] = {-1, 0, 1, 50, 99, 100, 101, 255, 256, -100, 2147483647, -2147483647 - 1};
  if (random() % 5 == 0) return ends[random() % std::size(ends)];
  const int range = random() % 3 == 0 ? 1000 : 101;
  return static_cast<int>(random()) % range;
}

// Some of the class's keys, in any order.
std::string RandomParameters(const FilterClass& row, std::mt19937& random) {
  std::vector<ParameterDescription> keys = row.describe();
  std::shuffle(keys.begin(), keys.end(), random);
  std::string text;
  for (const ParameterDescription& key : keys) {
    if (random() % 6 == 0) continue;
    if (!text.empty()) text += ",";
    text.append(key.key).append("=").append(std::to_string(RandomNumber(random)));
  }
  return text;
}

TEST(PointFilters, EqualTheirModel) {
  std::vector<ModelStep> steps = {
      {"ZNFilter.Sepia.1", "Sepia=257"},
      {"ZNFilter.Invert.1", "Inversity=-200"},
      {"ZNFilter.Transparency.1", "Transparency=100"},
      {"ZNFilter.RGBColor.1", "Red=007, Green=2147483647, Blue=-2147483648"},
      {"ZNFilter.DuoColor.1", "Intensity=-150, ColorRed=255, Green2=0"},
      {"ZNFilter.AdoptColor.1", "Intensity=000, ColorRed=200"},
      {"ZNFilter.AdoptColor.1", "Intensity=045, ColorRed=255, ColorGreen=250, ColorBlue=255"},
      {"ZNFilter.AdoptColor.1", "Intensity=100, ColorRed=010, ColorGreen=000, ColorBlue=020"},
      {"ZNFilter.InvertMask.1", "Blue=001, Green=002, Red=003, Transparency=100"},
      {"ZNFilter.ImgBg.1", "Transparency=100"},
      {"ZNFilter.ImgBg.1", "Transparency=099"}};
  const Picture large = Noise(300, 260, Masks::Noise, 8);
  std::mt19937 random(31);
  for (const FilterClass& row : FilterClasses()) {
    if (!HasModel(row.progId)) continue;
    steps.push_back({row.progId, ""});
    for (int i = 0; i < 8; ++i) steps.push_back({row.progId, RandomParameters(row, random)});
  }
  for (const ModelStep& step : steps) {
    std::vector<NamedPicture> pictures = TestPictures();
    // Large enough for a table of what is drawn.
    if (step.parameters.size() % 4 == 1) pictures.push_back({"large", large});
    for (const NamedPicture& test : pictures) {
      Rig rig(test.picture, ClassOf(step.progId));
      rig.Filter().SetParameter(step.parameters.c_str(), 1);
      ASSERT_EQ(Difference(ApplyModel(step, test.picture), rig.PullWhole()), "")
          << test.name << ": " << step.progId << "(" << step.parameters << ")";
    }
  }
}

// What these classes make of a single pixel is arithmetic of its own, by hand.
TEST(PointFilters, SinglePixelsOfTheirOwn) {
  using Pixel = std::array<BYTE, 4>;  // blue, green, red, mask
  const std::string colour = "Blue=030,Green=210,Red=140,Transparency=";
  const std::string pale = "Blue=180,Green=128,Red=255,Transparency=";
  const std::string adopted = "ColorBlue=030,ColorGreen=210,ColorRed=140,Intensity=";
  const struct {
    const char* word;
    std::string text;
    Pixel given, expected;
  } kCases[] = {{"AdoptColor", adopted + "000", {10, 120, 240, 100}, {10, 120, 240, 100}},
                {"AdoptColor", adopted + "045", {10, 120, 240, 0}, {19, 160, 195, 0}},
                {"AdoptColor", adopted + "045", {200, 30, 90, 77}, {123, 111, 112, 77}},
                {"AdoptColor", adopted + "100", {200, 30, 90, 77}, {30, 210, 140, 77}},
                {"ImgBg", colour + "000", {10, 120, 240, 100}, {17, 155, 200, 0}},
                {"ImgBg", colour + "035", {10, 120, 240, 0}, {10, 120, 240, 0}},
                {"ImgBg", colour + "035", {10, 120, 240, 255}, {30, 210, 140, 89}},
                {"ImgBg", colour + "035", {200, 30, 90, 77}, {162, 69, 100, 26}},
                {"ImgBg", colour + "100", {200, 30, 90, 77}, {200, 30, 90, 77}},
                {"ImgBg", colour + "100", {200, 30, 90, 255}, {30, 210, 140, 255}},
                {"ImgBg", pale + "300", {10, 200, 90, 85}, {10, 200, 90, 255}},
                {"ImgBg", pale + "-2147483648", {10, 200, 90, 200}, {179, 128, 254, 1}},
                {"ImgBg", pale + "2147483647", {10, 200, 90, 255}, {180, 128, 255, 99}},
                {"Passpartout", colour + "035", {10, 120, 240, 100}, {15, 146, 210, 34}},
                {"Passpartout", colour + "000", {200, 30, 90, 77}, {148, 84, 105, 0}},
                // Neither turned nor scaled, and no neighbours.
                {"Rotate", "Angle=30", {1, 2, 3, 4}, {1, 2, 3, 4}},
                {"Scale100", "HorizontalProz=20", {1, 2, 3, 4}, {1, 2, 3, 4}},
                {"FindEdges", "EdgeEnhance=100", {1, 2, 3, 4}, {1, 2, 3, 4}},
                {"Emboss", "EmbossStrength=100", {1, 2, 3, 4}, {1, 2, 3, 4}}};
  for (const auto& c : kCases) {
    Rig rig(Picture(1, 1), ClassOf("ZNFilter." + std::string(c.word) + ".1"));
    rig.Filter().SetParameter(c.text.c_str(), 1);
    rig.Prepare();
    std::memcpy(rig.source->pixel, c.given.data(), c.given.size());
    Pixel pixel = {};
    EXPECT_EQ(rig.Filter().ReadPixel(pixel.data()), S_OK);
    EXPECT_EQ(pixel, c.expected) << c.word << c.text;
  }
}

// Where the shown part reaches beyond the picture, the background fills it.
TEST(PointFilters, BackgroundCoversTheExtent) {
  const Picture inner = Noise(13, 9, Masks::Noise, 2);
  for (const auto& [width, height] : {std::pair(20, 15), {20, 5}, {4, 15}, {13, 9}}) {
    const ModelStep step{"ZNFilter.ImgBg.1", "Blue=010,Green=200,Red=030,Transparency=020"};
    Rig rig(inner, ClassOf(step.progId));
    rig.source->extentWidth = width;
    rig.source->extentHeight = height;
    rig.source->offsetX = 4;
    rig.Filter().SetParameter(step.parameters.c_str(), 1);
    Picture outer(std::max(13, width), std::max(9, height));
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 13; ++x) {
        std::copy_n(inner.Colour(x, y), 3, outer.Colour(x, y));
        outer.Mask(x, y) = inner.Mask(x, y);
      }
    }
    EXPECT_EQ(Difference(ApplyModel(step, outer), rig.PullWhole()), "");
    EXPECT_EQ(rig.destination->calls.back(), "SetOffset 0 0");
  }
}

// What one object measured colours the same way in another, without a measurement.
TEST(PointFilters, AdoptColourRepeatsAMeasurement) {
  const Picture preview = Noise(30, 20, Masks::Noise, 11);
  const Picture other = Gradient(9, 8, Masks::Opaque);
  const auto& row = ClassOf("ZNFilter.AdoptColor.1");
  const std::string text = "Intensity=100, ColorRed=200, ColorGreen=120, ColorBlue=040";
  Rig first(preview, row);
  first.Filter().SetParameter(text.c_str(), 1);
  first.PullWhole();
  EXPECT_EQ(ActiveText(first.Filter()), text);
  first.Filter().SetParameter("ExParam=1", 1);
  const std::string measured = ActiveText(first.Filter());
  EXPECT_THAT(measured, testing::StartsWith("ExBlit=1, " + text + ", LightA="));
  EXPECT_EQ(PendingText(first.Filter()), text);

  Rig second(other, row);
  second.Filter().SetParameter((measured + ",ExParam=1").c_str(), 1);
  second.PullWhole();
  EXPECT_EQ(ActiveText(second.Filter()), measured);
  // The same pixels come out alike in both pictures.
  Rig again(preview, row);
  again.Filter().SetParameter(measured.c_str(), 1);
  const Picture expected = first.PullWhole();
  const Picture got = again.PullWhole();
  int worst = 0;
  for (std::size_t i = 0; i < got.colour.size(); ++i) {
    worst = std::max(worst, std::abs(got.colour[i] - expected.colour[i]));
  }
  // The text holds six digits of the map.
  EXPECT_LE(worst, 1);
}

}  // namespace
}  // namespace testing_support
