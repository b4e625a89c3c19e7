// Numbers in texts while the process's numeric locale has a decimal comma.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/Parameter.h"
#include "core/ParameterReaders.h"

namespace {

bool UseComma() {
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "German_Germany.1252"}) {
    if (std::setlocale(LC_NUMERIC, name) && std::string(std::localeconv()->decimal_point) == ",") {
      return true;
    }
  }
  return false;
}

class CommaLocale : public testing::Test {
 protected:
#ifndef _WIN32
  // Makes the locale in a folder of this process where the machine has none.
  static void SetUpTestSuite() {
    char pattern[] = "/tmp/fxbox-locale-XXXXXX";
    if (UseComma() || !mkdtemp(pattern)) return;
    folder = pattern;
    const std::string made = folder + "/de_DE.UTF-8";
    if (std::system(("localedef -i de_DE -f UTF-8 " + made).c_str()) == 0) {
      setenv("LOCPATH", folder.c_str(), 1);
    }
  }
  static void TearDownTestSuite() {
    if (folder.empty()) return;
    unsetenv("LOCPATH");
    std::filesystem::remove_all(folder);
  }
  static inline std::string folder;
#endif

  void SetUp() override {
    if (!UseComma()) GTEST_SKIP() << "no locale with a decimal comma, and none can be made here";
  }
  void TearDown() override {
    std::setlocale(LC_NUMERIC, "C");
  }
};

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
