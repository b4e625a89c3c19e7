// The exported functions, called as the component runtime calls them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objbase.h>

#include <string>
#include <vector>

#include "component/Fxbox4.h"
#include "core/AnimChain.h"
#include "core/AnimIcon.h"
#include "core/AnimInterfaces.h"
#include "core/FilterClass.h"
#include "platform/component/ComPtr.h"
#include "tests/component/CreatorNames.h"
#include "tests/component/RequiredClasses.h"

namespace component_test {
namespace {

using platform::ComPtr;

class Module : public testing::Test {
 protected:
  void SetUp() override { CoInitialize(nullptr); }
  void TearDown() override { CoUninitialize(); }
};

CLSID IdOf(const char* text) {
  CLSID id = {};
  EXPECT_TRUE(base::ParseGuid(text, id)) << text;
  return id;
}

ComPtr<IClassFactory> ClassObject(const CLSID& classId) {
  ComPtr<IClassFactory> factory;
  EXPECT_EQ(S_OK, DllGetClassObject(classId, IID_IClassFactory, factory.PutVoid()));
  return factory;
}

template <class Interface>
ComPtr<Interface> Create(const CLSID& classId) {
  ComPtr<Interface> object;
  const auto factory = ClassObject(classId);
  if (factory) {
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, Interface::kIid, object.PutVoid()));
  }
  return object;
}

std::string NameOf(IAnimFilter& filter) {
  char name[200] = "";
  filter.GetName(name, sizeof name);
  return name;
}

std::string Words(const char* text) {
  return text ? text : "(none)";
}

TEST_F(Module, ServesEveryRequiredClassWithItsIdsAndWords) {
  int count = 0;
  const FilterClass* rows = FxboxFilterClasses(&count);
  ASSERT_EQ(count, 46);
  for (const RequiredClass& required : RequiredClasses()) {
    const FilterClass& row = *rows++;
    SCOPED_TRACE(required.className);
    EXPECT_EQ(required.className, row.className);
    EXPECT_EQ(required.iconName, Words(row.iconName));
    EXPECT_EQ(required.nameKey, Words(row.nameKey));
    EXPECT_EQ(required.helpKey, Words(row.helpKey));
    EXPECT_EQ(required.defaultText, Words(row.defaultText));

    const auto filter = Create<IAnimFilter>(IdOf(required.classId.c_str()));
    ASSERT_TRUE(filter);
    int kind = -1;
    int order = -1;
    EXPECT_EQ(S_OK, filter->GetKind(&kind));
    EXPECT_EQ(S_OK, filter->GetOrder(&order));
    EXPECT_EQ(required.sortKey, std::to_string(kind));
    EXPECT_EQ(required.order, std::to_string(order));
    EXPECT_EQ(required.progId, NameOf(*filter.Get()));
    ComPtr<IAnimFilterIcon> icon;
    EXPECT_EQ(row.iconName ? S_OK : E_NOINTERFACE,
              filter->CreateIcon(IAnimFilterIcon::kIid, icon.PutVoid()));
    EXPECT_EQ(row.iconName != nullptr, static_cast<bool>(icon));
  }
}

TEST_F(Module, CanGoWhenNothingOfItIsHeld) {
  EXPECT_EQ(S_OK, DllCanUnloadNow());
  auto factory = ClassObject(kChainClassId);
  EXPECT_EQ(S_FALSE, DllCanUnloadNow());
  ComPtr<IAnimFilterChain> chain;
  factory->CreateInstance(nullptr, IAnimFilterChain::kIid, chain.PutVoid());
  factory->LockServer(TRUE);
  factory.Reset();
  EXPECT_EQ(S_FALSE, DllCanUnloadNow());
  chain.Reset();
  EXPECT_EQ(S_FALSE, DllCanUnloadNow());  // the lock alone
  ClassObject(kCreatorClassId)->LockServer(FALSE);
  EXPECT_EQ(S_OK, DllCanUnloadNow());
  ComPtr<IAnimFilterCreator> creator;
  EXPECT_EQ(S_OK, FxboxCreateCreator(IAnimFilterCreator::kIid, creator.PutVoid()));
  EXPECT_EQ(S_FALSE, DllCanUnloadNow());
  creator.Reset();
  EXPECT_EQ(S_OK, DllCanUnloadNow());
}

std::vector<std::string> RequiredNames() {
  std::vector<std::string> names;
  for (const RequiredClass& required : RequiredClasses()) names.push_back(required.progId);
  return names;
}

// By the exported function as by the class object, which a host may have from a copy of the file.
TEST_F(Module, GivesACreatorThatNeedsNoRegistration) {
  ComPtr<IAnimFilterCreator> creator;
  ASSERT_EQ(S_OK, FxboxCreateCreator(IAnimFilterCreator::kIid, creator.PutVoid()));
  for (const auto& made : {creator, Create<IAnimFilterCreator>(kCreatorClassId)}) {
    std::vector<std::string> names = NamesOf(*made.Get());
    // Other modules may be registered on the machine: their classes stand between.
    std::erase_if(names, [](const std::string& name) { return !name.starts_with("ZNFilter."); });
    EXPECT_THAT(names, testing::ElementsAreArray(RequiredNames()));
  }
  ComPtr<IAnimFilter> filter;
  ASSERT_EQ(S_OK, creator->CreateFilter("ZNFilter.Sepia.1", IAnimFilter::kIid, filter.PutVoid()));
  EXPECT_EQ("ZNFilter.Sepia.1", NameOf(*filter.Get()));
  ComPtr<IAnimFilterChain> chain;
  EXPECT_EQ(S_OK, creator->CreateChain(IAnimFilterChain::kIid, chain.PutVoid()));
  EXPECT_TRUE(chain);
}

}  // namespace
}  // namespace component_test
