#include "program/PictureSource.h"

#include <gtest/gtest.h>

#include <climits>
#include <numeric>
#include <stdexcept>
#include <vector>

#include "program/PictureDestination.h"

namespace program {
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
  HRESULT Read(CallerRows& rows, const Pull& p, bool wantColour = true, bool wantMask = true) {
    return source->ReadRows(p.destX, p.destY, p.srcX, p.srcY, p.width, p.height,
                            wantColour ? rows.colourRows.data() : nullptr,
                            wantMask ? rows.maskRows.data() : nullptr);
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
}

TEST_F(PictureSourceTest, PartsDecodeOnce) {
  for (int y = 0; y < kSize.height; ++y) {
    CallerRows rows;
    EXPECT_EQ(Read(rows, {0, y, 0, y, 5, 1}), S_OK);
    ExpectPart(rows, {0, y, 0, y, 5, 1});
  }
  CallerRows rows;
  EXPECT_EQ(Read(rows, {0, 0, 0, 0, 5, 4}), S_OK);
  EXPECT_EQ(decodes, 1);
}

TEST_F(PictureSourceTest, EitherPlaneMayBeUnwanted) {
  CallerRows rows;
  EXPECT_EQ(Read(rows, {0, 0, 0, 0, 5, 4}, true, false), S_OK);
  EXPECT_EQ(Read(rows, {0, 0, 0, 0, 5, 4}, false, true), S_OK);
  ExpectPart(rows, {0, 0, 0, 0, 5, 4});
  EXPECT_EQ(Read(rows, {0, 0, 0, 0, 5, 4}, false, false), S_OK);
}

TEST_F(PictureSourceTest, AbortStopsAndEndsWithTheFlag) {
  CallerRows rows;
  source->SetAbort(true);
  EXPECT_GT(Read(rows, {0, 0, 0, 0, 5, 4}), 0);
  EXPECT_EQ(decodes, 0);
  EXPECT_TRUE(source->HasStopped());
  EXPECT_EQ(source->Failure(), "");
  source->SetAbort(false);
  EXPECT_EQ(Read(rows, {0, 0, 0, 0, 5, 4}), S_OK);
  ExpectPart(rows, {0, 0, 0, 0, 5, 4});
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

// Keeps what it is told.
class Listener final : public platform::ComObject<Listener, IAnimFilterSrcCallsThis> {
 public:
  HRESULT STDMETHODCALLTYPE SetPictureSize(int w, int h) override { return Keep("size", w, h); }
  HRESULT STDMETHODCALLTYPE SetOffset(int x, int y) override { return Keep("offset", x, y); }
  HRESULT STDMETHODCALLTYPE SetExtent(int w, int h) override { return Keep("extent", w, h); }
  HRESULT STDMETHODCALLTYPE SetTargetSize(int w, int h) override { return Keep("target", w, h); }
  HRESULT STDMETHODCALLTYPE QuerySize(int*, int*, double) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetZoom(double z) override {
    return Keep("zoom", static_cast<int>(z * 100), 0);
  }
  HRESULT STDMETHODCALLTYPE SetMark(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMark(int*, int*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Lock() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Unlock() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE ExpandText(const char*, char**) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t, std::intptr_t, std::intptr_t) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t) override { return S_OK; }

  std::string told;

 private:
  HRESULT Keep(const std::string& what, int a, int b) {
    told += what + " " + std::to_string(a) + " " + std::to_string(b) + ";";
    return S_OK;
  }
};

TEST_F(PictureSourceTest, PrepareTellsSizesDownstream) {
  const auto listener = platform::ComPtr<Listener>::Attach(new Listener);
  source->AttachDestination(listener.Get());
  int info[6] = {};
  source->GetInfo(&info[0], &info[1], &info[2], &info[3], &info[4], &info[5]);
  EXPECT_EQ(listener->told, "zoom 10 0;target 50 40;size 5 4;extent 5 4;offset 0 0;");
  EXPECT_EQ(std::vector<int>(info, info + 6), (std::vector<int>{5, 4, 0, 0, 5, 4}));
  source->AttachDestination(nullptr);
}

}  // namespace
}  // namespace program
