#include "host/Pipeline.h"

#include <gmock/gmock.h>

#include <memory>

namespace host {
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
  // More than the first buffer holds.
  const std::string written(3000, 'x');
  const std::string drawn(3000, 'y');
  pipeline.SetText(
      {"ZNFilter.Text.1(Text=" + written + ")ZNFilter.WaterSign.1(Text=" + drawn + ")"});
  const std::string text = pipeline.Text({}, false);
  EXPECT_NE(text.find(",Text=" + written + ")ZNFilter.WaterSign.1("), std::string::npos);
  EXPECT_TRUE(text.ends_with(",Text=" + drawn + ")"));
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

TEST_F(PipelineTest, BandsGiveTheRowsOfOnePull) {
  const auto decode = [](const imageio::Rows& rows, const auto&) {
    for (int i = 0; i < 36; ++i) rows.colour[i / 12][i % 12] = static_cast<BYTE>(7 * i);
    return true;
  };
  for (const char* text : {"", "ZNFilter.Invert.1(Inversity=100)"}) {
    Pipeline pipeline(*creator.Get(), SourceOf(decode));
    pipeline.SetText({text});
    pipeline.Settle();
    int info[6] = {9, 9, 9, 9, 9, 9};
    pipeline.Tail().GetInfo(&info[0], &info[1], &info[2], &info[3], &info[4], &info[5]);
    EXPECT_THAT(info, testing::ElementsAre(4, 3, 0, 0, 4, 3));
    for (const int band : {0, 1, 2, 99}) {
      std::vector<double> shares;
      MemoryPicture result("result", 3, 2, true, true);
      EXPECT_TRUE(pipeline.Pull({1, 1, 3, 2}, band, result, [&](double share) {
        shares.push_back(share);
        return true;
      }));
      for (int i = 0; i < 18; ++i) {
        const int given = 7 * (12 * (i / 9 + 1) + 3 + i % 9) % 256;
        EXPECT_EQ(result.ColourRows()[i / 9][i % 9], *text ? 255 - given : given) << i;
      }
      EXPECT_EQ(shares, band == 1 ? (std::vector{0.5, 1.0}) : std::vector{1.0});
      EXPECT_EQ(pipeline.Pull({1, 1, 3, 2}, band, result, [](double share) { return share == 1; }),
                band != 1);
    }
  }
}

// A quarter turn and back, and what a class does twice.
TEST_F(PipelineTest, AClassMayStandTwice) {
  const std::string turn = "ZNFilter.Rotate.1(Angle=90)";
  const std::string chain = turn + "ZNFilter.Sepia.1(Sepia=050)ZNFilter.Rotate.1(Angle=-90)";
  Pipeline pipeline(*creator.Get(), MakeBlankSource({4, 3}, {4, 3}));
  pipeline.SetText({chain});
  EXPECT_EQ(pipeline.Filters().size(), 3u);
  EXPECT_EQ(pipeline.Settle(), (Size{4, 3}));
  const std::string text = pipeline.Text({}, false);
  EXPECT_LT(text.find("Angle=90.000"), text.find("Angle=-90.000"));
  pipeline.SetText({text});
  EXPECT_EQ(pipeline.Text({}, false), text);
  pipeline.SetText({turn + "ZNFilter.Nobody.1()"});
  EXPECT_EQ(pipeline.Settle(), (Size{3, 4})) << "what cannot be made is left out";
  pipeline.SetText({});
  EXPECT_EQ(pipeline.Settle(), (Size{4, 3}));
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

// Sizes and full-resolution sizes through several filters that change them, without any row.
TEST_F(PipelineTest, SizesTravelAlongChains) {
  const std::string half = "ZNFilter.Scale100.1(HorizontalProz=050,VerticalProz=050)";
  const std::string box =
      "ZNFilter.Scale.1(MaximumHorizontalSize=300,MaximumVerticalSize=200,KeepProportions=2)";
  const std::string crop = "ZNFilter.Crop.1(LeftMargin=0.25,RightMargin=0.75,FixRatioOn=0)";
  const struct {
    std::string text;
    Size from, target, to;
  } cases[] = {{box, {90, 60}, {90, 60}, {90, 60}},
               {box, {90, 60}, {900, 600}, {300, 200}},  // a reduction may grow again
               {crop + box, {60, 40}, {600, 400}, {200, 267}},
               {box, {60, 40}, {600, 100}, {60, 40}},
               {half + crop + box, {600, 400}, {600, 400}, {150, 200}}};
  for (const auto& c : cases) {
    Pipeline pipeline(*creator.Get(), MakeBlankSource(c.from, c.target));
    pipeline.SetText({c.text});
    EXPECT_EQ(pipeline.Settle(), c.to) << c.text;
  }
}

// How far rows reach adds up, from the tail to the first filter that reads everything.
TEST_F(PipelineTest, ReachAddsUp) {
  const std::string blur = "ZNFilter.BlurGauss.1(Radius=3.0)", sepia = "ZNFilter.Sepia.1(Sepia=1)",
                    turn = "ZNFilter.Rotate.1(Angle=90)", measure = "ZNFilter.Tonwert.1(ExBlit=1)";
  const std::pair<std::string, std::string> cases[] = {
      {"", "0"},       {sepia, "0"},           {blur + sepia, "3"},    {blur + sepia + blur, "6"},
      {turn, "0 all"}, {blur + turn, "0 all"}, {turn + blur, "3 all"}, {sepia + measure, "none"}};
  for (const auto& [text, told] : cases) {
    Pipeline pipeline(*creator.Get(), MakeBlankSource({40, 30}, {40, 30}));
    pipeline.SetText({text});
    pipeline.Settle();
    const auto reach = pipeline.Reach();
    EXPECT_EQ(reach ? std::to_string(reach->rows) + (reach->readsAll ? " all" : "") : "none", told)
        << text;
  }
}

// No one takes memory for what can never be.
TEST_F(PipelineTest, APictureThatIsTooLargeIsRefusedByThePull) {
  Pipeline pipeline(*creator.Get(), MakeBlankSource({4, 3}, {4, 3}));
  pipeline.SetText({"ZNFilter.Scale100.1(HorizontalProz=2000000000,VerticalProz=2000000000)"});
  EXPECT_GT(pipeline.Settle().width, 1 << 26);
  MemoryPicture picture("part", 4, 3, true, true);
  EXPECT_FALSE(pipeline.Pull({0, 0, 4, 3}, 0, picture));
}

}  // namespace
}  // namespace host
