// Scaling: values worked by hand.
#include "filters/pixels/resampling/Resampling.h"

#include <gtest/gtest.h>

#include <array>

#include "editing/RatioLock.h"
#include "filters/pixels/resampling/BicubicKernels.h"
#include "filters/pixels/resampling/ReductionWindows.h"
#include "picture/MemoryPicture.h"

namespace {

using Row = std::vector<BYTE>;

TEST(Resampling, TablesAndWindows) {
  const std::uint16_t* const weights = kernels::ReductionWeights();
  EXPECT_EQ(weights[0], 65535);
  EXPECT_EQ(weights[1024], 24108);  // 65535 / e
  EXPECT_EQ(weights[10645], 2);
  EXPECT_EQ(weights[10646], 1);
  const kernels::ReductionAxis axis(4, 4, 0);
  const auto& first = axis.Windows()[0];
  EXPECT_EQ(std::tuple(first.first, first.insideFirst, first.insideEnd, first.count),
            std::tuple(-1, 1, 3, 3));
  EXPECT_EQ(axis.Indices(first)[0], 5120);
  EXPECT_EQ(axis.Indices(first)[1], 0);
  EXPECT_EQ(kernels::OutputStart(100, 50, 7), 3);           // a half goes down
  EXPECT_EQ(kernels::OutputStart(100, 50, 65536 - 7), -4);  // -7 in 16 bits
  const auto phase = [](int i) { return std::to_array(kernels::BicubicPhases()[i].weight); };
  EXPECT_EQ(phase(0), (std::array{2304, 2304, -256, 0}));
  EXPECT_EQ(phase(25), (std::array{0, 4096, 0, 0}));
  EXPECT_EQ(phase(50), (std::array{-256, 2304, 2304, -256}));
}

TEST(Resampling, FlatStaysFlatAndNarrowIsRefused) {
  std::atomic<bool> abort{false};
  for (const auto& [w, h, toW, toH] : {std::array{90, 70, 5, 3},
                                       {90, 70, 40, 33},
                                       {9, 7, 9, 7},
                                       {9, 7, 50, 41},
                                       {2, 9, 5, 5},
                                       {700, 2, 1, 1}}) {
    for (const int level : {0, 1, 127, 200, 254, 255}) {
      MemoryPicture from("from", w, h, true, true), to("to", toW, toH, true, true);
      for (int y = 0; y < h; ++y) {
        std::fill_n(from.ColourRows()[y], 3 * w, static_cast<BYTE>(level));
        std::fill_n(from.MaskRows()[y], w, 0);
      }
      const kernels::Resampling how = {double(toW) / w, double(toH) / h};
      const auto run = [&] { return kernels::Resample(from.Rows(), to.Rows(), how, abort); };
      ASSERT_EQ(run(), w >= 3 || toW <= w) << w;
      if (w < 3) continue;
      for (int y = 0; y < toH; ++y) {
        EXPECT_EQ(Row(to.ColourRows()[y], to.ColourRows()[y] + 3 * toW),
                  Row(std::size_t(3 * toW), static_cast<BYTE>(level)));
        EXPECT_EQ(Row(to.MaskRows()[y], to.MaskRows()[y] + toW), Row(std::size_t(toW), 0));
      }
      abort = true;
      EXPECT_FALSE(run());
      abort = false;
      // A transparent corner brings the mask into play, and changes nothing in the middle.
      from.MaskRows()[0][0] = 255;
      EXPECT_TRUE(run());
      if (toW < 5) continue;
      EXPECT_EQ(to.MaskRows()[toH / 2][toW / 2], 0);
      EXPECT_EQ(to.ColourRows()[toH / 2][3 * (toW / 2)], level);
    }
  }
}

TEST(RatioLock, KeepsTheCentreInsideThePicture) {
  editing::CropEdges10000 edges = {0, 10000, 0, 10000};
  editing::LockRatio(10000, 600, 400, edges);  // a square of a wide picture
  EXPECT_EQ(std::tuple(edges.left, edges.right, edges.bottom, edges.top),
            std::tuple(1667, 8333, 0, 10000));
  edges = {9000, 10000, 9000, 10000};
  editing::LockRatio(40000, 400, 400, edges);  // a strip in a corner
  EXPECT_EQ(std::tuple(edges.left, edges.right, edges.bottom, edges.top),
            std::tuple(9000, 10000, 9375, 9625));
  editing::LockRatio(0, 400, 400, edges);
  EXPECT_EQ(edges.left, 9000);
}

}  // namespace
