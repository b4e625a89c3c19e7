#include "program/BandPipe.h"

#include <gtest/gtest.h>

#include <thread>

namespace program {
namespace {

constexpr int kWidth = 4;
constexpr int kHeight = 6;

// Rows of a band have the values from `first` up, row 0 the lowest.
void Fill(MemoryPicture& band, int first) {
  for (int y = 0; y < kHeight; ++y) {
    EXPECT_EQ(band.ColourRows()[y][0], 0) << "not cleared";
    EXPECT_EQ(band.MaskRows()[y][0], 255) << "not cleared";
    std::fill_n(band.ColourRows()[y], 3 * kWidth, static_cast<BYTE>(first + y));
    std::fill_n(band.MaskRows()[y], kWidth, static_cast<BYTE>(100 + y));
  }
}

TEST(BandPipe, RowsComeOutFromTheTopDown) {
  BandPipe pipe(kWidth, kHeight);
  std::thread filler([&pipe] {
    for (int band = 0; band < 20; ++band) {
      MemoryPicture* const picture = pipe.Begin();
      ASSERT_NE(picture, nullptr);
      Fill(*picture, band * 10);
      pipe.End(1, 3);  // the margins stay behind
    }
    pipe.Close();
  });
  for (int band = 0; band < 20; ++band) {
    for (int y = 3; y > 0; --y) {
      const imageio::PictureRow row = pipe.Next();
      EXPECT_EQ(row.colour[3 * kWidth - 1], static_cast<BYTE>(band * 10 + y));
      EXPECT_EQ(row.mask[kWidth - 1], 100 + y);
    }
  }
  filler.join();
  EXPECT_THROW(pipe.Next(), BandPipe::Closed);
}

TEST(BandPipe, EitherSideMayGiveUp) {
  BandPipe left(kWidth, kHeight);
  std::thread taker([&left] {
    left.Next();
    left.Leave();
  });
  int filled = 0;
  while (left.Begin()) {
    left.End(0, kHeight);
    ++filled;
  }
  EXPECT_LE(filled, 3) << "as many as there are bands";
  taker.join();

  BandPipe closed(kWidth, kHeight);
  std::thread waiting([&closed] { EXPECT_THROW(closed.Next(), BandPipe::Closed); });
  closed.Close();
  waiting.join();
}

}  // namespace
}  // namespace program
