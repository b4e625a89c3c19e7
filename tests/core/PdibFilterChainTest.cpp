#include "core/PdibFilterChain.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

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

const std::vector<const FilterClass*>& Classes() {
  static const std::vector<const FilterClass*> classes = {
      &TestClass("Crop", 200),  &TestClass("Scale", 500),  &TestClass("A"),
      &TestClass("B"),          &TestClass("C"),           &TestClass("D"),
      &TestClass("Text", 6000), &TestClass("Shadow", 9500)};
  return classes;
}

const FilterClass& ClassOf(const std::string& name) {
  return **std::find_if(Classes().begin(), Classes().end(),
                        [&](const FilterClass* row) { return name == row->progId; });
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

// A chain between two ends, which makes filters through a recording creator.
struct ChainRig {
  ChainRig() {
    RecordingFilter::given.clear();
    RecordingFilter::throws = RecordingFilter::Throws::Nowhere;
  }
  ~ChainRig() {
    RecordingFilter::throws = RecordingFilter::Throws::Nowhere;
    // It leaves its ends linked to each other.
    chain.Reset();
    source->AttachDestination(nullptr);
    destination->AttachSource(nullptr);
  }
  void Link() {
    chain->SetSource(source.Get());
    chain->SetDestination(destination.Get());
  }
  HRESULT Set(const std::string& text) {
    return chain->SetChainText(text.c_str(), "(", ")", creator.Get());
  }
  HRESULT Update(const std::string& text) {
    return chain->UpdateChain(text.c_str(), "(", ")", creator.Get());
  }
  HRESULT Insert(const std::string& name) {
    return chain->Insert(static_cast<IAnimFilter*>(Make(ClassOf(name)).Get()));
  }
  HRESULT InsertAt(int index, const std::string& name) {
    return chain->InsertAt(index, static_cast<IAnimFilter*>(Make(ClassOf(name)).Get()));
  }
  // Puts filters in, one by one, without a chain text; a name may stand twice.
  void Build(const Items& items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
      EXPECT_EQ(InsertAt(static_cast<int>(i), items[i].first), S_OK);
      static_cast<RecordingFilter*>(Objects().back())->pending = items[i].second;
    }
  }
  std::string Text() const {
    char buffer[65536] = "?";
    chain->GetChainText(buffer, sizeof buffer, "(", ")", false);
    return buffer;
  }
  // The names in order, walked from the source and back from the destination: both must be whole.
  std::string Names() const {
    std::string forward, backward;
    auto at = ComPtr<IAnimFilter>::Query(source->destination.Get());
    while (at) {
      forward += NameOf(*at.Get());
      ComPtr<IAnimFilter> next;
      at->GetDestination(IAnimFilter::kIid, next.PutVoid());
      at = next;
    }
    at = ComPtr<IAnimFilter>::Query(destination->source.Get());
    while (at) {
      backward = NameOf(*at.Get()) + backward;
      ComPtr<IAnimFilter> next;
      at->GetSource(IAnimFilter::kIid, next.PutVoid());
      at = next;
    }
    return forward == backward ? forward : forward + " but " + backward;
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
  static std::string NameOf(IAnimFilter& filter) {
    char name[64] = "";
    filter.GetName(name, 64);
    return std::string(name) + " ";
  }

  ComPtr<CPdibFilterChain> chain = ComPtr<CPdibFilterChain>::Attach(new CPdibFilterChain);
  ComPtr<TestSource> source = ComPtr<TestSource>::Attach(new TestSource(Picture(2, 2)));
  ComPtr<TestDestination> destination = ComPtr<TestDestination>::Attach(new TestDestination);
  ComPtr<RecordingCreator> creator =
      ComPtr<RecordingCreator>::Attach(new RecordingCreator(Classes()));
};

TEST(PdibFilterChain, LinksTheEndsOfAnEmptyChain) {
  for (const bool sourceFirst : {true, false}) {
    ChainRig test;
    int count = 7;
    EXPECT_EQ(test.chain->GetCount(&count), S_OK);
    EXPECT_EQ(count, 0);
    sourceFirst ? test.chain->SetSource(test.source.Get())
                : test.chain->SetDestination(test.destination.Get());
    EXPECT_FALSE(test.EndsAreLinked());
    sourceFirst ? test.chain->SetDestination(test.destination.Get())
                : test.chain->SetSource(test.source.Get());
    EXPECT_TRUE(test.EndsAreLinked());
  }
}

TEST(PdibFilterChain, EndsMayComeBeforeAndAfterTheFilters) {
  for (const int order : {0, 1, 2, 3}) {
    ChainRig test;
    if (order & 1) test.chain->SetSource(test.source.Get());
    if (order & 2) test.chain->SetDestination(test.destination.Get());
    EXPECT_EQ(test.Set("A(1)B(2)C(3)"), S_OK);
    if (!(order & 1)) test.chain->SetSource(test.source.Get());
    if (!(order & 2)) test.chain->SetDestination(test.destination.Get());
    EXPECT_EQ(test.Names(), "A B C ");
    EXPECT_EQ(test.Text(), "A(1)B(2)C(3)");
    // Other ends take the place of the old ones.
    const auto other = ComPtr<TestSource>::Attach(new TestSource(Picture(1, 1)));
    test.chain->SetSource(other.Get());
    EXPECT_EQ(other->attachCount, 1);
    test.chain->SetSource(nullptr);
    test.chain->SetDestination(nullptr);
    EXPECT_EQ(test.Text(), "A(1)B(2)C(3)");
    other->AttachDestination(nullptr);
  }
}

TEST(PdibFilterChain, InsertPlacesByRank) {
  struct Case {
    std::vector<const char*> inserted;
    const char* order;
  };
  for (const Case& c :
       {Case{{"A", "B"}, "A B "}, Case{{"A", "Crop"}, "Crop A "},
        Case{{"Shadow", "Text", "A", "Scale", "Crop"}, "Crop Scale A Text Shadow "},
        Case{{"Text", "Shadow"}, "Text Shadow "},
        Case{{"C", "Shadow", "A", "Crop", "B", "Crop"}, "Crop Crop C A B Shadow "}}) {
    ChainRig test;
    test.Link();
    for (const char* name : c.inserted) EXPECT_EQ(test.Insert(name), S_OK);
    EXPECT_EQ(test.Names(), c.order);
  }
}

TEST(PdibFilterChain, InsertAtTakesThePosition) {
  struct Case {
    int index;
    const char* order;
  };
  for (const Case& c : {Case{0, "Text A B "}, Case{1, "A Text B "}, Case{2, "A B Text "},
                        Case{3, "A B Text "}, Case{99, "A B Text "}}) {
    ChainRig test;
    test.Link();
    test.Insert("A");
    test.Insert("B");
    EXPECT_EQ(test.InsertAt(c.index, "Text"), S_OK);
    EXPECT_EQ(test.Names(), c.order);
  }
  ChainRig empty;
  empty.Link();
  EXPECT_EQ(empty.InsertAt(5, "A"), S_OK);
  EXPECT_EQ(empty.Names(), "A ");
}

TEST(PdibFilterChain, RefusesWhatIsNoFilter) {
  ChainRig test;
  test.Link();
  EXPECT_EQ(test.chain->Insert(nullptr), E_FAIL);
  EXPECT_EQ(test.chain->InsertAt(0, nullptr), E_FAIL);
  EXPECT_EQ(test.chain->Insert(test.source.Get()), E_NOINTERFACE);
  EXPECT_EQ(test.chain->InsertAt(0, test.source.Get()), E_NOINTERFACE);
  // The same object twice would make a ring of the links.
  const auto filter = Make(ClassOf("A"));
  EXPECT_EQ(test.chain->Insert(static_cast<IAnimFilter*>(filter.Get())), S_OK);
  EXPECT_TRUE(FAILED(test.chain->Insert(static_cast<IAnimFilter*>(filter.Get()))));
  EXPECT_TRUE(FAILED(test.chain->InsertAt(0, static_cast<IAnimFilter*>(filter.Get()))));
  EXPECT_EQ(test.Names(), "A ");
}

TEST(PdibFilterChain, FindsByPositionAndName) {
  ChainRig test;
  test.Link();
  test.Build(ItemsOf("A(1)B(2)A(3)"));
  const auto objects = test.Objects();
  ASSERT_EQ(objects.size(), 3u);
  ComPtr<IAnimFilter> found;
  EXPECT_EQ(test.chain->GetAt(3, IAnimFilter::kIid, found.PutVoid()), E_FAIL);
  EXPECT_FALSE(found);
  EXPECT_EQ(test.chain->FindByName("A", IAnimFilter::kIid, found.PutVoid()), S_OK);
  EXPECT_TRUE(found == objects[0]);
  EXPECT_EQ(test.chain->FindByName("B", IAnimFilter::kIid, found.PutVoid()), S_OK);
  EXPECT_TRUE(found == objects[1]);
  found.Reset();
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
    const char* left;
    const char* locks;
  };
  const Case cases[] = {
      {"first", [](auto& c) { return c.RemoveAt(0); }, S_OK, "B(2)A(3)C(4)", "LU"},
      {"middle", [](auto& c) { return c.RemoveAt(1); }, S_OK, "A(1)A(3)C(4)", "LU"},
      {"last", [](auto& c) { return c.RemoveAt(3); }, S_OK, "A(1)B(2)A(3)", "LU"},
      {"behind the end", [](auto& c) { return c.RemoveAt(4); }, E_FAIL, "A(1)B(2)A(3)C(4)", "LU"},
      {"name", [](auto& c) { return c.RemoveByName("A"); }, S_OK, "B(2)C(4)", ""},
      {"name, locked", [](auto& c) { return c.RemoveByNameLocked("A"); }, S_OK, "B(2)C(4)", "LU"},
      {"last name", [](auto& c) { return c.RemoveByName("C"); }, S_OK, "A(1)B(2)A(3)", ""},
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
  ChainRig only;
  only.Link();
  only.Set("A()");
  EXPECT_EQ(only.chain->RemoveAt(0), S_OK);
  EXPECT_TRUE(only.EndsAreLinked());
}

TEST(PdibFilterChain, EndsWithItsFilters) {
  const int before = RecordingFilter::alive;
  {
    ChainRig test;
    test.Set("A(1)B(2)C(3)");
    EXPECT_EQ(RecordingFilter::alive, before + 3);
  }
  {
    ChainRig test;
    test.Link();
    test.Set("A(1)B(2)C(3)");
  }
  EXPECT_EQ(RecordingFilter::alive, before);
}

TEST(PdibFilterChain, GivesItsTextWhenItFits) {
  ChainRig test;
  test.Link();
  test.Set("A(x=1)B()");
  auto* second = static_cast<RecordingFilter*>(test.Objects()[1]);
  second->active = "y";
  const std::string expected = "A[[x=1]B[[]";
  for (int size = -1; size <= static_cast<int>(expected.size()) + 2; ++size) {
    std::string buffer(expected.size() + 4, '?');
    const bool fits = size > static_cast<int>(expected.size());
    EXPECT_EQ(test.chain->GetChainText(buffer.data(), size, "[[", "]", false),
              fits ? S_OK : E_FAIL);
    EXPECT_EQ(buffer.c_str(), fits ? expected : std::string(expected.size() + 4, '?'));
  }
  char buffer[64];
  EXPECT_EQ(test.chain->GetChainText(buffer, 64, "(", ")", true), S_OK);
  EXPECT_STREQ(buffer, "A()B(y)");
  second->offersParameters = false;
  EXPECT_EQ(test.Text(), "A(x=1)");
}

// What a change of text costs.
TEST(PdibFilterChain, ChangesAsLittleAsItCan) {
  struct Case {
    const char* name;
    const char* before;
    const char* text;
    const char* after;               // when it is not the text
    std::vector<std::string> made;   // through the creator
    std::vector<std::string> given;  // to SetParameter
  };
  const Case cases[] = {
      {"same", "A(1)B(2)C(3)", "A(1)B(2)C(3)", nullptr, {}, {}},
      {"update", "A(1)B(2)C(3)", "A(1)B(9)C(3)", nullptr, {}, {"9"}},
      {"drop in the middle", "A(1)B(2)C(3)", "A(1)C(3)", nullptr, {}, {}},
      {"drop in front", "A(1)B(2)C(3)", "B(2)C(3)", nullptr, {}, {}},
      {"drop needs the same parameters", "A(1)B(2)", "B(3)", nullptr, {"B"}, {"3"}},
      {"drop at the end", "A(1)B(2)C(3)", "A(1)B(2)", nullptr, {}, {}},
      {"create in front", "B(2)C(3)", "A(1)B(2)C(3)", nullptr, {"A"}, {"1"}},
      {"create in the middle", "A(1)B(2)C(3)", "A(1)D(7)B(2)C(3)", nullptr, {"D"}, {"7"}},
      {"create before the last", "A(1)B(2)", "A(1)D(7)B(2)", nullptr, {"D"}, {"7"}},
      {"append", "A(1)", "A(1)B(2)C(3)", nullptr, {"B", "C"}, {"2", "3"}},
      {"from nothing", "", "Shadow(1)A(2)", nullptr, {"Shadow", "A"}, {"1", "2"}},
      {"to nothing", "A(1)B(2)", "", nullptr, {}, {}},
      {"swap", "A(1)B(2)", "B(2)A(1)", nullptr, {"A"}, {"1"}},
      {"no text", "A(1)", "no markers", "", {}, {}},
      {"unknown at the end", "A(1)", "A(1)X(2)", "A(1)", {}, {}},
      {"unknown alone", "", "X(2)A(1)", "A(1)", {"A"}, {"1"}},
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
      test.creator->made.clear();
      const std::string text = opened ? TextOf(ItemsOf(c.text), true) : c.text;
      EXPECT_EQ(test.Set(text), S_OK);
      EXPECT_EQ(test.Text(), c.after ? c.after : c.text);
      EXPECT_EQ(test.creator->made, c.made);
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
    const char* text;
    const char* open;
    const char* close;
    Items items;
  };
  const Case cases[] = {{"A(1)B(2)", "(", ")", {{"A", "1"}, {"B", "2"}}},
                        {"(A(1)(B(2)", "(", ")", {{"A", "1"}, {"B", "2"}}},
                        {"A<<1>>B<<2>>", "<<", ">>", {{"A", "1"}, {"B", "2"}}},
                        {"<<A<<1>><<B<<2>>", "<<", ">>", {{"A", "1"}, {"B", "2"}}},
                        {"A|1|B|2|", "|", "|", {}},
                        {"A()", "(", ")", {{"A", ""}}},
                        {"(1)", "(", ")", {{"", "1"}}},
                        {"A(1)B(2", "(", ")", {{"A", "1"}}},
                        {"A(1)B)2(", "(", ")", {{"A", "1"}}},
                        {"A)1(", "(", ")", {}},
                        {"A(1", "(", ")", {}},
                        {"(A(1)B(2)C)", "(", ")", {{"A", "1"}}},
                        {"", "(", ")", {}},
                        {"A(1)", "", ")", {}},
                        {"A(1)", "(", "", {}},
                        {"A(1)", nullptr, ")", {}},
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
    return Item(Classes()[random() % Classes().size()]->progId, std::to_string(random() % 2));
  };
  for (int round = 0; round < 2000; ++round) {
    ChainRig test;
    if (round % 5) test.Link();
    Items before(random() % 6);
    std::generate(before.begin(), before.end(), item);
    test.Build(before);
    ASSERT_EQ(test.Text(), TextOf(before));
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
    test.creator->made.clear();
    test.Set(test.Text());
    EXPECT_EQ(test.Objects(), objects);
    EXPECT_THAT(RecordingFilter::given, IsEmpty());
    EXPECT_THAT(test.creator->made, IsEmpty());
  }
}

TEST(PdibFilterChain, LongParametersBeepAndAreNeverTheSame) {
  platform::FakeServices fakes;
  const platform::ScopedServices scope(fakes.services);
  for (const std::size_t length : {1023u, 1024u, 1025u}) {
    ChainRig test;
    test.Link();
    const std::string text = std::string("A(").append(length, 'x') + ")";
    test.Set(text);
    RecordingFilter::given.clear();
    fakes.desktop.tones.clear();
    test.Set(text);
    EXPECT_EQ(test.Text(), text);
    EXPECT_EQ(RecordingFilter::given.size(), length > 1023 ? 1u : 0u) << length;
    EXPECT_EQ(fakes.desktop.tones.size(), length > 1024 ? 1u : 0u) << length;
    for (const auto& tone : fakes.desktop.tones) {
      EXPECT_EQ(tone, (platform::RecordingDesktop::Tone{2000, 100}));
    }
  }
}

TEST(PdibFilterChain, UpdateSetsByNameAndInsertsByRank) {
  struct Case {
    const char* text;
    HRESULT result;
    const char* after;
    const char* locks;
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
  ChainRig test;
  test.Set("A(1)");
  EXPECT_EQ(test.chain->UpdateChain(nullptr, "(", ")", test.creator.Get()), 0);
  EXPECT_EQ(test.chain->UpdateChain("A(2)", "", ")", test.creator.Get()), 0);
  EXPECT_EQ(test.chain->UpdateChain("A(2)", "(", nullptr, test.creator.Get()), 0);
  EXPECT_EQ(test.chain->UpdateChain("A(2)", "(", ")", nullptr), 0);
  EXPECT_EQ(test.Text(), "A(1)");
}

TEST(PdibFilterChain, TellsTheDestinationOfChanges) {
  ChainRig test;
  EXPECT_EQ(test.chain->TouchChain(1, 2), S_OK);
  test.chain->SetDestination(test.destination.Get());
  struct Case {
    const char* name;
    std::function<void()> run;
    const char* locks;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"SetSource", [&] { test.chain->SetSource(test.source.Get()); }, "LU"},
           {"SetDestination", [&] { test.chain->SetDestination(test.destination.Get()); }, ""},
           {"Insert", [&] { test.Insert("A"); }, "LU"},
           {"InsertAt", [&] { test.InsertAt(0, "B"); }, "LU"},
           {"Insert null", [&] { test.chain->Insert(nullptr); }, ""},
           {"SetChainText", [&] { test.Set("A(1)"); }, ""},
           {"SetChainTextLocked",
            [&] { test.chain->SetChainTextLocked("B(1)", "(", ")", test.creator.Get()); }, "LU"},
           {"TouchChain", [&] { test.chain->TouchChain(0, 0); }, "LU"},
           {"GetChainText", [&] { test.Text(); }, ""}}) {
    test.destination->TakeLocks();
    c.run();
    EXPECT_EQ(test.destination->TakeLocks(), c.locks) << c.name;
  }
  EXPECT_EQ(test.chain->CheckArgument(0), 0);
  EXPECT_EQ(test.chain->CheckArgument(17), 17);
}

TEST(PdibFilterChain, LogsWhatAFilterThrowsUnlocksAndPassesItOn) {
  using Throws = RecordingFilter::Throws;
  struct Case {
    const char* name;
    Throws where;
    std::function<void(ChainRig&)> run;
    bool thrown;
    const char* logged;
  };
  const Case cases[] = {
      {"SetChainText", Throws::SetParameter, [](ChainRig& t) { t.Set("A(2)"); }, true,
       "FilterChain: Unhandled exception in PdibFilterChain.cpp("},
      {"SetChainTextLocked", Throws::SetParameter,
       [](ChainRig& t) { t.chain->SetChainTextLocked("A(2)", "(", ")", t.creator.Get()); }, true,
       "Exception occoured in PdibFilterChain.cpp ("},
      {"RemoveByNameLocked", Throws::GetName, [](ChainRig& t) { t.chain->RemoveByNameLocked("A"); },
       true, "Exception occoured in PdibFilterChain.cpp ("},
      {"UpdateChain", Throws::SetParameter, [](ChainRig& t) { t.Update("A(2)"); }, true,
       "FilterChain: Unhandled exception in PdibFilterChain.cpp("},
      {"Insert", Throws::GetOrder, [](ChainRig& t) { t.Insert("Crop"); }, true,
       "FilterChain: Unhandled exception in PdibFilterChain.cpp("},
      {"FindByName", Throws::GetName,
       [](ChainRig& t) {
         void* found = nullptr;
         EXPECT_TRUE(FAILED(t.chain->FindByName("A", IAnimFilter::kIid, &found)));
       },
       false, ""}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    platform::FakeServices fakes;
    const platform::ScopedServices scope(fakes.services);
    ChainRig test;
    test.Link();
    test.Set("A(1)B(1)");
    test.destination->TakeLocks();
    fakes.desktop.debugOutput.clear();
    RecordingFilter::throws = c.where;
    bool thrown = false;
    try {
      c.run(test);
    } catch (const std::runtime_error&) {
      thrown = true;
    }
    RecordingFilter::throws = Throws::Nowhere;
    EXPECT_EQ(thrown, c.thrown);
    const std::string locks = test.destination->TakeLocks();
    EXPECT_EQ(std::count(locks.begin(), locks.end(), 'L'),
              std::count(locks.begin(), locks.end(), 'U'));
    std::string log;
    for (const std::string& line : fakes.desktop.debugOutput) log += line + "\n";
    EXPECT_THAT(log, HasSubstr(c.logged));
    // The chain can be used on.
    EXPECT_EQ(test.Set("B(1)C(3)"), S_OK);
    EXPECT_EQ(test.Text(), "B(1)C(3)");
  }
}

TEST(PdibFilterChain, AHostMayServeBothEndsAsSourceAlone) {
  ChainRig test;
  test.source->otherEnd = test.destination;
  test.chain->SetSource(test.source.Get());
  EXPECT_EQ(test.Set("A(1)B(2)"), S_OK);
  EXPECT_EQ(test.Names(), "A B ");
  test.source->otherEnd.Reset();
}

TEST(PdibFilterChain, ToleratesNullArguments) {
  ChainRig test;
  test.Link();
  test.Set("A(1)");
  EXPECT_TRUE(FAILED(test.chain->GetCount(nullptr)));
  EXPECT_TRUE(FAILED(test.chain->GetAt(0, IAnimFilter::kIid, nullptr)));
  EXPECT_TRUE(FAILED(test.chain->FindByName("A", IAnimFilter::kIid, nullptr)));
  EXPECT_TRUE(FAILED(test.chain->FindByName(nullptr, IAnimFilter::kIid, nullptr)));
  EXPECT_TRUE(FAILED(test.chain->RemoveByName(nullptr)));
  EXPECT_TRUE(FAILED(test.chain->GetChainText(nullptr, 9, "(", ")", false)));
  EXPECT_EQ(test.chain->SetChainText("B(1)", "(", ")", nullptr), S_OK);
  EXPECT_EQ(test.Text(), "A(1)") << "without a creator the old filter has nothing to give way to";
  EXPECT_EQ(test.chain->SetChainText(nullptr, "(", ")", nullptr), S_OK);
  EXPECT_EQ(test.Text(), "");
}

}  // namespace
}  // namespace testing_support
