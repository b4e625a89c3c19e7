// Passepartout, smoked glass and shadow, beyond what the contract tests of every class say.
#include <gmock/gmock.h>

#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

struct LayoutCase {
  const char* text;
  double zoom;
  int extentWidth;  // of a picture of 20 x 10
  int width, height;
  RowRequest request;
};

const LayoutCase kPasspartoutLayouts[] = {
    {"", 1, 20, 22, 12, {1, 1, 0, 0, 20, 10}},
    {"Borderhori=5,Borderverti=-4", 1, 20, 30, 10, {5, 0, 0, 0, 20, 10}},
    {"Borderhori=10,Borderverti=-3", 0.25, 20, 26, 10, {3, 0, 0, 0, 20, 10}},
    {"Borderhori=2", 2, 25, 33, 14, {4, 2, 0, 0, 20, 10}},
    {"Borderhori=5000,Borderverti=0", 1, 20, 2020, 10, {1000, 0, 0, 0, 20, 10}},
    {"Borderhori=0,Borderverti=5000", 1, 20, 20, 2010, {0, 1000, 0, 0, 20, 10}},
    {"Borderhori=-99,Borderverti=-99", 1, 20, 20, 10, {0, 0, 0, 0, 20, 10}},
    {"BordersizeOn=0,TotalHori=5,TotalVerti=0", 1, 20, 20, 10, {0, 0, 0, 0, 20, 10}},
    {"BordersizeOn=0,TotalHori=31,TotalVerti=15", 1, 25, 31, 15, {3, 2, 0, 0, 20, 10}},
    {"BordersizeOn=0,TotalHori=22,TotalVerti=15", 1, 25, 22, 15, {0, 2, 0, 0, 20, 10}},
    {"BordersizeOn=0,TotalHori=61,TotalVerti=23", 0.5, 20, 31, 12, {5, 1, 0, 0, 20, 10}},
    {"Borderhori=4,Borderverti=4,Poscorhori=7,Poscorverti=-6", 1, 20, 28, 18, {11, 0, 0, 2, 17, 8}},
    {"BordersizeOn=0,TotalHori=1000000000,TotalVerti=1", 1, 20, 10000, 10, {4990, 0, 0, 0, 20, 10}},
    {"Poscorhori=999999999,Poscorverti=-999999999", 1, 20, 22, 12, {22, 0, 0, 10, 0, 0}},
};

TEST(Passpartout, LaysOutPictureAndMat) {
  for (const LayoutCase& c : kPasspartoutLayouts) {
    SCOPED_TRACE(c.text);
    Rig rig(Noise(20, 10, Masks::Noise, 1), ClassOf("ZNFilter.Passpartout.1"));
    rig.source->extentWidth = c.extentWidth;
    rig.source->offsetX = 4;
    rig.Filter().SetZoom(c.zoom);
    rig.Filter().SetParameter(c.text, 1);
    const Picture result = rig.PullWhole();
    EXPECT_EQ(std::pair(result.width, result.height), std::pair(c.width, c.height));
    EXPECT_EQ(rig.source->requests.front(), c.request);
    EXPECT_EQ(rig.destination->calls.back(), "SetOffset 0 0");
    EXPECT_FALSE(rig.Filter().IsDirty());
    // Another zoom is another result, unless all numbers come out the same.
    rig.Filter().SetZoom(c.zoom * 3);
    EXPECT_TRUE(rig.Filter().IsDirty());
  }
}

TEST(Rauchglas, PrintsTheLargerOfPictureAndExtent) {
  for (const auto& [width, height, sizes] : {std::tuple(25, 7, "SrcWidth=0025, SrcHeight=0010"),
                                             {7, 15, "SrcWidth=0020, SrcHeight=0015"}}) {
    Rig rig(Noise(20, 10, Masks::Noise, 1), ClassOf("ZNFilter.Rauchglas.1"));
    rig.source->extentWidth = width;
    rig.source->extentHeight = height;
    rig.Prepare();
    EXPECT_THAT(PendingText(rig.Filter()), testing::EndsWith(sizes));
  }
}

// In the units of the text, as near as whole pixels come.
TEST(Passpartout, WorksByWholePixels) {
  Rig rig(Noise(20, 10, Masks::Noise, 1), ClassOf("ZNFilter.Passpartout.1"));
  rig.Filter().SetZoom(0.25);
  rig.Filter().SetParameter("Borderhori=10,Borderverti=-12", 1);
  rig.Prepare();
  EXPECT_THAT(ActiveText(rig.Filter()),
              testing::StartsWith("BordersizeOn=1, Borderhori=012, Borderverti=-012, "));
}

// A light is not smoothed for ever, nor does it wrap round.
TEST(Shadow, LightBeyondAllMeasure) {
  const auto lit = [](const std::string& intensity) {
    Rig rig(Noise(40, 30, Masks::Edges, 1), ClassOf("ZNFilter.Shadow.1"));
    rig.Filter().SetParameter(("ShadowDensity=0,LightIntensity=" + intensity).c_str(), 1);
    return rig.PullWhole();
  };
  const Picture brightest = lit("2147483647");
  EXPECT_EQ(Difference(lit("2147483600"), brightest), "");
  EXPECT_NE(Difference(lit("100"), brightest), "");
  EXPECT_EQ(Difference(lit("-2147483648"), lit("-2147483647")), "");
}

// A blur that no shadow of this picture shows is not computed for ever.
TEST(Shadow, BlurEndsWhereThePictureDoes) {
  const auto shadow = [](const std::string& blur) {
    Rig rig(Noise(7, 5, Masks::Noise, 1), ClassOf("ZNFilter.Shadow.1"));
    rig.Filter().SetParameter(("ShadowDensity=100,ShadowDistance=0,ShadowBlur=" + blur).c_str(), 1);
    const Picture result = rig.PullWhole();
    EXPECT_FALSE(rig.Prepare());
    return result;
  };
  const Picture widest = shadow("255");
  EXPECT_EQ(std::pair(widest.width, widest.height), std::pair(7 + 2 * 51, 5 + 2 * 51));
  EXPECT_EQ(Difference(widest, shadow("99999")), "");
  EXPECT_NE(Difference(widest, shadow("250")), "");
}

}  // namespace
}  // namespace testing_support
