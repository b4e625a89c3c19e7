// Each key of the filters with a tone curve or sectors of hue, by values that were worked out from
// the filters' formulas in another language.
#include <gtest/gtest.h>

#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

using Bytes = std::vector<BYTE>;

// A colour of each sector: red, yellow, green, cyan, blue, magenta; in the order of the bytes.
const Bytes kSix = {40,  80,  200, 30,  180, 170, 60,  190, 50,
                    200, 170, 30,  210, 70,  40,  160, 20,  190};
const Bytes kFour(kSix.begin(), kSix.begin() + 12), kThree(kSix.begin(), kSix.begin() + 9);

const std::string kCurves =
    "FilterOn=1,nL=03,xL2=100,yL2=140,xL3=255,yL3=250,yR1=20,nG=03,xG2=60,yG2=30,nB=02,yB2=200";

struct Worked {
  const char* word;
  std::string text;
  Bytes given, expected;
};

const Worked kCases[] = {
    {"HSB",
     "Hue=040",
     kSix,
     {40, 186, 200, 30, 180, 69, 153, 190, 49, 200, 56, 30, 210, 40, 123, 46, 19, 190}},
    {"HSB",
     "Sat=-40",
     kSix,
     {72, 96, 167, 60, 150, 144, 84, 162, 77, 165, 147, 64, 176, 92, 74, 137, 53, 156}},
    {"HSB",
     "Sat=060",
     kSix,
     {0, 60, 240, 0, 210, 195, 17, 240, 0, 230, 189, 0, 250, 44, 0, 172, 0, 210}},
    {"HSB",
     "Bright=-15",
     {90, 90, 90, 40, 80, 200, 30, 180, 170},
     {51, 51, 51, 27, 54, 136, 19, 114, 108}},
    {"HSB",
     "HueR=50",
     kSix,
     {40, 200, 186, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "HueY=50",
     kSix,
     {40, 80, 200, 30, 180, 44, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "HueG=50",
     kSix,
     {40, 80, 200, 30, 180, 170, 176, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "HueC=50",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 30, 31, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "HueB=50",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 40, 151, 159, 19, 190}},
    {"HSB",
     "HueM=50",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 19, 21, 190}},
    {"HSB",
     "SatR=-70",
     kSix,
     {96, 108, 144, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "SatY=-70",
     kSix,
     {40, 80, 200, 82, 127, 124, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "SatG=-70",
     kSix,
     {40, 80, 200, 30, 180, 170, 101, 141, 98, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "SatC=-70",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 140, 131, 89, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "SatB=-70",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 150, 108, 99, 159, 19, 190}},
    {"HSB",
     "SatM=-70",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 121, 79, 130}},
    {"HSB",
     "BrightR=20",
     kSix,
     {115, 143, 227, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "BrightY=20",
     kSix,
     {40, 80, 200, 85, 226, 217, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "BrightG=20",
     kSix,
     {40, 80, 200, 30, 180, 170, 129, 220, 122, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "BrightC=20",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 231, 208, 100, 210, 70, 40, 159, 19, 190}},
    {"HSB",
     "BrightB=20",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 229, 141, 122, 159, 19, 190}},
    {"HSB",
     "BrightM=20",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 207, 75, 236}},
    {"HSB",
     "HueR=300,HueM=100,SatB=999,BrightG=-300",
     kSix,
     {160, 40, 200, 30, 180, 170, 0, 0, 0, 200, 169, 30, 250, 44, 0, 19, 163, 190}},
    {"ColorTuning",
     "SatR=-80",
     kSix,
     {104, 112, 136, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"ColorTuning",
     "SatY=60",
     kSix,
     {40, 80, 200, 0, 210, 195, 60, 190, 49, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"ColorTuning",
     "SatG=-50",
     kSix,
     {40, 80, 200, 30, 180, 170, 90, 155, 85, 200, 169, 30, 210, 70, 40, 159, 19, 190}},
    {"ColorTuning",
     "SatC=100",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 230, 189, 0, 210, 70, 40, 159, 19, 190}},
    {"ColorTuning",
     "SatB=-120",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 125, 125, 125, 159, 19, 190}},
    {"ColorTuning",
     "SatM=70",
     kSix,
     {40, 80, 200, 30, 180, 170, 60, 190, 49, 200, 169, 30, 210, 70, 40, 172, 0, 210}},
    {"Optimize", "Slider1=-20", kFour, {0, 25, 145, 0, 130, 120, 5, 135, 0, 144, 114, 0}},
    {"Optimize", "Slider1=50", kFour, {82, 122, 242, 62, 212, 202, 98, 228, 88, 238, 208, 68}},
    {"Optimize", "Slider2=60", kFour, {44, 84, 204, 30, 180, 170, 63, 193, 53, 203, 173, 33}},
    {"Optimize", "Slider2=-60", kFour, {33, 73, 193, 30, 180, 170, 54, 184, 44, 194, 164, 24}},
    {"Optimize", "Slider3=50", kFour, {55, 95, 215, 30, 180, 170, 67, 197, 57, 208, 178, 38}},
    {"Optimize", "Slider3=-60", kFour, {26, 66, 186, 30, 180, 170, 53, 183, 43, 192, 162, 22}},
    {"Optimize", "Slider4=-50", kFour, {71, 95, 166, 60, 150, 144, 83, 161, 77, 164, 146, 63}},
    {"Optimize", "Slider4=60", kFour, {0, 59, 238, 0, 210, 195, 17, 238, 0, 228, 187, 0}},
    {"GradCurves", kCurves, kFour, {48, 78, 224, 36, 191, 206, 70, 199, 89, 173, 182, 62}},
    {"GradCurves",
     kCurves + ",Linear=1",
     kFour,
     {44, 90, 214, 33, 188, 195, 66, 196, 85, 165, 180, 59}},
    {"GradCurves",
     kCurves + ",YIQOn=1",
     kFour,
     {63, 82, 241, 51, 199, 209, 78, 219, 102, 187, 191, 84}},
    {"GradCurves",
     kCurves + ",Linear=1,YIQOn=1",
     kFour,
     {60, 95, 237, 42, 195, 198, 70, 213, 93, 180, 192, 75}},
    {"GradCurves",
     "FilterOn=1,xR1=100,yR1=50,xR2=200,yR2=150",
     kFour,
     {40, 80, 150, 30, 180, 120, 60, 190, 50, 200, 170, 50}},
    {"Exposure", "Red=-50", kThree, {6, 25, 156, 3, 127, 113, 14, 141, 9}},
    {"Exposure", "Red=60", kThree, {83, 127, 220, 70, 206, 199, 107, 213, 95}},
    {"Exposure", "Green=50", kThree, {0, 60, 240, 0, 210, 195, 20, 235, 4}},
    {"Exposure", "Green=-50", kThree, {72, 96, 167, 60, 150, 144, 84, 162, 77}},
    {"Exposure", "Blue=-30", kThree, {13, 39, 172, 8, 146, 133, 25, 159, 18}},
    {"Exposure", "Blue=70", kThree, {94, 137, 224, 81, 211, 205, 117, 217, 106}},
    {"Exposure", "Red=20,Green=-30,Blue=40", kThree, {97, 129, 203, 83, 189, 183, 113, 197, 106}},
    {"Exposure2", "Red=-60", kThree, {40, 80, 145, 30, 180, 137, 60, 190, 26}},
    {"Exposure2", "Red=80", kThree, {40, 80, 229, 30, 180, 191, 60, 190, 90}},
    {"Exposure2", "Green=-60", kThree, {40, 62, 200, 30, 142, 170, 60, 131, 50}},
    {"Exposure2", "Green=80", kThree, {40, 100, 200, 30, 202, 170, 60, 223, 50}},
    {"Exposure2", "Blue=-60", kThree, {13, 80, 200, 0, 180, 170, 37, 190, 50}},
    {"Exposure2", "Blue=80", kThree, {92, 80, 200, 101, 180, 170, 92, 190, 50}},
    {"BrightnessContrast", "Brightness=20", kThree, {91, 131, 251, 81, 231, 221, 111, 241, 101}},
    {"BrightnessContrast", "Brightness=-30", kThree, {0, 3, 123, 0, 103, 93, 0, 113, 0}},
    {"BrightnessContrast", "Contrast=25", kThree, {0, 26, 255, 0, 239, 218, 0, 255, 0}},
    {"BrightnessContrast", "Contrast=-40", kThree, {101, 113, 149, 98, 143, 140, 107, 146, 104}},
    {"BrightnessContrast", "Saturation=50", kThree, {0, 60, 240, 0, 210, 195, 17, 240, 0}},
    {"BrightnessContrast", "Saturation=-50", kThree, {80, 100, 160, 67, 142, 137, 90, 155, 85}},
    {"BrightnessContrast",
     "Brightness=10,Contrast=-20,Saturation=30",
     kThree,
     {74, 105, 198, 70, 187, 178, 90, 191, 82}},
};

TEST(WorkedColours, EachKeyDoesItsWork) {
  for (const Worked& c : kCases) {
    Picture picture(static_cast<int>(c.given.size() / 3), 1);
    picture.colour = c.given;
    picture.mask.back() = 77;
    Rig rig(picture, ClassOf("ZNFilter." + std::string(c.word) + ".1"));
    rig.Filter().SetParameter(c.text.c_str(), 1);
    const Picture found = rig.PullWhole();
    EXPECT_EQ(found.colour, c.expected) << c.word << " " << c.text;
    EXPECT_EQ(found.mask, picture.mask) << c.word;
  }
}

}  // namespace
}  // namespace testing_support
