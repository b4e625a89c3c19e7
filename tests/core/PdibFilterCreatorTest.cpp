#include "core/PdibFilterCreator.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "core/PdibFilterChain.h"
#include "platform/component/ClassFactory.h"
#include "platform/fake/FakeServices.h"
#include "platform/linux/ComponentRuntime.h"
#include "tests/support/TestFilters.h"

// The linker sends all calls of CoCreateInstance here, so that a test can do without the category
// manager.
namespace {
bool categoryManagerIsMissing = false;
}
extern "C" HRESULT __real_CoCreateInstance(REFCLSID, IUnknown*, DWORD, REFIID, void**);
extern "C" HRESULT __wrap_CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context,
                                           REFIID iid, void** result) {
  if (!categoryManagerIsMissing)
    return __real_CoCreateInstance(classId, outer, context, iid, result);
  *result = nullptr;
  return REGDB_E_CLASSNOTREG;
}

namespace testing_support {
namespace {

using platform::ComPtr;
using testing::ElementsAre;
using testing::IsEmpty;

// A filter of which some answers fail.
class FaultyFilter final : public RecordingFilter {
 public:
  using RecordingFilter::RecordingFilter;
  HRESULT STDMETHODCALLTYPE GetOrder(int* result) override {
    return classRow.order < 0 ? E_FAIL : RecordingFilter::GetOrder(result);
  }
  HRESULT STDMETHODCALLTYPE GetKind(int* kind) override {
    return classRow.sortKey < 0 ? E_FAIL : RecordingFilter::GetKind(kind);
  }
};

// Classes of a module of a third party, announced to the component runtime while it lives.
class TestModule {
 public:
  struct Class {
    const FilterClass* row;
    bool hasProgId = true;
    bool isFilter = true;  // stands in the category
  };
  explicit TestModule(std::vector<Class> known) {
    classes = std::move(known);
    objectsAsked = 0;
    std::vector<platform::InProcessClass> announced;
    for (const Class& entry : classes) {
      announced.push_back({.classId = entry.row->classId,
                           .progId = entry.hasProgId ? entry.row->progId : "",
                           .versionIndependentProgId = "",
                           .categories = entry.isFilter ? std::vector<CATID>{kFilterCategory}
                                                        : std::vector<CATID>{}});
    }
    platform::AnnounceClasses(GetClassObject, announced);
  }
  ~TestModule() { platform::WithdrawClasses(GetClassObject); }
  TestModule(const TestModule&) = delete;
  TestModule& operator=(const TestModule&) = delete;

  static inline int objectsAsked = 0;

 private:
  static HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** result) {
    ++objectsAsked;
    for (const Class& entry : classes) {
      if (!base::SameGuid(entry.row->classId, classId) || !entry.row->make) continue;
      const FilterClass& row = *entry.row;
      const auto factory = ComPtr<platform::ClassFactory>::Attach(new platform::ClassFactory(
          [&row] { return static_cast<IUnknown*>(static_cast<IAnimFilter*>(row.make(row))); }));
      return factory->QueryInterface(iid, result);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  static inline std::vector<Class> classes;
};

struct CreatorRig {
  ~CreatorRig() { categoryManagerIsMissing = false; }
  platform::FakeServices fakes;
  platform::ScopedServices scope{fakes.services};
};

ComPtr<CPdibFilterCreator> MakeCreator(FilterClassTable own = {}) {
  return ComPtr<CPdibFilterCreator>::Attach(new CPdibFilterCreator(own));
}

std::vector<std::string> NamesOf(CPdibFilterCreator& creator) {
  std::vector<std::string> names;
  int count = 0;
  EXPECT_EQ(creator.GetFilterCount(&count), S_OK);
  for (int i = 0; i < count; ++i) {
    char name[64] = "";
    int order = 0;
    EXPECT_EQ(creator.GetFilterInfo(i, name, 64, &order), S_OK);
    names.push_back(name);
  }
  return names;
}

const FilterClass& Class(const char* progId, int sortKey, int order = 5000) {
  return TestClass(progId, order, sortKey, MakeFilter<FaultyFilter>);
}

TEST(PdibFilterCreator, ListsTheCategoryInSortOrder) {
  CreatorRig rig;
  FilterClass withoutMaker = Class("Test.NoFactory.1", 1);
  withoutMaker.make = nullptr;
  const TestModule module({{&Class("Test.Late.1", 9)},
                           {&Class("Test.Early.1", 2, 200)},
                           {&Class("Test.SameA.1", 5)},
                           {&Class("Test.SameB.1", 5)},
                           {&Class("Test.NoKind.1", -1)},
                           {&Class("Test.NoOrder.1", 3, -1)},
                           {&Class("Test.NoName.1", 3), false},
                           {&withoutMaker},
                           {&Class("Test.NoFilter.1", 4), true, false},
                           {&Class("Test.SameC.1", 5)}});
  const auto creator = MakeCreator();
  EXPECT_THAT(NamesOf(*creator.Get()), ElementsAre("Test.Early.1", "Test.SameA.1", "Test.SameB.1",
                                                   "Test.SameC.1", "Test.Late.1"));
  EXPECT_THAT(rig.fakes.desktop.messages, IsEmpty());
  EXPECT_EQ(RecordingFilter::alive, 0) << "the probes are gone";

  int order = 0;
  char name[16] = "x";
  EXPECT_EQ(creator->GetFilterInfo(0, name, 12, &order), S_OK);
  EXPECT_STREQ(name, "x");
  EXPECT_EQ(creator->GetFilterInfo(0, name, 13, &order), S_OK);
  EXPECT_STREQ(name, "Test.Early.1");
  EXPECT_EQ(order, 200);
}

TEST(PdibFilterCreator, MakesFiltersByNameAndPosition) {
  CreatorRig rig;
  const TestModule module({{&Class("Test.B.1", 2)}, {&Class("Test.A.1", 1)}});
  const auto creator = MakeCreator();
  for (const auto& [name, status] :
       {std::pair("Test.A.1", S_OK), {"Test.A", E_FAIL}, {"test.a.1", E_FAIL}, {"", E_FAIL}}) {
    ComPtr<IAnimFilter> filter;
    EXPECT_EQ(creator->CreateFilter(name, IAnimFilter::kIid, filter.PutVoid()), status);
    EXPECT_EQ(static_cast<bool>(filter), status == S_OK);
  }
  for (const int index : {-1, 0, 1, 2, 1000}) {
    const bool there = index == 0 || index == 1;
    ComPtr<IAnimFilter> filter;
    EXPECT_EQ(creator->CreateFilterAt(index, IAnimFilter::kIid, filter.PutVoid()),
              there ? S_OK : E_FAIL);
    char name[32] = "";
    if (filter) filter->GetName(name, 32);
    EXPECT_STREQ(name, index == 0 ? "Test.A.1" : index == 1 ? "Test.B.1" : "");
  }
  ComPtr<IAnimFilterChain> wrong;
  EXPECT_EQ(creator->CreateFilter("Test.A.1", IAnimFilterChain::kIid, wrong.PutVoid()),
            E_NOINTERFACE);
  // Nobody has announced the chain.
  EXPECT_EQ(creator->CreateChain(IAnimFilterChain::kIid, wrong.PutVoid()), E_FAIL);
  EXPECT_EQ(RecordingFilter::alive, 0);
}

TEST(PdibFilterCreator, CreatorsShareOneListUntilTheLastGoes) {
  CreatorRig rig;
  auto first = [] {
    const TestModule module({{&Class("Test.A.1", 1)}});
    return MakeCreator();
  }();
  const TestModule later({{&Class("Test.B.1", 1)}});
  auto second = MakeCreator();
  EXPECT_EQ(TestModule::objectsAsked, 0) << "the second does not enumerate";
  EXPECT_THAT(NamesOf(*second.Get()), ElementsAre("Test.A.1"));
  first.Reset();
  EXPECT_THAT(NamesOf(*MakeCreator().Get()), ElementsAre("Test.A.1"));
  second.Reset();
  EXPECT_THAT(NamesOf(*MakeCreator().Get()), ElementsAre("Test.B.1"));
}

TEST(PdibFilterCreator, AnEmptyListIsNotKept) {
  const auto empty = MakeCreator();
  const TestModule module({{&Class("Test.A.1", 1)}});
  EXPECT_THAT(NamesOf(*MakeCreator().Get()), ElementsAre("Test.A.1"));
}

TEST(PdibFilterCreator, OwnClassesNeedNoRegistration) {
  CreatorRig rig;
  static const FilterClass own[] = {Class("Test.Own2.1", 2), Class("Test.Own5.1", 5)};
  const TestModule module({{&Class("Test.Other.1", 3)}, {&Class("Test.Same.1", 5)}, {&own[0]}});
  const auto creator = MakeCreator(own);
  // Own ones come first among equals and stand once, also when they are registered.
  EXPECT_THAT(NamesOf(*creator.Get()),
              ElementsAre("Test.Own2.1", "Test.Other.1", "Test.Own5.1", "Test.Same.1"));
  ComPtr<IAnimFilterChain> chain;
  ASSERT_EQ(creator->CreateChain(IAnimFilterChain::kIid, chain.PutVoid()), S_OK);
  EXPECT_EQ(chain->SetChainText("Test.Own5.1(x)Test.Other.1(y)", "(", ")", creator.Get()), S_OK);
  char text[64] = "";
  EXPECT_EQ(chain->GetChainText(text, 64, "(", ")", false), S_OK);
  EXPECT_STREQ(text, "Test.Own5.1(x)Test.Other.1(y)");
}

TEST(PdibFilterCreator, SaysThatTheCategoryManagerIsMissing) {
  CreatorRig rig;
  const TestModule module({{&Class("Test.A.1", 1)}});
  categoryManagerIsMissing = true;
  const auto first = MakeCreator();
  const auto second = MakeCreator();
  const platform::RecordingDesktop::Message message{
      "Componenten-Manager (comcat.dll) Problem, falsche Version oder nicht registriert!",
      "Fxbox4.dll"};
  EXPECT_THAT(rig.fakes.desktop.messages, ElementsAre(message, message));
  EXPECT_THAT(NamesOf(*first.Get()), IsEmpty());
  ComPtr<IAnimFilter> filter;
  EXPECT_EQ(second->CreateFilter("Test.A.1", IAnimFilter::kIid, filter.PutVoid()), E_FAIL);
}

}  // namespace
}  // namespace testing_support
