#include "core/Parameter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <random>
#include <string>

namespace {

std::string Text(const Parameter& list) {
  return std::string(static_cast<const char*>(list));
}

bool Has(const Parameter& list, const char* tag) {
  int value = 0;
  return list.Get(tag, value);
}

TEST(Parameter, FindsTags) {
  const struct {
    const char *list, *tag;
    int value;  // -1: absent
  } cases[] = {
      {"", "a", -1},
      {"ab=1;\r\na=2;\r\n", "a", 2},
      {"ab=1;\r\na=2;\r\n", "ab", 1},
      {"  a=1;\r\n\r\n  b=2;", "b", 2},
      {"A=1;", "a", -1},
      {"a =1;", "a", -1},
      {"a=", "a", 0},
      {"x=\"a=1;\";", "a", -1},
      {"x=\"a=1;\";a=2;", "a", 2},
      {"x=\"\\\";a=1;\";a=2;", "a", 2},  // an escaped quote closes nothing
      {"x=\"open;a=1;", "a", -1},
      {"x=1\r\na=2;", "a", -1},  // an item without ";" hides the next one
      {"a=1;\ta=2;", "\ta", 2},  // only blanks are skipped before a tag
      {"=5;a=2;", "", 5},
      {"a=2;", nullptr, -1},
  };
  for (const auto& c : cases) {
    const Parameter list(c.list);
    EXPECT_EQ(list.GetInt(c.tag, -1), c.value) << c.list;
  }
  const Parameter zero(std::string("a=1;\0b=2;", 9));
  EXPECT_TRUE(Has(zero, "a"));
  EXPECT_FALSE(Has(zero, "b"));
}

TEST(Parameter, ReadsNumbersFromTheFrontOfAValue) {
  const struct {
    const char* value;
    int asInt;
    double asDouble;
    std::int64_t asPointer;
    std::uint64_t asUnsigned;
    bool asBool;
  } cases[] = {
      {"5", 5, 5, 5, 5, false},
      {" -12x", -12, -12, -12, 0 - std::uint64_t{12}, false},
      {"1.5", 1, 1.5, 1, 1, false},
      {"\"7\"", 0, 0, 0, 0, false},
      {"true", 0, 0, 0, 0, true},
      {"t", 0, 0, 0, 0, true},
      {" true", 0, 0, 0, 0, false},
      {"4294967297", 1, 4294967297.0, 4294967297, 4294967297u, false},
      {"18446744073709551615", -1, 18446744073709551615.0, -1, UINT64_MAX, false},
  };
  for (const auto& c : cases) {
    const Parameter list("x=\"\";v=" + std::string(c.value) + ";");
    EXPECT_EQ(list.GetInt("v", 99), c.asInt) << c.value;
    EXPECT_EQ(list.GetDouble("v"), c.asDouble) << c.value;
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(list.GetPtr("v")), c.asPointer) << c.value;
    EXPECT_EQ(list.GetULONGLONG("v", 99), c.asUnsigned) << c.value;
    EXPECT_EQ(list.GetBool("v"), c.asBool) << c.value;
  }
}

TEST(Parameter, WritesEachKindOfValue) {
  int object = 0;
  Parameter list;
  list.Set("i", -5);
  list.Set("d", 0.25);
  list.Set("u", UINT64_MAX);
  list.Set("b", true);
  list.Set("s", "a;b=c");
  list.Set("n", static_cast<const char*>(nullptr));
  EXPECT_EQ(
      Text(list),
      "i=-5;\r\nd=0.250000;\r\nu=18446744073709551615;\r\nb=true;\r\ns=\"a;b=c\";\r\nn=\"\";\r\n");
  list.Set("p", static_cast<void*>(&object));
  EXPECT_EQ(list.GetPtr("p"), &object);
  list.Set("high", reinterpret_cast<void*>(INTPTR_MIN + 1));
  EXPECT_NE(Text(list).find("high=-9223372036854775807;"), std::string::npos);
  KvString unquoted("old");
  EXPECT_FALSE(list.Get("i", unquoted));
  EXPECT_EQ(unquoted, "old");
}

TEST(Parameter, SetReplacesTheValueInItsPlace) {
  const struct {
    const char *before, *after;
  } cases[] = {
      {"", "n=7;\r\n"},
      {"n=5;\r\n", "n=7;\r\n"},
      {"n=5", "n=7"},  // stays unclosed
      {"a=1;n=5;b=2;", "a=1;n=7;b=2;"},
      {"n=\"a;b\\\";c\";b=2;", "n=7;b=2;"},
      {"n=\"a;b", "n=7"},
      {"n=5\r\nb=2;", "n=7;"},
      {"x=1", "x=1n=7;\r\n"},
      {"n=;", "n=7;"},
  };
  for (const auto& c : cases) {
    Parameter list(c.before);
    list.Set("n", 7);
    EXPECT_EQ(Text(list), c.after) << c.before;
  }
}

TEST(Parameter, EscapesEveryByteAndReadsItBack) {
  std::string all;
  for (int i = 1; i < 256; ++i) all += static_cast<char>(i);
  Parameter list;
  list.Set("s", all.c_str());
  list.Set("after", 1);
  EXPECT_EQ(list.GetString("s").ToStdString(), all);
  EXPECT_EQ(list.GetInt("after", 0), 1);
  for (const char c : Text(list)) EXPECT_TRUE(c >= ' ' || c == '\r' || c == '\n');

  list = Parameter();
  list.Set("s", "\xE4\x01\x7F\n\"\\");
  EXPECT_EQ(Text(list), "s=\"\\344\\001\x7F\\n\\\"\\\\\";\r\n");
}

TEST(Parameter, ReadsLooseEscapes) {
  const struct {
    std::string quoted, decoded;
  } cases[] = {
      {"\"\"", ""},
      {"\"a", "a"},              // no closing quote
      {"\"a\\", "a"},            // ends behind a backslash
      {"\"a\\\nb\"", "ab"},      // continued line
      {"\"a\\\r\nb\"", "a\nb"},  // only one character is swallowed
      {"\"\\q\\'\"", "q'"},      //
      {"\"\\a\\b\\f\\n\\r\\t\\v\"", "\a\b\f\n\r\t\v"},
      {"\"\\x41\\xe4\\xE4\"", "A\xE4\xE4"},
      {"\"\\xg1z\"", "\x01z"},  // what is no digit counts as 0
      {"\"\\x4", "\x04"},       //
      {"\"\\x", std::string(1, '\0')},
      {"\"\\101\"", "A"},  //
      {"\"\\000z\"", std::string("\0z", 2)},
      {"\"\\777\"", "\xFF"},      // the low byte of 511
      {"\"\\18z\"", "\x10z"},     // 8 is taken, and ends the number
      {"\"\\1;z\"", "\x13z"},     // anything above "0" is a second digit
      {"\"\\1 z\"", "\xF8z"},     // below "0": taken as the last digit
      {"\"\\1\xE4z\"", "\xBCz"},  // a byte above 127 lies below "0"
      {"\"\\11\"z\"", "\x3Az"},   // the third may be the quote itself
      {"\"\\1", "\x01"},          // but never the end
      {"\"\\11", "\x09"},
  };
  for (const auto& c : cases) {
    const Parameter list("s=" + c.quoted);
    EXPECT_EQ(list.GetString("s").ToStdString(), c.decoded) << c.quoted;
  }
}

TEST(Parameter, RemovesATag) {
  const struct {
    const char* before;
    const char* after;  // null: not there
  } cases[] = {
      {"a=1;\r\nn=5;\r\nb=2;\r\n", "a=1;\r\nb=2;\r\n"},
      {"n=5;\r\nb=2;\r\n", "b=2;\r\n"},
      {"a=1;\r\nn=5;\r\n", "a=1;\r\n"},
      {"a=1;", nullptr},
      {"n=\"x;y=z\";b=2;", "y=z\";b=2;"},  // cut inside the quotes
      {"n==b=2;", "b=2;"},
      {"n=12b=2;", "2b=2;"},
  };
  for (const auto& c : cases) {
    Parameter list(c.before);
    EXPECT_EQ(list.RemoveTag("n"), c.after != nullptr) << c.before;
    EXPECT_EQ(Text(list), c.after ? c.after : c.before);
  }
}

TEST(Parameter, ComparesWithoutOrder) {
  const struct {
    const char *left, *right;
    bool equal;
  } cases[] = {
      {"", "", true},
      {"a=1;\r\nb=2;\r\n", "b=2;\r\na=1;\r\n", true},
      {"a=1.0;", "a=1;", false},
      {"a=1;", "a=1;b=2;", false},
      {"a=1;b=2;", "a=1;", false},
      {"a=\"x;=\";\r\nb=1;\r\n", "a=\"x;=\";\r\nb=1;\r\n", true},
      {"a=\"A\";", "a=\"\\101\";", true},  // decoded
      {"a=\"\";", "", true},               // absent on the right reads as empty
      {"", "a=\"\";", false},              // but not on the left
      {" a=1;", " a=1;", false},           // the blank counts as part of the tag
      {"a=1", "a=1", false},               // unclosed
      {"a=1;x", "a=1; ", true},            // what holds no "=" names no tag
      // Quotes are looked for at the same place of the other list.
      {"a=1;b=\"x;\";", "b=\"x;\";a=1;", false},
      {"b=\"x;\";a=1;", "a=1;b=\"x;\";", true},
  };
  for (const auto& c : cases) {
    const Parameter left(c.left);
    const Parameter right(c.right);
    EXPECT_EQ(left == right, c.equal) << c.left << " | " << c.right;
    EXPECT_EQ(left != right, !c.equal);
  }
}

// Lists put together from all that means something in them: nothing may read outside (the
// sanitizers watch) or hang, and what was set comes back.
TEST(Parameter, TakesAnyText) {
  const std::string pieces[] = {"a",  "b", "=", ";",   "\"", "\\",   "\\x",  "\\1", "\r",
                                "\n", " ", "7", "\\7", "t",  "\xE4", "\\\"", "a=",  "b=\""};
  std::mt19937 random(1);
  const auto make = [&] {
    std::string text;
    for (unsigned left = random() % 16; left > 0; --left)
      text += pieces[random() % std::size(pieces)];
    return text;
  };
  for (int i = 0; i < 30000; ++i) {
    const std::string text = make();
    const Parameter other(make());
    Parameter list(text);
    for (const char* tag : {"a", "b", "", "ab"}) {
      list.GetInt(tag, 0);
      list.GetDouble(tag);
      list.GetPtr(tag);
      list.GetULONGLONG(tag, 0);
      list.GetBool(tag);
      list.GetString(tag);
    }
    EXPECT_NE(list == other, list != other);
    EXPECT_NE(list == list, list != list);
    const bool had = Has(list, "a");
    Parameter removed = list;
    EXPECT_EQ(removed.RemoveTag("a"), had) << text;
    EXPECT_EQ(Text(removed).size() < text.size(), had) << text;
    list.Set("b", "x");
    // An item appended behind a broken one stays hidden; a replaced value is found again.
    EXPECT_TRUE(!Has(Parameter(text), "b") || list.GetString("b") == "x") << text;
  }
}

}  // namespace
