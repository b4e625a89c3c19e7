#include "core/PdibFilterChain.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "core/PdibFilterCreator.h"
#include "platform/fake/FakeServices.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

using platform::ComPtr;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Item = std::pair<std::string, std::string>;  // name and parameters
using Items = std::vector<Item>;

const std::vector<FilterClass>& Classes() {
  static const std::vector<FilterClass> classes = {
      TestClass("Crop", 200),  TestClass("Scale", 500),  TestClass("A"),
      TestClass("B"),          TestClass("C"),           TestClass("D"),
      TestClass("Text", 6000), TestClass("Shadow", 9500)};
  return classes;
}

const FilterClass& ClassOf(const std::string& name) {
  return *std::find_if(Classes().begin(), Classes().end(),
                       [&](const FilterClass& row) { return name == row.progId; });
}

Items ItemsOf(const char* text, const char* open = "(", const char* close = ")") {
  Items items;
  for (const ChainTextItem& item : SplitChainText(text, open, close)) {
    items.emplace_back(item.name, item.parameters);
  }
  return items;
}

std::string TextOf(const Items& items, bool opened = false) {
  std::string text;
  for (const auto& [name, parameters] : items) {
    text.append(opened ? "(" : "").append(name + "(" + parameters + ")");
  }
  return text;
}

// A chain between two ends.
struct ChainRig {
  ~ChainRig() {
    // It leaves its ends linked to each other.
    chain.Reset();
    source->AttachDestination(nullptr);
    destination->AttachSource(nullptr);
  }
  void Link() {
    chain->SetSource(source->Unknown());
    chain->SetDestination(destination.Get());
  }
  HRESULT Set(const std::string& text) {
    return chain->SetChainText(text.c_str(), "(", ")", creator.Get());
  }
  HRESULT Update(const std::string& text) {
    return chain->UpdateChain(text.c_str(), "(", ")", creator.Get());
  }
  // By rank without an index.
  HRESULT Insert(const std::string& name, int index = -1) {
    const auto made = Make(ClassOf(name));
    const auto filter = static_cast<IAnimFilter*>(made.Get());
    return index < 0 ? chain->Insert(filter) : chain->InsertAt(index, filter);
  }
  // Puts filters in, one by one, without a chain text; a name may stand twice.
  void Build(const Items& items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
      EXPECT_EQ(Insert(items[i].first, static_cast<int>(i)), S_OK);
      static_cast<RecordingFilter*>(Objects().back())->pending = items[i].second;
    }
  }
  std::string Text(std::size_t size = 65536) const {
    std::string buffer(size, '?');
    chain->GetChainText(buffer.data(), static_cast<int>(size), "(", ")", false);
    return buffer.c_str();
  }
  // The names in order, walked from the source and back from the destination: both must be whole.
  std::string Names() const {
    std::string names[2];
    for (const bool back : {false, true}) {
      IUnknown* end = source->destination.Get();
      if (back) end = destination->source.Get();
      for (auto at = ComPtr<IAnimFilter>::Query(end); at;) {
        char name[64] = "";
        at->GetName(name, 64);
        names[back].insert(back ? 0 : names[back].size(), std::string(name) + " ");
        ComPtr<IAnimFilter> next;
        back ? at->GetSource(IAnimFilter::kIid, next.PutVoid())
             : at->GetDestination(IAnimFilter::kIid, next.PutVoid());
        at = next;
      }
    }
    return names[0] == names[1] ? names[0] : names[0] + " but " + names[1];
  }
  std::vector<IAnimFilter*> Objects() const {
    std::vector<IAnimFilter*> objects;
    int count = 0;
    chain->GetCount(&count);
    for (int i = 0; i < count; ++i) {
      ComPtr<IAnimFilter> filter;
      EXPECT_EQ(chain->GetAt(i, IAnimFilter::kIid, filter.PutVoid()), S_OK);
      objects.push_back(filter.Get());
    }
    return objects;
  }
  bool EndsAreLinked() const {
    return destination->source == static_cast<IAnimFilterDestCallsThis*>(source.Get()) &&
           source->destination == static_cast<IAnimFilterSrcCallsThis*>(destination.Get());
  }

  ComPtr<CPdibFilterChain> chain = ComPtr<CPdibFilterChain>::Attach(new CPdibFilterChain);
  ComPtr<TestSource> source = ComPtr<TestSource>::Attach(new TestSource(Picture(2, 2)));
  ComPtr<TestDestination> destination = ComPtr<TestDestination>::Attach(new TestDestination);
  ComPtr<CPdibFilterCreator> creator =
      ComPtr<CPdibFilterCreator>::Attach(new CPdibFilterCreator(Classes()));
};

TEST(PdibFilterChain, EndsMayComeInAnyOrder) {
  for (const int order : {0, 1, 2, 3}) {
    for (const std::string text : {"", "A(1)B(2)C(3)"}) {
      ChainRig test;
      if (order & 1) test.chain->SetSource(test.source->Unknown());
      if (order & 2) test.chain->SetDestination(test.destination.Get());
      EXPECT_EQ(test.Set(text), S_OK);
      EXPECT_EQ(test.EndsAreLinked(), order == 3 && text.empty());
      if (!(order & 1)) test.chain->SetSource(test.source->Unknown());
      if (!(order & 2)) test.chain->SetDestination(test.destination.Get());
      EXPECT_EQ(test.EndsAreLinked(), text.empty());
      EXPECT_EQ(test.Names(), text.empty() ? "" : "A B C ");
      test.chain->SetSource(nullptr);
      test.chain->SetDestination(nullptr);
      EXPECT_EQ(test.Text(), text);
    }
  }
}

TEST(PdibFilterChain, InsertsByRankOrAtAPosition) {
  struct Case {
    std::vector<std::pair<const char*, int>> inserted;  // -1: by rank
    const char* order;
  };
  for (const Case& c :
       {Case{{{"A", -1}, {"B", -1}, {"Crop", -1}}, "Crop A B "},
        Case{{{"Shadow", -1}, {"Text", -1}, {"A", -1}, {"Scale", -1}}, "Scale A Text Shadow "},
        Case{{{"C", -1}, {"Crop", -1}, {"B", -1}, {"Crop", -1}}, "Crop Crop C B "},
        Case{{{"A", -1}, {"B", -1}, {"Text", 0}}, "Text A B "},
        Case{{{"A", -1}, {"B", -1}, {"Text", 1}}, "A Text B "},
        Case{{{"A", 5}, {"B", -1}, {"Text", 2}}, "A B Text "},
        Case{{{"A", -1}, {"B", -1}, {"Text", 99}}, "A B Text "}}) {
    ChainRig test;
    test.Link();
    for (const auto& [name, at] : c.inserted) {
      EXPECT_EQ(test.Insert(name, at), S_OK);
    }
    EXPECT_EQ(test.Names(), c.order);
  }
}

TEST(PdibFilterChain, RefusesWhatIsNoFilterOrWouldMakeARing) {
  ChainRig test;
  test.Link();
  test.Set("A(1)B(2)");
  EXPECT_EQ(test.chain->Insert(nullptr), E_FAIL);
  EXPECT_EQ(test.chain->Insert(test.source->Unknown()), E_NOINTERFACE);
  EXPECT_EQ(test.chain->InsertAt(0, test.source->Unknown()), E_NOINTERFACE);
  for (IAnimFilter* const own : test.Objects()) {
    EXPECT_EQ(test.chain->Insert(own), E_INVALIDARG);
    EXPECT_EQ(test.chain->InsertAt(0, own), E_INVALIDARG);
    EXPECT_EQ(test.chain->SetSource(own), E_INVALIDARG);
    EXPECT_EQ(test.chain->SetDestination(own), E_INVALIDARG);
  }
  EXPECT_EQ(test.Names(), "A B ");
}

TEST(PdibFilterChain, FindsByPositionAndName) {
  ChainRig test;
  test.Build(ItemsOf("A(1)B(2)A(3)"));
  ComPtr<IAnimFilter> found;
  EXPECT_EQ(test.chain->GetAt(3, IAnimFilter::kIid, found.PutVoid()), E_FAIL);
  EXPECT_EQ(test.chain->FindByName("A", IAnimFilter::kIid, found.PutVoid()), S_OK);
  EXPECT_TRUE(found == test.Objects().at(0));
  for (const char* name : {"a", "", "A ", "AB"}) {
    void* untouched = &test;
    EXPECT_EQ(test.chain->FindByName(name, IAnimFilter::kIid, &untouched), 1) << name;
    EXPECT_EQ(untouched, &test);
  }
}

TEST(PdibFilterChain, RemovingLinksTheNeighbours) {
  struct Case {
    const char* name;
    std::function<HRESULT(CPdibFilterChain&)> remove;
    HRESULT result;
    const char *left, *locks;
  };
  const Case cases[] = {
      {"first", [](auto& c) { return c.RemoveAt(0); }, S_OK, "B(2)A(3)C(4)", "LU"},
      {"middle", [](auto& c) { return c.RemoveAt(1); }, S_OK, "A(1)A(3)C(4)", "LU"},
      {"last", [](auto& c) { return c.RemoveAt(3); }, S_OK, "A(1)B(2)A(3)", "LU"},
      {"behind the end", [](auto& c) { return c.RemoveAt(4); }, E_FAIL, "A(1)B(2)A(3)C(4)", "LU"},
      {"name", [](auto& c) { return c.RemoveByName("A"); }, S_OK, "B(2)C(4)", ""},
      {"name, locked", [](auto& c) { return c.RemoveByNameLocked("A"); }, S_OK, "B(2)C(4)", "LU"},
      {"unknown name", [](auto& c) { return c.RemoveByName("X"); }, S_OK, "A(1)B(2)A(3)C(4)", ""},
      {"all", [](auto& c) { return c.RemoveAll(); }, S_OK, "", "LU"}};
  for (const Case& c : cases) {
    for (const bool withEnds : {true, false}) {
      SCOPED_TRACE(std::string(c.name) + (withEnds ? ", linked" : ", no ends"));
      const int before = RecordingFilter::alive;
      ChainRig test;
      if (withEnds) test.Link();
      test.Build(ItemsOf("A(1)B(2)A(3)C(4)"));
      test.destination->TakeLocks();
      EXPECT_EQ(c.remove(*test.chain.Get()), c.result);
      EXPECT_EQ(test.Text(), c.left);
      EXPECT_EQ(test.destination->TakeLocks(), withEnds ? c.locks : "");
      EXPECT_EQ(RecordingFilter::alive - before,
                std::count(c.left, c.left + std::strlen(c.left), '('))
          << "what was taken out is freed";
      if (!withEnds) continue;
      std::string names;
      for (const char* at = c.left; *at; at += 4) names += std::string(at, 1) + " ";
      EXPECT_EQ(test.Names(), names);
      if (names.empty()) {
        EXPECT_TRUE(test.EndsAreLinked());
      }
    }
  }
}

// What a change of text costs.
TEST(PdibFilterChain, ChangesAsLittleAsItCan) {
  struct Case {
    const char *name, *before, *text;
    const char* after;               // when it is not the text
    std::vector<std::string> made;   // through the creator
    std::vector<std::string> given;  // to SetParameter
  };
  const Case cases[] = {
      {"update", "A(1)B(2)C(3)", "A(1)B(9)C(3)", nullptr, {}, {"9"}},
      {"drop in the middle", "A(1)B(2)C(3)", "A(1)C(3)", nullptr, {}, {}},
      {"drop in front", "A(1)B(2)C(3)", "B(2)C(3)", nullptr, {}, {}},
      {"drop needs the same parameters", "A(1)B(2)", "B(3)", nullptr, {"B"}, {"3"}},
      {"drop at the end", "A(1)B(2)C(3)", "A(1)B(2)", nullptr, {}, {}},
      {"create in front", "B(2)C(3)", "A(1)B(2)C(3)", nullptr, {"A"}, {"1"}},
      {"create in the middle", "A(1)B(2)C(3)", "A(1)D(7)B(2)C(3)", nullptr, {"D"}, {"7"}},
      {"append", "A(1)", "A(1)B(2)C(3)", nullptr, {"B", "C"}, {"2", "3"}},
      {"from nothing", "", "Shadow(1)A(2)", nullptr, {"Shadow", "A"}, {"1", "2"}},
      {"to nothing", "A(1)B(2)", "", nullptr, {}, {}},
      {"swap", "A(1)B(2)", "B(2)A(1)", nullptr, {"A"}, {"1"}},
      {"no text", "A(1)", "no markers", "", {}, {}},
      {"unknown at the end", "A(1)", "A(1)X(2)", "A(1)", {}, {}},
      // The position moves on, so that the items behind an unknown one meet the wrong filter; the
      // filter at the front stays.
      {"unknown in front", "A(1)B(2)", "X(0)A(1)B(2)", "A(1)A(1)B(2)", {"A"}, {"1"}},
      // Behind the end an equally named filter anywhere serves.
      {"twice", "A(1)", "A(1)A(2)", "A(2)", {}, {"2"}},
  };
  for (const Case& c : cases) {
    for (const bool opened : {false, true}) {
      SCOPED_TRACE(std::string(c.name) + (opened ? ", opened names" : ""));
      ChainRig test;
      test.Link();
      test.Set(c.before);
      ASSERT_EQ(test.Text(), c.before);
      RecordingFilter::given.clear();
      RecordingFilter::made.clear();
      const std::string text = opened ? TextOf(ItemsOf(c.text), true) : c.text;
      EXPECT_EQ(test.Set(text), S_OK);
      EXPECT_EQ(test.Text(), c.after ? c.after : c.text);
      EXPECT_EQ(RecordingFilter::made, c.made);
      EXPECT_EQ(RecordingFilter::given, c.given);
      EXPECT_THAT(test.Names(), testing::Not(HasSubstr("but")));
      if (test.Text().empty()) {
        EXPECT_TRUE(test.EndsAreLinked());
      }
    }
  }
}

TEST(PdibFilterChain, SplitsTexts) {
  struct Case {
    const char *text, *open, *close;
    Items items;
  };
  const Case cases[] = {{"A(1)B(2)", "(", ")", {{"A", "1"}, {"B", "2"}}},
                        {"(A(1)(B(2)", "(", ")", {{"A", "1"}, {"B", "2"}}},
                        {"A<<1>>B<<2>>", "<<", ">>", {{"A", "1"}, {"B", "2"}}},
                        {"A|1|B|2|", "|", "|", {}},
                        {"A()", "(", ")", {{"A", ""}}},
                        {"(1)", "(", ")", {{"", "1"}}},
                        {"A(1)B(2", "(", ")", {{"A", "1"}}},
                        {"A)1(", "(", ")", {}},
                        {"(A(1)B(2)C)", "(", ")", {{"A", "1"}}},
                        {"A(1)", "", ")", {}},
                        {nullptr, "(", ")", {}}};
  for (const Case& c : cases) {
    EXPECT_EQ(ItemsOf(c.text, c.open, c.close), c.items) << (c.text ? c.text : "null");
  }
  std::mt19937 random(5);
  for (int i = 0; i < 3000; ++i) {
    std::string text(random() % 24, ' ');
    for (char& letter : text) letter = "ab(()).<"[random() % 8];
    const auto items = SplitChainText(text.c_str(), i % 3 ? "(" : "((", i % 2 ? ")" : "<");
    EXPECT_LE(items.size(), text.size());
  }
}

// Whatever stands in the chain, afterwards it is what the text says, and filters whose item kept
// its place in the order and its parameters are the objects that they were.
TEST(PdibFilterChain, BecomesAnyText) {
  std::mt19937 random(20);
  const auto item = [&random] {
    return Item(Classes()[random() % Classes().size()].progId, std::to_string(random() % 2));
  };
  const ChainRig keepsTheListOfClasses;
  for (int round = 0; round < 200; ++round) {
    ChainRig test;
    if (round % 5) test.Link();
    Items before(random() % 6);
    std::generate(before.begin(), before.end(), item);
    test.Build(before);
    // A class stands once in a text.
    Items wanted;
    for (std::size_t i = random() % 7; i > 0; --i) {
      const Item added = item();
      if (std::none_of(wanted.begin(), wanted.end(),
                       [&](auto& w) { return w.first == added.first; })) {
        wanted.push_back(added);
      }
    }
    SCOPED_TRACE(TextOf(before) + " to " + TextOf(wanted));
    const auto oldObjects = test.Objects();
    ASSERT_EQ(test.Set(TextOf(wanted, random() % 2 == 0)), S_OK);
    ASSERT_EQ(test.Text(), TextOf(wanted));
    if (round % 5) {
      ASSERT_THAT(test.Names(), testing::Not(HasSubstr("but")));
    }
    // The common front stays as it is.
    const auto objects = test.Objects();
    for (std::size_t i = 0;
         i < std::min(before.size(), wanted.size()) && before[i].first == wanted[i].first; ++i) {
      EXPECT_EQ(objects[i], oldObjects[i]);
    }
    // Its own text again costs nothing.
    RecordingFilter::given.clear();
    RecordingFilter::made.clear();
    test.Set(test.Text());
    EXPECT_EQ(test.Objects(), objects);
    EXPECT_THAT(RecordingFilter::given, IsEmpty());
    EXPECT_THAT(RecordingFilter::made, IsEmpty());
  }
}

TEST(PdibFilterChain, LongParametersBeepAndStayWhole) {
  platform::FakeServices fakes;
  const platform::ScopedServices scope(fakes.services);
  constexpr unsigned kMost = (16u << 20) - 1;
  for (const std::size_t length : {1u, 1024u, 1025u, 4095u, 4096u, 100000u, kMost}) {
    ChainRig test;
    const std::string text = std::string("A(").append(length, 'x') + ")";
    test.Set(text);
    RecordingFilter::given.clear();
    fakes.desktop.tones.clear();
    test.Set(text);
    EXPECT_TRUE(test.Text(text.size() + 1) == text) << length;
    EXPECT_EQ(RecordingFilter::given.size(), 0u) << length << ": it is the same";
    EXPECT_EQ(fakes.desktop.tones.size(), length > 1024 ? 1u : 0u) << length;
  }
  // Beyond that an item has no text.
  ChainRig test;
  test.Set(std::string("A(").append(kMost + 1, 'x') + ")B(1)");
  EXPECT_EQ(test.Text(), "A()B(1)");
}

TEST(PdibFilterChain, GivesItsTextWhenItFits) {
  ChainRig test;
  test.Set("A(x=1)B()");
  auto* second = static_cast<RecordingFilter*>(test.Objects()[1]);
  second->active = "y";
  const std::string expected = "A[[x=1]B[[]";
  for (int size = -1; size <= 14; ++size) {
    char buffer[20] = "?";
    const bool fits = size > 11;
    EXPECT_EQ(test.chain->GetChainText(buffer, size, "[[", "]", false), fits ? S_OK : E_FAIL);
    EXPECT_EQ(buffer, fits ? expected : "?");
  }
  char buffer[64];
  EXPECT_EQ(test.chain->GetChainText(buffer, 64, "(", ")", true), S_OK);
  EXPECT_STREQ(buffer, "A()B(y)");
}

TEST(PdibFilterChain, UpdateSetsByNameAndInsertsByRank) {
  struct Case {
    const char* text;
    HRESULT result;
    const char *after, *locks;
  };
  for (const Case& c :
       {Case{"B(7)", 0, "Crop(1)A(2)B(7)", "LU"}, Case{"B(7)Crop(8)", 0, "Crop(8)A(2)B(7)", "LULU"},
        Case{"Scale(5)", 0, "Crop(1)Scale(5)A(2)B(3)", "LU"},
        Case{"X(1)A(9)", 1, "Crop(1)A(9)B(3)", "LU"}, Case{"A(9)X(1)", 1, "Crop(1)A(9)B(3)", "LU"},
        Case{"(1)A(9)", 0, "Crop(1)A(2)B(3)", ""}, Case{"A(9)(1)B(4)", 0, "Crop(1)A(9)B(3)", "LU"},
        Case{"A(9", 0, "Crop(1)A(2)B(3)", ""}, Case{"A)9(B(4)", 1, "Crop(1)A(2)B(3)", ""},
        Case{"", 0, "Crop(1)A(2)B(3)", ""}}) {
    ChainRig test;
    test.Link();
    test.Set("Crop(1)A(2)B(3)");
    test.destination->TakeLocks();
    EXPECT_EQ(test.Update(c.text), c.result) << c.text;
    EXPECT_EQ(test.Text(), c.after) << c.text;
    EXPECT_EQ(test.destination->TakeLocks(), c.locks) << c.text;
  }
}

TEST(PdibFilterChain, LocksTheDestinationAroundChanges) {
  ChainRig test;
  EXPECT_EQ(test.chain->TouchChain(1, 2), S_OK);
  test.chain->SetDestination(test.destination.Get());
  EXPECT_EQ(test.destination->TakeLocks(), "");
  test.chain->SetSource(test.source->Unknown());
  test.Insert("A");
  test.Insert("B", 0);
  test.chain->SetChainTextLocked("B(1)", "(", ")", test.creator.Get());
  test.chain->TouchChain(0, 0);
  EXPECT_EQ(test.destination->TakeLocks(), "LULULULULU");
  test.chain->Insert(nullptr);
  test.Set("A(1)");
  test.Text();
  EXPECT_EQ(test.destination->TakeLocks(), "");
}

TEST(PdibFilterChain, LogsWhatAFilterThrowsUnlocksAndPassesItOn) {
  using Throws = RecordingFilter::Throws;
  const std::string unhandled = "FilterChain: Unhandled exception in PdibFilterChain.cpp(";
  const std::string occurred = "Exception occoured in PdibFilterChain.cpp (";
  struct Case {
    const char* name;
    Throws where;
    std::function<void(ChainRig&)> run;
    std::string logged;
    bool locks;
  };
  const Case cases[] = {
      {"SetChainText", Throws::SetParameter, [](auto& t) { t.Set("A(2)"); }, unhandled, false},
      {"SetChainTextLocked", Throws::SetParameter,
       [](auto& t) { t.chain->SetChainTextLocked("A(2)", "(", ")", t.creator.Get()); }, occurred,
       true},
      {"RemoveByNameLocked", Throws::GetName, [](auto& t) { t.chain->RemoveByNameLocked("A"); },
       occurred, true},
      {"UpdateChain", Throws::SetParameter, [](auto& t) { t.Update("B(2)"); }, unhandled, false},
      {"Insert", Throws::GetOrder, [](auto& t) { t.Insert("Crop"); }, unhandled, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    platform::FakeServices fakes;
    const platform::ScopedServices scope(fakes.services);
    ChainRig test;
    test.Link();
    test.Set("A(1)B(1)");
    test.destination->TakeLocks();
    fakes.desktop.debugOutput.clear();
    std::size_t loggedAtUnlock = 0;
    test.destination->onUnlock = [&] { loggedAtUnlock = fakes.desktop.debugOutput.size(); };
    RecordingFilter::throws = c.where;
    EXPECT_THROW(c.run(test), std::runtime_error);
    RecordingFilter::throws = Throws::Nowhere;
    const std::string locks = test.destination->TakeLocks();
    EXPECT_EQ(std::count(locks.begin(), locks.end(), 'L'),
              std::count(locks.begin(), locks.end(), 'U'));
    ASSERT_FALSE(fakes.desktop.debugOutput.empty());
    EXPECT_THAT(fakes.desktop.debugOutput.back(), HasSubstr(c.logged));
    if (c.locks) {
      EXPECT_EQ(loggedAtUnlock, fakes.desktop.debugOutput.size()) << "the log comes first";
    }
    test.destination->onUnlock = nullptr;
    // The chain can be used on.
    EXPECT_EQ(test.Set("B(1)C(3)"), S_OK);
    EXPECT_EQ(test.Text(), "B(1)C(3)");
  }
}

}  // namespace
}  // namespace testing_support
