#include "program/Host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

#include "program/ApplyRun.h"
#include "program/Interrupt.h"
#include "tests/platform/Support.h"

namespace program {
namespace {

constexpr int kWidth = 240;
constexpr int kHeight = 160;

// Slopes from 80 to 160 under a chequer of 40 up and 40 down, which a picture of half the size has
// no more: measured by itself, it has other limits.
void WriteChequeredSlopes(const std::filesystem::path& file) {
  MemoryPicture picture("slopes", kWidth, kHeight, true, true);
  for (int y = 0; y < kHeight; ++y) {
    std::fill_n(picture.MaskRows()[y], kWidth, BYTE{0});
    for (int x = 0; x < kWidth; ++x) {
      const int level = 80 + (x / 2 * 40 + y / 2 * 60) / 100;
      BYTE* const pixel = picture.ColourRows()[y] + 3 * x;
      for (int channel = 0; channel < 3; ++channel) {
        pixel[channel] = static_cast<BYTE>(level + channel * 5 + ((x + y) % 2 ? 40 : -40));
      }
    }
  }
  imageio::WriteImage(file, imageio::Format::Pnm, kWidth, kHeight,
                      {picture.ColourRows(), picture.MaskRows()});
}

class MeasurementsTest : public testing::Test {
 protected:
  MeasurementsTest() { WriteChequeredSlopes(folder / "in.ppm"); }

  void Apply(const std::string& chain, std::optional<Size> fit, const char* input,
             const char* output) {
    ApplyRequest request;
    request.chain = {chain};
    request.fit = fit;
    double told = 0;
    const auto rises = [&told](double share) {
      EXPECT_GE(share, std::exchange(told, share));
      EXPECT_LE(share, 1);
    };
    const FileResult result = ApplyRun(request, *creator.Get(), rises)
                                  .Do({folder / input, folder / output, imageio::Format::Pnm});
    EXPECT_GT(told, 0.9);
    ASSERT_EQ(result.error, "");
  }

  // The colour bytes of a file, reduced to half the size of the input.
  std::vector<BYTE> Half(const char* name) {
    imageio::ImageReader reader(folder / name);
    reader.ReduceToFit(kWidth / 2, kHeight / 2);
    MemoryPicture picture("half", kWidth / 2, kHeight / 2, true, true);
    reader.Read({picture.ColourRows(), picture.MaskRows()});
    std::vector<BYTE> bytes;
    for (int y = 0; y < kHeight / 2; ++y) {
      bytes.insert(bytes.end(), picture.ColourRows()[y], picture.ColourRows()[y] + kWidth / 2 * 3);
    }
    return bytes;
  }

  const platform::ComPtr<IAnimFilterCreator> creator = MakeCreator();
  const testing_support::TemporaryFolder folder;
};

int WorstDifference(const std::vector<BYTE>& a, const std::vector<BYTE>& b) {
  int worst = 0;
  for (std::size_t i = 0; i < a.size(); ++i) worst = std::max(worst, std::abs(a[i] - b[i]));
  return worst;
}

// The full result reduced and the preview differ only as rounding before and behind the reduction
// does. The texts cut no level off and keep all curves straight, as a reduction does not.
TEST_F(MeasurementsTest, APreviewUsesWhatTheFullPictureMeasures) {
  constexpr Size kHalf{kWidth / 2, kHeight / 2};
  Apply("", kHalf, "in.ppm", "half.ppm");
  for (const char* chain :
       {"ZNFilter.Tonwert.1(AutoContrast=1, AutoContrastRGB=1, Addlo=-20, Addhi=-20)",
        "ZNFilter.Invert.1(Inversity=100)ZNFilter.Tonwert.1(Addlo=-20, Addhi=-20)",
        "ZNFilter.AdoptColor.1(ColorRed=220, ColorGreen=220, ColorBlue=220)"}) {
    SCOPED_TRACE(chain);
    Apply(chain, {}, "in.ppm", "full.ppm");
    Apply(chain, kHalf, "in.ppm", "preview.ppm");
    Apply(chain, {}, "half.ppm", "alone.ppm");
    EXPECT_LE(WorstDifference(Half("full.ppm"), Half("preview.ppm")), 2);
    EXPECT_GE(WorstDifference(Half("full.ppm"), Half("alone.ppm")), 10);
  }
}

TEST_F(MeasurementsTest, OnlyFiltersThatMeasureAreAsked) {
  EXPECT_EQ(MeasuringText(*creator.Get(), "ZNFilter.Sepia.1"), "");
  EXPECT_NE(MeasuringText(*creator.Get(), "ZNFilter.Tonwert.1"), "");
  Pipeline pipeline(*creator.Get(), MakeBlankSource({1, 1}, {1, 1}));
  // A text without its key would set sepia back.
  const std::string sepia = "ZNFilter.Sepia.1(Sepia=050)";
  pipeline.SetText({sepia});
  EXPECT_FALSE(StartMeasuring(pipeline, *creator.Get()));
  EXPECT_EQ(pipeline.Text({}, false), sepia);
  pipeline.SetText({sepia + "ZNFilter.Tonwert.1(Med=010)"});
  EXPECT_TRUE(StartMeasuring(pipeline, *creator.Get()));
  EXPECT_EQ(TakeMeasurements(pipeline)[0], "");
}

TEST_F(MeasurementsTest, AStopEndsAPullThatReportsNothing) {
  Pipeline pipeline(*creator.Get(), MakeBlankSource({1, 1}, {1, 1}));
  pipeline.SetText({"ZNFilter.Sepia.1(Sepia=050)"});
  pipeline.Settle();
  MemoryPicture picture("result", 1, 1, true, true);
  const auto pull = [&] { return pipeline.Pull({0, 0, 1, 1}, 0, picture, {}); };
  EXPECT_TRUE(pull());
  const AbortOnInterrupt stops(pipeline.Tail(), [] { return true; });
  for (int tries = 0; tries < 10000 && pull(); ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_FALSE(pull());
}

}  // namespace
}  // namespace program
