#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/PercentText.h"
#include "imageio/ImageFile.h"
#include "tests/filters/ClassOf.h"
#include "tests/filters/text/TestFonts.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

constexpr char kText[] = "ZNFilter.Text.1";
constexpr char kSign[] = "ZNFilter.WaterSign.1";

Picture Drawn(const char* progId, const std::string& parameters, Picture on) {
  Rig rig(std::move(on), ClassOf(progId));
  rig.Filter().SetParameter(parameters.c_str(), 1);
  return rig.PullWhole();
}

Picture Black(int width, int height) {
  return Uniform(width, height, 0, 0, 0);
}

// Where anything was drawn on black, and how much: the sum of the levels of all channels.
struct Drawing {
  int left = 1 << 30, bottom = 1 << 30, right = -1, top = -1;  // the last pixels
  long light = 0;
};

Drawing Measured(const Picture& picture) {
  Drawing drawing;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const BYTE* const pixel = picture.Colour(x, y);
      const int sum = pixel[0] + pixel[1] + pixel[2];
      if (sum == 0) continue;
      drawing.left = std::min(drawing.left, x);
      drawing.right = std::max(drawing.right, x);
      drawing.bottom = std::min(drawing.bottom, y);
      drawing.top = std::max(drawing.top, y);
      drawing.light += sum;
    }
  }
  return drawing;
}

Drawing MeasuredText(const std::string& parameters, int width = 200, int height = 100) {
  return Measured(Drawn(kText, parameters, Black(width, height)));
}

std::uint64_t HashOf(const Picture& picture) {
  std::uint64_t hash = 14695981039346656037u;
  for (const auto* plane : {&picture.colour, &picture.mask}) {
    for (const BYTE byte : *plane) hash = (hash ^ byte) * 1099511628211u;
  }
  return hash;
}

// The bar of DejaVu Sans is 204..405 of 2048 units wide and -483..1556 high: a rectangle, which can
// be computed by hand. At a size of 102.4 pixels 20 units are a pixel.
TEST(TextFilter, ABarStandsWhereItIsPut) {
  TestFonts fonts;
  Rig rig(Black(100, 1024), ClassOf(kText));
  rig.Filter().SetParameter("Size=100,PosX=250,PosY=500,Align=0,Text=%7C,Red=200,Green=100,Blue=50",
                            1);
  const Picture picture = rig.PullWhole();
  const Drawing drawn = Measured(picture);
  // Ascent 1901, descent 483: half of 2384 units below the anchor, at 512, lies the descent's end.
  const double base = 512 - 1192 / 20.0 + 483 / 20.0;
  EXPECT_EQ(drawn.bottom, static_cast<int>(base - 483 / 20.0));
  EXPECT_EQ(drawn.top, static_cast<int>(base + 1564 / 20.0));
  EXPECT_EQ(picture.Colour(38, 500)[0], 50);
  EXPECT_EQ(picture.Colour(38, 500)[1], 100);
  EXPECT_EQ(picture.Colour(38, 500)[2], 200);
  EXPECT_EQ(picture.Colour(30, 500)[0], 0);
}

TEST(TextFilter, PlacesAndSizesAreShares) {
  TestFonts fonts;
  const std::string text = "Size=300,PosX=500,PosY=400,Text=Hxg";
  const Drawing small = MeasuredText(text, 200, 100);
  const Drawing large = MeasuredText(text, 800, 400);
  EXPECT_NEAR(large.left / 4.0, small.left, 1.0);
  EXPECT_NEAR(large.top / 4.0, small.top, 1.0);
  EXPECT_NEAR(static_cast<double>(large.light) / 16, static_cast<double>(small.light),
              0.01 * static_cast<double>(small.light));
  // Centred on the anchor, and moved with it.
  EXPECT_NEAR((large.left + large.right) / 2.0, 400, 4);
  const Drawing moved = MeasuredText("Size=300,PosX=600,PosY=900,Text=Hxg", 800, 400);
  EXPECT_EQ(moved.left, large.left + 80);
  EXPECT_EQ(moved.bottom, large.bottom + 200);
}

TEST(TextFilter, AlignmentStylesAndOutlineShow) {
  TestFonts fonts;
  const Drawing plain = MeasuredText("Size=300,Text=Hno");
  EXPECT_LT(MeasuredText("Size=300,Align=2,Text=Hno").right, 101);
  EXPECT_GT(MeasuredText("Size=300,Align=0,Text=Hno").left, 99);
  const Drawing bold = MeasuredText("Size=300,Bold=1,Text=Hno");
  EXPECT_GT(bold.light, plain.light * 11 / 10);
  const Drawing made = MeasuredText("Size=300,Bold=1,Font=DejaVu%20Serif,Text=Hno");
  EXPECT_GT(made.light, MeasuredText("Size=300,Font=DejaVu%20Serif,Text=Hno").light * 11 / 10);
  const Drawing slanted = MeasuredText("Size=300,Italic=1,Text=l");
  EXPECT_GT(slanted.right - slanted.left,
            MeasuredText("Size=300,Text=l").right - MeasuredText("Size=300,Text=l").left + 4);
  const Drawing outlined = MeasuredText("Size=300,Outline=100,Red2=255,Text=Hno");
  EXPECT_EQ(outlined.left, plain.left - 3);
  EXPECT_EQ(outlined.top, plain.top + 3);
  EXPECT_GT(outlined.light, plain.light);
}

TEST(TextFilter, OpacityAndTransparentPictures) {
  TestFonts fonts;
  // The middle of the bar is covered whole.
  const std::string bar = "Size=900,Red=255,Green=0,Blue=0,Text=%E2%96%88";  // a full block
  const Picture half = Drawn(kText, bar + ",Opacity=40", Uniform(60, 60, 100, 100, 100));
  EXPECT_EQ(half.Colour(30, 30)[2], (255 * 102 + 100 * 153) / 255);
  EXPECT_EQ(half.Colour(30, 30)[0], 100 * 153 / 255);
  EXPECT_EQ(half.Mask(30, 30), 0);
  const Picture onNothing = Drawn(kText, bar + ",Opacity=40", Uniform(60, 60, 9, 9, 9, 255));
  EXPECT_EQ(onNothing.Mask(30, 30), 153);
  EXPECT_EQ(onNothing.Colour(30, 30)[2], 255);
  EXPECT_EQ(onNothing.Mask(0, 0), 255);
  EXPECT_EQ(onNothing.Colour(0, 0)[2], 9);
}

// Whatever the system, its fonts' files and its vector units: these are the bytes.
TEST(TextFilter, BytesAreTheSameEverywhere) {
  TestFonts fonts;
  const struct {
    const char *progId, *parameters;
    std::uint64_t hash;
  } cases[] = {
      {kText, "Size=150,Text=Office%20AVA%20%C3%84q%CC%83", 13756572587478300339u},
      {kText,
       "Size=200,Font=DejaVu%20Serif,Bold=1,Italic=1,Outline=050,Angle=137,Text=R%26D%0A%C3%9F",
       15587497348864117846u},
      {kText, "Size=180,Opacity=65,Text=%D8%A8%D9%8E%D8%A8%20abc%20%D7%A9%D7%81%D7%9C%D7%95%D7%9D",
       6717459738364671938u},
      {kText, "Size=999,PosX=-100,Align=0,Outline=009,Text=%40%40", 13080583012320369009u},
      {kSign, "Size=080,Tile=1,Angle=-333,Spacing=037,Text=sample%0Atwo", 4938075475792218496u}};
  for (const auto& c : cases) {
    const Picture picture = Drawn(c.progId, c.parameters, Gradient(317, 211, Masks::Noise));
    EXPECT_EQ(HashOf(picture), c.hash) << c.parameters;
  }
}

TEST(TextFilter, TheHostsAnswerTakesTheTextsPlace) {
  TestFonts fonts;
  Rig rig(Black(200, 100), ClassOf(kText));
  rig.destination->expansion = "M";
  rig.Filter().SetParameter("Size=300,Text=%5Bdate%5D%C3%A4", 1);
  const Picture expanded = rig.PullWhole();
  EXPECT_THAT(rig.destination->calls, testing::Contains("ExpandText [date]\xC3\xA4"));
  EXPECT_EQ(Difference(Drawn(kText, "Size=300,Text=M", Black(200, 100)), expanded), "");
  // What is kept is what was given.
  EXPECT_THAT(PendingText(rig.Filter()), testing::EndsWith(",Text=%5Bdate%5D%C3%A4"));
}

TEST(TextFilter, AnyTextIsDrawnInTime) {
  TestFonts fonts;
  std::string marks, noise, lines, controls;
  for (int i = 0; i < 100'000; ++i) marks += "\xCC\x81";
  for (int i = 0; i < 1'000'000; ++i) noise += static_cast<char>(i * 2654435761u >> 13);
  for (int i = 0; i < 300'000; ++i) lines += "ab\n";
  for (int i = 1; i < 128; ++i) controls += static_cast<char>(i % 33 ? i % 32 : 127);
  for (const char* const progId : {kText, kSign}) {
    for (const std::string& text : {marks, noise, lines, controls}) {
      for (const char* const settings :
           {"Size=020,Tile=1,Spacing=0,Angle=100,Outline=090",
            "Size=1000,Align=0,PosX=2147483647,PosY=-2147483648,Tile=1"}) {
        const auto start = std::chrono::steady_clock::now();
        const std::string parameters =
            std::string(settings).append(",Text=").append(base::PercentEncode(text));
        const Picture picture = Drawn(progId, parameters, Gradient(64, 48, Masks::Noise));
        EXPECT_EQ(picture.width, 64);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(5));
      }
    }
  }
}

TEST(WaterSign, RepeatsAtEvenSteps) {
  TestFonts fonts;
  // 40 pixels high letters, 2384 / 2048 of it is the line; 10 pixels between.
  const Picture picture =
      Drawn(kSign, "Size=100,Opacity=100,Tile=1,Spacing=025,Text=H", Black(400, 400));
  const int down = static_cast<int>(40 * 2384 / 2048.0 + 10 + 0.5);
  const int right = static_cast<int>(40 * 1540 / 2048.0 + 10 + 0.5);
  for (int y = 0; y + down < 400; ++y) {
    for (int x = 0; x + right < 400; ++x) {
      ASSERT_EQ(picture.Colour(x, y)[0], picture.Colour(x + right, y + down)[0]) << x << ", " << y;
    }
  }
  // As many as fit, and the one at the place in the middle among them.
  const long one = Measured(Drawn(kSign, "Size=100,Opacity=100,Text=H", Black(400, 400))).light;
  const double count = 400.0 / down * 400.0 / right;
  EXPECT_NEAR(static_cast<double>(Measured(picture).light), static_cast<double>(one) * count,
              0.1 * count * static_cast<double>(one));
  for (const int x : {199, 200, 201}) {
    EXPECT_EQ(picture.Colour(x, 200)[0],
              Drawn(kSign, "Size=100,Opacity=100,Text=H", Black(400, 400)).Colour(x, 200)[0]);
  }
}

class SignPicture : public testing::Test {
 protected:
  SignPicture() {
    std::filesystem::create_directories(folder);
    Write();
  }
  ~SignPicture() override { std::filesystem::remove_all(folder); }

  void Write() {
    std::vector<BYTE*> colour, mask;
    for (int y = 0; y < sign.height; ++y) {
      colour.push_back(sign.Colour(0, y));
      mask.push_back(&sign.Mask(0, y));
    }
    imageio::WriteImage(file, imageio::Format::Png, sign.width, sign.height,
                        {colour.data(), mask.data()});
  }
  std::string Key(const std::filesystem::path& path) const {
    const std::u8string utf8 = path.u8string();
    return ",Picture=" + base::PercentEncode(std::string(utf8.begin(), utf8.end()));
  }

  // Of this test alone: others run beside it.
  std::filesystem::path folder =
      std::filesystem::absolute(std::filesystem::temp_directory_path()) /
      ("fxbox-sign \xC3\xA4 " +
       std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
  std::filesystem::path file = folder / "sign.png";
  Picture sign = Gradient(40, 20, Masks::Edges);
};

// What is nothing in the laid picture has no colour there.
void ExpectLaid(const Picture& on, int left, int bottom, const Picture& laid) {
  for (int y = 0; y < laid.height; ++y) {
    for (int x = 0; x < std::min(laid.width, on.width - left); ++x) {
      const BYTE* const colour = laid.Colour(x, y);
      ASSERT_EQ(on.Mask(left + x, bottom + y), laid.Mask(x, y)) << x << ", " << y;
      ASSERT_TRUE(laid.Mask(x, y) == 255 ||
                  std::equal(colour, colour + 3, on.Colour(left + x, bottom + y)))
          << x << ", " << y;
    }
  }
}

// Its own height of 20 pixels: nothing is scaled.
TEST_F(SignPicture, IsLaidOverAtItsPlace) {
  TestFonts fonts;
  const Picture nothing = Uniform(100, 100, 1, 2, 3, 255);
  const std::string place = "Size=200,Align=0,PosX=100,PosY=300,Opacity=";
  const Picture laid = Drawn(kSign, place + "100" + Key(file), nothing);
  ExpectLaid(laid, 10, 20, sign);
  EXPECT_EQ(laid.Mask(9, 30), 255);
  EXPECT_EQ(laid.Mask(50, 30), 255);
  const Picture weak = Drawn(kSign, place + "040" + Key(file), nothing);
  EXPECT_EQ(weak.Mask(30, 30), 255 - (255 - sign.Mask(20, 10)) * 40 / 100);
}

TEST_F(SignPicture, IsScaledTurnedAndRepeated) {
  TestFonts fonts;
  const Picture nothing = Uniform(100, 100, 0, 0, 0, 255);
  const auto drawn = [&](const char* keys) { return Drawn(kSign, keys + Key(file), nothing); };
  Rig scaled(sign, ClassOf("ZNFilter.Scale.1"));
  scaled.Filter().SetParameter("MaximumHorizontalSize=20,MaximumVerticalSize=10", 1);
  ExpectLaid(drawn("Size=100,Opacity=100,Align=2,PosX=500,PosY=500"), 30, 45, scaled.PullWhole());
  // Half a turn about its middle, exactly.
  Rig turned(sign, ClassOf("ZNFilter.Rotate.1"));
  turned.Filter().SetParameter("Angle=180", 1);
  ExpectLaid(drawn("Size=200,Opacity=100,Angle=1800"), 30, 40, turned.PullWhole());
  const Picture tiled = drawn("Size=200,Opacity=100,Tile=1,Spacing=030");
  for (const auto& [left, bottom] : {std::pair(30, 40), {30, 63}, {73, 40}}) {
    ExpectLaid(tiled, left, bottom, sign);
  }
}

// Of one colour, by any angle: its ends are alike, and none of its edges is lost.
TEST_F(SignPicture, IsTurnedAboutItsMiddle) {
  TestFonts fonts;
  sign = Uniform(40, 20, 1, 2, 3);
  Write();
  for (const int tenths : {0, 130, 450, 1234, 2700}) {
    const Picture laid =
        Drawn(kSign, "Size=200,Opacity=100,Angle=" + std::to_string(tenths) + Key(file),
              Uniform(100, 100, 0, 0, 0, 255));
    double opacity = 0;
    for (int y = 0; y < 100; ++y) {
      for (int x = 0; x < 100; ++x) {
        opacity += 255 - laid.Mask(x, y);
        EXPECT_NEAR(laid.Mask(x, y), laid.Mask(99 - x, 99 - y), 1) << x << ", " << y;
      }
    }
    EXPECT_NEAR(opacity / 255, 40 * 20, 8) << tenths;
  }
}

TEST_F(SignPicture, IsLaidOverASingleRow) {
  TestFonts fonts;
  const Picture row = Uniform(40, 1, 1, 2, 3, 255);
  EXPECT_NE(Drawn(kSign, "Size=1000,Opacity=100" + Key(file), row), row);
}

// Known by length and time, unless it is so new that it may still be written.
TEST_F(SignPicture, IsReadOncePerVersion) {
  namespace fs = std::filesystem;
  TestFonts fonts;
  const Picture blank = Uniform(100, 100, 1, 2, 3, 255);
  const auto draw = [&] { return Drawn(kSign, "Size=200,Opacity=100" + Key(file), blank); };
  const auto longAgo = fs::last_write_time(file) - std::chrono::hours(1);
  fs::last_write_time(file, longAgo);
  const Picture laid = draw();
  ASSERT_NE(laid, blank);
  const auto length = fs::file_size(file);
  std::ofstream(file, std::ios::binary) << std::string(length, 'x');
  fs::last_write_time(file, longAgo);
  EXPECT_EQ(draw(), laid) << "the same length and time: not read again";
  fs::last_write_time(file, longAgo + std::chrono::seconds(1));
  EXPECT_EQ(draw(), blank) << "another time: read again, and no picture any more";
}

TEST_F(SignPicture, WhatCannotBeReadDrawsNothing) {
  TestFonts fonts;
  const Picture before = Gradient(50, 40, Masks::Noise);
  std::filesystem::create_directories(folder / "folder.png");
  for (const std::string& key :
       {Key(folder / "missing.png"), Key("sign.png"), Key(folder / "folder.png"), Key(folder),
        std::string(",Picture=%2F%2Fhost%2Fshare%2Fa.png"),
        std::string(",Picture=%5C%5Chost%5Cshare%5Ca.png"), std::string(",Picture=%FF%00%FF"),
        std::string(",Picture=%2Fdev%2Fzero")}) {
    EXPECT_EQ(Difference(before, Drawn(kSign, "Tile=1,Text=x" + key, before)), "") << key;
  }
}

}  // namespace
}  // namespace testing_support
