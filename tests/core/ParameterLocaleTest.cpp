// Numbers in texts while the process's numeric locale has a decimal comma.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "core/Parameter.h"
#include "core/ParameterReaders.h"
#include "tests/support/CommaLocale.h"

namespace {

class CommaLocale : public testing_support::CommaLocale {};

TEST_F(CommaLocale, ParameterWritesAndReadsWithTheLocaleInForce) {
  Parameter list;
  list.Set("d", 1.5);
  EXPECT_STREQ(list, "d=1,500000;\r\n");
  EXPECT_EQ(list.GetDouble("d"), 1.5);
  EXPECT_EQ(Parameter("d=1.5;").GetDouble("d"), 1.0);
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(list.GetDouble("d"), 1.0);  // only as far as the comma
}

TEST_F(CommaLocale, ReadersOfTheParameterText) {
  double field = 0;
  bool changed = false;
  EXPECT_TRUE(ReadParamDouble("D=2,25", "D", field, changed));
  EXPECT_EQ(field, 2.25);
  // The repair gives the same number under every locale.
  std::string text = "Angle=12,5, CenterX=3";
  EXPECT_EQ(ParamDouble(text.data(), 0, "Angle="), 12.5);
  EXPECT_EQ(text, "Angle=12.5, CenterX=3");
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(ParamDouble(text.data(), 0, "Angle="), 12.5);
}

}  // namespace
