// Scaling: the fast kernels against the plain ones, and values worked by hand.
#include "filters/pixels/resampling/Resampling.h"

#include <gtest/gtest.h>

#include <array>

#include "editing/RatioLock.h"
#include "filters/pixels/resampling/BicubicKernels.h"
#include "filters/pixels/resampling/ReductionKernels.h"
#include "filters/pixels/resampling/ReductionWindows.h"
#include "picture/MemoryPicture.h"
#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::SimdLevel;
using testing_support::RandomRow;
using testing_support::Row;

class ResamplingLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
};
INSTANTIATE_TEST_SUITE_P(Levels, ResamplingLevels, testing::ValuesIn(kernels::kSimdLevels),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

// Runs of every width, up to the row's last pixel, with as many rows as sums allow and with few: of
// the same weights and of others, side by side, at growing distances and in no order.
TEST_P(ResamplingLevels, SumWindows) {
  const auto& plain = kernels::Choose<kernels::ReductionKernels>(SimdLevel::Plain);
  const auto& fast = kernels::Choose<kernels::ReductionKernels>(GetParam());
  std::mt19937 random(1);
  for (int i = 0; i <= 2 * kernels::kMostTaps; i += i < 80 ? 1 : 53) {
    const int taps = i / 2;
    const int mostRows = taps < 2 ? 128 : kernels::kMostTaps / taps;
    const int rowCount = i % 2 ? mostRows : std::min(mostRows, 1 + taps);
    const int width = taps + 60;
    const std::size_t block = Row::size_type((taps + 15) / 16 * 16);
    const std::size_t stride = 3 * block;
    Row bytes = RandomRow(std::size_t(rowCount) * std::size_t(4 * width), unsigned(taps));
    // Masks are mostly the same for many pixels.
    if (i % 3 != 0) {
      for (int y = 0; y < rowCount; ++y) {
        const auto mask = bytes.begin() + y * 4 * width + 3 * width;
        std::fill_n(mask, 24, std::uint8_t{0});
        std::fill_n(mask + 24, 20, std::uint8_t{130});
        std::fill(mask + 44, mask + width, i % 3 == 1 ? std::uint8_t{255} : std::uint8_t{7});
      }
    }
    std::vector<std::uint16_t> weights(std::size_t(rowCount) * stride);
    std::vector<const std::uint8_t*> colour, mask;
    for (int y = 0; y < rowCount; ++y) {
      colour.push_back(bytes.data() + y * 4 * width);
      mask.push_back(colour.back() + 3 * width);
      for (int t = 0; t < 3 * taps; ++t) {
        weights[std::size_t(y) * stride + std::size_t(t / 3) + std::size_t(t % 3) * block] =
            static_cast<std::uint16_t>(random() % 5 ? random() : 65535);
      }
    }
    std::vector<kernels::ReductionRun> runs;
    for (int first = 0; first <= width - taps; ++first) runs.push_back({first, taps, 0});
    for (const int step : {2, 3, 9}) {
      for (int first = 0; first <= width - taps; first += step) {
        runs.push_back({first, taps, std::size_t(first % 3) * block});
      }
    }
    for (int run = 0; run < 20; ++run) {
      const int last = width - taps;
      runs.push_back({static_cast<int>(random() % unsigned(last + 1)), taps, random() % 3 * block});
    }
    const int count = static_cast<int>(runs.size());
    const kernels::ReductionRows rows = {colour.data(), mask.data(), rowCount, weights.data(),
                                         stride};
    std::vector<kernels::ColourSums> sums[4];
    std::vector<std::uint32_t> opacities[2];
    Row divided[2];
    for (int k = 0; k < 2; ++k) {
      const auto& kernels = k ? fast : plain;
      sums[k].resize(runs.size());
      sums[2 + k].resize(runs.size());
      opacities[k].resize(runs.size());
      divided[k].assign(runs.size() * 3 + 8, 77);
      kernels.sumColours(runs.data(), count, width, rows, sums[k].data());
      kernels.sumMasked(runs.data(), count, width, rows, sums[2 + k].data(), opacities[k].data());
      kernels.divide(divided[k].data(), sums[2 + k].data(), count);
    }
    for (int k = 0; k < 4; k += 2) {
      for (std::size_t at = 0; at < runs.size(); ++at) {
        for (int c = 0; c < 3; ++c) ASSERT_EQ(sums[k][at].channel[c], sums[k + 1][at].channel[c]);
        ASSERT_EQ(sums[k][at].weight, sums[k + 1][at].weight) << taps << " taps, run " << at;
      }
    }
    ASSERT_EQ(opacities[0], opacities[1]) << taps;
    ASSERT_EQ(divided[0], divided[1]) << taps;
  }
}

// Whole numbers, halves and what lies beside them.
TEST_P(ResamplingLevels, Divide) {
  std::vector<kernels::ColourSums> sums = {{{0, 0, 0}, 0}};
  for (std::uint32_t weight = 1; weight < 1u << 24; weight = weight * 3 + 1) {
    for (std::uint32_t level = 0; level < 256; ++level) {
      const std::uint32_t sum = level * weight;
      const std::uint32_t half = level < 255 ? sum + (weight + 1) / 2 : sum;
      sums.push_back({{sum, half, half > 0 ? half - 1 : 0}, weight});
    }
  }
  Row divided[2];
  for (int i = 0; i < 2; ++i) {
    divided[i].assign(sums.size() * 3 + 8, 77);
    kernels::Choose<kernels::ReductionKernels>(i ? GetParam() : SimdLevel::Plain)
        .divide(divided[i].data(), sums.data(), static_cast<int>(sums.size()));
  }
  EXPECT_EQ(divided[0], divided[1]);
}

TEST_P(ResamplingLevels, SharpenAndStretch) {
  for (int width = 1; width <= 90; ++width) {
    const auto bytes = std::size_t(3 * width);
    const Row row = RandomRow(4 * (bytes + 24), unsigned(width));
    Row masks = RandomRow(4 * (bytes + 24), unsigned(width) + 500);
    // Lonely pixels, whose weights may be negative, and opaque ones.
    for (auto& mask : masks) mask = width % 3 == 1 && mask < 190 ? 255 : width % 7 ? mask : 0;
    const auto at = [&](const Row& of, int i) { return of.data() + i * int(bytes + 24) + 12; };
    const auto taps = kernels::BicubicTaps(width, 2 * width);
    const auto& weights = kernels::BicubicPhases()[width % kernels::kBicubicPhases];
    std::vector<Row> found[2];
    for (int i = 0; i < 2; ++i) {
      const SimdLevel level = i ? GetParam() : SimdLevel::Plain;
      const auto& reduction = kernels::Choose<kernels::ReductionKernels>(level);
      const auto& bicubic = kernels::Choose<kernels::BicubicKernels>(level);
      const kernels::SharpenRows rows = {at(row, 0),   at(row, 1),   at(row, 2),
                                         at(masks, 0), at(masks, 1), at(masks, 2)};
      found[i].assign(7, Row(4 * bytes + 32, 77));
      auto& to = found[i];
      reduction.sharpen(to[0].data(), 3 * width, rows, {111111, -11111});
      reduction.sharpenMasked(to[1].data(), 3 * width, rows, {std::int64_t{1} << 40, -99});
      reduction.sharpenMasked(to[2].data(), 3 * width, rows, {111111, -11111});
      const std::uint8_t* const four[4] = {at(row, 0), at(row, 1), at(row, 2), at(row, 3)};
      bicubic.blend(to[3].data(), four, bytes, weights);
      bicubic.stretch(to[4].data(), at(row, 1), taps.data(), width);
      std::vector<kernels::WeighedPixel> weighed(std::size_t(width) + 8), wide(weighed.size());
      bicubic.weigh(weighed.data() + 4, at(row, 2), at(masks, 2), width);
      bicubic.stretchMasked(wide.data(), weighed.data() + 4, taps.data(), width);
      const kernels::WeighedPixel* const lines[4] = {weighed.data() + 4, wide.data(),
                                                     weighed.data() + 4, wide.data()};
      bicubic.blendMasked(to[5].data(), to[6].data(), lines, width, weights);
    }
    ASSERT_EQ(found[0], found[1]) << width;
  }
}

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
