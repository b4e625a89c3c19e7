// The frame kernels and the mask filters: the fast ones against the plain ones byte for byte, and
// naive passes, and where shadows and panes lie.
#include "filters/frames/FrameKernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "filters/frames/MaskFilters.h"
#include "filters/frames/PaneLayout.h"
#include "filters/frames/ShadowLayout.h"
#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::FrameKernels;
using kernels::SimdLevel;
using testing_support::ExpectSameRow;
using testing_support::RandomRow;
using testing_support::Row;

class FrameKernelLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
  template <class Run>
  void ExpectSame(const Row& row, Run run) const {
    ExpectSameRow(kernels::Choose<kernels::FrameKernels>(SimdLevel::Plain),
                  kernels::Choose<kernels::FrameKernels>(GetParam()), row, run);
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, FrameKernelLevels,
                         testing::Values(SimdLevel::Avx2, SimdLevel::Avx512),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

TEST_P(FrameKernelLevels, HasKernelsOfItsOwn) {
  for (const SimdLevel level : kernels::kSimdLevels) {
    if (level == GetParam()) continue;
    EXPECT_NE(kernels::Choose<kernels::FrameKernels>(GetParam()).compose,
              kernels::Choose<kernels::FrameKernels>(level).compose);
    EXPECT_NE(kernels::Choose<kernels::FrameKernels>(GetParam()).blur,
              kernels::Choose<kernels::FrameKernels>(level).blur);
  }
}

// Every width around the size of a block, at every alignment, with masks that are alike for a
// while; what lies around the results must stay.
TEST_P(FrameKernelLevels, EqualThePlainOnes) {
  constexpr int kGuard = 96;
  for (int width = -1; width <= 200; ++width) {
    const int room = std::max(width, 0) + kGuard;
    const int start = kGuard + room % 64;
    Row row = RandomRow(static_cast<std::size_t>(start + 10 * room), static_cast<unsigned>(room));
    const int mask = start + 3 * room;
    const int overMask = mask + room;
    const int overColour = overMask + room;
    if (width > 100) {
      std::fill_n(row.begin() + overMask, 40, width % 2 ? 0 : 255);
      std::fill_n(row.begin() + mask + 50, 50, width % 3 ? 0 : 255);
    }
    ExpectSame(row, [&](const FrameKernels& k, std::uint8_t* at) {
      k.compose(at + start, at + mask, at + overColour, at + overMask, width);
      k.addRelief(at + overColour, at + overMask, width, width % 2 != 0);
    });
    kernels::MaskWeights weights = {
        {8192, -8192, 4096, 1, 0, -1, -4096, 819, -8191}, 126113, 17004};
    for (const int wide : {0, 1 << 19, std::numeric_limits<int>::max()}) {
      if (wide) weights.relief[width & 7] = wide;
      ExpectSame(row, [&](const FrameKernels& k, std::uint8_t* at) {
        const kernels::MaskRows3 rows = {at + mask, at + overMask, at + overColour};
        for (const auto pass : {k.smooth, k.relief, k.grow, k.blur, k.fraction}) {
          std::uint8_t* const end = at + start + std::max(width, 0);
          const Row behind(end, at + start + room);
          pass(at + start, rows, width, weights);
          ASSERT_TRUE(std::equal(behind.begin(), behind.end(), end)) << "behind " << width;
          std::rotate(at + start, at + start + room, at + start + 2 * room);
        }
      });
    }
  }
}

TEST_P(FrameKernelLevels, ComposeEveryPairOfMasks) {
  constexpr int kPixels = 256 * 256;
  Row row = RandomRow(8 * kPixels, 5);
  for (int i = 0; i < kPixels; ++i) {
    row[static_cast<std::size_t>(6 * kPixels + i)] = static_cast<std::uint8_t>(i);
    row[static_cast<std::size_t>(7 * kPixels + i)] = static_cast<std::uint8_t>(i >> 8);
  }
  ExpectSame(row, [&](const FrameKernels& k, std::uint8_t* at) {
    k.compose(at, at + 6 * kPixels, at + 3 * kPixels, at + 7 * kPixels, kPixels);
  });
}

TEST(FrameKernels, ComposeRow) {
  const struct {
    int overMask, mask, colour, result;
  } kCases[] = {{0, 99, 200, 0},      {255, 99, 10, 99},  {255, 255, 10, 255}, {128, 0, 104, 0},
                {128, 255, 200, 128}, {100, 50, 135, 19}, {254, 254, 105, 253}};
  for (const auto& c : kCases) {
    std::uint8_t colour[] = {10, 10, 10};
    const std::uint8_t over[] = {200, 200, 200};
    auto mask = static_cast<std::uint8_t>(c.mask);
    const auto overMask = static_cast<std::uint8_t>(c.overMask);
    kernels::ComposeRow(colour, &mask, over, &overMask, 1);
    EXPECT_EQ(colour[2], c.colour) << c.overMask << " over " << c.mask;
    EXPECT_EQ(mask, c.result) << c.overMask << " over " << c.mask;
  }
}

// A plane with rows longer than itself.
struct Plane {
  Plane(int planeWidth, int planeHeight, unsigned seed) : width(planeWidth), height(planeHeight) {
    bytes = RandomRow(static_cast<std::size_t>((width + 3) * height), seed);
    for (int y = 0; y < height; ++y) rows.push_back(bytes.data() + y * (width + 3));
  }
  kernels::MaskPlane View() const { return {rows.data(), width, height}; }
  int At(int x, int y) const { return rows[static_cast<std::size_t>(y)][x]; }

  int width, height;
  Row bytes;
  std::vector<std::uint8_t*> rows;
};

// One pass after the other on the whole plane, from a copy of it.
template <class Value>
void NaivePasses(Plane& plane, int first, int last, Value value) {
  for (int margin = first; margin >= last; --margin) {
    const Row copy = plane.bytes;
    const auto old = [&](int x, int y) {
      return int{copy[static_cast<std::size_t>(y * (plane.width + 3) + x)]};
    };
    for (int y = margin; y < plane.height - margin; ++y) {
      for (int x = margin; x < plane.width - margin; ++x) {
        const int left = x == margin ? 0 : x - 1;
        const int middle = x == margin ? 1 : x;
        plane.rows[static_cast<std::size_t>(y)][x] =
            static_cast<std::uint8_t>(value(old, x, y, left, middle));
      }
    }
  }
}

// Also with so many columns that passes run in several groups.
TEST(MaskFilters, EqualPassesOneByOne) {
  const std::atomic<bool> abort{false};
  for (const auto& [width, height, passes] :
       {std::tuple(30, 21, 4), {30, 21, 40}, {5, 90, 3}, {3, 3, 1}, {2, 9, 3}, {60000, 9, 4}}) {
    Plane grown(width, height, 1), naiveGrown(width, height, 1);
    Plane blurred(width, height, 2), naiveBlurred(width, height, 2);
    ASSERT_TRUE(kernels::GrowShape(grown.View(), passes, abort));
    NaivePasses(naiveGrown, passes, 1, [](auto old, int x, int y, int left, int middle) {
      const auto column = [&](int at) { return std::min(old(at, y - 1), old(at, y + 1)); };
      return std::min({column(left), column(middle), column(x + 1), old(x, y), old(x + 1, y)});
    });
    EXPECT_TRUE(grown.bytes == naiveGrown.bytes) << width;
    ASSERT_TRUE(kernels::BlurMask(blurred.View(), passes, abort));
    NaivePasses(naiveBlurred, passes, 1, [](auto old, int x, int y, int left, int middle) {
      int sum = 0;
      for (const int at : {left, middle, x + 1}) {
        sum += old(at, y - 1) + old(at, y) + old(at, y + 1);
      }
      return (sum * 4 + old(x, y)) / 37;
    });
    EXPECT_TRUE(blurred.bytes == naiveBlurred.bytes) << width;
  }
}

TEST(MaskFilters, StopAndStayWithinThePlane) {
  const std::atomic<bool> abort{true};
  const std::atomic<bool> goOn{false};
  Plane plane(20, 10, 3);
  const Row before = plane.bytes;
  EXPECT_FALSE(kernels::BlurMask(plane.View(), 3, abort));
  EXPECT_TRUE(kernels::BlurMask(plane.View(), 0, abort));
  EXPECT_TRUE(kernels::FractionBlur(plane.View(), -2, goOn));
  EXPECT_TRUE(kernels::SmoothMask(plane.View(), -5, goOn));
  EXPECT_TRUE(plane.bytes == before);
  // A plane that no pass changes any more ends the longest run at once.
  EXPECT_TRUE(kernels::SmoothMask(plane.View(), std::numeric_limits<int>::max(), goOn));
  for (int y = 0; y < 10; ++y) {
    for (const int x : {0, 19, 20, 21, 22}) EXPECT_EQ(plane.At(x, y), before[y * 23u + x]);
  }
}

TEST(ShadowLayout, MarginsAndOffsets) {
  struct Case {
    kernels::ShadowForm form;
    int offsetX, offsetY, left, right, top, bottom;
  };
  const Case kCases[] = {
      {{.direction = 1350}, 0, 0, 0, 0, 0, 0},
      {{.direction = 1350, .intensity = 30}, 0, 0, 1, 1, 1, 1},
      {{.direction = 1350, .density = 100, .distance = 3}, 3, -3, 0, 3, 3, 0},
      {{.direction = 1350, .density = 100, .blur = 7, .distance = 3}, 3, -3, 0, 4, 4, 0},
      {{.direction = 0, .density = 100, .blur = 4, .distance = 5}, -5, 0, 6, 0, 1, 1},
      {{.direction = 2700, .density = 9, .blur = 25, .size = 4, .distance = 5}, 0, 5, 9, 9, 4, 14},
      {{.direction = 450, .isInner = true, .density = 9, .size = 2, .distance = 9},
       -9,
       -9,
       12,
       3,
       12,
       3},
      {{.direction = 1800, .intensity = 5, .density = 9, .distance = 9}, 9, 0, 1, 10, 1, 1},
      {{.direction = -900, .density = -1, .blur = -50, .distance = 2}, -2, 2, 2, 0, 0, 2}};
  for (const Case& c : kCases) {
    const kernels::ShadowLayout l = kernels::LayOutShadow(c.form);
    EXPECT_EQ((std::vector{l.offsetX, l.offsetY, l.left, l.right, l.top, l.bottom}),
              (std::vector{c.offsetX, c.offsetY, c.left, c.right, c.top, c.bottom}))
        << c.form.direction;
  }
}

TEST(PaneLayout, PercentagesOfTheRequest) {
  constexpr int kMax = std::numeric_limits<int>::max();
  const struct {
    int length, percent, position, first, last;
  } kCases[] = {{100, 75, 0, 12, 87},      {100, 75, 100, 24, 99},
                {100, 75, -100, 0, 75},    {100, 100, 0, 0, 99},
                {1, 75, 30, 0, 0},         {100, -50, 0, 75, 25},
                {100, kMax, 0, 0, 99},     {kMax, kMax, kMax, 0, 0},
                {100, 0, -kMax - 1, 0, 0}, {kMax, 50, 0, 536870912, 1610612735}};
  for (const auto& c : kCases) {
    const kernels::PaneSpan pane = kernels::LayOutPane(c.length, c.percent, c.position);
    EXPECT_EQ(std::pair(pane.first, pane.last), std::pair(c.first, c.last))
        << c.length << ' ' << c.percent << ' ' << c.position;
  }
}

}  // namespace
