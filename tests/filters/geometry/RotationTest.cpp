// Offset and rotation: sizes and places along the chain, and the pixels against a naive model.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <random>

#include "tests/filters/ClassOf.h"
#include "tests/filters/geometry/RotationModel.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

class RotationRig : public Rig {
 public:
  RotationRig(Picture picture, const std::string& text, const char* progId = "ZNFilter.Rotate.1")
      : Rig(std::move(picture), ClassOf(progId)) {
    Filter().SetParameter(text.c_str(), 0);
  }
  // Width, height, extents and offsets.
  std::vector<int> Info() {
    std::vector<int> info(6);
    Tail().GetInfo(&info[0], &info[1], &info[4], &info[5], &info[2], &info[3]);
    return info;
  }
};

TEST(Offset, MovesTheFrameAgainAtEachCommit) {
  RotationRig rig(Noise(5, 4, Masks::Noise, 1), "OffsetX=3, OffsetY=-2", "ZNFilter.Offset.1");
  rig.source->offsetX = 10;
  EXPECT_EQ(Difference(rig.source->picture, rig.PullWhole()), "");
  EXPECT_EQ(rig.Info(), (std::vector{5, 4, 5, 4, 7, 2}));
  rig.Filter().Commit();
  EXPECT_EQ(rig.Info(), (std::vector{5, 4, 5, 4, 4, 4}));
  rig.source->offsetX = INT_MIN;  // renewed, and wraps
  rig.source->revision++;
  EXPECT_EQ(rig.Info(), (std::vector{5, 4, 5, 4, INT_MAX - 2, 2}));
}

TEST(Rotation, SizesAndPlaces) {
  const struct {
    int width, height;
    const char* text;
    std::vector<int> placed;  // with AlignLeftBottom=0: width, height, extents, offsets
    int alignedX, alignedY;   // the offsets with 1
  } kCases[] = {{60, 40, "Angle=0", {60, 40, 60, 40, 5, 6}, 5, 6},
                {60, 40, "Angle=360", {60, 40, 60, 40, 5, 6}, 5, 6},
                {60, 40, "Angle=90", {40, 60, 40, 60, -5, 16}, 5, 6},
                {60, 40, "Angle=90.004", {40, 60, 40, 60, -5, 16}, 5, 6},
                {60, 40, "Angle=90,CenterX=10", {40, 60, 40, 60, -15, 26}, 5, 6},
                {61, 40, "Angle=-90", {40, 61, 40, 61, -5, 17}, 5, 6},
                {60, 40, "Angle=7.5", {67, 54, 65, 48, 8, 13}, 6, 9},
                {60, 40, "Angle=7.5,CenterX=12,CenterY=-7", {67, 54, 65, 48, 8, 14}, 6, 9},
                {60, 40, "Angle=45", {73, 77, 71, 71, 11, 24}, 6, 9},
                {60, 40, "Angle=45.01", {73, 77, 71, 71, 11, 24}, 6, 9},
                {60, 40, "Angle=180,CenterX=40000", {60, 40, 60, 40, -14459, 6}, 5, 6},  // 16 bits
                {1, 1, "Angle=30", {4, 8, 2, 2, 6, 9}, 6, 9},
                {2, 1, "Angle=-12.5", {5, 8, 3, 2, 6, 9}, 6, 9},
                {60, 40, "Angle=1e307", {60, 40, 60, 40, 5, 6}, 5, 6},
                {60, 40, "Angle=1e999", {60, 40, 60, 40, 5, 6}, 5, 6}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    RotationRig rig(Noise(c.width, c.height, Masks::Opaque, 1), c.text);
    rig.source->offsetX = 5;
    rig.source->offsetY = 6;
    auto aligned = c.placed;
    aligned[4] = c.alignedX;
    aligned[5] = c.alignedY;
    EXPECT_EQ(rig.Info(), aligned);
    rig.Filter().SetParameter("AlignLeftBottom=0", 0);
    EXPECT_EQ(rig.Info(), c.placed);
  }
}

TEST(Rotation, PixelsAreThoseOfTheModel) {
  std::mt19937 random(4);
  for (int round = 0; round < 60; ++round) {
    // Now and then more than the tiles that a quarter turn is done in.
    const int more = round % 8 == 4 ? 240 : 0;
    const int w = more + static_cast<int>(1 + random() % 90);
    const int h = more + static_cast<int>(1 + random() % 90);
    const double angle =
        round < 16 ? round * 22.5 - 90 : (static_cast<int>(random() % 80000) - 40000) / 100.0;
    const int x = round % 3 ? 0 : static_cast<int>(random() % 40) - 20;
    const Picture given = Noise(w, h, static_cast<Masks>(round % 5), static_cast<unsigned>(round));
    const auto turn = kernels::ComputeRotation(angle, x, 3 - x, w, h);
    for (const bool mirror : {false, true}) {
      if (angle == 0 && !mirror) continue;
      const std::string text = "Angle=" + std::to_string(angle) + ",CenterX=" + std::to_string(x) +
                               ",CenterY=" + std::to_string(3 - x) +
                               ",MirrorOn=" + std::to_string(mirror);
      RotationRig rig(given, text);
      SCOPED_TRACE(text + " of " + std::to_string(w) + " by " + std::to_string(h));
      const Picture turned = TurnByModel(given, turn, mirror);
      rig.Prepare();
      const RowRequest part = AnyRequest(random, turned, 3);
      ASSERT_EQ(Difference(PartOf(turned, part), rig.PullPart(part)), "");
      ASSERT_EQ(Difference(turned, rig.PullWhole()), "");
      ASSERT_EQ(Difference(PartOf(turned, part), rig.PullPart(part)), "");
    }
  }
}

// Where a bright spot comes to lie, from the middle of the result, weighted by brightness.
std::array<double, 2> SpotOf(const Picture& picture) {
  double sum = 0, sumX = 0, sumY = 0;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const double bright = picture.Colour(x, y)[0];
      sum += bright;
      sumX += bright * (x - (picture.width - 1) / 2.0);
      sumY += bright * (y - (picture.height - 1) / 2.0);
    }
  }
  return {sumX / sum, sumY / sum};
}

// Turned around the middle, whatever the angle, by the plain formula of a rotation.
TEST(Rotation, TurnsAroundTheMiddle) {
  Picture picture = Uniform(61, 41, 0, 0, 0);
  for (int i = 0; i < 25; ++i) std::fill_n(picture.Colour(48 + i % 5, 6 + i / 5), 3, BYTE{255});
  const auto before = SpotOf(picture);
  for (int angle = -180; angle <= 360; angle += 15) {
    RotationRig rig(picture, "Angle=" + std::to_string(angle));
    const double radians = angle * 3.14159265358979 / 180;
    const double cosine = std::cos(radians), sine = std::sin(radians);
    const auto after = SpotOf(rig.PullWhole());
    EXPECT_NEAR(after[0], before[0] * cosine - before[1] * sine, 1.6) << angle;
    EXPECT_NEAR(after[1], before[0] * sine + before[1] * cosine, 1.6) << angle;
  }
}

// Nor do others ask further for one.
TEST(Rotation, MarksEndHere) {
  for (const char* progId : {"ZNFilter.Rotate.1", "ZNFilter.Crop.1"}) {
    RotationRig rig(Noise(20, 10, Masks::Opaque, 1), "", progId);
    rig.destination->TakeCalls();
    rig.Filter().SetMark(3, 4);
    EXPECT_EQ(rig.destination->TakeCalls().empty(), std::string(progId) == "ZNFilter.Rotate.1");
    int mark[2] = {7, 7};
    rig.Filter().GetMark(&mark[0], &mark[1]);
    EXPECT_FALSE(mark[0] || mark[1]) << progId;
  }
}

TEST(Rotation, SizesAreTurned) {
  RotationRig rig(Noise(20, 10, Masks::Opaque, 1), "Angle=90");
  rig.Prepare();
  rig.destination->TakeCalls();
  rig.destination->wantedWidth = 50;
  rig.destination->wantedHeight = 201;
  int w = 0, h = 0;
  rig.Filter().QuerySize(&w, &h, 4.0);
  EXPECT_EQ(rig.destination->askedAspect, 1.0);
  EXPECT_EQ(std::pair(w, h), std::pair(100, 100));
  rig.Filter().SetTargetSize(7, 8);
  EXPECT_EQ(rig.destination->TakeCalls(), std::vector<std::string>{"SetTargetSize 7 8"});
}

// The source need not be asked for a picture that cannot be.
TEST(Rotation, RefusesWhatIsTooLarge) {
  RotationRig rig(Noise(2, 2, Masks::Opaque, 1), "Angle=30");
  rig.Prepare();
  rig.source->AttachDestination(nullptr);
  GuardedRows rows(1, 1);
  for (const auto& [w, h] :
       {std::pair(INT_MAX, INT_MAX), {INT_MAX, 1}, {1, 60000}, {30000, 17000}}) {
    rig.Filter().SetPictureSize(w, h);
    rig.Prepare();
    EXPECT_NE(rig.Pull(rows, {0, 0, 0, 0, 1, 1}), S_OK);
  }
  EXPECT_TRUE(rig.source->requests.empty());
}

}  // namespace
}  // namespace testing_support
