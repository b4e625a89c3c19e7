#include "program/Pipeline.h"

#include <gtest/gtest.h>

#include <memory>

namespace program {
namespace {

constexpr Size kSize{4, 3};

platform::ComPtr<PictureSource> SourceOf(PictureSource::Decode decode) {
  return platform::ComPtr<PictureSource>::Attach(
      new PictureSource({kSize, kSize, {}}, std::move(decode)));
}

class PipelineTest : public testing::Test {
 protected:
  const platform::ComPtr<IAnimFilterCreator> creator = MakeCreator();
};

TEST_F(PipelineTest, ChainHandsOutTextsOfAnyLength) {
  Pipeline pipeline(*creator.Get(), MakeBlankSource({1, 1}, {1, 1}));
  // More than the first buffer holds; the class keeps whatever text it is given.
  const std::string text = "ZNFilter.Text.1(" + std::string(3000, 'x') + ")ZNFilter.SoftFrame.1(" +
                           std::string(3000, 'y') + ")";
  pipeline.SetText({text});
  EXPECT_EQ(pipeline.Text({}, false), text);
}

TEST_F(PipelineTest, AStoppedSourceIsNoticedBehindAFilter) {
  for (const char* text :
       {"", "ZNFilter.Sepia.1(Sepia=050)", "ZNFilter.AdoptColor.1(Intensity=50)"}) {
    Pipeline pipeline(*creator.Get(), SourceOf([](const auto&, const auto&) { return false; }));
    pipeline.SetText({text});
    pipeline.Settle();
    MemoryPicture picture("result", 4, 3, true, true);
    EXPECT_FALSE(pipeline.Pull({0, 0, 4, 3}, 0, picture)) << text;
  }
}

// Links in both directions hold each other's ends.
TEST_F(PipelineTest, EndsFreeTheirSource) {
  const auto alive = std::make_shared<int>(0);
  for (const char* text : {"", "ZNFilter.Sepia.1(Sepia=050)ZNFilter.Zero.1()"}) {
    {
      Pipeline pipeline(*creator.Get(),
                        SourceOf([alive](const auto&, const auto&) { return true; }));
      pipeline.SetText({text});
      pipeline.Settle();
      EXPECT_GT(alive.use_count(), 1);
    }
    EXPECT_EQ(alive.use_count(), 1) << text;
  }
}

}  // namespace
}  // namespace program
