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

std::vector<platform::ComPtr<FilterObject>> MakeAll(const std::vector<Link>& links) {
  std::vector<platform::ComPtr<FilterObject>> filters;
  for (const Link& link : links) {
    filters.push_back(Make(ClassOf("ZNFilter." + link.name + ".1")));
    filters.back()->SetParameter(link.text.c_str(), 1);
  }
  return filters;
}

const std::string kBox = "MaximumHorizontalSize=300,MaximumVerticalSize=200,KeepProportions=";
const Link kScale{"Scale", kBox + "1"}, kThrough{"Scale", kBox + "1,ScaleThrough=1"};
const Link kLarge{"Scale", "MaximumHorizontalSize=1300,MaximumVerticalSize=1300"};
const Link kEnlarging{"Scale", kLarge.text + ",AllowEnlarge=1"};
const Link kTurningBox{"Scale", kBox + "2"};
const Link kSides{"Scale", "MaximumHorizontalSize=120,MaximumVerticalSize=700,KeepProportions=0"};
const Link kShares{"Scale100", "HorizontalProz=50,VerticalProz=40,KeepProportions=0"};
const Link kGrowing{"Scale100", "HorizontalProz=200,VerticalProz=300,AllowEnlarge=0"};
// Of what is asked for a hair is left across, and more than there is down.
const Link kStretched{"Scale100",
                      "HorizontalProz=20000,VerticalProz=5,KeepProportions=0,AllowEnlarge=0"};
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
    // A box beyond the full-resolution picture, which may grow or may not.
    {{kLarge}, {601, 400}, {1203, 900}, 1, 0, {1300, 867}},
    {{kEnlarging}, {1300, 865}, {1300, 973}, 1, 0, {1300, 867}},
    // A box that turns to the picture; the full-resolution size does not.
    {{kTurn, kTurningBox}, {200, 300}, {200, 150}, 1, 0, {298, 199}},
    // The height grows, as the full-resolution one is larger.
    {{kMiddle, kSides}, {120, 700}, {120, 700}, 1, 0, {240, 700}},
    // A zoom that is stopped leaves the mat's pixels as they are.
    {{kScale, kMat}, {320, 200}, {287, 200}, 1, 0, {300, 200}},
    {{kThrough, kMat}, {306, 200}, {287, 200}, 0.25, 0, {300, 200}},
    {{kTurn, kShares, kMat}, {206, 240}, {621, 360}, 0.25, kTurned * 600 / 601, {312, 103}},
    // The picture may not grow; the full-resolution size does.
    {{kGrowing, kLeft}, {421, 400}, {1684, 2700}, 0.25, 1.05, {78, 20}},
    {{kStretched}, {601, 20}, {240600, 45}, 0.25, 1.5, {1, 1200}},
    {{kSquare, kShares}, {200, 160}, {400, 360}, 0.25, 1.5 * kTurned, {331, 150}},
    {{kTurnedLeft, kPrint}, {300, 100}, {67, 100}, 1, 0, {297, 199}},
    {{kTilt, kMiddle}, {361, 653}, {601, 900}, 0.25, 0.75 * 400 / 653 * 723 / 601, {182, 36}},
    {{kScale, kUpper}, {300, 100}, {267, 100}, 1, 0, {300, 200}},
    {{kMiddle, kPad}, {300, 450}, {601, 900}, 0.25, 0, {600, 450}},
    {{kAll, kSheet}, {1000, 400}, {4000, 900}, 0.25, 0.75, {0x7FFF, 0x7FFF}},
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

TEST(SizeChains, NoSideVanishes) {
  const Link kTen{"Scale", "MaximumHorizontalSize=10,MaximumVerticalSize=10"};
  const struct {
    Link link;
    Size given, result;
  } cases[] = {{kTen, {600, 1}, {10, 1}},
               {kTen, {1, 600}, {1, 10}},
               {kMiddle, {600, 1}, {300, 1}},
               {kStrip, {1, 600}, {1, 300}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.link.text);
    Rig rig(Picture(c.given.first, c.given.second), MakeAll({c.link}));
    rig.Prepare();
    EXPECT_EQ(Size(rig.destination->width, rig.destination->height), c.result);
  }
}

// What is active says how often the picture is really turned.
TEST(SizeChains, FullTurnsAreNone) {
  for (const auto& [turn, active] : {std::pair(0, 0), {1, 1}, {2, 2}, {3, 3}, {4, 0}}) {
    Rig rig(Picture(40, 30), MakeAll({{"PrintScale", "PrintTurn=" + std::to_string(turn)}}));
    rig.Prepare();
    EXPECT_EQ(ActiveText(rig.Filter()),
              "PrintWidth=100, PrintHeight=100, PrintTurn=" + std::to_string(active));
  }
}

// Filters that keep a picture of their own when there is work, and have none.
TEST(SizeChains, WhatHasNoWorkAsksAsItIsAsked) {
  for (const Link& idle : {Link{"Rotate", "Angle=0"}, Link{"Rotate", "Angle=0,MirrorOn=0"}}) {
    const Picture given = Noise(40, 60, Masks::Noise, 1);
    Rig rig(given, MakeAll({idle}));
    rig.Prepare();
    const RowRequest request{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(Difference(PartOf(given, request), rig.PullPart(request)), "");
    EXPECT_EQ(rig.source->requests, std::vector({request}));
  }
}

// Whatever a request reaches over, and when the picture has become smaller since: the source is
// asked for pixels that it has, and the rows are those of its part of the request.
TEST(SizeChains, CropsAskForPixelsThatExist) {
  struct Case {
    Link crop;
    RowRequest asked, request;
  };
  const Case cases[] = {
      {kMiddle, {0, 0, -3, -2, 90, 90}, {3, 2, 10, 0, 20, 60}},
      {kMiddle, {1, 2, 15, 50, 30, 30}, {1, 2, 25, 50, 5, 10}},
      {kUpper, {0, 0, 0, 0, 40, 60}, {0, 0, 0, 30, 40, 30}},
      {{"Crop", "LeftMargin=1,BottomMargin=1,FixRatioOn=0"},
       {0, 0, 0, 0, 1, 1},
       {0, 0, 40, 60, 0, 0}},
      {{"RotCrop", "LeftMargin=0.5,FixRatioOn=0"}, {0, 0, 0, 0, 99, 9}, {0, 0, 20, 0, 20, 9}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.crop.name + " " + c.crop.text);
    Rig rig(Noise(40, 60, Masks::Noise, 1), MakeAll({c.crop}));
    rig.Prepare();
    // Not before it is prepared.
    rig.Filter().SetParameter("LeftMargin=0.3,BottomMargin=0.1,MarginL=0.3,MarginB=0.1", 1);
    GuardedRows rows(100, 100);
    EXPECT_EQ(rig.Pull(rows, c.asked), S_OK);
    EXPECT_EQ(rig.source->requests.back(), c.request);
  }
  Rig rig(Noise(40, 60, Masks::Noise, 1), MakeAll({kMiddle}));
  const Picture before = rig.PullWhole();
  rig.source->picture = Noise(20, 12, Masks::Noise, 2);
  int size[6];
  rig.Filter().GetInfo(&size[0], &size[1], &size[2], &size[3], &size[4], &size[5]);
  GuardedRows rows(before.width, before.height);
  EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, before.width, before.height}), S_OK);
  EXPECT_EQ(rig.source->requests.back(), (RowRequest{0, 0, 5, 0, 10, 12}));
  EXPECT_EQ(rows.WrittenOutside(0, 0, 10, 12), "");
}

// Pixel by pixel, and in what the destination is told last.
TEST(SizeChains, CompositesEqualTheirPartsInARow) {
  struct Case {
    Link composite;
    std::vector<Link> parts;
  };
  const Case cases[] = {
      {{"RotCrop", "Angle=0.3,Mirrored=1,LeftMargin=0.2,TopMargin=0.9,FixRatioOn=0"},
       {{"Rotate", "MirrorOn=1,Angle=-17.18873,AlignLeftBottom=0"},
        {"Offset", "OffsetX=1,OffsetY=3"},
        {"Crop", "LeftMargin=0.2,TopMargin=0.9,FixRatioOn=0"}}},
      {{"PrintScale", "PrintWidth=30,PrintHeight=50,PrintTurn=3"},
       {{"Rotate", "Angle=270,AlignLeftBottom=0"},
        {"Scale",
         "KeepProportions=2,AllowEnlarge=1,MaximumHorizontalSize=30,MaximumVerticalSize=50"}}},
      {{"PrintCrop", "MarginL=0.1,MarginR=0.6,MarginB=0.3,MarginT=0.8"},
       {{"Crop", "LeftMargin=0.1,RightMargin=0.6,BottomMargin=0.3,TopMargin=0.8,FixRatioOn=0"}}}};
  for (const Case& c : cases) {
    Rig composite(Noise(40, 23, Masks::Noise, 5), MakeAll({c.composite}));
    Rig parts(Noise(40, 23, Masks::Noise, 5), MakeAll(c.parts));
    EXPECT_EQ(Difference(parts.PullWhole(), composite.PullWhole()), "") << c.composite.name;
    EXPECT_EQ(composite.destination->calls.back(), parts.destination->calls.back());
  }
}

// Who asks for all rows at once gets them without a picture in between; parts come from one that is
// made then. Both hold the same, in any order, after one pull of the source.
TEST(SizeChains, AllAtOnceEqualsItsParts) {
  const Picture picture = Noise(61, 140, Masks::Noise, 5);
  for (const Link& link : {kTurn, Link{"Rotate", "Angle=270,MirrorOn=1"}, kTilt,
                           Link{"Scale100", "HorizontalProz=170"},
                           Link{"Scale100", "HorizontalProz=300,VerticalProz=50"}}) {
    SCOPED_TRACE(link.name + " " + link.text);
    Rig rig(picture, MakeAll({link})), parts(picture, MakeAll({link}));
    for (int change = 0; change < 2; ++change) {
      const Picture all = rig.PullWhole();
      parts.Prepare();
      // A square may be as wide as the whole is high.
      const int side = std::min(all.width, all.height);
      for (const RowRequest& part : {RowRequest{0, 0, 0, 0, side, side},
                                     {0, 2, 0, 2, all.width, all.height - 2},
                                     {0, 0, 0, 0, all.width, 2},
                                     {0, 0, 0, 0, all.width, all.height}}) {
        EXPECT_EQ(Difference(PartOf(all, part), parts.PullPart(part)), "");
        EXPECT_EQ(Difference(PartOf(all, part), rig.PullPart(part)), "");
      }
      for (Rig* each : {&rig, &parts}) {
        EXPECT_EQ(each->source->requests.size(), 1u + change);
        each->source->picture = Noise(61, 140, Masks::Opaque, 6);
        ++each->source->revision;
      }
    }
  }
}

// Fewer than three columns cannot be enlarged. The pull counts as stopped, but rows are given out
// all the same, and empty: a filter behind that passes over its source's failure ends well.
TEST(SizeChains, WhatIsTooNarrowGivesEmptyRows) {
  const Link kWider{"Scale100", "HorizontalProz=200,VerticalProz=10,KeepProportions=0"};
  for (const Link& enlarging :
       {Link{"Scale100", "HorizontalProz=300,VerticalProz=300"}, kWider, kEnlarging}) {
    SCOPED_TRACE(enlarging.name + " " + enlarging.text);
    const Picture picture = Noise(2, 5, Masks::Noise, 7);
    Rig alone(picture, MakeAll({enlarging}));
    alone.Prepare();
    const int width = alone.destination->width;
    const int height = alone.destination->height;
    const Picture nothing(width, height);
    for (int pull = 0; pull < 2; ++pull) {
      GuardedRows rows(width, height);
      EXPECT_NE(alone.Pull(rows, {0, 0, 0, 0, width, height}), S_OK);
      EXPECT_EQ(Difference(rows.Whole(), nothing), "");
    }
    Rig chain(picture, MakeAll({enlarging, {"BrightnessContrast", "Brightness=100"}}));
    chain.Prepare();
    GuardedRows rows(width, height);
    EXPECT_EQ(chain.Pull(rows, {0, 0, 0, 0, width, height}), S_OK);
    EXPECT_EQ(Difference(rows.Whole(), Uniform(width, height, 255, 255, 255, 255)), "");
  }
}

// What a Commit makes of the numbers is no change, however often it is asked.
TEST(SizeChains, APreparedChainIsQuiet) {
  const Link kPaper{"PrintPad", "ForceRatio=1,Landscape=0,AspectRatioX=4,AspectRatioY=3"};
  for (const Link& link :
       {kTurningBox, Link{"Scale", "KeepProportions=2,MaximumHorizontalSize=10"}, kPrint, kPad,
        kPaper, kSquare, kTurnedLeft, kMat, kSheet, kTilt, kShares, kUpper,
        Link{"Crop", "FixRatio=0.333,LeftMargin=0.1,TopMargin=0.7"},
        Link{"Passpartout", "Borderhori=9999,Radius=-7,Borderverti=33"},
        Link{"Shadow", "ShadowDensity=50,Size=999,ShadowBlur=33,ShadowDistance=-7"}}) {
    for (const auto& [w, h] : {std::pair(60, 40), {40, 60}, {40, 40}}) {
      SCOPED_TRACE(link.name + " " + link.text);
      Rig rig(Noise(w, h, Masks::Noise, 1), MakeAll({link}));
      rig.source->destination->SetZoom(0.3);
      rig.PullWhole();
      EXPECT_FALSE(rig.Filter().IsDirty());
      EXPECT_FALSE(rig.Prepare());
      // The same text again, as a dialog sends it.
      rig.Filter().SetParameter(link.text.c_str(), 1);
      EXPECT_FALSE(rig.Prepare());
    }
  }
}

}  // namespace
}  // namespace testing_support
