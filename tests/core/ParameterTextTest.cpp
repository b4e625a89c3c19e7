#include "core/ParameterText.h"

#include <gtest/gtest.h>

#include <array>
#include <span>
#include <string>

namespace {

struct LetteringParameters {
  std::int32_t size = 60;
  bool bold = false;
  std::string font;
  std::string text = "old";

  static std::span<const ParameterRow<LetteringParameters>> Rows();
};

std::span<const ParameterRow<LetteringParameters>> LetteringParameters::Rows() {
  using P = LetteringParameters;
  static const std::array<ParameterRow<P>, 4> rows{
      {{"Size", "Size=%.3d", &P::size, {.hasEquals = true}},
       {"Bold", ",Bold=%.1d", &P::bold, {.hasEquals = true}},
       {"Font", ",Font=", &P::font},
       {"Text", ",Text=", &P::text}}};
  return rows;
}

std::string PrintedAfter(const std::string& text) {
  LetteringParameters parameters;
  ReadParameters(text.c_str(), parameters);
  return PrintParameters(parameters);
}

TEST(ParameterText, ATextIsFoundByItsEqualsAndEndsAtTheComma) {
  const struct {
    const char *given, *printed;
  } cases[] = {
      {"", "Size=060,Bold=0,Font=,Text=old"},
      {"Text=", "Size=060,Bold=0,Font=,Text="},
      {"Text=a%2Cb,Bold=1", "Size=060,Bold=1,Font=,Text=a%2Cb"},
      {"Text=two words , Size=7", "Size=007,Bold=0,Font=,Text=two%20words%20"},
      // Words of a value are no keys, whatever order the items have.
      {"Font=Bold9Size8,Text=Font,Bold=1,Size=9", "Size=009,Bold=1,Font=Bold9Size8,Text=Font"},
      {"Size 9,Bold:1,Font", "Size=060,Bold=0,Font=,Text=old"},
      {"Size=,Bold=x", "Size=060,Bold=0,Font=,Text=old"},
      {"Text=%,Font=%g1%41", "Size=060,Bold=0,Font=%25g1A,Text=%25"},
      {"Text=a=b", "Size=060,Bold=0,Font=,Text=a%3Db"},
  };
  for (const auto& c : cases) EXPECT_EQ(PrintedAfter(c.given), c.printed) << c.given;
}

TEST(ParameterText, ATextOfAnyLengthComesBack) {
  LetteringParameters parameters;
  parameters.text.assign(1'000'000, '\xE4');
  LetteringParameters read;
  ReadParameters(PrintParameters(parameters).c_str(), read);
  EXPECT_FALSE(ParametersDiffer(parameters, read));
  read.text.back() = 'x';
  EXPECT_TRUE(ParametersDiffer(parameters, read));
}

}  // namespace
