#include "program/OutputNames.h"

#include <gtest/gtest.h>

#include "program/Messages.h"

namespace program {
namespace {

std::string Generic(const std::filesystem::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

std::string Planned(const std::string& input, const std::optional<std::string>& out) {
  return Generic(PlanOutputs({input}, out).front().output);
}

TEST(OutputNames, OneInput) {
  EXPECT_EQ(Planned("a/b.jpg", {}), "a/b-fxbox.jpg");
  EXPECT_EQ(Planned("noextension", {}), "noextension-fxbox.png");
  EXPECT_EQ(Planned("a/b.jpg", "not there/"), "not there/b.jpg");
  EXPECT_EQ(Planned("a/b.heic", "."), "./b.png");
  EXPECT_EQ(PlanOutputs({"b.jpg"}, "c.tif").front().format, imageio::Format::Tiff);
  EXPECT_THROW(PlanOutputs({"b.jpg"}, "c.gif"), UsageError);
  EXPECT_THROW(PlanOutputs({"b.jpg"}, ""), UsageError);
}

TEST(OutputNames, TwoResultsNeverShareAFile) {
  using Inputs = std::vector<std::string>;
  EXPECT_EQ(PlanOutputs({"a/x.png", "a/y.png"}, "out").size(), 2u);
  for (const Inputs& inputs : {Inputs{"a/x.png", "b/x.png"}, Inputs{"x.webp", "x.png"},
                               Inputs{"x.png", "./x.png"}, Inputs{"a/../x.png", "x.png"}}) {
    EXPECT_THROW(PlanOutputs(inputs, "out"), UsageError) << inputs[0];
  }
  EXPECT_THROW(PlanOutputs({"x.png", "x.png"}, {}), UsageError);
  EXPECT_EQ(PlanOutputs({"a/x.png", "b/x.png"}, {}).size(), 2u);
}

}  // namespace
}  // namespace program
