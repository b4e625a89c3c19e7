#include "editing/GradationPreset.h"

#include <gtest/gtest.h>

namespace {

constexpr char kFirst[] =
    "Gradation, Version 1\n"
    "Anzahl=  3\nSelektierter=  2\n"
    "#  1 (x, y)=  0,   0\n#  2 (x, y)=100, 140\n#  3 (x, y)=255, 255\n"
    "Anzahl=  2\nSelektierter=  1\n#  1 (x, y)= 20,   0\n#  2 (x, y)=255, 255\n"
    "Anzahl=  2\nSelektierter=  1\n#  1 (x, y)=  0,   0\n#  2 (x, y)=255, 255\n"
    "Anzahl=  2\nSelektierter=  2\n#  1 (x, y)=  0,   9\n#  2 (x, y)=255, 255\n";
constexpr char kSecond[] =
    "Gradation, Version 2\n"
    "Curve=1\nYIQ=0\nChannel=0\nPercent=0\nGrid=0\nOnlyActive=0\n"
    "Count=  3\nSelected=  2\n"
    "#  1 (x, y)=  0,   0\n#  2 (x, y)=100, 140\n#  3 (x, y)=255, 255\n"
    "Count=  2\nSelected=  1\n#  1 (x, y)= 20,   0\n#  2 (x, y)=255, 255\n"
    "Count=  2\nSelected=  1\n#  1 (x, y)=  0,   0\n#  2 (x, y)=255, 255\n"
    "Count=  2\nSelected=  2\n#  1 (x, y)=  0,   9\n#  2 (x, y)=255, 255\n";

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

std::string Error(const std::string& text) {
  std::string error;
  EXPECT_FALSE(ReadGradationPreset(text, error)) << text;
  return error;
}

TEST(GradationPreset, FirstVersionBecomesTheSecond) {
  std::string error;
  const auto preset = ReadGradationPreset(kFirst, error);
  ASSERT_TRUE(preset) << error;
  EXPECT_EQ(preset->version, 1);
  EXPECT_EQ(PrintGradationPreset(*preset), kSecond);
  const std::string text = ParameterTextOf(*preset);
  EXPECT_EQ(text.substr(0, 58), "nL=03, nR=02, nG=02, nB=02, xL1=000, xL2=100, xL3=255, xL4");
  EXPECT_EQ(text.substr(text.size() - 39), "yB12=255, Linear=0, YIQOn=0, FilterOn=1");
}

TEST(GradationPreset, SecondVersionKeepsItsSettings) {
  const std::string text =
      Replaced(kSecond, "Curve=1\nYIQ=0\nChannel=0\nPercent=0\nGrid=0\nOnlyActive=0",
               "Curve=0\nYIQ=1\nChannel=3\nPercent=1\nGrid=1\nOnlyActive=1");
  std::string error;
  const auto preset = ReadGradationPreset(text, error);
  ASSERT_TRUE(preset) << error;
  EXPECT_TRUE(preset->curves.linear && preset->curves.yiqOn && preset->curves.filterOn);
  EXPECT_EQ(PrintGradationPreset(*preset), text);
  // Text ahead, other line ends, and what lies outside the square.
  std::string windows = "\xff\n";
  for (const char c : Replaced(text, "100, 140", "999,  -1")) {
    windows += c == '\n' ? std::string("\r\n") : std::string(1, c);
  }
  const auto limited = ReadGradationPreset(windows, error);
  ASSERT_TRUE(limited) << error;
  EXPECT_EQ(limited->curves.curves[0].nodes[1], (editing::CurveNode{255, 0}));
}

TEST(GradationPreset, AnythingElseIsRefused) {
  for (const std::string whole : {kFirst, kSecond}) {
    for (std::size_t size = 0; size + 1 < whole.size(); ++size) {
      EXPECT_NE(Error(whole.substr(0, size)), "") << size;
    }
  }
  EXPECT_EQ(Error(Replaced(kSecond, "Version 2", "Version 3")), "line 1: version 3 is unknown");
  EXPECT_EQ(Error(Replaced(kSecond, "Count=  3", "Count=999")),
            "line 8: a curve has 2 to 12 nodes, not 999");
  EXPECT_EQ(Error(Replaced(kSecond, "Count=  3", "Count=-99")),
            "line 8: a curve has 2 to 12 nodes, not -99");
  EXPECT_EQ(Error(Replaced(kSecond, "Count=  3", "Count=  4")), "line 12: a node is missing");
  EXPECT_EQ(Error(Replaced(kSecond, "=100", "=abc")), "line 11: there is no number");
  EXPECT_EQ(Error(Replaced(kSecond, "YIQ", "YIK")), "line 2: YIQ= does not follow");
}

}  // namespace
