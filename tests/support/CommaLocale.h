// A test fixture under which numbers are printed with a decimal comma.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace testing_support {

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

  static bool UseComma() {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "German_Germany.1252"}) {
      if (std::setlocale(LC_NUMERIC, name) &&
          std::string(std::localeconv()->decimal_point) == ",") {
        return true;
      }
    }
    return false;
  }
};

}  // namespace testing_support
