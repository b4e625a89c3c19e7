// What filters that change the picture's size tell and ask along whole chains.
#include <gtest/gtest.h>

#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

using Size = std::pair<int, int>;

struct Link {
  std::string name, text;
};

std::vector<platform::ComPtr<CPdibFilter>> MakeAll(const std::vector<Link>& links) {
  std::vector<platform::ComPtr<CPdibFilter>> filters;
  for (const Link& link : links) {
    filters.push_back(Make(ClassOf("ZNFilter." + link.name + ".1")));
    filters.back()->SetParameter(link.text.c_str(), 1);
  }
  return filters;
}

const std::string kBox = "MaximumHorizontalSize=300,MaximumVerticalSize=200,KeepProportions=";
const Link kScale{"Scale", kBox + "1"}, kThrough{"Scale", kBox + "1,ScaleThrough=1"};
const Link kTurningBox{"Scale", kBox + "2"};
const Link kSides{"Scale", "MaximumHorizontalSize=120,MaximumVerticalSize=700,KeepProportions=0"};
const Link kShares{"Scale100", "HorizontalProz=50,VerticalProz=40,KeepProportions=0"};
const Link kGrowing{"Scale100", "HorizontalProz=200,VerticalProz=300,AllowEnlarge=0"};
const Link kPrint{"PrintScale", "PrintWidth=300,PrintHeight=100,PrintTurn=1"};
const Link kTurn{"Rotate", "Angle=90"}, kTilt{"Rotate", "Angle=30"};
const Link kTurnedLeft{"RotCrop", "Angle=1.5707963,RightMargin=0.5,FixRatioOn=0"};
const Link kMiddle{"Crop", "LeftMargin=0.25,RightMargin=0.75,FixRatioOn=0"};
const Link kAll{"Crop", kMiddle.text + ",ShrinkAlpha=1"}, kSquare{"Crop", "FixRatio=1.0"};
const Link kStrip{"Crop", "BottomMargin=0.25,TopMargin=0.75,FixRatioOn=0"};
const Link kLeft{"PrintCrop", "MarginR=0.7"}, kUpper{"PrintCrop", "MarginB=0.5"};
const Link kPad{"PrintPad", "ForceRatio=1"};
const Link kMat{"Passpartout", "Borderhori=10,Borderverti=-4"};
const Link kSheet{"Passpartout", "BordersizeOn=0,TotalHori=4000,TotalVerti=300"};
constexpr double kTurned = 400.0 / 601;  // height over width of the source's picture

// The source tells 601 x 400 of 1203 x 900 pixels and zoom 0.25. The destination wants 110 x 60,
// and the source asks with an aspect of 1.5.
struct SizeChain {
  std::vector<Link> links;
  Size result, target;  // at the destination, as is the zoom
  double zoom;
  double asked;  // the aspect that comes to the destination; 0: a filter answers before it
  Size answer;   // to the source
};

const SizeChain kChains[] = {
    {{kScale}, {300, 200}, {267, 200}, 1, 0, {300, 200}},
    {{kMiddle, kScale}, {150, 200}, {134, 200}, 1, 0, {300, 200}},
    {{kStrip, kScale}, {300, 100}, {300, 112}, 1, 0, {300, 200}},
    // A box that turns to the picture; the full-resolution size does not.
    {{kTurn, kTurningBox}, {200, 300}, {200, 150}, 1, 0, {298, 199}},
    // The height grows, as the full-resolution one is larger.
    {{kMiddle, kSides}, {120, 700}, {120, 700}, 1, 0, {240, 700}},
    // A zoom that is stopped leaves the mat's pixels as they are.
    {{kScale, kMat}, {320, 200}, {287, 200}, 1, 0, {300, 200}},
    {{kThrough, kMat}, {306, 200}, {273, 200}, 0.25, 0, {300, 200}},
    {{kTurn, kShares, kMat}, {206, 240}, {607, 360}, 0.25, kTurned * 600 / 601, {312, 103}},
    // The picture may not grow; the full-resolution size does.
    {{kGrowing, kLeft}, {421, 400}, {1684, 2700}, 0.25, 1.05, {78, 20}},
    {{kSquare, kShares}, {200, 160}, {400, 360}, 0.25, 1.5 * kTurned, {331, 150}},
    {{kTurnedLeft, kPrint}, {300, 100}, {67, 100}, 1, 0, {297, 199}},
    {{kTilt, kMiddle}, {361, 653}, {601, 900}, 0.25, 0.75 * 400 / 653 * 723 / 601, {182, 36}},
    {{kMiddle, kPad}, {300, 450}, {601, 900}, 0.25, 0, {600, 450}},
    {{kAll, kSheet}, {1000, 400}, {1000, 900}, 0.25, 0.75, {0x7FFF, 0x7FFF}},
};

TEST(SizeChains, SizesTravelBothWays) {
  for (const SizeChain& c : kChains) {
    SCOPED_TRACE(c.links.front().text + " ... " + c.links.back().text);
    Rig rig(Picture(601, 400), MakeAll(c.links));
    rig.source->targetWidth = 1203;
    rig.source->targetHeight = 900;
    rig.source->destination->SetZoom(0.25);
    // The first walk tells full-resolution sizes by old values.
    for (int walk = 0; walk < 3; ++walk) rig.Prepare();
    TestDestination& end = *rig.destination.Get();
    EXPECT_EQ(Size(end.width, end.height), c.result);
    EXPECT_EQ(Size(end.targetWidth, end.targetHeight), c.target);
    EXPECT_EQ(end.zoom, c.zoom);
    for (const int wantedHeight : {60, -1}) {
      end.wantedWidth = 110;
      end.wantedHeight = wantedHeight;
      Size answer;
      rig.source->destination->QuerySize(&answer.first, &answer.second, 1.5);
      EXPECT_EQ(answer, c.asked != 0 && wantedHeight < 0 ? Size(-1, -1) : c.answer);
      EXPECT_NEAR(end.askedAspect, c.asked, 1e-12);
    }
  }
}

// Where no filter needs the whole picture, a part of the result takes that part of the source.
TEST(SizeChains, CropsAskForTheRowsThatAreWanted) {
  Rig rig(Picture(40, 60), MakeAll({{"Invert", "Inversity=100"},
                                    kMiddle,
                                    {"Offset", "OffsetX=003"},
                                    kUpper,
                                    {"Sepia", "Sepia=050"}}));
  rig.Prepare();
  GuardedRows rows(9, 8);
  EXPECT_EQ(rig.Pull(rows, {1, 2, 3, 4, 5, 6}), S_OK);
  EXPECT_EQ(rig.source->requests, std::vector({RowRequest{1, 2, 13, 34, 5, 6}}));
}

}  // namespace
}  // namespace testing_support
