// Eyes of every kind, worked by hand on a square of one colour, and clicks from outside.
#include "filters/detail/RedEye.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "editing/RedEyeParameters.h"
#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace {

using testing_support::Picture;

constexpr std::atomic<bool> kGoesOn{false};

void Remove(Picture& picture, const editing::RedEyeClick& click, double zoom = 1.0) {
  std::vector<BYTE*> rows;
  for (int y = 0; y < picture.height; ++y) rows.push_back(picture.Colour(0, y));
  kernels::RemoveRedEye({rows.data(), nullptr, picture.width, picture.height}, zoom, click,
                        kGoesOn);
}

// A square of 6 x 6 on dark grey, from pixel (30, 40) on.
Picture Square(BYTE blue, BYTE green, BYTE red, BYTE background = 60) {
  Picture picture = testing_support::Uniform(90, 80, background, background, background);
  for (int i = 0; i < 36; ++i) {
    BYTE* const pixel = picture.Colour(30 + i % 6, 40 + i / 6);
    pixel[0] = blue, pixel[1] = green, pixel[2] = red;
  }
  return picture;
}

TEST(RedEye, KindsBeginAtTheirLeastLevels) {
  using kernels::EyeKind;
  const struct {
    BYTE colour[3];  // blue, green, red
    EyeKind kind;
  } kCases[] = {{{230, 230, 231}, EyeKind::White}, {{230, 230, 230}, EyeKind::Red},
                {{254, 230, 231}, EyeKind::White}, {{255, 230, 231}, EyeKind::Cat},
                {{60, 204, 100}, EyeKind::Green},  {{60, 205, 100}, EyeKind::Cat},
                {{204, 100, 60}, EyeKind::Blue},   {{205, 100, 60}, EyeKind::Cat},
                {{101, 100, 60}, EyeKind::Blue},   {{100, 100, 60}, EyeKind::Green},
                {{100, 60, 100}, EyeKind::Red},    {{0, 101, 100}, EyeKind::Green}};
  for (const auto& c : kCases) {
    EXPECT_EQ(kernels::EyeKindOf(c.colour), c.kind) << testing::PrintToString(c.colour);
  }
}

struct EyeCase {
  const char* name;
  BYTE blue, green, red;
  int darkness, correction;
  // Of a square of `side` pixels around the same middle: its inner pixels, its sides, its corners.
  int side, inner, sides, corner;
};
const EyeCase kEyes[] = {
    {"red", 30, 30, 200, 0, 0, 6, 49, 54, 57},
    {"red, darker", 30, 30, 200, 20, 50, 6, 1, 30, 45},
    {"red, lighter", 30, 30, 200, -50, -50, 6, 86, 73, 66},
    {"as much red as green", 0, 90, 90, 0, 0, 6, 29, 44, 52},
    {"green", 40, 180, 60, 0, 0, 6, 56, 56, 56},
    {"green, out of reach of the threshold", 90, 180, 90, 0, 50, 6, -1, 0, 0},
    {"blue", 200, 90, 60, 0, 0, 6, 78, 78, 78},
    {"cat", 220, 240, 120, 0, 0, 8, 110, 85, 72},
    {"white", 250, 240, 245, 0, 0, 8, 230, 230, 230},
    {"white with red the largest", 230, 230, 254, 50, 0, 8, 0, 0, 0},
    {"not quite white", 230, 230, 255, 0, 0, 6, 229, 144, 102},
};

TEST(RedEye, EyesByHand) {
  for (const EyeCase& c : kEyes) {
    SCOPED_TRACE(c.name);
    Picture picture = Square(c.blue, c.green, c.red);
    Picture expected = picture;
    const int first = (6 - c.side) / 2;
    const int last = first + c.side - 1;
    for (int y = first; y <= last && c.inner >= 0; ++y) {
      for (int x = first; x <= last; ++x) {
        const int ends = (x == first || x == last) + (y == first || y == last);
        const int grey = ends == 0 ? c.inner : ends == 1 ? c.sides : c.corner;
        std::fill_n(expected.Colour(30 + x, 40 + y), 3, static_cast<BYTE>(grey));
      }
    }
    Remove(picture, {32.5 / 90, 42.5 / 80, c.darkness, c.correction});
    EXPECT_EQ(Difference(expected, picture), "");
  }
}

// Windows of 10, 15, 22, 33, 49 and 73 pixels to each side are too small for an eye in turn; each
// moves the threshold by 1, but for the last one, of 109. The two pixels are at the threshold and
// just beyond.
TEST(RedEye, WindowsGrow) {
  const struct {
    int side;
    std::array<BYTE, 3> eye, inside, beyond;
    int grey;  // of the pixel inside
  } kCases[] = {
      {20, {40, 180, 60}, {60, 112, 60}, {60, 111, 60}, 42},
      {120, {40, 180, 60}, {60, 115, 60}, {60, 114, 60}, 43},
      {20, {220, 240, 120}, {203, 203, 100}, {202, 202, 100}, 72},
      {120, {180, 40, 60}, {115, 60, 60}, {114, 60, 60}, 43},
  };
  for (const auto& c : kCases) {
    Picture picture = testing_support::Uniform(300, 300, 60, 60, 60);
    const auto put = [&](int x, int y, const std::array<BYTE, 3>& colour) {
      std::copy(colour.begin(), colour.end(), picture.Colour(x, y));
    };
    for (int i = 0; i < c.side * c.side; ++i) {
      put(150 + i % c.side - c.side / 2, 150 + i / c.side - c.side / 2, c.eye);
    }
    put(152, 153, c.inside);
    put(147, 146, c.beyond);
    Remove(picture, {0.5, 0.5, 0, 0});
    EXPECT_EQ(picture.Colour(152, 153)[0], c.grey) << c.side;
    EXPECT_EQ(picture.Colour(147, 146)[0], c.beyond[0]) << c.side;
    EXPECT_NE(picture.Colour(150 - c.side / 2, 150)[0], c.eye[0]) << "to its side";
  }
}

// A window that the picture's edge has cut: the region leaves it to the right until it reaches 33
// pixels, with the threshold at 53.
TEST(RedEye, WindowsAtTheEdgeGrow) {
  Picture picture = testing_support::Uniform(300, 300, 60, 60, 60);
  const auto put = [&](int x, int y, BYTE green) {
    BYTE* const pixel = picture.Colour(x, y);
    pixel[0] = pixel[2] = 60, pixel[1] = green;
  };
  for (int i = 0; i < 5 * 26; ++i) put(5 + i % 26, 148 + i / 26, 180);
  put(8, 150, 113);
  put(8, 151, 112);
  Remove(picture, {5.5 / 300, 0.5, 0, 0});
  EXPECT_EQ(picture.Colour(8, 150)[1], 42);
  EXPECT_EQ(picture.Colour(8, 151)[1], 112);
  EXPECT_NE(picture.Colour(30, 148)[1], 180);
}

// Another eye, where a click without a place would be, stays.
TEST(RedEye, ClicksCount) {
  Picture picture = Square(30, 30, 200);
  for (int i = 0; i < 36; ++i) picture.Colour(42 + i % 6, 37 + i / 6)[2] = 200;
  testing_support::Rig rig(picture, testing_support::ClassOf("ZNFilter.RedEye.1"));
  rig.Filter().SetParameter("N=1, X1=0.36, Y1=0.53", 1);
  rig.Filter().Commit();
  const Picture result = rig.PullWhole();
  EXPECT_EQ(result.Colour(32, 42)[2], 49);
  EXPECT_EQ(result.Colour(45, 40)[2], 200);
}

// A red eye spreads over what is still red beside it, by one pixel.
TEST(RedEye, SpreadsWhereItIsRed) {
  Picture picture = Square(30, 30, 200);
  picture.Colour(29, 42)[2] = 64;
  picture.Colour(36, 43)[2] = 61;
  Remove(picture, {0.36, 0.53, 0, 0});
  EXPECT_EQ(picture.Colour(29, 42)[2], 58) << "set by the row, softened by it and by its column";
  EXPECT_EQ(picture.Colour(36, 43)[2], 58);
  EXPECT_EQ(picture.Colour(29, 43)[2], 60);
}

// Whatever is clicked at whatever zoom: only a window around it changes, and it ends.
TEST(RedEye, AnyClickIsTaken) {
  for (const auto& [name, given] : testing_support::TestPictures()) {
    for (const double zoom : {1.0, 0.0, -3.0, 0.01, 1e300, HUGE_VAL, std::nan("")}) {
      for (const double place : {0.0, 0.5, 1.0, -7.0, 1e300, std::nan("")}) {
        Picture picture = given;
        Remove(picture, {place, 1.0 - place, 50, -50}, zoom);
        EXPECT_EQ(picture.mask, given.mask) << name;
      }
    }
  }
  // More segments than there is room for: every second pixel of every second row is an island.
  Picture comb = testing_support::Uniform(400, 400, 0, 0, 0);
  for (int i = 0; i < 160000; ++i) {
    if (i / 400 % 2 == 0 || i % 400 % 2 == 0) comb.Colour(i % 400, i / 400)[2] = 255;
  }
  Picture fromAfar = comb;
  Remove(fromAfar, {0.5, 0.5, 0, 0}, 10.0);
  EXPECT_NE(Difference(comb, fromAfar), "");
  Picture fromNearby = comb;
  Remove(fromNearby, {0.25, 0.25, 0, 0});
  for (int i = 0; i < 160000; ++i) {
    const int x = i % 400, y = i / 400;
    if (std::abs(x - 100) > 40 || std::abs(y - 100) > 40) {
      ASSERT_EQ(fromNearby.Colour(x, y)[2], comb.Colour(x, y)[2]) << x << " " << y;
    }
  }
}

TEST(RedEye, Texts) {
  const auto filter = testing_support::Make(testing_support::ClassOf("ZNFilter.RedEye.1"));
  const struct {
    const char *given, *text;
  } kCases[] = {{"", "N=0"},
                {"N=-3, X1=0.2", "N=0"},
                {"N=1", "N=1, X1=0.5000, Y1=0.5000, E1=0, F1=0"},
                {"N=2, X1=1.5, Y1=-1, E1=99, F1=-99, X2=0,25, E2=-7",
                 "N=2, X1=1.0000, Y1=0.0000, E1=50, F1=-50, X2=0.2500, Y2=0.5000, E2=-7, F2=0"}};
  for (const auto& c : kCases) {
    filter->SetParameter(c.given, 1);
    EXPECT_EQ(testing_support::PendingText(*filter.Get()), c.text);
    EXPECT_FALSE(filter->IsDirty());
  }
  EXPECT_EQ(testing_support::ActiveText(*filter.Get()), "N=0");
  filter->Commit();
  EXPECT_EQ(testing_support::ActiveText(*filter.Get()), kCases[3].text);
  // The places on a picture that is turned.
  const RedEyeParameters click = ReadClicks("N=1, X1=0.2, Y1=0.7");
  EXPECT_EQ(PrintClicks(click, 0), "N=1, X1=0.2000, Y1=0.7000, E1=0, F1=0");
  EXPECT_EQ(PrintClicks(click, 1), "N=1, X1=0.3000, Y1=0.2000, E1=0, F1=0");
  EXPECT_EQ(PrintClicks(click, 2), "N=1, X1=0.8000, Y1=0.3000, E1=0, F1=0");
  EXPECT_EQ(PrintClicks(click, 3), "N=1, X1=0.7000, Y1=0.8000, E1=0, F1=0");
  EXPECT_EQ(testing_support::PendingText(*filter.Get(), 500), "");
  // More clicks than there can be; a text that is too long is cut, and that is a failure.
  filter->SetParameter("N=1000000", 1);
  std::string whole(9000, '*');
  EXPECT_EQ(filter->GetParameter(whole.data(), 9000), S_OK);
  EXPECT_NE(whole.find(", F128=0"), std::string::npos);
  std::string cut(600, '*');
  EXPECT_EQ(filter->GetParameter(cut.data(), 501), E_FAIL);
  EXPECT_EQ(cut, whole.substr(0, 500) + '\0' + std::string(99, '*'));
}

}  // namespace
