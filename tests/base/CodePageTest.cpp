#include "base/CodePage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

std::string AllBytes() {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  return all;
}

TEST(CodePage, EveryByteComesBackFromWideTextAndUtf8) {
  const std::string all = AllBytes();
  EXPECT_EQ(base::FromWide(base::ToWide(all)), all);
  EXPECT_EQ(base::FromUtf8(base::ToUtf8(all)), all);
}

TEST(CodePage, KnownCharacters) {
  const struct {
    std::string narrow;
    char16_t wide;
    std::string utf8;
  } cases[] = {
      {"\xE4", u'ä', "ä"}, {"\x80", u'€', "€"},        {"\x9F", u'Ÿ', "Ÿ"},
      {"\x83", u'ƒ', "ƒ"}, {"\x81", 0x81, "\xC2\x81"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(base::ToWide(c.narrow), std::u16string(1, c.wide)) << c.utf8;
    EXPECT_EQ(base::ToUtf8(c.narrow), c.utf8);
  }
}

TEST(CodePage, WhatItDoesNotHoldBecomesAQuestionMark) {
  EXPECT_EQ(base::FromWide(u"a\u0100\u0080\u20ACz"), "a??\x80z");
  EXPECT_EQ(base::FromWide(u"\U0001F600"), "??");
  const struct {
    std::string utf8;
    std::string narrow;
  } cases[] = {
      {"Ā€", "?\x80"},               // one for a whole character
      {"😀", "?"},                    //
      {"\xE4z", "?z"},               // no continuation
      {"a\xC3", "a?"},               // cut off
      {"\x80\xBF", "??"},            // continuations alone
      {"\xE0\x81\x81", "???"},       // longer than needed
      {"\xED\xA0\x80", "???"},       // half of a surrogate pair
      {"\xF4\x90\x80\x80", "????"},  // behind the last code
      {"\xFF\xFE", "??"},            //
  };
  for (const auto& c : cases) EXPECT_EQ(base::FromUtf8(c.utf8), c.narrow) << c.utf8;
}

TEST(CodePage, LettersOfTheOemPageComeBack) {
  // 96 characters from A0 up and the florin sign are in both pages.
  for (const char c : AllBytes()) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 || byte >= 0xA0 || byte == 0x83) {
      EXPECT_EQ(base::FromOem(base::ToOem(c)), c) << int{byte};
    }
    EXPECT_EQ(base::ToOem(c) == c && base::FromOem(c) == c, byte < 0x80) << int{byte};
  }
  const std::string ansi = "\xE4\xF6\xFC\xDF\xC4\xD6\xDC\xA7\xE9\xB0\x97\x93";
  const std::string oem = "\x84\x94\x81\xE1\x8E\x99\x9A\xF5\x82\xF8-\"";
  std::string converted(ansi.size(), '\0');
  std::transform(ansi.begin(), ansi.end(), converted.begin(), base::ToOem);
  EXPECT_EQ(converted, oem);
}

TEST(CodePage, CaseOfLetters) {
  const std::string lower = "az\xE4\xF6\xFC\xE9\xFE\x9A\x9C\x9E\xFF";
  const std::string upper = "AZ\xC4\xD6\xDC\xC9\xDE\x8A\x8C\x8E\x9F";
  for (std::size_t i = 0; i < lower.size(); ++i) {
    EXPECT_EQ(base::ToUpper(lower[i]), upper[i]) << i;
    EXPECT_EQ(base::ToLower(upper[i]), lower[i]) << i;
  }
  for (const char c : std::string("@[`{09\xD7\xF7\xDF\xB5\xAA\x80\x83")) {
    EXPECT_EQ(base::ToUpper(c), c);
    EXPECT_EQ(base::ToLower(c), c);
  }
}

}  // namespace
