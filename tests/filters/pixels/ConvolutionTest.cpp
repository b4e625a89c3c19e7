#include "filters/pixels/Convolution.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/filters/KernelRows.h"

namespace {

using testing_support::RandomRow;
using testing_support::Row;

// An area sees what lies around it and leaves that alone, or everything when its rows go elsewhere;
// rows end in an abort.
TEST(Convolution, AreaInPlaceAndElsewhere) {
  const Row given = RandomRow(20 * 30 * 3, 4);
  const auto rowsOf = [](Row& picture, std::size_t stride, std::size_t from) {
    std::vector<BYTE*> rows;
    for (std::size_t y = 0; y < 20; ++y) rows.push_back(picture.data() + y * stride + from);
    return rows;
  };
  Row whole = given;
  Row part = given;
  Row elsewhere = given;
  Row masks = RandomRow(20 * 30, 5);
  Row maskResult(20 * 30, 7);
  auto wholeRows = rowsOf(whole, 90, 6);
  auto partRows = rowsOf(part, 90, 6);
  auto maskRows = rowsOf(masks, 30, 2);
  auto elsewhereRows = rowsOf(elsewhere, 90, 15);
  auto maskResultRows = rowsOf(maskResult, 30, 5);
  const base::WritableRows result = {elsewhereRows.data() + 5, maskResultRows.data() + 5, 24, 7};
  const auto kernel = kernels::BlendKernel(kernels::kFindEdgesTable, 60);
  std::atomic<bool> abort{false};
  const auto picture = [&](auto& rows) {
    return base::WritableRows{rows.data() + 1, maskRows.data() + 1, 27, 18};
  };
  EXPECT_TRUE(kernels::Convolve3x3(kernel, picture(wholeRows), {3, 4, 24, 7}, result, abort));
  ASSERT_EQ(whole, given);
  EXPECT_TRUE(kernels::Convolve3x3(kernel, picture(wholeRows), {0, 0, 27, 18}, abort));
  EXPECT_TRUE(kernels::Convolve3x3(kernel, picture(partRows), {3, 4, 24, 7}, abort));
  EXPECT_EQ(elsewhere, part);
  abort = true;
  EXPECT_FALSE(kernels::Convolve3x3(kernel, picture(partRows), {0, 0, 27, 18}, abort));
  EXPECT_FALSE(kernels::Convolve3x3(kernel, picture(partRows), {3, 4, 24, 7}, result, abort));
  EXPECT_EQ(elsewhere, part);
  for (std::size_t at = 0; at < masks.size(); ++at) {
    const bool inside = at / 30 >= 5 && at / 30 < 12 && at % 30 >= 5 && at % 30 < 29;
    ASSERT_EQ(maskResult[at], inside ? masks[at] : 7) << at;
  }
  for (std::size_t at = 0; at < given.size(); ++at) {
    const std::size_t y = at / 90, x = at % 90 / 3;
    const bool inside = y >= 5 && y < 12 && x >= 5 && x < 29;
    ASSERT_EQ(part[at], inside ? whole[at] : given[at]) << y << " " << x;
  }
}

}  // namespace
