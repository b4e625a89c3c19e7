#include "base/PercentText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(PercentText, CodesWhatIsNeitherLetterNorDigit) {
  EXPECT_EQ(base::PercentEncode("Az09-_.~"), "Az09-_.~");
  EXPECT_EQ(base::PercentEncode(" ,=()|%&"), "%20%2C%3D%28%29%7C%25%26");
  EXPECT_EQ(base::PercentEncode("Gr\xC3\xB6\xC3\x9F"
                                "e\n"),
            "Gr%C3%B6%C3%9Fe%0A");
}

TEST(PercentText, EveryByteComesBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(base::PercentDecode(base::PercentEncode(all)), all);
}

TEST(PercentText, WhatIsNoCodeStandsForItself) {
  const struct {
    const char* text;
    const char* bytes;
  } cases[] = {{"%c3%B6", "\xC3\xB6"},     {"%", "%"},       {"a%4", "a%4"},
               {"%zz%41", "%zzA"},         {"%%41", "%A"},   {"%4%31", "%41"},
               {"two words", "two words"}, {"%2541", "%41"}, {"%+1", "%+1"}};
  for (const auto& c : cases) EXPECT_EQ(base::PercentDecode(c.text), c.bytes) << c.text;
}

}  // namespace
