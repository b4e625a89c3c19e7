// A chain while one works on it: every step and its way back.
#include "desk/ChainDocument.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using desk::ChainDocument;
using desk::ChainItem;

class Chain : public testing::Test {
 protected:
  int Add(const std::string& name, int place = 99) { return document.Add(name, "p", place); }
  std::string Order() const {
    std::string order;
    for (const ChainItem& item : document.Items()) order += item.progId + (item.isOn ? "" : "-");
    return order;
  }

  ChainDocument document;
};

TEST_F(Chain, MovesFiltersAheadOfAPlace) {
  const int a = Add("a"), b = Add("b"), c = Add("c"), d = Add("d");
  document.Move({a}, 2);
  EXPECT_EQ(Order(), "bacd");
  document.Move({d}, 0);
  EXPECT_EQ(Order(), "dbac");
  document.Move({d, c}, 2);
  EXPECT_EQ(Order(), "bdca");
  document.Move({b, a}, 99);
  EXPECT_EQ(Order(), "dcba");
  document.Move({a, b}, -5);
  EXPECT_EQ(Order(), "badc");
  document.Undo();
  document.Undo();
  EXPECT_EQ(Order(), "bdca");
  document.Move({b}, 0);
  EXPECT_TRUE(document.CanRedo()) << "nothing moved: no step";
}

TEST_F(Chain, SelectsWhatComesAndWhatIsLeft) {
  const int a = Add("a"), b = Add("b"), c = Add("c");
  EXPECT_EQ(document.Selection(), std::set<int>{c});
  document.Remove({c});
  EXPECT_EQ(document.Selection(), std::set<int>{b});
  document.Select({a, b, 77});
  EXPECT_EQ(document.Selection(), (std::set<int>{a, b}));
  document.Switch({a}, false);
  EXPECT_EQ(Order(), "a-b");
  EXPECT_EQ(TextOf(document.Items()), "b(p)");
  EXPECT_EQ(TextOf(document.Items(), true), "a(p)b(p)");
  document.Remove({a, b});
  EXPECT_TRUE(document.Selection().empty());
  document.Undo();
  EXPECT_EQ(document.Selection(), (std::set<int>{a, b}));
}

TEST_F(Chain, TakesAGestureAsOneStep) {
  const int a = Add("a"), b = Add("b");
  document.SetParameters({{a, "1"}}, 5);
  document.SetParameters({{a, "2"}}, 5);
  document.SetParameters({{a, "2"}}, 5);
  document.SetParameters({{b, "3"}}, 5);
  document.SetParameters({{b, "4"}}, 6);
  document.SetParameters({{b, "5"}});
  document.SetParameters({{b, "6"}});
  const char* const wanted[] = {"5", "4", "3", "p"};
  for (const char* text : wanted) {
    document.Undo();
    EXPECT_EQ(document.Find(b)->parameters, text);
  }
  EXPECT_EQ(document.Find(a)->parameters, "2");
  document.Undo();
  EXPECT_EQ(document.Find(a)->parameters, "p");
  document.SetParameters({{a, "9"}}, 5);
  EXPECT_FALSE(document.CanRedo());
}

// Any steps, all the way back and forth again.
TEST_F(Chain, ComesBackThroughEveryStep) {
  std::mt19937 random(7);
  const auto pick = [&](int below) {
    return static_cast<int>(random() % static_cast<unsigned>(below));
  };
  std::vector<desk::ChainItems> states = {document.Items()};
  document.onItems = [&] { states.push_back(document.Items()); };
  for (int i = 0; i < 300; ++i) {
    const int count = static_cast<int>(document.Items().size());
    const int id = count ? document.Items()[static_cast<std::size_t>(pick(count))].id : 0;
    switch (pick(5)) {
      case 0:
        Add(std::string(1, static_cast<char>('a' + pick(26))), pick(9));
        break;
      case 1:
        if (count > 6) document.Remove({id});
        break;
      case 2:
        document.Move({id}, pick(9));
        break;
      case 3:
        document.Switch({id}, pick(2) == 0);
        break;
      default:
        document.SetParameters({{id, std::to_string(i)}});
    }
  }
  document.onItems = nullptr;
  ASSERT_GT(states.size(), 150u);
  for (std::size_t i = states.size() - 1; i-- > 0;) {
    document.Undo();
    ASSERT_EQ(document.Items(), states[i]) << i;
  }
  EXPECT_FALSE(document.CanUndo());
  for (std::size_t i = 1; i < states.size(); ++i) {
    document.Redo();
    ASSERT_EQ(document.Items(), states[i]) << i;
  }
  EXPECT_FALSE(document.CanRedo());
}

}  // namespace
