#include "toolkit/ShownPicture.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using toolkit::Rect;
using toolkit::Size;

// Rows from the bottom up: blue, green, red of each pixel.
struct Sample {
  std::uint8_t colour[2][6] = {{10, 20, 30, 50, 60, 70}, {90, 100, 110, 130, 140, 150}};
  std::uint8_t mask[2][2] = {{0, 0}, {0, 255}};
  const std::uint8_t* colours[2] = {colour[0], colour[1]};
  const std::uint8_t* masks[2] = {mask[0], mask[1]};
  toolkit::PictureRows rows = {2, 2, colours, masks};
};

std::vector<std::uint32_t> Shown(const toolkit::PictureRows& rows, Size size, const Rect& seen) {
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(seen.width * seen.height), 7);
  toolkit::RenderShown(rows, size, seen, pixels.data(), 4LL * seen.width);
  return pixels;
}

TEST(ShownPicture, TopRowComesFirstAndNothingIsASquare) {
  const Sample sample;
  EXPECT_EQ(Shown(sample.rows, {2, 2}, {0, 0, 2, 2}),
            (std::vector<std::uint32_t>{0x6E645A, 0xCCCCCC, 0x1E140A, 0x463C32}));
}

TEST(ShownPicture, EnlargedPixelsAreBlocksAndReducedOnesMeans) {
  const Sample sample;
  const auto large = Shown(sample.rows, {20, 20}, {8, 9, 4, 2});
  EXPECT_EQ(large, (std::vector<std::uint32_t>{0x6E645A, 0x6E645A, 0xCCCCCC, 0xCCCCCC, 0x1E140A,
                                               0x1E140A, 0x463C32, 0x463C32}));
  EXPECT_EQ(Shown(sample.rows, {20, 20}, {10, 0, 1, 1}), std::vector<std::uint32_t>{0x999999});
  toolkit::PictureRows opaque = sample.rows;
  opaque.maskRows = nullptr;
  EXPECT_EQ(Shown(opaque, {1, 1}, {0, 0, 1, 1}), std::vector<std::uint32_t>{0x5A5046});
  EXPECT_EQ(Shown(opaque, {2, 1}, {1, 0, 1, 1}), std::vector<std::uint32_t>{0x6E645A});
  opaque.width = 1;  // higher than wide: enlarged although it is shown no wider than it is high
  EXPECT_EQ(Shown(opaque, {1, 4}, {0, 0, 1, 4}),
            (std::vector<std::uint32_t>{0x6E645A, 0x6E645A, 0x1E140A, 0x1E140A}));
  opaque.width = 2;
  opaque.height = 1;
  EXPECT_EQ(Shown(opaque, {4, 1}, {0, 0, 4, 1}),
            (std::vector<std::uint32_t>{0x1E140A, 0x1E140A, 0x463C32, 0x463C32}));
}

TEST(ShownPicture, OnlyTheSeenPartCounts) {
  EXPECT_EQ(toolkit::SeenPart({-5, 3, 20, 20}, {10, 10}), (Rect{5, 0, 10, 7}));
  EXPECT_EQ(toolkit::SeenPart({12, 0, 5, 5}, {10, 10}).width, 0);
  EXPECT_EQ(toolkit::SeenPart({0, 0, -3, 5}, {10, 10}).width, 0);
  EXPECT_EQ(toolkit::SeenPart({0, 0, 5, -3}, {10, 10}).height, 0);
  for (const toolkit::Point in : {toolkit::Point{2, 3}, {5, 3}, {2, 4}}) {
    EXPECT_TRUE((Rect{2, 3, 4, 2}).Contains(in));
  }
  for (const toolkit::Point out : {toolkit::Point{1, 3}, {6, 3}, {2, 2}, {2, 5}}) {
    EXPECT_FALSE((Rect{2, 3, 4, 2}).Contains(out));
  }
}

}  // namespace
