// The filters that look at a pixel's neighbours, beyond what the contract tests of every class say.
#include <gmock/gmock.h>

#include <algorithm>

#include "filters/FilterClasses.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

const FilterClass& ClassOf(const std::string& progId) {
  const auto table = FilterClasses();
  return *std::find_if(table.begin(), table.end(),
                       [&](const FilterClass& row) { return progId == row.progId; });
}

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
  const char* progId;
  const char* text;
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

}  // namespace
}  // namespace testing_support
