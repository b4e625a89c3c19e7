// The filters that look at a pixel's neighbours, beyond what the contract tests of every class say.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "filters/FilterClasses.h"
#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

Picture Filtered(const std::string& progId, const std::string& text, const Picture& picture,
                 double zoom = 1.0) {
  Rig rig(picture, ClassOf(progId));
  rig.Filter().SetZoom(zoom);
  rig.Filter().SetParameter(text.c_str(), 1);
  return rig.PullWhole();
}

// The source fills the inner part of a black frame with mask 255, nine weights a pixel.
Picture Convolved(const Picture& source, const double (&kernel)[9], double strength) {
  Picture framed(source.width + 2, source.height + 2);
  Picture result = source;
  for (int y = 0; y < source.height; ++y) {
    std::copy_n(source.Colour(0, y), 3 * source.width, framed.Colour(1, y + 1));
    for (int x = 0; x < source.width; ++x) framed.Mask(x + 1, y + 1) = source.Mask(x, y);
  }
  const double s = strength / 100.0;
  for (int i = 0; i < 3 * source.width * source.height; ++i) {
    const int x = i / 3 % source.width, y = i / 3 / source.width, channel = i % 3;
    double sum = 0, folded = 0;
    for (int k = 0; k < 9; ++k) {
      const double weight = kernel[k] * s + (k == 4 ? 1.0 - s : 0.0);
      const bool nothing = framed.Mask(x + k % 3, y + k / 3) == 255;
      (nothing ? folded : sum) +=
          nothing ? weight : weight * framed.Colour(x + k % 3, y + k / 3)[channel];
    }
    sum += folded * source.Colour(x, y)[channel] + 1.0 / (1 << 20);
    result.Colour(x, y)[channel] = static_cast<BYTE>(std::clamp(sum, 0.0, 255.0));
  }
  return result;
}

struct ConvolutionCase {
  const char *progId, *text;
  double strength;
  double zoom = 1.0;
};
constexpr ConvolutionCase kConvolutions[] = {
    {"ZNFilter.Sharpen.1", "Sharpness=0", 0},
    {"ZNFilter.Sharpen.1", "Sharpness=300", 44, 0.5},
    {"ZNFilter.Sharpen.1", "Sharpness=100,Version=1", 100, 0.5},
    {"ZNFilter.Sharpen.1", "Sharpness=100,Version=2", 25, 0.5},
    {"ZNFilter.Sharpen.1", "Sharpness=090,Version=2", 90 * 0.37 * 0.37, 0.37},
    {"ZNFilter.Sharpen.1", "Sharpness=100,Version=3", 100, 0.5},
    {"ZNFilter.Sharpen.1", "Sharpness=100,Version=258", 225, 1.5},
    {"ZNFilter.Blur.1", "Blurness=100", 100},
    {"ZNFilter.Blur.1", "Blurness=57,Version=2", 57 * 2.25, 1.5},
    {"ZNFilter.Blur.1", "Version=3,Blurness=255", 255, 1.5},
    {"ZNFilter.FindEdges.1", "EdgeEnhance=100,Version=2", 100, 0.5},
    {"ZNFilter.FindEdges.1", "EdgeEnhance=33", 33},
    {"ZNFilter.Emboss.1", "EmbossStrength=100", 100},
    {"ZNFilter.Emboss.1", "EmbossStrength=-1", 255, 0.5},
};

TEST(DetailFilters, ConvolutionsEqualTheirModel) {
  const double kSharpen[9] = {0, -1, 0, -1, 5, -1, 0, -1, 0};
  const double kSoften[9] = {4 / 37., 4 / 37., 4 / 37., 4 / 37., 5 / 37.,
                             4 / 37., 4 / 37., 4 / 37., 4 / 37.};
  const double kEdges[9] = {1, 1, 1, 1, -8, 1, 1, 1, 1};
  const double kEmboss[9] = {2, 0, 0, 0, 0, 0, 0, 0, -2};
  for (const ConvolutionCase& c : kConvolutions) {
    const std::string id = c.progId;
    const auto& kernel = id == "ZNFilter.Sharpen.1"     ? kSharpen
                         : id == "ZNFilter.Blur.1"      ? kSoften
                         : id == "ZNFilter.FindEdges.1" ? kEdges
                                                        : kEmboss;
    for (const NamedPicture& test : TestPictures()) {
      ASSERT_EQ(Difference(Convolved(test.picture, kernel, c.strength),
                           Filtered(id, c.text, test.picture, c.zoom)),
                "")
          << test.name << ": " << id << "(" << c.text << ")";
    }
  }
}

// The picture in a frame of one pixel, as a source that is pulled into the inner part leaves it.
Picture Framed(const std::string& sourceId, const Picture& picture) {
  Rig rig(picture, ClassOf(sourceId));
  rig.Prepare();
  Picture framed(picture.width + 2, picture.height + 2);
  std::vector<BYTE*> colour, mask;
  for (int y = 0; y < framed.height; ++y) {
    colour.push_back(framed.Colour(0, y));
    mask.push_back(&framed.Mask(0, y));
  }
  EXPECT_EQ(
      rig.Filter().ReadRows(1, 1, 0, 0, picture.width, picture.height, colour.data(), mask.data()),
      S_OK);
  return framed;
}

Picture Inner(const Picture& framed) {
  Picture inner(framed.width - 2, framed.height - 2);
  for (int y = 0; y < inner.height; ++y) {
    std::copy_n(framed.Colour(1, y + 1), 3 * inner.width, inner.Colour(0, y));
    for (int x = 0; x < inner.width; ++x) inner.Mask(x, y) = framed.Mask(x + 1, y + 1);
  }
  return inner;
}

// A source that looks at the rows around its rectangle, or changes them, finds a black frame.
TEST(DetailFilters, ConvolutionsStandInAFrame) {
  for (const char* before : {"ZNFilter.BlurGauss.1", "ZNFilter.UnsharpMask.1", "ZNFilter.BlurSel.1",
                             "ZNFilter.Histo.1"}) {
    for (const char* text : {"Sharpen(Sharpness=80)", "Blur(Blurness=90)",
                             "FindEdges(EdgeEnhance=70)", "Emboss(EmbossStrength=60)"}) {
      for (const auto& [w, h] : {std::pair(1, 1), {2, 3}, {23, 9}}) {
        const std::string name = text, id = "ZNFilter." + name.substr(0, name.find('(')) + ".1";
        const std::string parameters = name.substr(name.find('(') + 1);
        const Picture picture = Noise(w, h, Masks::Noise, 4);
        const auto filter = Make(ClassOf(id));
        filter->SetParameter(parameters.c_str(), 1);
        Rig rig(picture, {Make(ClassOf(before)), filter});
        EXPECT_EQ(
            Difference(Inner(Filtered(id, parameters, Framed(before, picture))), rig.PullWhole()),
            "")
            << before << " " << text;
      }
    }
  }
}

TEST(DetailFilters, VersionedTexts) {
  const auto filter = Make(ClassOf("ZNFilter.Sharpen.1"));
  filter->SetParameter("Sharpness=050,ExtraParam=|SHARP|,Version=3", 1);
  EXPECT_EQ(PendingText(*filter.Get()), "Sharpness=050,ExtraParam=|SHARP|,Version=3");
  // From version 2 on, the active text is the pending one.
  EXPECT_EQ(ActiveText(*filter.Get()), "Sharpness=050,ExtraParam=|SHARP|,Version=3");
  filter->Commit();
  EXPECT_FALSE(filter->IsDirty());
  filter->SetParameter("Sharpness=x", 1);
  EXPECT_EQ(PendingText(*filter.Get()), "Sharpness=000,ExtraParam=|SHARP|");
  EXPECT_EQ(ActiveText(*filter.Get()), "Sharpness=050,ExtraParam=|SHARP|");
  filter->SetParameter("Sharpness=050,Version=2", 1);
  EXPECT_FALSE(filter->IsDirty()) << "a version is no change";
}

int Sum(const Picture& picture, int x, int y) {
  const BYTE* const colour = picture.Colour(x, y);
  return colour[0] + colour[1] + colour[2];
}

Picture Dusted(const Picture& source, int greatestRegion, std::int64_t tolerance) {
  Picture result = source;
  for (int y = 1; y < source.height - 1; ++y) {
    for (int x = 1; x < source.width - 1; ++x) {
      int count = 0;
      for (int v = std::max(0, y - 5); v <= std::min(source.height - 1, y + 5); ++v) {
        for (int u = std::max(0, x - 5); u <= std::min(source.width - 1, x + 5); ++u) {
          count += std::abs(Sum(source, u, v) - Sum(source, x, y)) < tolerance;
        }
      }
      if (count > greatestRegion) continue;
      for (int channel = 0; channel < 3; ++channel) {
        int sum = 0;
        for (int i = 0; i < 9; ++i) sum += source.Colour(x + i % 3 - 1, y + i / 3 - 1)[channel];
        result.Colour(x, y)[channel] = static_cast<BYTE>(sum / 9);
      }
    }
  }
  return result;
}

TEST(DetailFilters, DustEqualsItsModel) {
  std::vector<NamedPicture> pictures = TestPictures();
  Picture specks = Gradient(90, 40, Masks::Noise);
  for (int i = 0; i < 60; ++i) std::fill_n(specks.Colour(i * 37 % 90, i * 23 % 40), 3, BYTE(i * 4));
  pictures.push_back({"specks", specks});
  for (const auto& [region, tolerance] : {std::pair(5, 45),
                                          {2, 15},
                                          {15, 90},
                                          {5, 0},
                                          {0, 45},
                                          {-1, 0},
                                          {-7, -7},
                                          {120, 766},
                                          {121, 765},
                                          {30, 300},
                                          {2147483647, 2147483647},
                                          {1, -2147483647 - 1}}) {
    const std::string text =
        "MaxRgnSize=" + std::to_string(region) + ", GrayTolerance=" + std::to_string(tolerance);
    for (const NamedPicture& test : pictures) {
      ASSERT_EQ(Difference(Dusted(test.picture, region, tolerance),
                           Filtered("ZNFilter.Staub.1", text, test.picture)),
                "")
          << test.name << ": " << text;
    }
  }
}

// What was cleaned for one request answers every later one that is not larger, and the picture it
// is kept in may have room beside it.
TEST(DetailFilters, DustKeepsARequest) {
  const Picture picture = Noise(40, 30, Masks::Noise, 3);
  Rig rig(picture, ClassOf("ZNFilter.Staub.1"));
  rig.Prepare();
  GuardedRows rows(40, 30);
  const auto pull = [&](const RowRequest& request) {
    rows.Reset();
    EXPECT_EQ(rig.Pull(rows, request), S_OK);
    return rows.Part(request.destX, request.destY, request.width, request.height);
  };
  Picture corner(20, 20);
  for (int y = 0; y < 20; ++y) {
    std::copy_n(picture.Colour(7, y + 5), 60, corner.Colour(0, y));
    for (int x = 0; x < 20; ++x) corner.Mask(x, y) = picture.Mask(x + 7, y + 5);
  }
  const Picture expected = Dusted(corner, 5, 45);
  EXPECT_EQ(Difference(expected, pull({3, 2, 7, 5, 20, 20})), "");
  EXPECT_EQ(rows.WrittenOutside(3, 2, 20, 20), "");
  EXPECT_EQ(Difference(expected, pull({0, 0, 20, 10, 20, 20})), "") << "at another place";
  EXPECT_EQ(rig.source->requests.size(), 1u);
  // Cut to the picture, and so small enough.
  EXPECT_EQ(rig.Pull(rows, {0, 0, 30, -5, 20, 20}), S_OK);
  EXPECT_EQ(rows.Part(0, 5, 1, 1).colour,
            std::vector(expected.colour.begin(), expected.colour.begin() + 3));
  EXPECT_EQ(rig.source->requests.size(), 1u);
  // Larger: cleaned anew. The greatest region is taken as it is set, the tolerance once committed.
  rig.Filter().SetParameter("MaxRgnSize=000, GrayTolerance=001", 1);
  EXPECT_EQ(Difference(Dusted(picture, 0, 45), pull({0, 0, 0, 0, 40, 30})), "");
}

struct GaussCase {
  const char *progId, *text;
  int r;
  double sigma;
  double zoom = 1.0;
  double amount = -1;     // what is added of the picture's distance from its blur
  double threshold = 0;   // of sharpening
  double greatest = 1e9;  // distance from the centre that a neighbour may have
};

using Plane = std::vector<double>;

// One direction: `step` from neighbour to neighbour, copies of the ends beyond them.
Plane Blurred(const GaussCase& c, const Plane& plane, int step, int length) {
  Plane result;
  for (int i = 0; i < static_cast<int>(plane.size()); ++i) {
    const double centre = plane[result.size()];
    double sum = 0, whole = 0;
    for (int j = -c.r; j <= c.r; ++j) {
      const int place = i / step % length;
      const int at = i + (std::clamp(place + j, 0, length - 1) - place) * step;
      const double distance = plane[static_cast<std::size_t>(at)] - centre;
      if (std::abs(distance) > c.greatest) continue;
      const double tap = std::exp(-0.5 * j * j / (c.sigma * c.sigma));
      sum += tap * distance;
      whole += tap;
    }
    result.push_back(centre + sum / whole);
  }
  return result;
}

// What each byte should be before it is cut.
Plane Expected(const GaussCase& c, const Picture& p) {
  const bool all = std::strstr(c.text, "OnLuminanceOnly=0") || c.amount == -1;
  Plane planes[4], lost[4], result;
  for (std::size_t k = 0; k < 4; ++k) {
    for (std::size_t i = 0; i < p.colour.size(); i += 3) {
      const BYTE* const pixel = &p.colour[i];
      planes[k].push_back(k < 3 ? pixel[k] : *std::max_element(pixel, pixel + 3));
    }
    lost[k] = Blurred(c, Blurred(c, planes[k], 1, p.width), p.width, p.height);
    for (std::size_t i = 0; i < lost[k].size(); ++i) lost[k][i] = planes[k][i] - lost[k][i];
  }
  for (std::size_t i = 0; i < p.colour.size(); ++i) {
    const std::size_t x = i / 3, k = all ? i % 3 : 3;
    const double deviation = all ? (lost[0][x] + lost[1][x] + lost[2][x]) / 3 : lost[3][x];
    const double after =
        planes[k][x] + (std::abs(deviation) >= c.threshold ? lost[k][x] * c.amount : 0);
    result.push_back(all || planes[3][x] == 0 ? after : planes[i % 3][x] * after / planes[3][x]);
  }
  return result;
}

TEST(DetailFilters, GaussianFiltersAreWithinOneLevelOfTheirModel) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  const char* const kBlur = "ZNFilter.BlurGauss.1";
  const char* const kLike = "ZNFilter.BlurSel.1";
  const char* const kMask = "ZNFilter.UnsharpMask.1";
  const GaussCase kCases[] = {
      {kBlur, "", 2, 1.08},
      {kBlur, "", 1, 1.08, 0.5},
      {kBlur, "", 2, 1.08, kNaN},
      {kBlur, "Radius=0.5,Percent=500", 1, 1.0},
      {kBlur, "Radius=4,Percent=900", 4, 8.0},
      {kBlur, "Radius=30,Percent=-7", 30, 0.12},
      {kBlur, "Radius=-2", 1, 0.04},
      {.progId = kLike, .text = "", .r = 2, .sigma = 1.08, .greatest = 1 / 3.0},
      {.progId = kLike, .text = "Threshold=0.1,Radius=3", .r = 3, .sigma = 1.2, .greatest = 0.1f},
      {kLike, "Threshold=90,Percent=200", 1, 2.16, 0.5, -1, 0, 30},
      {kLike, "Threshold=1e300,Radius=9", 9, 3.6},
      {kMask, "", 2, 1.08, 1, 1.2},
      {kMask, "", 1, 0.57, 0.5, 1.2},
      {kMask, "Percent=0,On=0", 2, 1.08, 1, 0},
      {kMask, "Percent=-300,Radius=9,Threshold=3,OnLuminanceOnly=0", 9, 3.6, 1, -3, 3},
      {kMask, "Percent=5000,Threshold=40,OnLuminanceOnly=2", 2, 1.08, 1, 50, 40},
      {kMask, "Threshold=-1,Radius=1.5,OnLuminanceOnly=0", 1, 0.6, 1, 1.2}};
  for (const GaussCase& c : kCases) {
    for (const NamedPicture& test : TestPictures()) {
      const Picture found = Filtered(c.progId, c.text, test.picture, c.zoom);
      const Plane expected = Expected(c, test.picture);
      for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_NEAR(std::floor(std::clamp(expected[i], 0.0, 255.0)), found.colour[i], 1)
            << test.name << ": " << c.progId << "(" << c.text << ")";
      }
      ASSERT_EQ(found.mask, test.picture.mask);
    }
  }
  const Picture noise = Noise(70, 9, Masks::Noise, 5);
  EXPECT_EQ(Filtered(kBlur, "Radius=1e300", noise), Filtered(kBlur, "Radius=1000", noise));
}

TEST(DetailFilters, UnsharpMaskTexts) {
  const FilterClass& row = ClassOf("ZNFilter.UnsharpMask.1");
  const auto filter = Make(row);
  EXPECT_EQ(ActiveText(*filter.Get()),
            "Percent=0,Radius=0.000000,Threshold=0,OnLuminanceOnly=255,On=0");
  filter->SetParameter("OnLuminanceOnly=0,On=0,Radius=nan", 1);
  EXPECT_EQ(PendingText(*filter.Get()),
            "Percent=120,Radius=2.700000,Threshold=0,OnLuminanceOnly=0,On=1");
  filter->SetParameter("Percent=10,On=0", 1);
  filter->SetParameter(row.defaultText, 1);
  EXPECT_EQ(PendingText(*filter.Get()),
            "Percent=120,Radius=2.700000,Threshold=0,OnLuminanceOnly=0,On=0");
}

// A request is all that the Gaussian filters see, and they work on it from row 0 and column 0 on.
TEST(DetailFilters, GaussianFiltersSeeTheRequestAlone) {
  for (const char* id : {"ZNFilter.BlurGauss.1", "ZNFilter.UnsharpMask.1", "ZNFilter.BlurSel.1"}) {
    Rig rig(Noise(40, 30, Masks::Noise, 3), ClassOf(id));
    rig.Prepare();
    GuardedRows rows(60, 50);
    for (const auto& [x, y] : {std::pair(0, 0), {3, 2}}) {
      rows.Reset();
      rig.source->ReadRows(x, y, 7, 5, 20, 9, rows.ColourRows(), rows.MaskRows());
      const Picture expected = Filtered(id, "", rows.Part(0, 0, 20, 9));
      rows.Reset();
      ASSERT_EQ(rig.Pull(rows, {x, y, 7, 5, 20, 9}), S_OK);
      EXPECT_EQ(Difference(expected, rows.Part(0, 0, 20, 9)), "") << id;
    }
  }
}

}  // namespace
}  // namespace testing_support
