#include "core/ParameterReaders.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

constexpr std::int32_t kInt32Max = std::numeric_limits<std::int32_t>::max();

TEST(ParameterReaders, FirstFamilyReportsFoundAndChanged) {
  const struct {
    const char* text;
    int before, after;
    bool found, changed;
  } cases[] = {
      {"Sepia=050", 0, 50, true, true},
      {"Sepia=050", 50, 50, true, false},
      {"A=1, Sepia=-7,B=2", 0, -7, true, true},
      {"Sepia= \t+8x", 0, 8, true, true},
      {"Sepia=", 3, 3, false, false},
      {"Sepia", 3, 3, false, false},
      {"Sepia=- 5", 3, 3, false, false},
      {"sepia=5", 3, 3, false, false},
      {"Sepia:9", 3, 9, true, true},             // any character stands for the "="
      {"MySepia=4, Sepia=5", 3, 4, true, true},  // the first place counts
      {"Sepia5, Sepia=6", 3, 3, false, false},  // the first place counts, though no number is there
      {"Sepia=4294967295", 3, -1, true, true},  // wraps
      {"Sepia=99999999999999999999", 3, 1661992959, true, true},
      {nullptr, 3, 3, false, false},
  };
  for (const auto& c : cases) {
    int field = c.before;
    bool changed = false;
    EXPECT_EQ(ReadParamInt(c.text, "Sepia", field, changed), c.found) << c.text;
    EXPECT_EQ(field, c.after) << c.text;
    EXPECT_EQ(changed, c.changed) << c.text;
  }
}

TEST(ParameterReaders, FirstFamilyConvertsToTheField) {
  bool changed = false;
  bool flag = true;
  EXPECT_TRUE(ReadParamBool("F=000", "F", flag, changed));
  EXPECT_TRUE(!flag && changed);

  changed = false;
  std::uint8_t byte = 1;
  EXPECT_TRUE(ReadParamByte("B=257", "B", byte, changed));
  EXPECT_TRUE(byte == 1 && !changed);  // the low byte is what is compared
  EXPECT_TRUE(ReadParamByte("B=-1", "B", byte, changed));
  EXPECT_TRUE(byte == 255 && changed);

  changed = false;
  double number = 0.125;
  EXPECT_TRUE(ReadParamDouble("D=0.1250", "D", number, changed));
  EXPECT_FALSE(changed);
  EXPECT_FALSE(ReadParamDouble("D=.", "D", number, changed));
  EXPECT_TRUE(ReadParamDouble("D=-2.5e1,", "D", number, changed));
  EXPECT_TRUE(number == -25 && changed);
}

TEST(ParameterReaders, SecondFamilyGivesTheDefault) {
  const struct {
    const char* text;
    std::int32_t asLong;
    std::uint32_t asHex;
    bool asFlag;
  } cases[] = {
      {"K=010", 10, 0x10, true},
      {"A=9,K=0", 0, 0, false},
      {"K=2147483647", kInt32Max, 0x47483647, true},
      {"K=0x1F", 0, 0x1F, false},
      {"K= 0X1f,", 0, 0x1F, false},
      {"K=1000000ff", 1000000, 0xFF, true},
      {"K=g", 77, 77, true},
      {"K=", 77, 77, true},
      {nullptr, 77, 77, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ParamLong(c.text, 77, "K="), c.asLong) << c.text;
    EXPECT_EQ(ParamHex(c.text, 77, "K="), c.asHex) << c.text;
    EXPECT_EQ(ParamFlag(c.text, true, "K="), c.asFlag) << c.text;
  }
}

TEST(ParameterReaders, ParamDoubleRepairsADecimalComma) {
  const struct {
    std::string text;
    double value;
    std::string after;
  } cases[] = {
      {"Angle=12,5, CenterX=3", 12.5, "Angle=12.5, CenterX=3"},
      {"A=1,2,Angle=,5", 0.5, "A=1,2,Angle=.5"},
      {"Angle=123,5", 123, "Angle=123,5"},  // three characters away: the next item
      {"Angle=1, 5", 1, "Angle=1, 5"},      // no digit behind it
      {"Angle=x,5", -3, "Angle=x.5"},
  };
  for (const auto& c : cases) {
    std::string text = c.text;
    EXPECT_EQ(ParamDouble(text.data(), -3, "Angle="), c.value) << c.text;
    EXPECT_EQ(text, c.after);
  }
}

TEST(ParameterReaders, DoublesAtTheEndsOfTheirRange) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* number;
    double value;  // 99: no number
  } cases[] = {
      {"0.1", 0.1},
      {"+1.", 1},
      {"1e+-2", 1},
      {"1E+2", 100},
      {"2.4703282292062328e-324", 5e-324},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"1e400", kInfinity},
      {"0.0001e99999999999999999999", kInfinity},
      {"1e-400", 0},
      {"1000e-99999999999999999999", 0},
      {"inf", 99},
      {"0x1p4", 0},
      {"- 1", 99},
  };
  for (const auto& c : cases) {
    std::string text = "D=" + std::string(c.number);
    EXPECT_EQ(ParamDouble(text.data(), 99, "D="), c.value) << c.number;
  }
  const std::string digits(400, '9');
  EXPECT_EQ(ParamDouble(("D=" + digits).data(), 0, "D="), kInfinity);
  EXPECT_EQ(ParamDouble(("D=0." + std::string(400, '0') + "1").data(), 9, "D="), 0);
  EXPECT_EQ(ParamDouble(("D=" + digits + "e-400").data(), 0, "D="), 1);
}

}  // namespace
