#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "component/fxbox.h"

namespace {

using testing::HasSubstr;

struct FreeImage {
  void operator()(FxboxImage* image) const { FxboxFreeImage(image); }
};
using Result = std::unique_ptr<FxboxImage, FreeImage>;

// A picture of 5 by 4 pixels, every byte from its place.
struct Picture {
  explicit Picture(int channelCount, int gap = 0)
      : channels(channelCount), step(5 * channelCount + gap), bytes(std::size_t(step) * 4, 0xA5) {
    for (int y = 0; y < 4; ++y) {
      for (int i = 0; i < 5 * channels; ++i) bytes[std::size_t(y * step + i)] = At(y, i);
    }
  }
  static std::uint8_t At(int y, int i) { return static_cast<std::uint8_t>(17 * i + 41 * y + 3); }
  FxboxImage Image() { return {bytes.data(), step, 5, 4, channels}; }

  int channels;
  int step;
  std::vector<std::uint8_t> bytes;
};

struct Outcome {
  std::int32_t status = -1;
  Result result;
  FxboxError error{};
};

Outcome Render(FxboxImage input, const char* chain, const FxboxRenderOptions* options = nullptr) {
  Outcome outcome;
  FxboxImage* image = nullptr;
  outcome.status = FxboxRender(&input, chain, options, &image, &outcome.error);
  outcome.result.reset(image);
  EXPECT_EQ(outcome.error.status, outcome.status);
  EXPECT_EQ(image != nullptr, outcome.status == FXBOX_OK);
  return outcome;
}

FxboxRenderOptions Options() {
  FxboxRenderOptions options{};
  options.size = sizeof options;
  return options;
}

const std::uint8_t* PixelOf(const FxboxImage& image, int x, int y) {
  return image.pixels + y * image.rowStep + x * image.channels;
}

// Of the colour bytes alone; alpha stays.
void ExpectInverted(const FxboxImage& result, int channels) {
  ASSERT_EQ(result.channels, channels);
  ASSERT_EQ(result.width, 5);
  ASSERT_EQ(result.height, 4);
  for (int y = 0; y < 4; ++y) {
    for (int i = 0; i < 5 * channels; ++i) {
      const int byte = Picture::At(y, i);
      const int expected = i % channels == 3 ? byte : 255 - byte;
      EXPECT_EQ(result.pixels[y * result.rowStep + i], expected) << y << ' ' << i;
    }
  }
}

constexpr char kInvert[] = "ZNFilter.Invert.1(Inversity=100)";

TEST(FxboxRender, TakesEveryLayoutOfRows) {
  for (const int channels : {3, 4}) {
    Picture packed(channels), spaced(channels, 7);
    ExpectInverted(*Render(packed.Image(), kInvert).result, channels);
    ExpectInverted(*Render(spaced.Image(), kInvert).result, channels);
    FxboxImage noStep = packed.Image();
    noStep.rowStep = 0;
    ExpectInverted(*Render(noStep, kInvert).result, channels);

    // The same rows stored bottom up.
    Picture turned(channels);
    for (int y = 0; y < 4; ++y) {
      std::memcpy(&turned.bytes[std::size_t(3 - y) * std::size_t(turned.step)],
                  &packed.bytes[std::size_t(y) * std::size_t(packed.step)],
                  std::size_t(packed.step));
    }
    FxboxImage up = turned.Image();
    up.pixels += 3 * up.rowStep;
    up.rowStep = -up.rowStep;
    ExpectInverted(*Render(up, kInvert).result, channels);
    EXPECT_EQ(packed.bytes, Picture(channels).bytes) << "the input is only read";
  }
}

// Alpha where there is any, parts from the top left, what the filters are told of the full picture,
// and limits.
TEST(FxboxRender, EveryOptionDoesItsWork) {
  constexpr char kReduce[] = "ZNFilter.Scale.1(MaximumHorizontalSize=10,MaximumVerticalSize=10)";
  constexpr char kBorder[] = "ZNFilter.Passpartout.1(Borderhori=4, Borderverti=8)";
  constexpr char kHalf[] = "ZNFilter.Transparency.1(Transparency=050)";
  constexpr char kHuge[] =
      "ZNFilter.Scale.1(MaximumHorizontalSize=90000,MaximumVerticalSize=90000,AllowEnlarge=1)";
  using O = FxboxRenderOptions;
  const struct {
    const char* chain;
    void (*set)(O& options);
    std::int32_t status;
    int width, height, channels;  // of the result
  } cases[] = {
      {"", [](O&) {}, FXBOX_OK, 5, 4, 3},
      {kHalf, [](O&) {}, FXBOX_OK, 5, 4, 4},
      {kHalf, [](O& o) { o.channels = 3; }, FXBOX_OK, 5, 4, 3},
      {"", [](O& o) { o.channels = 4; }, FXBOX_OK, 5, 4, 4},
      {"", [](O& o) { o.channels = 1; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      {"", [](O& o) { o.channels = 2; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      {"", [](O& o) { o.channels = 5; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      {"", [](O& o) { o.channels = -3; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      {"", [](O& o) { o.left = 3, o.top = 1, o.width = 9, o.height = 2; }, FXBOX_OK, 2, 2, 3},
      {"", [](O& o) { o.left = 5, o.width = 9, o.height = 2; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      {"", [](O& o) { o.top = 2, o.width = 5; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      {kReduce, [](O&) {}, FXBOX_OK, 5, 4, 3},
      {kReduce, [](O& o) { o.fullWidth = 50, o.fullHeight = 40; }, FXBOX_OK, 10, 8, 3},
      {kReduce, [](O& o) { o.fullWidth = 50; }, FXBOX_OK, 5, 4, 3},
      {kReduce, [](O& o) { o.fullHeight = 40; }, FXBOX_OK, 5, 4, 3},
      {kBorder, [](O&) {}, FXBOX_OK, 13, 20, 4},
      {kBorder, [](O& o) { o.zoom = 1; }, FXBOX_OK, 13, 20, 4},
      {kBorder, [](O& o) { o.zoom = 0.5; }, FXBOX_OK, 9, 12, 4},
      {"", [](O& o) { o.zoom = -0.5; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      // Behind what an older host says that it knows.
      {"", [](O& o) { o.size = offsetof(O, zoom), o.zoom = -1, o.channels = 4; }, FXBOX_OK, 5, 4,
       4},
      {"", [](O& o) { o.size = 0; }, FXBOX_BAD_ARGUMENT, 0, 0, 0},
      {"", [](O& o) { o.mostPixels = 19; }, FXBOX_FAILED, 0, 0, 0},
      {"", [](O& o) { o.mostPixels = 20; }, FXBOX_OK, 5, 4, 3},
      {kHuge, [](O&) {}, FXBOX_FAILED, 0, 0, 0},
      {"ZNFilter.None.1(A=1)", [](O&) {}, FXBOX_BAD_CHAIN, 0, 0, 0},
      {"ZNFilter.None.1(A=1)", [](O& o) { o.lenient = 1; }, FXBOX_OK, 5, 4, 3},
  };
  for (const auto& c : cases) {
    Picture picture(3);
    FxboxRenderOptions options{};
    options.size = sizeof options;
    c.set(options);
    const Outcome outcome = Render(picture.Image(), c.chain, &options);
    SCOPED_TRACE(testing::Message() << "row " << &c - cases << ": " << outcome.error.message);
    ASSERT_EQ(outcome.status, c.status);
    if (c.status == FXBOX_FAILED) {
      EXPECT_THAT(outcome.error.message, HasSubstr(c.chain == kHuge ? "ZNFilter.Scale.1" : "5x4"));
    }
    if (!outcome.result) continue;
    const FxboxImage& image = *outcome.result;
    EXPECT_EQ((std::array{image.width, image.height, image.channels}),
              (std::array{c.width, c.height, c.channels}));
    if (c.channels == 4 && c.chain != kBorder) {
      EXPECT_NEAR(PixelOf(image, 4, 3)[3], c.chain == kHalf ? 127 : 255, 2);
    }
    if (options.left == 3) {
      EXPECT_EQ(PixelOf(image, 0, 0)[0], Picture::At(1, 9));
      EXPECT_EQ(PixelOf(image, 1, 1)[2], Picture::At(2, 14));
    }
  }
}

TEST(FxboxRender, ErrorsNameItemAndPlace) {
  Picture picture(3);
  const Outcome wrong =
      Render(picture.Image(), "ZNFilter.Zero.1()\nZNFilter.Sepia.1(Sepia=050, Sepai=1)");
  EXPECT_EQ(wrong.status, FXBOX_BAD_CHAIN);
  EXPECT_EQ(wrong.error.item, 2);
  EXPECT_EQ(wrong.error.line, 2);
  EXPECT_EQ(wrong.error.character, 29);
  EXPECT_STREQ(wrong.error.filter, "ZNFilter.Sepia.1");
  EXPECT_THAT(wrong.error.message, HasSubstr("unknown key \"Sepai\""));
}

TEST(FxboxRender, RefusesWhatIsNoPicture) {
  Picture picture(3);
  const FxboxImage good = picture.Image();
  FxboxImage wrong[5] = {good, good, good, good, good};
  wrong[0].pixels = nullptr;
  wrong[1].channels = 2;
  wrong[2].width = 0;
  wrong[3].height = -1;
  wrong[4].rowStep = 14;
  for (const FxboxImage& image : wrong) {
    EXPECT_EQ(Render(image, kInvert).status, FXBOX_BAD_ARGUMENT);
  }
  FxboxImage least = good;
  least.width = least.height = 1;
  EXPECT_EQ(Render(least, kInvert).status, FXBOX_OK);
  EXPECT_EQ(Render(good, nullptr).status, FXBOX_BAD_ARGUMENT);
  FxboxError error;
  EXPECT_EQ(FxboxRender(&good, kInvert, nullptr, nullptr, &error), FXBOX_BAD_ARGUMENT);
  FxboxImage* result = nullptr;
  EXPECT_EQ(FxboxRender(nullptr, kInvert, nullptr, &result, nullptr), FXBOX_BAD_ARGUMENT);
  FxboxFreeImage(nullptr);
  FxboxFreeStopper(nullptr);
  FxboxStop(nullptr);
}

// --- progress and stopping

struct Shares {
  std::vector<double> told;
  std::size_t most = SIZE_MAX;
};

std::int32_t Note(void* context, double share) {
  auto& shares = *static_cast<Shares*>(context);
  shares.told.push_back(share);
  return shares.told.size() < shares.most;
}

TEST(FxboxRender, ProgressRisesAndStops) {
  Picture picture(3);
  Shares shares;
  FxboxRenderOptions options = Options();
  options.progress = Note;
  options.context = &shares;
  EXPECT_EQ(Render(picture.Image(), kInvert, &options).status, FXBOX_OK);
  EXPECT_TRUE(std::is_sorted(shares.told.begin(), shares.told.end()));
  ASSERT_FALSE(shares.told.empty());
  EXPECT_EQ(shares.told.back(), 1);
  shares = {{}, 2};
  EXPECT_EQ(Render(picture.Image(), kInvert, &options).status, FXBOX_STOPPED);
  EXPECT_EQ(shares.told.size(), 2u);
}

// Blurs that would take many seconds, when the source has given all its rows.
TEST(FxboxRender, AnotherThreadStopsIt) {
  std::vector<std::uint8_t> bytes(std::size_t{4000} * 3000 * 3, 77);
  const FxboxImage image{bytes.data(), 0, 4000, 3000, 3};
  FxboxStopper* const stopper = FxboxNewStopper();
  FxboxRenderOptions options = Options();
  options.stopper = stopper;
  std::atomic<bool> begun{false};
  options.context = &begun;
  options.progress = [](void* context, double share) {
    if (share == 1) *static_cast<std::atomic<bool>*>(context) = true;
    return std::int32_t{1};
  };
  std::string chain;
  for (int i = 0; i < 20; ++i) chain += "ZNFilter.BlurSel.1(Radius=40.0)";
  std::chrono::steady_clock::time_point stopped;
  std::thread other([&] {
    while (!begun) std::this_thread::yield();
    stopped = std::chrono::steady_clock::now();
    FxboxStop(stopper);
  });
  const Outcome outcome = Render(image, chain.c_str(), &options);
  const auto end = std::chrono::steady_clock::now();
  other.join();
  EXPECT_EQ(outcome.status, FXBOX_STOPPED) << outcome.error.message;
  EXPECT_LT(end - stopped, std::chrono::seconds(5));
  // And every later one.
  Picture small(3);
  EXPECT_EQ(Render(small.Image(), kInvert, &options).status, FXBOX_STOPPED);
  FxboxFreeStopper(stopper);
}

TEST(FxboxRender, ThreadsDoNotDisturbEachOther) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int round = 0; round < 5; ++round) {
        Picture picture(4);
        ExpectInverted(*Render(picture.Image(), kInvert).result, 4);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
