#include "program/Arguments.h"

#include <gtest/gtest.h>

#include <climits>

#include "program/Messages.h"

namespace program {
namespace {

TEST(Arguments, SizesAndBoxes) {
  EXPECT_EQ(ParseSize("640x480", "--target"), (Size{640, 480}));
  EXPECT_EQ(ParseBox("240", "--fit"), (Size{240, 240}));
  EXPECT_EQ(ParseBox("1x2147483647", "--fit"), (Size{1, INT_MAX}));
  for (const char* wrong : {"", "x", "640", "640x", "x480", "0x480", "640x-1", "640x480x1",
                            "640X480", " 640x480", "640x480 ", "640,480", "99999999999x1"}) {
    EXPECT_THROW(ParseSize(wrong, "--target"), UsageError) << wrong;
  }
}

TEST(Arguments, Rectangles) {
  EXPECT_EQ(ParseRectangle("-1,2,3,4", "--rect"), (Rectangle{-1, 2, 3, 4}));
  for (const char* wrong :
       {"", "1,2,3", "1,2,3,4,5", "1,2,0,4", "1,2,3,-4", "1, 2,3,4", "a,2,3,4"}) {
    EXPECT_THROW(ParseRectangle(wrong, "--rect"), UsageError) << wrong;
  }
}

}  // namespace
}  // namespace program
