// What a new object of each class shows, and what it says that it works by before anything is
// committed. Where that differs from what waits, the object counts as changed.
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

// Of classes without a default text, or with one that turns something on.
const std::map<std::string, std::string> kShown = {
    {"RotCrop",
     "LeftMargin=0.0000, RightMargin=1.0000, BottomMargin=0.0000, TopMargin=1.0000, ShrinkAlpha=0, "
     "FixRatioOn=1, FixRatio=-1.0000, Landscape=0, DlgSizeX=100, DlgSizeY=100, Mirrored=0, "
     "Angle=0.0000,Rot1X=0.25000,Rot1Y=0.50000, Rot2X=0.75000, Rot2Y=0.50000"},
    {"PrintCrop",
     "MarginL=0.0000, MarginR=1.0000, MarginB=0.0000, MarginT=1.0000, Width=15.0000, "
     "Height=10.0000, Measur=1, PPI=100.0000, FixedPPI=0"},
    {"PrintScale", "PrintWidth=100, PrintHeight=100, PrintTurn=0"},
    {"PrintPad",
     "AspectRatioX=3, AspectRatioY=2, ForceRatio=0, Toggle=0, Landscape=0, PadColor=ffffff, "
     "BottomAlign=0"},
    {"Crop",
     "LeftMargin=0.0000, RightMargin=1.0000, BottomMargin=0.0000, TopMargin=1.0000, ShrinkAlpha=0, "
     "FixRatioOn=1, FixRatio=-1.0000, Landscape=0"},
    {"WaterSign",
     "Bold=0,Italic=0,Size=040,Red=255,Green=255,Blue=255,Opacity=030,PosX=500,PosY=500,Align=001,"
     "Angle=000,Outline=000,Red2=000,Green2=000,Blue2=000,Tile=0,Spacing=100,Font=,Picture=,Text="},
    {"RgbMixer",
     "BOnK=0,BOnR=0,BOnG=0,BOnB=0,BBypass=0,BRgb0=0,BCon0=1,BRgb1=0,BCon1=0,BRgb2=0,BCon2=0,BRgb3="
     "0,BCon3=0,kR=030,kG=059,kB=011,rR=100,rG=000,rB=000,gR=000,gG=100,gB=000,bR=000,bG=000,bB="
     "100,kC=000,rC=000,gC=000,bC=000"},
    {"RedEye", "N=0"},
    {"Text",
     "Bold=0,Italic=0,Size=060,Red=255,Green=255,Blue=255,Opacity=100,PosX=500,PosY=500,Align=001,"
     "Angle=000,Outline=000,Red2=000,Green2=000,Blue2=000,Font=,Text="},
    {"Zero", "Generic Filter Parameter"}};

// The smallest buffer that a getter writes to, where it is larger than the text.
const std::map<std::string, int> kLeastBuffers = {
    {"PrintCrop", 250},     {"PrintScale", 50},   {"Rotate", 101},
    {"Scale100", 101},      {"GradCurves", 1001}, {"HSB", 246},
    {"Exposure", 31},       {"Histo", 31},        {"BrightnessContrast", 51},
    {"ColorTuning", 101},   {"RGBColor", 31},     {"UnsharpMask", 101},
    {"Blur", 31},           {"BlurGauss", 101},   {"BlurSel", 101},
    {"Shadow", 201},        {"AdoptColor", 201},  {"DuoColor", 201},
    {"BlackWhiteness", 31}, {"RedEye", 501},      {"Sepia", 31},
    {"Passpartout", 221},   {"Invert", 31},       {"Transparency", 31},
    {"Offset", 31},         {"ImgBg", 221},       {"InvertMask", 221},
    {"Rauchglas", 221},     {"Exposure2", 31},    {"FindEdges", 31},
    {"Emboss", 31},         {"Zero", 31}};

std::string WordOf(const FilterClass& row) {
  const std::string word = std::string(row.progId).substr(9);
  return word.substr(0, word.size() - 2);
}

TEST(NewObjects, ShowWhatTheirDefaultTextSets) {
  for (const FilterClass& row : FilterClasses()) {
    const auto made = Make(row), given = Make(row);
    const auto shown = kShown.find(WordOf(row));
    if (shown == kShown.end()) given->SetParameter(row.defaultText, 1);
    const std::string text = PendingText(*made.Get());
    EXPECT_EQ(text, shown == kShown.end() ? PendingText(*given.Get()) : shown->second);
    const auto larger = kLeastBuffers.find(WordOf(row));
    const int least =
        larger == kLeastBuffers.end() ? static_cast<int>(text.size()) + 1 : larger->second;
    EXPECT_EQ(PendingText(*made.Get(), least - 1), "") << row.progId;
    EXPECT_EQ(PendingText(*made.Get(), least), text) << row.progId;
  }
}

TEST(NewObjects, WorkByOtherValuesThanTheyShow) {
  auto expected = kOtherwiseActive;
  std::string strengths;
  for (int i = 0; i < 35; ++i) {
    strengths += (i == 0 ? "S" : ",S") + std::to_string(i % 5 + 1) + std::to_string(i / 5) + "=-1";
  }
  expected["Gamma"] = strengths;
  for (const FilterClass& row : FilterClasses()) {
    const auto filter = Make(row);
    EXPECT_EQ(OtherwiseActive(*filter.Get()), expected[WordOf(row)]) << row.progId;
  }
}

}  // namespace
}  // namespace testing_support
