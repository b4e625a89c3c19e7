// The Gaussian methods on rows: every vector unit gives the same bytes, and what must stay stays.
// Their results and the rows' surroundings are tested with the filters.
#include "filters/detail/GaussBands.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/filters/KernelRows.h"

namespace {

using kernels::GaussMethod;
using kernels::SimdLevel;
using testing_support::RandomRow;
using testing_support::Row;

constexpr GaussMethod kMethods[] = {GaussMethod::Blur, GaussMethod::Sharpen,
                                    GaussMethod::SharpenBrightness, GaussMethod::SelectiveBlur};

struct Work {
  GaussMethod method;
  int radius;
  float amount = 1.2f;
  SimdLevel level = kernels::ActiveSimdLevel();
  float threshold = 7;

  Row operator()(Row picture, int width) const {
    kernels::GaussChange change = {method, kernels::MakeGaussTaps(radius, radius * 0.6), threshold,
                                   amount};
    if (method != GaussMethod::SelectiveBlur) kernels::NormalizeGaussTaps(change.taps);
    std::vector<std::uint8_t*> rows;
    for (std::size_t at = 0; at < picture.size(); at += static_cast<std::size_t>(3 * width)) {
      rows.push_back(&picture[at]);
    }
    const std::atomic<bool> abort{false};
    EXPECT_TRUE(kernels::ChangeByGauss(rows.data(), width, static_cast<int>(rows.size()), change,
                                       level, abort));
    return picture;
  }
};

// Turned by half a turn.
Row Turned(Row picture) {
  std::reverse(picture.begin(), picture.end());
  for (std::size_t i = 0; i < picture.size(); i += 3) std::swap(picture[i], picture[i + 2]);
  return picture;
}

// At every vector unit; also bands and strips of columns, which end at other pixels in a turned
// picture.
void ExpectSameBytes(Work work, const Row& picture, int width) {
  work.level = SimdLevel::Plain;
  const Row plain = work(picture, width);
  for (const SimdLevel level : kernels::kSimdLevels) {
    if (level > kernels::ProcessorSimdLevel()) continue;
    work.level = level;
    ASSERT_TRUE(Turned(work(Turned(picture), width)) == plain)
        << SimdLevelName(level) << ", width " << width << ", radius " << work.radius;
  }
}

TEST(GaussBands, EveryVectorUnitGivesTheSameBytes) {
  for (const auto& [width, height, radius] : {std::tuple(1, 1, 1),
                                              {1, 50, 3},
                                              {50, 1, 3},
                                              {16, 17, 1},
                                              {33, 40, 7},
                                              {130, 70, 30},
                                              {31, 9, 200},
                                              {20000, 3, 60},
                                              {9000, 1, 8500}}) {
    const Row picture = RandomRow(static_cast<std::size_t>(3 * width * height), 7);
    for (const GaussMethod method : kMethods) {
      if (radius > 1000 && method != GaussMethod::SharpenBrightness) continue;
      ExpectSameBytes({method, radius}, picture, width);
    }
  }
}

// Values next to whole numbers, where sums that round in another way are truncated otherwise: a few
// pixels that are a little lighter or darker than all others.
TEST(GaussBands, EveryVectorUnitTruncatesAlike) {
  for (const int radius : {1, 5, 10, 50}) {
    for (const int difference : {1, 2, 100}) {
      Row picture = RandomRow(3 * 500 * 60, 8);
      for (std::uint8_t& byte : picture) {
        const int change = byte % 32 == 0 ? difference : byte % 32 == 1 ? -difference : 0;
        byte = static_cast<std::uint8_t>(101 + change);
      }
      for (const GaussMethod method : {GaussMethod::Blur, GaussMethod::Sharpen}) {
        ExpectSameBytes({.method = method, .radius = radius, .amount = 2.5f, .threshold = 0},
                        picture, 500);
      }
    }
  }
}

TEST(GaussBands, FlatAreasAndEvenSlopesStay) {
  Row row(3 * 40);
  for (const GaussMethod method : kMethods) {
    for (const int radius : {1, 2, 5, 19, 120, 1000}) {
      for (const float amount : {-3.0f, 1.2f, 2e7f}) {
        for (int level = 0; level < 256; ++level) {
          for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = static_cast<std::uint8_t>(level * (1 + i % 3));
          }
          ASSERT_TRUE((Work{method, radius, amount}(row, 40)) == row) << level << ' ' << radius;
        }
      }
    }
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = static_cast<std::uint8_t>(20 + i / 3 * 5);
    const Row found = Work{method, 9, 2e7f}(row, 40);
    EXPECT_TRUE(std::equal(row.begin() + 30, row.end() - 30, found.begin() + 30));
  }
}

}  // namespace
