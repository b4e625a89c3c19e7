// The records of the geometry filters: defaults, limits, optional pieces, equality, decimal commas.
#include "filters/FilterStatics.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "core/Diagnostics.h"
#include "filters/geometry/PrintScaleFilter.h"
#include "filters/geometry/size/PrintCropFilter.h"
#include "filters/geometry/size/PrintPadFilter.h"
#include "tests/support/CommaLocale.h"

namespace {

struct Case {
  const char* given;
  std::string printed;
};

void ExpectPrinted(const std::vector<Case>& cases,
                   const std::function<std::string(const char*)>& readAndPrint) {
  for (const Case& c : cases) {
    EXPECT_EQ(readAndPrint(c.given), c.printed) << c.given;
    EXPECT_EQ(readAndPrint(c.printed.c_str()), c.printed) << "read back";
  }
}

template <class Record>
std::string ReadAndPrint(const char* text) {
  return PrintParameters(ReadRecord<Record>(text));
}

constexpr char kWholeCrop[] =
    "LeftMargin=0.0000, RightMargin=1.0000, BottomMargin=0.0000, TopMargin=1.0000, ShrinkAlpha=0";

TEST(GeometryRecords, CropPrintsWhatIsSet) {
  const std::string whole = kWholeCrop;
  ExpectPrinted(
      {{"", whole + ", FixRatioOn=1, FixRatio=-1.0000, Landscape=0"},
       {"FixRatioOn=0,FixRatio=2", whole + ", FixRatioOn=0"},
       {"FixRatio=-2,Landscape=7", whole + ", FixRatioOn=1, FixRatio=0.0001, Landscape=1"},
       {"FixRatio=-1.0000", whole + ", FixRatioOn=1, FixRatio=-1.0000, Landscape=0"},
       {"FixRatioOn=0,AdjustOri=0,DlgSizeX=7", whole + ", FixRatioOn=0, AdjustOri=0"},
       {"FixRatioOn=0,DlgSizeX=-7,DlgSizeY=8", whole + ", FixRatioOn=0"},
       {"FixRatioOn=0,AdjustOri=-2,DlgSizeX=7,DlgSizeY=200000",
        whole + ", FixRatioOn=0, DlgSizeX=7, DlgSizeY=100000"},
       {"LeftMargin=0,25, RightMargin=1e99,BottomMargin=-3, TopMargin=x,FixRatioOn=0",
        "LeftMargin=0.2500, RightMargin=1.0000, BottomMargin=0.0000, TopMargin=1.0000, "
        "ShrinkAlpha=0, FixRatioOn=0"}},
      [](const char* text) { return PrintCrop(ReadRecord<CropRecord>(text)); });
  EXPECT_EQ(PrintCrop(ReadRecord(nullptr, kFreeCrop)), whole + ", FixRatioOn=0");
}

TEST(GeometryRecords, OthersPrintAndReadBack) {
  ExpectPrinted({{"FixRatioOn=0,Angle=1,5,Mirrored=1,Rot2Y=3",
                  std::string(kWholeCrop) +
                      ", FixRatioOn=0, Mirrored=1, Angle=1.5000,Rot1X=0.25000,Rot1Y=0.50000, "
                      "Rot2X=0.75000, Rot2Y=1.00000"}},
                [](const char* text) { return PrintRotCrop(ReadRotCrop(text)); });
  ExpectPrinted({{"", "MirrorOn=0, Angle=0.000, CenterX=0, CenterY=0, AlignLeftBottom=0"},
                 {"Angle=1, 5,MirrorOn=1,CenterX=-4",
                  "MirrorOn=1, Angle=1.000, CenterX=-4, CenterY=0, AlignLeftBottom=0"}},
                ReadAndPrint<RotationRecord>);
  const std::string box = ", MaximumHorizontalSize=100, MaximumVerticalSize=100";
  ExpectPrinted(
      {{"KeepProportions=2", "KeepProportions=2, AllowEnlarge=0" + box + ", ExtraParam=|SCALE|"},
       {"KeepProportions=3", "KeepProportions=1, AllowEnlarge=0" + box + ", ExtraParam=|SCALE|"},
       {"MaximumHorizontalSize=0,MaximumVerticalSize=100001,AllowEnlarge=1",
        "KeepProportions=1, AllowEnlarge=1, MaximumHorizontalSize=001, MaximumVerticalSize=100000, "
        "ExtraParam=|SCALE|"}},
      [](const char* text) { return PrintParameters(ReadScale(text)); });
  EXPECT_EQ(ReadScale("KeepProportions=-1", {.keepProportions = 2}).keepProportions, 2);
  ExpectPrinted({{"HorizontalProz=-5",
                  "KeepProportions=1, AllowEnlarge=0, HorizontalProz=-005, VerticalProz=100, "
                  "ExtraParam=|SCALE100|"}},
                ReadAndPrint<PercentRecord>);
  const std::string paper = "AspectRatioX=3, AspectRatioY=2, ForceRatio=0, Toggle=0, Landscape=0";
  ExpectPrinted({{"Copy=1", paper + ", PadColor=ffffff, BottomAlign=0"},
                 {"Copy=2,PadColor=0xA1", paper + ", PadColor=0000a1, BottomAlign=0, Copy=2"},
                 {"Copy=9999,PadColor=-1,BottomAlign=1",
                  paper + ", PadColor=ffffff, BottomAlign=1, Copy=1000"}},
                ReadAndPrint<PadParameters>);
  EXPECT_FALSE(ParametersDiffer(PadParameters{.copy = 5}, PadParameters{}));
  EXPECT_TRUE(ParametersDiffer(PadParameters{.padColor = 5}, PadParameters{}));
  ExpectPrinted({{"Width=0,MarginR=0.5,Measur=7,PPI=1e9,FixedPPI=1",
                  "MarginL=0.0000, MarginR=0.5000, MarginB=0.0000, MarginT=1.0000, Width=0.1000, "
                  "Height=10.0000, Measur=1, PPI=10000.0000, FixedPPI=1"}},
                ReadAndPrint<PrintCropParameters>);
  ExpectPrinted({{"PrintWidth=0,PrintTurn=-9", "PrintWidth=1, PrintHeight=100, PrintTurn=-9"}},
                ReadAndPrint<PrintScaleParameters>);
}

TEST(GeometryRecords, EqualityHasATolerance) {
  const struct {
    const char *a, *b;
    bool equal;
  } kCases[] = {
      {"", "", true},
      {"TopMargin=0.5", "TopMargin=0.50009", true},
      {"TopMargin=0.5", "TopMargin=0.5002", false},
      {"FixRatio=2", "FixRatio=2.00009", true},
      {"FixRatio=2", "FixRatio=2.0002", false},
      {"FixRatio=2", "", false},
      {"FixRatioOn=0,FixRatio=2", "FixRatioOn=0", true},
      {"FixRatioOn=0", "", false},
      {"ShrinkAlpha=1", "", false},
      {"AdjustOri=1,DlgSizeX=5,Landscape=1", "", true},
      {"Angle=1", "Angle=-5.28319", true},
      {"Angle=1", "Angle=1.001", false},
      {"Angle=1e300", "Angle=1e300", true},
      {"Angle=1e999", "Angle=1e999", true},
      {"Angle=1e999", "Angle=1", false},
      {"Mirrored=1", "", false},
      {"Rot2X=0.5", "", false},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(AreEqual(ReadRotCrop(c.a), ReadRotCrop(c.b)), c.equal) << c.a << " and " << c.b;
  }
  EXPECT_EQ(GreatestCommonDivisor(12, 18), 6);
  EXPECT_EQ(GreatestCommonDivisor(7, 5), 1);
  EXPECT_EQ(GreatestCommonDivisor(0, 9), 1);
  EXPECT_EQ(GreatestCommonDivisor(-4, -8), 1);
}

class GeometryRecordsWithComma : public testing_support::CommaLocale {
 protected:
  void TearDown() override {
    core::SetLogSink(nullptr);
    CommaLocale::TearDown();
  }
  static inline std::vector<std::string> lines;
};

// The guard changes the locale once, tells why, and the text has points; a log that throws changes
// nothing about it.
TEST_F(GeometryRecordsWithComma, CropTextHasPoints) {
  lines.clear();
  const std::string locale = std::setlocale(LC_NUMERIC, nullptr);
  core::SetLogSink(
      [](int level, const char* line) { lines.push_back(std::to_string(level) + " " + line); });
  const RotationRecord rotation = {.angle = 1.5};
  EXPECT_THAT(PrintParameters(rotation), testing::HasSubstr("Angle=1,500"));  // no guard here
  EXPECT_THAT(PrintRotCrop({}), testing::StartsWith(kWholeCrop));
  EXPECT_THAT(PrintParameters(rotation), testing::HasSubstr("Angle=1.500"));
  EXPECT_THAT(lines, testing::ElementsAre(
                         "-1 CropStatics::SchreibeParameter(1): CURRENT LOCALE 'LC_NUMERIC' IS '" +
                         locale + "' -> SET TO 'C'"));
  ASSERT_TRUE(UseComma());
  core::SetLogSink([](int, const char* line) {
    lines.push_back(line);
    throw 1;
  });
  EXPECT_THAT(PrintCrop({}), testing::StartsWith(kWholeCrop));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_THAT(lines.back(), testing::MatchesRegex("Exception in logging .*,Sources/FilterStatics"));
}

}  // namespace
