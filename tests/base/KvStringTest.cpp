#include "base/KvString.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace {

std::atomic<bool> noMemory = false;

// While one lives, every allocation of the program fails.
class NoMemory {
 public:
  NoMemory() { noMemory = true; }
  ~NoMemory() { noMemory = false; }
};

const char* Address(const KvString& s) {
  return s;
}

}  // namespace

// Not inlined, because the compiler takes a visible malloc and free for a mismatch with new and
// delete.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const block = noMemory ? nullptr : std::malloc(size);
  if (!block) throw std::bad_alloc();
  return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace {

TEST(KvString, Construction) {
  const struct {
    KvString made;
    std::string text;
  } cases[] = {
      {KvString(), ""},
      {KvString(static_cast<const char*>(nullptr)), ""},
      {KvString("abcdef", 3), "abc"},
      {KvString("a\0b", 3), std::string("a\0b", 3)},
      {KvString("abc", -1), ""},
      {KvString(nullptr, 3), ""},
      {KvString('x', 3), "xxx"},
      {KvString('x', -3), ""},
      {KvString(std::string("a\0", 2)), std::string("a\0", 2)},
      {KvString(u"\u20AC\u0100"), "\x80?"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.made.ToStdString(), c.text);
    EXPECT_EQ(c.made.GetLength(), static_cast<int>(c.text.size()));
    EXPECT_EQ(c.made.IsEmpty(), c.text.empty());
    EXPECT_EQ(Address(c.made)[c.text.size()], '\0');
  }
  EXPECT_EQ(KvString("\xE4\0", 2).ToWide(), std::u16string(u"ä\0", 2));
}

TEST(KvString, CopiesShareUntilOneChanges) {
  const std::function<void(KvString&)> changes[] = {
      [](KvString& s) { s += "d"; },
      [](KvString& s) { s.SetAt(0, 'x'); },
      [](KvString& s) { s.Delete(0); },
      [](KvString& s) { s.MakeUpper(); },
      [](KvString& s) { s.Trim('a'); },
      [](KvString& s) { s.Replace('a', 'b'); },
      [](KvString& s) { s.Format("%d", 1); },
      [](KvString& s) { s.Empty(); },
      [](KvString& s) { s = 'x'; },
      [](KvString& s) { s.GetBuffer(0)[0] = 'x'; },
      [](KvString& s) { s.LockBuffer()[0] = 'x'; },
      [](KvString& s) { s.ReleaseBuffer(1); },
  };
  int index = 0;
  for (const auto& change : changes) {
    const KvString original("abc");
    KvString copy = original;
    EXPECT_EQ(Address(copy), Address(original));
    change(copy);
    EXPECT_NE(copy, original) << index;
    EXPECT_EQ(original, "abc") << index;
    ++index;
  }
}

TEST(KvString, ArgumentsOutsideAreLimited) {
  const KvString s("abcde");
  const struct {
    KvString part;
    const char* expected;
  } parts[] = {
      {s.Left(-1), ""},
      {s.Left(99), "abcde"},
      {s.Right(2), "de"},
      {s.Mid(-3), "abcde"},
      {s.Mid(5), ""},
      {s.Mid(1, -1), ""},
      {s.Mid(3, 99), "de"},
      {s.Mid(-1, 2), "ab"},
      {s.Mid(1, INT_MAX), "bcde"},
      {s.Mid(INT_MIN, INT_MIN), ""},
  };
  for (const auto& p : parts) EXPECT_EQ(p.part, p.expected);
  for (const int index : {-1, 5, INT_MAX, INT_MIN}) {
    EXPECT_EQ(s.GetAt(index), '\0');
    EXPECT_EQ(s[index], '\0');
    KvString changed = s;
    changed.SetAt(index, 'x');
    EXPECT_EQ(changed, s);
  }
  EXPECT_EQ(s.GetAt(4), 'e');
  EXPECT_EQ(s[std::size_t{1}], 'b');
}

TEST(KvString, Searches) {
  const KvString s("abcabc\xE4");
  const KvString zeros("a\0b\0c", 5);
  const struct {
    int found;
    int expected;
  } cases[] = {
      {s.Find('b', 2), 4},
      {s.Find('b', -5), 1},
      {s.Find('b', 99), -1},
      {s.Find("ca"), 2},
      {s.Find("ca", 3), -1},
      {s.Find("", 3), 3},
      {s.ReverseFind('b'), 4},
      {s.ReverseFind('x'), -1},
      {s.FindOneOf("\xE4x"), 6},
      {s.FindOneOf(""), -1},
      {zeros.Find(KvString("\0c", 2)), 3},
  };
  for (const auto& c : cases) EXPECT_EQ(c.found, c.expected) << &c - cases;
  EXPECT_EQ(s.Find(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(s.SpanIncluding("ab"), "ab");
  EXPECT_EQ(s.SpanIncluding(""), "");
  EXPECT_EQ(s.SpanExcluding("\xE4"), "abcabc");
  EXPECT_EQ(s.SpanExcluding("x"), s);
}

TEST(KvString, ChangesInPlace) {
  const struct {
    const char* before;
    std::function<void(KvString&)> change;
    const char* after;
  } cases[] = {
      {" \t\r\n a b \v\f", [](KvString& s) { s.Trim(); }, "a b"},
      {" \n ", [](KvString& s) { s.TrimLeft(); }, ""},
      {"xxaxx", [](KvString& s) { s.TrimLeft('x'); }, "axx"},
      {"xyaxy", [](KvString& s) { s.TrimRight("yx"); }, "xya"},
      {"abc", [](KvString& s) { EXPECT_EQ(s.Insert(1, "xy"), 5); }, "axybc"},
      {"abc", [](KvString& s) { s.Insert(-1, 'x'); }, "xabc"},
      {"abc", [](KvString& s) { s.Delete(1, INT_MAX); }, "a"},
      {"abc", [](KvString& s) { s.Delete(-1, 1); }, "bc"},
      {"abc", [](KvString& s) { s.Delete(1, -1); }, "abc"},
      {"aaa", [](KvString& s) { EXPECT_EQ(s.Replace("aa", "b"), 1); }, "ba"},
      {"aba", [](KvString& s) { EXPECT_EQ(s.Replace("a", "aa"), 2); }, "aabaa"},
      {"abc", [](KvString& s) { EXPECT_EQ(s.Replace("", "x"), 0); }, "abc"},
      {"abc", [](KvString& s) { EXPECT_EQ(s.Replace("abcd", "x"), 0); }, "abc"},
      {"xyxy", [](KvString& s) { EXPECT_EQ(s.Replace("xy", nullptr), 2); }, ""},
      {"\xC4pfel \xE4PFEL", [](KvString& s) { EXPECT_EQ(s.ReplaceNoCase("\xE4pf", "P"), 2); },
       "Pel PEL"},
      {"a\xE4\xDF", [](KvString& s) { s.MakeUpper(); }, "A\xC4\xDF"},
      {"A\xC4\x8A", [](KvString& s) { s.MakeLower(); }, "a\xE4\x9A"},
      {"\xE4\xF6", [](KvString& s) { s.CharToOemA(); }, "\x84\x94"},
      {"\x84\x94", [](KvString& s) { s.OemToCharA(); }, "\xE4\xF6"},
  };
  int index = 0;
  for (const auto& c : cases) {
    KvString s(c.before);
    c.change(s);
    EXPECT_EQ(s, c.after) << index;
    EXPECT_EQ(s.GetLength(), static_cast<int>(std::string(c.after).size())) << index;
    ++index;
  }
}

TEST(KvString, OperandsMayBePartsOfTheStringItself) {
  const struct {
    std::function<void(KvString&)> change;
    const char* after;
  } cases[] = {
      {[](KvString& s) { s += s; }, "abcdabcd"},
      {[](KvString& s) { s = Address(s) + 2; }, "cd"},
      {[](KvString& s) { s.Insert(1, Address(s) + 1); }, "abcdbcd"},
      {[](KvString& s) { s.Replace("b", s); }, "aabcdcd"},
      {[](KvString& s) { s.Replace(s, "x"); }, "x"},
      {[](KvString& s) { s.Format("<%s>", Address(s)); }, "<abcd>"},
      {[](KvString& s) { s.AppendFormat("<%s>", Address(s)); }, "abcd<abcd>"},
      {[](KvString& s) { s = *&s; }, "abcd"},
  };
  for (const auto& c : cases) {
    for (const int capacity : {4, 100}) {  // in a new text, and within the old one
      KvString s("abcd");
      s.GetBuffer(capacity);
      s.ReleaseBuffer();
      c.change(s);
      EXPECT_EQ(s, c.after) << capacity;
    }
  }
}

TEST(KvString, Comparisons) {
  const struct {
    KvString a;
    KvString b;
    int order;
    int orderNoCase;
  } cases[] = {
      {"a", "a", 0, 0},
      {"a", "ab", -1, -1},
      {"z", "\xE4", -1, -1},  // bytes are unsigned
      {"B", "a", -1, 1},
      {"\xC4x", "\xE4X", -1, 0},
      {KvString("a\0b", 3), KvString("a\0c", 3), -1, -1},
      {"a", KvString("a\0", 2), -1, -1},
      {"_", "A", 1, -1},  // lower case is what counts
  };
  const auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (const auto& c : cases) {
    EXPECT_EQ(sign(c.a.Compare(c.b)), c.order) << c.a << " " << c.b;
    EXPECT_EQ(sign(c.b.Compare(c.a)), -c.order);
    EXPECT_EQ(sign(c.a.CompareNoCase(c.b)), c.orderNoCase) << c.a << " " << c.b;
    EXPECT_EQ(c.a < c.b, c.order < 0);
    EXPECT_EQ(c.a == c.b, c.order == 0);
  }
  EXPECT_TRUE(KvString() == static_cast<const char*>(nullptr));
}

TEST(KvString, Concatenation) {
  const KvString a("a");
  EXPECT_EQ('c' + ("b" + a) + 'd' + std::string("e"), "cbade");
  EXPECT_EQ(a + static_cast<const char*>(nullptr), "a");
  EXPECT_EQ((KvString("\0", 1) + KvString("\0", 1)).GetLength(), 2);
}

TEST(KvString, Buffers) {
  KvString s("abc");
  std::string("0123456789").copy(s.GetBuffer(10), 10);
  s.ReleaseBuffer();
  EXPECT_EQ(s, "0123456789");  // full to the last character, without a zero
  s.GetBuffer(-1);
  s.ReleaseBuffer(3);
  EXPECT_EQ(s, "012");
  s.ReleaseBuffer(INT_MAX);  // limited to the buffer
  EXPECT_EQ(s.GetLength(), 10);
  s = "ab";
  EXPECT_EQ(std::string(s.GetBufferSetLength(5), 6), std::string("ab\0\0\0\0", 6));
  s.GetBufferSetLength(-1);
  EXPECT_TRUE(s.IsEmpty());
}

TEST(KvString, ALockedTextStaysAlone) {
  KvString s("abc");
  const char* const address = s.LockBuffer();
  const KvString copy = s;
  KvString assigned;
  assigned = s;
  EXPECT_NE(Address(copy), address);
  EXPECT_NE(Address(assigned), address);
  s = copy;
  s = KvString("xy");
  s += 'z';
  EXPECT_EQ(Address(s), address);
  s.Empty();
  EXPECT_EQ(Address(s), address);
  EXPECT_EQ(copy, "abc");
  s.UnlockBuffer();
  s = "new";
  EXPECT_EQ(Address(KvString(s)), Address(s));
}

TEST(KvString, FormatsOfAnyLength) {
  KvString s;
  const std::string big(100000, 'b');
  s.Format("%s=%.3d, %5.2lf|%c%s", "Key", 7, 1.5, 'x', big.c_str());
  EXPECT_EQ(s.ToStdString(), "Key=007,  1.50|x" + big);
  s = "a";
  s.AppendFormat("%.6x", 0xFF00u);
  EXPECT_EQ(s, "a00ff00");
  s.Format("%s", "");
  EXPECT_TRUE(s.IsEmpty());
}

TEST(KvString, ExhaustedMemoryLeavesTheStringAsItWas) {
  const std::function<void(KvString&)> changes[] = {
      [](KvString& s) { s += "and much more than fits the room that there is"; },
      [](KvString& s) { s.Insert(1, "and much more than fits the room that there is"); },
      [](KvString& s) { s.Replace("b", "and much more than fits the room that there is"); },
      [](KvString& s) { s = "and much more than fits the room that there is"; },
      [](KvString& s) { s.SetAt(0, 'x'); },  // shared, so that it needs a text of its own
      [](KvString& s) { s.MakeUpper(); },
      [](KvString& s) { s.GetBuffer(1000); },
      [](KvString& s) { s.LockBuffer(); },
      [](KvString& s) { s.Format("%s", "and much more than fits the room that there is"); },
      [](KvString& s) { s.AppendFormat("%d", 1); },
  };
  int index = 0;
  for (const auto& change : changes) {
    KvString s("abc");
    const KvString shares = s;
    bool refused = false;
    {
      const NoMemory none;
      try {
        change(s);
      } catch (const std::bad_alloc&) {
        refused = true;
      }
    }
    EXPECT_TRUE(refused) << index;
    EXPECT_EQ(s, "abc") << index;
    EXPECT_EQ(shares, "abc") << index;
    ++index;
  }
  KvString s("abc");
  EXPECT_THROW(s.GetBuffer(INT_MAX), std::bad_alloc);
  EXPECT_THROW(KvString('x', INT_MAX), std::bad_alloc);
  EXPECT_EQ(s, "abc");
}

TEST(KvString, CopiesOfOneTextInManyThreads) {
  const KvString original("shared by all");
  std::vector<std::thread> threads;
  std::atomic<int> faults = 0;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([copy = original, &faults, t]() mutable {
      for (int i = 0; i < 5000; ++i) {
        KvString mine = copy;
        const KvString another = mine;
        mine.SetAt(0, static_cast<char>('0' + t));
        mine += another;
        if (another != "shared by all" || mine[0] != '0' + t) ++faults;
        KvString empty = KvGetEmptyString();
        empty += 'x';
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(faults, 0);
  EXPECT_EQ(original, "shared by all");
  EXPECT_TRUE(KvGetEmptyString().IsEmpty());
}

}  // namespace
