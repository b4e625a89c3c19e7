#include "host/PictureSource.h"

#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <vector>

namespace host {
namespace {

constexpr Size kSize{5, 4};
constexpr BYTE kUntouched = 0xEE;

// Every byte tells where it comes from.
BYTE ColourAt(int x, int y, int channel) {
  return static_cast<BYTE>(y * 40 + x * 3 + channel);
}
BYTE MaskAt(int x, int y) {
  return static_cast<BYTE>(200 + y * 10 + x);
}

bool DrawPicture(const imageio::Rows& rows, const imageio::Progress& progress) {
  for (int y = 0; y < kSize.height; ++y) {
    if (!progress(static_cast<double>(y) / kSize.height)) return false;
    for (int x = 0; x < kSize.width; ++x) {
      for (int c = 0; c < 3; ++c) rows.colour[y][x * 3 + c] = ColourAt(x, y, c);
      if (rows.mask) rows.mask[y][x] = MaskAt(x, y);
    }
  }
  return true;
}

// The caller's rows, larger than the picture.
struct CallerRows {
  static constexpr int kWidth = 9;
  static constexpr int kHeight = 8;

  CallerRows() {
    for (int y = 0; y < kHeight; ++y) {
      colourRows.push_back(&colour[static_cast<std::size_t>(y) * kWidth * 3]);
      maskRows.push_back(&mask[static_cast<std::size_t>(y) * kWidth]);
    }
  }
  std::vector<BYTE> colour = std::vector<BYTE>(kWidth * kHeight * 3, kUntouched);
  std::vector<BYTE> mask = std::vector<BYTE>(kWidth * kHeight, kUntouched);
  std::vector<BYTE*> colourRows;
  std::vector<BYTE*> maskRows;
};

struct Pull {
  int destX, destY, srcX, srcY, width, height;
};

class PictureSourceTest : public testing::Test {
 protected:
  HRESULT Read(CallerRows& rows, const Pull& p) {
    return source->ReadRows(p.destX, p.destY, p.srcX, p.srcY, p.width, p.height,
                            rows.colourRows.data(), rows.maskRows.data());
  }

  // All that lies in the request and in the picture is there, and nothing else was written.
  void ExpectPart(const CallerRows& rows, const Pull& p) {
    for (int y = 0; y < CallerRows::kHeight; ++y) {
      for (int x = 0; x < CallerRows::kWidth; ++x) {
        const int fromX = p.srcX + (x - p.destX);
        const int fromY = p.srcY + (y - p.destY);
        const bool inside = x >= p.destX && x < p.destX + p.width && y >= p.destY &&
                            y < p.destY + p.height && fromX >= 0 && fromX < kSize.width &&
                            fromY >= 0 && fromY < kSize.height;
        EXPECT_EQ(rows.colourRows[static_cast<std::size_t>(y)][x * 3 + 1],
                  inside ? ColourAt(fromX, fromY, 1) : kUntouched)
            << x << "," << y;
        EXPECT_EQ(rows.maskRows[static_cast<std::size_t>(y)][x],
                  inside ? MaskAt(fromX, fromY) : kUntouched)
            << x << "," << y;
      }
    }
  }

  int decodes = 0;
  platform::ComPtr<PictureSource> source = platform::ComPtr<PictureSource>::Attach(
      new PictureSource({kSize, {50, 40}, 0.1}, [this](const auto& rows, const auto& progress) {
        ++decodes;
        return DrawPicture(rows, progress);
      }));
};

TEST_F(PictureSourceTest, AnyPullIsCutToThePicture) {
  const Pull pulls[] = {{0, 0, 0, 0, 5, 4},   {2, 3, 0, 0, 5, 4},   {1, 1, 2, 1, 2, 2},
                        {0, 0, -2, -1, 9, 7}, {3, 2, -1, -1, 3, 3}, {0, 0, 4, 3, 5, 5},
                        {0, 0, 5, 0, 3, 3},   {0, 0, 0, -9, 3, 3},  {1, 1, 1, 1, 0, 0}};
  for (const Pull& pull : pulls) {
    CallerRows rows;
    EXPECT_EQ(Read(rows, pull), S_OK);
    ExpectPart(rows, pull);
  }
  CallerRows rows;
  EXPECT_EQ(Read(rows, {0, 0, INT_MAX, INT_MAX, INT_MAX, INT_MAX}), S_OK);
  EXPECT_EQ(Read(rows, {0, 0, INT_MIN, 0, INT_MAX, 1}), S_OK);
  EXPECT_EQ(Read(rows, {0, 0, 0, 0, -1, -1}), S_OK);
  ExpectPart(rows, {});
}

TEST_F(PictureSourceTest, WholePullDecodesIntoTheCallersRowsAndASecondIsKept) {
  for (const int expectedDecodes : {1, 2, 2}) {
    CallerRows rows;
    EXPECT_EQ(Read(rows, {1, 2, 0, 0, 5, 4}), S_OK);
    EXPECT_EQ(decodes, expectedDecodes);
    ExpectPart(rows, {1, 2, 0, 0, 5, 4});
  }
  for (int y = 0; y < kSize.height; ++y) {
    CallerRows rows;
    EXPECT_EQ(Read(rows, {0, y, 0, y, 5, 1}), S_OK);
    ExpectPart(rows, {0, y, 0, y, 5, 1});
  }
  EXPECT_EQ(decodes, 2);
}

TEST_F(PictureSourceTest, LendsWhatItKeeps) {
  const BYTE* const* colour = nullptr;
  const BYTE* const* mask = nullptr;
  const auto lend = [&](int width) { return source->LendRows(width, 4, &colour, &mask); };
  EXPECT_EQ(lend(5), 1) << "nothing was decoded";
  CallerRows rows;
  Read(rows, {0, 0, 0, 0, 5, 4});
  EXPECT_EQ(lend(5), 1) << "the caller's rows are not the source's";
  Read(rows, {0, 0, 0, 0, 2, 2});
  ASSERT_EQ(lend(5), S_OK);
  EXPECT_EQ(colour[3][4 * 3 + 1], ColourAt(4, 3, 1));
  EXPECT_EQ(mask[3][4], MaskAt(4, 3));
  EXPECT_EQ(source->ReturnRows(), S_OK);
  EXPECT_EQ(lend(6), 1) << "more than there is";
  source->SetAbort(true);
  EXPECT_EQ(lend(5), 1);
}

TEST(PictureSource, AbortDuringADecodeStopsIt) {
  platform::ComPtr<PictureSource> source;
  int rowsDone = 0;
  const auto stopAtHalf = [&](double share) {
    ++rowsDone;
    if (share >= 0.5) source->SetAbort(true);
    return true;
  };
  source = platform::ComPtr<PictureSource>::Attach(
      new PictureSource({kSize, kSize, {}}, DrawPicture, stopAtHalf));
  for (const int height : {4, 1}) {  // straight, and into the kept picture
    CallerRows rows;
    source->SetAbort(false);
    EXPECT_GT(source->ReadRows(0, 0, 0, 0, 5, height, rows.colourRows.data(), rows.maskRows.data()),
              0);
  }
  EXPECT_EQ(rowsDone, 2 * 3);  // each ends at the row after the third, which has set the flag
  EXPECT_TRUE(source->HasStopped());
}

TEST(PictureSource, FailuresAreWordsAndAStoppedPull) {
  int calls = 0;
  const auto fail = [&](const imageio::Rows&, const imageio::Progress&) -> bool {
    if (++calls == 1) throw imageio::ImageError("the file ends early");
    throw std::bad_alloc();
  };
  const auto source =
      platform::ComPtr<PictureSource>::Attach(new PictureSource({kSize, kSize, {}}, fail));
  CallerRows rows;
  const auto pull = [&] {
    return source->ReadRows(0, 0, 0, 0, 5, 4, rows.colourRows.data(), rows.maskRows.data());
  };
  EXPECT_GT(pull(), 0);
  EXPECT_EQ(source->Failure(), "the file ends early");
  EXPECT_GT(pull(), 0);
  EXPECT_EQ(source->Failure(), "there is not enough memory for the picture");
}

TEST_F(PictureSourceTest, RevisionTellsEachConsumerOfAChangeOnce) {
  bool changed = false;
  int revision = -1;
  source->Prepare(&changed, &revision, true);
  EXPECT_TRUE(changed);
  CallerRows rows;
  Read(rows, {0, 0, 0, 0, 5, 4});
  changed = false;
  source->Prepare(&changed, &revision, true);
  EXPECT_FALSE(changed);
  int late = -1;
  source->Prepare(&changed, &late, true);
  EXPECT_TRUE(changed);
  EXPECT_EQ(late, revision);
}

}  // namespace
}  // namespace host
