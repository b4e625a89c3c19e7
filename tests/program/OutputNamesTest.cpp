#include "program/OutputNames.h"

#include <gtest/gtest.h>

#include "program/Messages.h"
#include "tests/platform/Support.h"

namespace program {
namespace {

std::string Generic(const std::filesystem::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

std::string Planned(const std::string& input, const OutputOptions& options) {
  return Generic(PlanOutputs({input}, options).front().output);
}

TEST(OutputNames, OneInput) {
  EXPECT_EQ(Planned("a/b.jpg", {}), "a/b-fxbox.jpg");
  EXPECT_EQ(Planned("noextension", {}), "noextension-fxbox.png");
  EXPECT_EQ(Planned("a/b.jpg", {.out = "not there/"}), "not there/b.jpg");
  EXPECT_EQ(Planned("a/b.nef", {.out = "."}), "./b.png");
  EXPECT_EQ(Planned("a/b.jpg", {.kind = "tif"}), "a/b-fxbox.tif");
  EXPECT_EQ(Planned("a/b.jpg", {.out = ".", .kind = "PNG"}), "./b.PNG");
  EXPECT_EQ(PlanOutputs({"b.jpg"}, {.out = "c.tif"}).front().format, imageio::Format::Tiff);
  for (const OutputOptions& wrong : {OutputOptions{.out = "c.gif"},
                                     {.out = ""},
                                     {.out = "c.png", .kind = "jpg"},
                                     {.kind = "gif"},
                                     {.inPlace = true, .skipExisting = true},
                                     {.kind = "png", .inPlace = true}}) {
    EXPECT_THROW(PlanOutputs({"b.jpg"}, wrong), UsageError);
  }
}

TEST(OutputNames, StandardInputAndOutput) {
  const OutputOptions png{.kind = "png"};
  EXPECT_EQ(Planned("-", {}), "-");
  EXPECT_EQ(PlanOutputs({"-"}, {}).front().format, imageio::Format::Unknown);
  EXPECT_EQ(PlanOutputs({"-"}, png).front().format, imageio::Format::Png);
  EXPECT_EQ(Planned("-", {.out = "./"}), "./stdin.png");
  EXPECT_EQ(Planned("a.jpg", {.out = "-"}), "-");
  EXPECT_EQ(Planned("./-", {}), "./--fxbox.png");
  EXPECT_EQ(PlanOutputs({"a.jpg"}, {.out = "/dev/fd/3", .kind = "pam"}).front().format,
            imageio::Format::Pam);
  EXPECT_THROW(PlanOutputs({"-", "-"}, {.out = "out"}), UsageError);
  EXPECT_THROW(PlanOutputs({"a.png", "b.png"}, {.out = "-"}), UsageError);
}

TEST(OutputNames, TwoResultsNeverShareAFile) {
  using Inputs = std::vector<std::string>;
  const OutputOptions out{.out = "out"};
  EXPECT_EQ(PlanOutputs({"a/x.png", "a/y.png"}, out).size(), 2u);
  for (const Inputs& inputs : {Inputs{"a/x.png", "b/x.png"}, Inputs{"x.gif", "x.png"},
                               Inputs{"x.png", "./x.png"}, Inputs{"a/../x.png", "x.png"}}) {
    EXPECT_THROW(PlanOutputs(inputs, out), UsageError) << inputs[0];
  }
  EXPECT_THROW(PlanOutputs({"x.png", "x.png"}, {}), UsageError);
  if (std::filesystem::path::preferred_separator == '/') {
    EXPECT_EQ(PlanOutputs({"x.png", "X.PNG"}, out).size(), 2u);
  } else {
    EXPECT_THROW(PlanOutputs({"x.png", "X.PNG"}, out), UsageError);
  }
  EXPECT_EQ(PlanOutputs({"a/x.png", "b/x.png"}, {}).size(), 2u);
}

TEST(OutputNames, NoResultTakesThePlaceOfAnInput) {
  const testing_support::TemporaryFolder folder;
  const auto name = [&](const char* file) { return Generic(folder / file); };
  testing_support::WriteFile(folder / "a.png", "a");
  testing_support::WriteFile(folder / "a-fxbox.png", "b");
  std::filesystem::create_hard_link(folder / "a.png", folder / "linked.png");
  std::error_code ignored;
  std::filesystem::create_symlink("a.png", folder / "symbolic.png", ignored);
  const std::string itself = Generic(folder.Path() / "." / "a.png");
  for (const std::string& output :
       {name("a.png"), itself, name("linked.png"), Generic(folder.Path())}) {
    EXPECT_THROW(PlanOutputs({name("a.png")}, {.out = output}), UsageError) << output;
    EXPECT_EQ(PlanOutputs({name("a.png")}, {.out = output, .inPlace = true}).size(), 1u);
  }
  if (!ignored) {
    EXPECT_THROW(PlanOutputs({name("a.png")}, {.out = name("symbolic.png")}), UsageError);
  }
  // Another input is lost whatever was asked for.
  EXPECT_THROW(PlanOutputs({name("a.png"), name("a-fxbox.png")}, {}), UsageError);
  EXPECT_EQ(PlanOutputs({name("a.png"), name("a-fxbox.png")}, {.inPlace = true}).size(), 2u);
}

TEST(OutputNames, WhatIsThereCanBeLeftAlone) {
  const testing_support::TemporaryFolder folder;
  testing_support::WriteFile(folder / "a-fxbox.png", "done");
  const auto plan =
      PlanOutputs({Generic(folder / "a.png"), Generic(folder / "b.png")}, {.skipExisting = true});
  EXPECT_TRUE(IsLeftAlone(plan[0]));
  EXPECT_FALSE(IsLeftAlone(plan[1]));
  testing_support::WriteFile(folder / "b-fxbox.png", "by somebody else meanwhile");
  EXPECT_TRUE(IsLeftAlone(plan[1]));
  EXPECT_FALSE(IsLeftAlone(PlanOutputs({Generic(folder / "a.png")}, {}).front()));
}

// A list may have one name, and names of which nobody knew before.
TEST(OutputNames, ListsCountAsSeveral) {
  EXPECT_EQ(Generic(PlanListOutputs({"a/b.jpg"}, {.out = "new"}).front().output), "new/b.jpg");
  EXPECT_THROW(PlanListOutputs({"a/b.jpg"}, {.out = "-"}), UsageError);
  OutputPlanner planner({.out = "new"}, true);
  EXPECT_EQ(Generic(planner.Add("a/x.png").output), "new/x.png");
  EXPECT_THROW(planner.Add("b/x.png"), UsageError);
  EXPECT_THROW(planner.Add("new/x.png"), UsageError) << "it is a result";
  EXPECT_EQ(Generic(planner.Add("b/y.png").output), "new/y.png");
}

}  // namespace
}  // namespace program
