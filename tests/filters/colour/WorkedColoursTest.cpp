// Each key of the filters with a tone curve, sectors of hue or weights of channels, by values that
// were worked out from the filters' formulas in another language; and what is odd in filters of
// tones, by hand.
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

// Colours as their bytes in memory: blue, green, red. One of each sector: red, yellow, green, cyan,
// blue, magenta.
const std::string kSix = "2850c8 1eb4aa 3cbe32 c8aa1e d24628 a014be";
const std::string kFour = kSix.substr(0, 27), kThree = kSix.substr(0, 20);

const std::string kSome = "0080ff 0a141e 7f7f7f", kWhite = "ffffff ffffff ffffff";

const std::string kCurves =
    "FilterOn=1,nL=03,xL2=100,yL2=140,xL3=255,yL3=250,yR1=20,nG=03,xG2=60,yG2=30,nB=02,yB2=200";

struct Worked {
  const char* word;
  std::string text, given, expected;
};

const Worked kCases[] = {
    {"HSB", "Hue=040", kSix, "28bac8 1eb445 99be31 c8381e d2287b 2e13be"},
    {"HSB", "Sat=-40", kSix, "4860a7 3c9690 54a24d a59340 b05c4a 89359c"},
    {"HSB", "Sat=060", kSix, "003cf0 00d2c3 11f000 e6bd00 fa2c00 ac00d2"},
    {"HSB", "Bright=-15", "5a5a5a 2850c8 1eb4aa", "333333 1b3688 13726c"},
    {"HSB", "HueR=50", kSix, "28c8ba 1eb4aa 3cbe31 c8a91e d24628 9f13be"},
    {"HSB", "HueY=50", kSix, "2850c8 1eb42c 3cbe31 c8a91e d24628 9f13be"},
    {"HSB", "HueG=50", kSix, "2850c8 1eb4aa b0be31 c8a91e d24628 9f13be"},
    {"HSB", "HueC=50", kSix, "2850c8 1eb4aa 3cbe31 c81e1f d24628 9f13be"},
    {"HSB", "HueB=50", kSix, "2850c8 1eb4aa 3cbe31 c8a91e d22897 9f13be"},
    {"HSB", "HueM=50", kSix, "2850c8 1eb4aa 3cbe31 c8a91e d24628 1315be"},
    {"HSB", "SatR=-70", kSix, "606c90 1eb4aa 3cbe31 c8a91e d24628 9f13be"},
    {"HSB", "SatY=-70", kSix, "2850c8 527f7c 3cbe31 c8a91e d24628 9f13be"},
    {"HSB", "SatG=-70", kSix, "2850c8 1eb4aa 658d62 c8a91e d24628 9f13be"},
    {"HSB", "SatC=-70", kSix, "2850c8 1eb4aa 3cbe31 8c8359 d24628 9f13be"},
    {"HSB", "SatB=-70", kSix, "2850c8 1eb4aa 3cbe31 c8a91e 966c63 9f13be"},
    {"HSB", "SatM=-70", kSix, "2850c8 1eb4aa 3cbe31 c8a91e d24628 794f82"},
    {"HSB", "BrightR=20", kSix, "738fe3 1eb4aa 3cbe31 c8a91e d24628 9f13be"},
    {"HSB", "BrightY=20", kSix, "2850c8 55e2d9 3cbe31 c8a91e d24628 9f13be"},
    {"HSB", "BrightG=20", kSix, "2850c8 1eb4aa 81dc7a c8a91e d24628 9f13be"},
    {"HSB", "BrightC=20", kSix, "2850c8 1eb4aa 3cbe31 e7d064 d24628 9f13be"},
    {"HSB", "BrightB=20", kSix, "2850c8 1eb4aa 3cbe31 c8a91e e58d7a 9f13be"},
    {"HSB", "BrightM=20", kSix, "2850c8 1eb4aa 3cbe31 c8a91e d24628 cf4bec"},
    {"HSB", "HueR=300,HueM=100,SatB=999,BrightG=-300", kSix,
     "a028c8 1eb4aa 000000 c8a91e fa2c00 13a3be"},
    {"ColorTuning", "SatR=-80", kSix, "687088 1eb4aa 3cbe31 c8a91e d24628 9f13be"},
    {"ColorTuning", "SatY=60", kSix, "2850c8 00d2c3 3cbe31 c8a91e d24628 9f13be"},
    {"ColorTuning", "SatG=-50", kSix, "2850c8 1eb4aa 5a9b55 c8a91e d24628 9f13be"},
    {"ColorTuning", "SatC=100", kSix, "2850c8 1eb4aa 3cbe31 e6bd00 d24628 9f13be"},
    {"ColorTuning", "SatB=-120", kSix, "2850c8 1eb4aa 3cbe31 c8a91e 7d7d7d 9f13be"},
    {"ColorTuning", "SatM=70", kSix, "2850c8 1eb4aa 3cbe31 c8a91e d24628 ac00d2"},
    {"Optimize", "Slider1=-20", kFour, "001991 008278 058700 907200"},
    {"Optimize", "Slider1=50", kFour, "527af2 3ed4ca 62e458 eed044"},
    {"Optimize", "Slider2=60", kFour, "2c54cc 1eb4aa 3fc135 cbad21"},
    {"Optimize", "Slider2=-60", kFour, "2149c1 1eb4aa 36b82c c2a418"},
    {"Optimize", "Slider3=50", kFour, "375fd7 1eb4aa 43c539 d0b226"},
    {"Optimize", "Slider3=-60", kFour, "1a42ba 1eb4aa 35b72b c0a216"},
    {"Optimize", "Slider4=-50", kFour, "475fa6 3c9690 53a14d a4923f"},
    {"Optimize", "Slider4=60", kFour, "003bee 00d2c3 11ee00 e4bb00"},
    {"GradCurves", kCurves, kFour, "304ee0 24bfce 46c759 adb63e"},
    {"GradCurves", kCurves + ",Linear=1", kFour, "2c5ad6 21bcc3 42c455 a5b43b"},
    {"GradCurves", kCurves + ",YIQOn=1", kFour, "3f52f1 33c7d1 4edb66 bbbf54"},
    {"GradCurves", kCurves + ",Linear=1,YIQOn=1", kFour, "3c5fed 2ac3c6 46d55d b4c04b"},
    {"GradCurves", "FilterOn=1,xR1=100,yR1=50,xR2=200,yR2=150", kFour,
     "285096 1eb478 3cbe32 c8aa32"},
    {"Exposure", "Red=-50", kThree, "06199c 037f71 0e8d09"},
    {"Exposure", "Red=60", kThree, "537fdc 46cec7 6bd55f"},
    {"Exposure", "Green=50", kThree, "003cf0 00d2c3 14eb04"},
    {"Exposure", "Green=-50", kThree, "4860a7 3c9690 54a24d"},
    {"Exposure", "Blue=-30", kThree, "0d27ac 089285 199f12"},
    {"Exposure", "Blue=70", kThree, "5e89e0 51d3cd 75d96a"},
    {"Exposure", "Red=20,Green=-30,Blue=40", kThree, "6181cb 53bdb7 71c56a"},
    {"Exposure2", "Red=-60", kThree, "285091 1eb489 3cbe1a"},
    {"Exposure2", "Red=80", kThree, "2850e5 1eb4bf 3cbe5a"},
    {"Exposure2", "Green=-60", kThree, "283ec8 1e8eaa 3c8332"},
    {"Exposure2", "Green=80", kThree, "2864c8 1ecaaa 3cdf32"},
    {"Exposure2", "Blue=-60", kThree, "0d50c8 00b4aa 25be32"},
    {"Exposure2", "Blue=80", kThree, "5c50c8 65b4aa 5cbe32"},
    {"BrightnessContrast", "Brightness=20", kThree, "5b83fb 51e7dd 6ff165"},
    {"BrightnessContrast", "Brightness=-30", kThree, "00037b 00675d 007100"},
    {"BrightnessContrast", "Contrast=25", kThree, "001aff 00efda 00ff00"},
    {"BrightnessContrast", "Contrast=-40", kThree, "657195 628f8c 6b9268"},
    {"BrightnessContrast", "Saturation=50", kThree, "003cf0 00d2c3 11f000"},
    {"BrightnessContrast", "Saturation=-50", kThree, "5064a0 438e89 5a9b55"},
    {"BrightnessContrast", "Brightness=10,Contrast=-20,Saturation=30", kThree,
     "4a69c6 46bbb2 5abf52"},
    {"RgbMixer", "BOnK=1", kThree, "6f6f6f a0a0a0 858585"},
    {"RgbMixer", "BOnK=1,kR=100,kG=50,kB=-20", kThree, "e8e8e8 fefefe 858585"},
    {"RgbMixer", "BOnK=1,kR=100,kG=50,kB=-20,BRgb0=1,kC=20", kThree, "e5e5e5 f6f6f6 999999"},
    {"RgbMixer", "BOnK=1,BCon0=0,kC=20,BRgb0=1,kR=0,kG=0,kB=0", kThree, "000000 000000 000000"},
    {"RgbMixer", "BOnR=1,rR=20,rG=70,rB=30,rC=10", kThree, "28506c 1eb4a9 3cbea1"},
    {"RgbMixer", "BOnR=1,rR=20,rG=70,rB=30,rC=10,BRgb1=1,BCon1=1", kThree, "285073 1eb4a5 3cbe9f"},
    {"RgbMixer", "BOnG=1,gR=-20,gG=70,gB=130,gC=10", kThree, "2844c8 1e83aa 3cc932"},
    {"RgbMixer", "BOnG=1,gR=-20,gG=70,gB=130,gC=-10,BRgb2=1,BCon2=1", kThree,
     "280cc8 1e2faa 3c5632"},
    {"RgbMixer", "BOnB=1,bR=50,bG=40,bB=-30,bC=10", kThree, "7850c8 94b4aa 53be32"},
    {"RgbMixer", "BOnB=1,bR=50,bG=40,bB=-30,bC=15,BRgb3=1,BCon3=1", kThree, "ee50c8 ffb4aa b0be32"},
    {"RgbMixer", "BOnR=1,rG=20,BOnG=1,gB=40,BOnB=1,bR=60", kThree, "a060d8 84c0ce 5ad658"},
    {"RgbMixer", "BOnK=1,BOnR=1,rG=20,BBypass=1", kThree, "2850c8 1eb4aa 3cbe32"},
    {"Gamma", "S10=40", kSix, "2850fa 1eb4dc 3cbe64 c8aa50 d2465a a014f0"},
    {"Gamma", "S20=-30", kSix, "282ac8 1e8eaa 3c9832 c8841e d22028 a000be"},
    {"Gamma", "S30=25", kSix, "4750c8 3db4aa 5bbe32 e7aa1e f14628 bf14be"},
    {"Gamma", "S40=-15", kSix, "1b3688 13726c 288122 857114 91301b 650c78"},
    {"Gamma", "S50=60", kSix, "003cf0 00d2c3 11f000 e6bd00 fa2c00 ac00d2"},
    {"Gamma", "S11=50", kSix, "2850ff 1eb4aa 3cbe32 c8aa1e d24628 a014be"},
    {"Gamma", "S21=-50", kSix, "2811c8 1eb4aa 3cbe32 c8aa1e d24628 a014be"},
    {"Gamma", "S32=70", kSix, "2850c8 76b4aa 3cbe32 c8aa1e d24628 a014be"},
    {"Gamma", "S43=20", kSix, "2850c8 1eb4aa 81dc7a c8aa1e d24628 a014be"},
    {"Gamma", "S54=-80", kSix, "2850c8 1eb4aa 3cbe32 847e61 d24628 a014be"},
    {"Gamma", "S15=-60", kSix, "2850c8 1eb4aa 3cbe32 c8aa1e d24600 a014be"},
    {"Gamma", "S26=90", kSix, "2850c8 1eb4aa 3cbe32 c8aa1e d24628 a086be"},
    {"Gamma", "S46=30,S56=-40", kSix, "2850c8 1eb4aa 3cbe32 c8aa1e d24628 cc91d9"},
    {"Gamma", "S10=20,S30=-40,S40=10,S50=50,S11=99", "5a5a5a 000000", "0487c9 00004c"},
    {"Gamma", "S10=300,S20=-300,S30=200,S40=-200,S50=999", kThree, "000000 000000 000000"},
    // So steep that no integer holds the products.
    {"BrightnessContrast", "Contrast=2000", kSome, "00ffff 000000 000000"},
    {"BrightnessContrast", "Brightness=100", kSome, kWhite},
    // No saturation leaves the lightness: (20 / 255 + 40 / 255) / 2 * 255.
    {"BrightnessContrast", "Saturation=-100", "141e28", "1e1e1e"},
    {"BrightnessContrast", "Saturation=101", "141e28", "001e3c"},
    // 80 percent of 1 is 0: no conversion, which would lose levels.
    {"Exposure", "Green=001", kSome, kSome},
    // 255 * (100 / 255)^3, then ^(1/3).
    {"Exposure", "Red=-100", "6400ff", "0f00ff"},
    {"Exposure", "Blue=100", "6400ff", "ba00ff"},
    {"Exposure2", "Red=100, Green=100, Blue=-100", "090909", "090909"},
    // Mean 66; 100 takes 100 - 255 * (100 / 255)^3 = 84; 34 * 84 / 85 = 33.
    {"Exposure2", "Blue=-100", "643232", "433232"},
    // One level: all of it is white, and black stays.
    {"Histo", "", "000000 636363", "000000 ffffff"},
    {"WhiteBlackGrey", "RedG=010, Mode=7", kSome, kSome},
    {"WhiteBlackGrey", "RedG=000, GreenG=000, Opacity=000", kSome, kSome},
    {"WhiteBlackGrey", "RedG=000, GreenG=000, FilterOn=0", kSome, kSome},
    {"WhiteBlackGrey", "RedG=0, GreenG=0, BlueG=0, Mode=1", "0001c8", "ffffff"},
    {"WhiteBlackGrey", "RedG=0, GreenG=0, BlueG=0, Mode=1, Opacity=50", "640001", "b17f80"},
    // The scaled grey 128 * (60, 80, 120) / 80 goes to 128 exactly, whatever rounding says.
    {"WhiteBlackGrey", "RedG=60, GreenG=80, BlueG=120, Mode=1", "c08060", "808080"},
    // A low limit below 0 adds its own first entry to all others.
    {"Tonwert", "AutoContrast=0, Lo=-255", "0002fe", "7fff7d"},
    {"Tonwert", "AutoContrast=0, Lo=300, Hi=300", kSome, kWhite},
    // Limits that cross are held apart: 125 and 130.
    {"Tonwert", "Addlo=1000, Addhi=1000", "7d7f82", "0066ff"},
};

Picture PictureOf(const std::string& colours) {
  Picture picture(static_cast<int>((colours.size() + 1) / 7), 1);
  std::istringstream stream(colours);
  stream >> std::hex;
  for (int x = 0, colour = 0; stream >> colour; ++x) {
    for (int i = 0; i < 3; ++i) {
      picture.Colour(x, 0)[i] = static_cast<BYTE>(colour >> (16 - 8 * i));
    }
  }
  return picture;
}

std::string ColoursOf(const Picture& picture) {
  std::string text;
  for (int x = 0; x < picture.width; ++x) {
    const BYTE* const at = picture.Colour(x, 0);
    char digits[8];
    std::snprintf(digits, sizeof digits, "%02x%02x%02x", at[0], at[1], at[2]);
    text.append(x > 0 ? " " : "").append(digits);
  }
  return text;
}

TEST(WorkedColours, EachKeyDoesItsWork) {
  for (const Worked& c : kCases) {
    Picture picture = PictureOf(c.given);
    picture.mask.back() = 77;
    Rig rig(picture, ClassOf("ZNFilter." + std::string(c.word) + ".1"));
    rig.Filter().SetParameter(c.text.c_str(), 1);
    const Picture found = rig.PullWhole();
    EXPECT_EQ(ColoursOf(found), c.expected) << c.word << " " << c.text;
    EXPECT_EQ(found.mask, picture.mask) << c.word;
  }
}

}  // namespace
}  // namespace testing_support
