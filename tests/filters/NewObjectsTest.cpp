// What a new object of each class says that it works by, before anything is committed. Where that
// differs from what waits, the object counts as changed.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

std::vector<std::string> ItemsOf(const std::string& text) {
  std::vector<std::string> items;
  std::istringstream stream(text);
  for (std::string item; std::getline(stream >> std::ws, item, ',');) items.push_back(item);
  return items;
}

// The items of the active text that are not in the pending one.
std::string OtherwiseActive(FilterObject& filter) {
  const auto pending = ItemsOf(PendingText(filter)), active = ItemsOf(ActiveText(filter));
  EXPECT_EQ(pending.size(), active.size());
  std::string differing;
  for (std::size_t i = 0; i < std::min(pending.size(), active.size()); ++i) {
    if (pending[i] != active[i]) differing.append(differing.empty() ? "" : ",").append(active[i]);
  }
  return differing;
}

// By word of the ProgID.
const std::map<std::string, std::string> kOtherwiseActive = {
    {"PrintScale", "PrintWidth=-1,PrintHeight=-1"},
    {"Rotate", "AlignLeftBottom=0"},
    {"Scale", "MaximumHorizontalSize=-001,MaximumVerticalSize=-001"},
    {"Scale100", "HorizontalProz=-001,VerticalProz=-001"},
    {"Tonwert",
     "AutoContrast=0,AutoContrastRGB=1,AutoTone=1,Hi=-001,Med=-001,Lo=-001,Addhi=-001,Addmed=-"
     "001,Addlo=-001"},
    {"WhiteBlackGrey", "RedG=000,GreenG=000,BlueG=000,Mode=1,Opacity=000,FilterOn=0"},
    {"GradCurves", "nL=03,nR=03,nG=03,nB=03,Linear=1,YIQOn=1,FilterOn=1"},
    {"BrightnessContrast", "Brightness=-001,Contrast=-001,Saturation=-001"},
    {"Optimize", "Slider1=-001,Slider2=-001,Slider3=-001,Slider4=-001"},
    {"HSB", "Hue=-001,Sat=-001,Bright=-001"},
    {"ColorTuning", "SatR=-001,SatY=-001,SatG=-001,SatC=-001,SatB=-001,SatM=-001"},
    {"Exposure", "Red=-001,Green=-001,Blue=-001"},
    {"Histo", "Intensity=-001"},
    {"RGBColor", "Red=-001,Green=-001,Blue=-001"},
    {"Staub", "MaxRgnSize=-001,GrayTolerance=-001"},
    {"UnsharpMask", "Percent=0,Radius=0.000000,OnLuminanceOnly=255,On=0"},
    {"Sharpen", "Sharpness=255"},
    {"Blur", "Blurness=255"},
    {"BlurGauss", "Percent=0,Radius=0.000000"},
    {"BlurSel", "Percent=0,Threshold=0.0,Radius=0.000000"},
    {"Shadow",
     "LightDirection=0000,InnerOn=1,LightIntensity=020,ShadowDensity=100,ShadowBlur=000,Size=005,"
     "ShadowDistance=000,ShadowRed=255,ShadowGreen=255,ShadowBlue=255"},
    {"WaterSign", "Size=000"},
    {"AdoptColor", "Intensity=000,ColorRed=255,ColorGreen=255,ColorBlue=255"},
    {"DuoColor",
     "Intensity=000,ColorRed=255,ColorGreen=255,ColorBlue=255,Red2=000,Green2=000,Blue2=000"},
    {"RgbMixer", "BBypass=1"},
    {"BlackWhiteness", "BlackWhiteNess=-001"},
    {"Sepia", "Sepia=100"},
    {"Passpartout",
     "BordersizeOn=0,Borderhori=000,Borderverti=000,TotalHori=0000,TotalVerti=0000,Radius=000,"
     "Blue=255 ,Green=255,Red=255,Transparency=255"},
    {"SoftFrame", "FrameWidth=-001"},
    {"Text", "Size=000"},
    {"Invert", "Inversity=-001"},
    {"Transparency", "Transparency=100"},
    {"ImgBg", "Blue=255 ,Green=255,Red=255,Transparency=255"},
    {"InvertMask", "Blue=000 ,Green=000,Red=000,Transparency=255"},
    {"Rauchglas",
     "BordersizeOn=0,Borderhori=000,Borderverti=000,TotalHori=0000,TotalVerti=0000,Radius=000,"
     "Blue=255 ,Green=255,Red=255,Transparency=255"},
    {"Exposure2", "Red=-001,Green=-001,Blue=-001"},
    {"FindEdges", "EdgeEnhance=255"},
    {"Emboss", "EmbossStrength=255"}};

TEST(NewObjects, WorkByOtherValuesThanTheyShow) {
  auto expected = kOtherwiseActive;
  std::string strengths;
  for (int i = 0; i < 35; ++i) {
    strengths += (i == 0 ? "S" : ",S") + std::to_string(i % 5 + 1) + std::to_string(i / 5) + "=-1";
  }
  expected["Gamma"] = strengths;
  for (const FilterClass& row : FilterClasses()) {
    const auto filter = Make(row);
    const std::string word = std::string(row.progId).substr(9);
    EXPECT_EQ(OtherwiseActive(*filter.Get()), expected[word.substr(0, word.size() - 2)]) << word;
  }
}

}  // namespace
}  // namespace testing_support
