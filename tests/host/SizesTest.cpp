#include "host/Sizes.h"

#include <gtest/gtest.h>

#include <climits>

namespace host {
namespace {

TEST(Sizes, RectanglesAreCutToThePicture) {
  const struct {
    Rectangle rectangle;
    Rectangle expected;
  } cases[] = {{{0, 0, 10, 8}, {0, 0, 10, 8}},
               {{-2, -3, 5, 5}, {0, 0, 3, 2}},
               {{8, 7, 5, 5}, {8, 7, 2, 1}},
               {{-5, -5, INT_MAX, INT_MAX}, {0, 0, 10, 8}},
               {{INT_MIN, 0, INT_MAX, 1}, {}},
               {{10, 0, 1, 1}, {}},
               {{0, -4, 1, 4}, {}},
               {{INT_MAX, INT_MAX, INT_MAX, INT_MAX}, {}}};
  for (const auto& [rectangle, expected] : cases) EXPECT_EQ(CutTo(rectangle, {10, 8}), expected);
}

}  // namespace
}  // namespace host
