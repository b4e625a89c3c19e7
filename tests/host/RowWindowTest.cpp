#include "host/RowWindow.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace host {
namespace {

constexpr Size kSize{5, 100};
using Answer = RowWindow::Answer;

// Row y from the top has this colour; mask one more.
BYTE ValueOf(int fromTop) {
  return static_cast<BYTE>(fromTop * 7 + 3);
}

// Hands out all rows, or those before `last`.
struct Maker {
  int last = kSize.height;
  std::atomic<int>* made = nullptr;
  bool operator()(imageio::RowSink& sink) const {
    for (int y = 0; y < last; ++y) {
      const imageio::RowBuffer row = sink.Begin(y);
      std::fill_n(row.colour, 3 * kSize.width, ValueOf(y));
      if (row.mask) std::fill_n(row.mask, kSize.width, static_cast<BYTE>(ValueOf(y) + 1));
      if (made) *made = y + 1;
      if (!sink.End(y)) return false;
    }
    return last == kSize.height;
  }
};

void ExpectRows(const RowWindow& window, int first, int count, bool hasMask) {
  for (int y = first; y < first + count; ++y) {
    const BYTE value = ValueOf(kSize.height - 1 - y);
    EXPECT_EQ(window.Colour(y)[3 * kSize.width - 1], value) << "row " << y;
    EXPECT_EQ(window.Mask(y)[0], hasMask ? static_cast<BYTE>(value + 1) : 0) << "row " << y;
  }
}

class RowWindowTest : public testing::Test {
 protected:
  std::atomic<bool> abort{false};
};

TEST_F(RowWindowTest, BandsOverlapOnTheirWayDown) {
  for (const bool hasMask : {false, true}) {
    std::atomic<int> made{0};
    RowWindow window(kSize, hasMask, 24, Maker{kSize.height, &made});
    for (int end = kSize.height; end > 0; end -= 10) {
      const int low = std::max(0, end - 13);
      const int high = std::min(kSize.height, end + 3);
      ASSERT_EQ(window.Bring(low, high - low, abort), Answer::Here);
      ExpectRows(window, low, high - low, hasMask);
      ASSERT_EQ(window.Bring(low, high - low, abort), Answer::Here) << "once more";
      EXPECT_LE(made, kSize.height - high + 24) << "rows that are needed still are overwritten";
    }
  }
}

TEST_F(RowWindowTest, WhatIsAboveIsGone) {
  RowWindow window(kSize, false, 10, Maker());
  EXPECT_EQ(window.Bring(60, 5, abort), Answer::Here) << "rows may be left out";
  EXPECT_EQ(window.Bring(60, 6, abort), Answer::Gone);
  EXPECT_EQ(window.Bring(40, 11, abort), Answer::Gone) << "more than there is room for";
  EXPECT_EQ(window.Bring(0, 1, abort), Answer::Here);
}

TEST_F(RowWindowTest, TellsHowTheDecodingEnded) {
  RowWindow stopped(kSize, false, 10, Maker{50});
  EXPECT_EQ(stopped.Bring(50, 5, abort), Answer::Here);
  EXPECT_EQ(stopped.Bring(49, 2, abort), Answer::Stopped);
  RowWindow failing(kSize, false, 10, [](imageio::RowSink& sink) -> bool {
    Maker{20}(sink);
    throw std::out_of_range("row 20");
  });
  EXPECT_EQ(failing.Bring(80, 5, abort), Answer::Here);
  EXPECT_THROW(failing.Bring(70, 10, abort), std::out_of_range);
}

TEST_F(RowWindowTest, AnAbortEndsTheWait) {
  std::atomic<bool> goOn{false};
  RowWindow window(kSize, false, 10, [&](imageio::RowSink& sink) {
    while (!goOn && sink.KeepGoing()) std::this_thread::yield();
    return Maker()(sink);
  });
  std::thread later([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    abort = true;
  });
  EXPECT_EQ(window.Bring(90, 10, abort), Answer::Stopped);
  later.join();
}  // and the decoding ends with the window

}  // namespace
}  // namespace host
