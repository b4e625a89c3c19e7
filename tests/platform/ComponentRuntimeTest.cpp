// Classes, categories and modules of the component runtime on Linux.
#include "platform/linux/ComponentRuntime.h"

#include <comcat.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/component/ClassFactory.h"
#include "platform/component/SystemInterfaces.h"
#include "platform/fake/FakeServices.h"
#include "tests/platform/TestThing.h"

namespace platform {
namespace {

using testing_support::INumber;
using testing_support::kModuleClass;
using testing_support::kModuleNumber;
using testing_support::NumberOf;
using testing_support::Thing;

constexpr CLSID kFirst = base::Guid("{FF1D3D0E-52D6-4C0B-9C9B-0B1E6B1E0001}");
constexpr CLSID kSecond = base::Guid("{001D3D0E-52D6-4C0B-9C9B-0B1E6B1E0002}");
constexpr CLSID kUnknown = base::Guid("{001D3D0E-52D6-4C0B-9C9B-0B1E6B1E0003}");
constexpr CATID kCategory = base::Guid("{001D3D0E-52D6-4C0B-9C9B-0B1E6B1E0004}");
constexpr CATID kOther = base::Guid("{001D3D0E-52D6-4C0B-9C9B-0B1E6B1E0005}");
constexpr LCID kEnglish = 0x409, kGerman = 0x407;

HRESULT GetAnnounced(REFCLSID classId, REFIID iid, void** result) {
  const int number = classId == kFirst ? 1 : 2;
  const auto make = [number]() -> IUnknown* { return static_cast<INumber*>(new Thing(number)); };
  return ComPtr<ClassFactory>::Attach(new ClassFactory(make))->QueryInterface(iid, result);
}

HRESULT GetNothing(REFCLSID, REFIID, void**) {
  return S_OK;
}

std::u16string Taken(LPOLESTR text) {
  const std::u16string copy = text ? text : u"(null)";
  CoTaskMemFree(text);
  return copy;
}

std::string Text(const GUID& id) {
  char text[base::kGuidTextLength + 1];
  base::PrintGuid(id, text);
  return text;
}

std::vector<GUID> ListOf(const ComPtr<IEnumGUID>& list) {
  std::vector<GUID> ids;
  GUID id;
  while (list && list->Next(1, &id, nullptr) == S_OK) ids.push_back(id);
  return ids;
}

class ComponentRuntimeTest : public testing::Test {
 protected:
  ComponentRuntimeTest() {
    AnnounceClasses(GetAnnounced, {{kFirst, "Test.First.1", "Test.First", {kCategory}},
                                   {kSecond, "", "", {kCategory, kOther}}});
    EXPECT_EQ(CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER,
                               IID_ICatInformation, information.PutVoid()),
              S_OK);
    registrar = ComPtr<ICatRegister>::Query(information.Get());
  }
  ~ComponentRuntimeTest() override {
    WithdrawClasses(GetAnnounced);
    CoFreeUnusedLibraries();
  }

  // As a module's own registration does it.
  void RegisterModule(REFCLSID classId, const std::string& path) {
    const std::string key = "CLSID\\" + Text(classId);
    Write(key, "A number");
    Write(key + "\\InProcServer32", path);
    Write(key + "\\ProgID", "Test.Module.1");
    Write(key + "\\VersionIndependentProgID", "Test.Module");
    Write("Test.Module.1\\CLSID", Text(classId));
    Write("Test.Module\\CLSID", Text(classId));
    Write("Test.Module\\CurVer", "Test.Module.1");
    CATID category = kCategory;
    EXPECT_EQ(registrar->RegisterClassImplCategories(classId, 1, &category), S_OK);
  }
  void Write(const std::string& key, const std::string& value) {
    fakes.registry.Write(Hive::ClassesRoot, key, value);
  }

  static HRESULT Create(REFCLSID classId, ComPtr<INumber>& thing) {
    return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, INumber::kIid, thing.PutVoid());
  }
  std::vector<GUID> Classes(std::vector<CATID> implemented, std::vector<CATID> required = {}) {
    ComPtr<IEnumGUID> list;
    EXPECT_EQ(information->EnumClassesOfCategories(
                  static_cast<ULONG>(implemented.size()), implemented.data(),
                  static_cast<ULONG>(required.size()), required.data(), list.Put()),
              S_OK);
    return ListOf(list);
  }

  FakeServices fakes;
  ScopedServices scope{fakes.services};
  ComPtr<ICatInformation> information;
  ComPtr<ICatRegister> registrar;
};

bool IsLoaded() {
  void* handle = dlopen(FXBOX_TEST_MODULE, RTLD_NOW | RTLD_NOLOAD);
  if (handle) dlclose(handle);
  return handle != nullptr;
}

TEST_F(ComponentRuntimeTest, MakesAnnouncedObjectsOrGivesNull) {
  ComPtr<INumber> thing;
  EXPECT_EQ(Create(kFirst, thing), S_OK);
  EXPECT_EQ(NumberOf(thing), 1);
  void* result = this;
  EXPECT_EQ(CoCreateInstance(kFirst, thing.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, &result),
            CLASS_E_NOAGGREGATION);
  EXPECT_EQ(result, nullptr);
  constexpr DWORD kInAnotherProcess = 4;
  EXPECT_EQ(CoCreateInstance(kFirst, nullptr, kInAnotherProcess, IID_IUnknown, &result),
            REGDB_E_CLASSNOTREG);
  AnnounceClasses(GetNothing, {{kUnknown, "", "", {}}, {kFirst, "", "", {}}});
  EXPECT_EQ(Create(kFirst, thing), S_OK) << "the class that was there first stays";
  EXPECT_EQ(Create(kUnknown, thing), CO_E_ERRORINDLL);
  WithdrawClasses(GetNothing);
  EXPECT_EQ(Create(kUnknown, thing), REGDB_E_CLASSNOTREG);
  EXPECT_FALSE(thing);
}

TEST_F(ComponentRuntimeTest, ThreadsCountTheirBeginnings) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(OleInitialize(nullptr), S_FALSE);
    CoUninitialize();
    OleUninitialize();
    CoUninitialize();
  }
}

TEST_F(ComponentRuntimeTest, LoadsRegisteredModules) {
  RegisterModule(kModuleClass, FXBOX_TEST_MODULE);
  EXPECT_FALSE(IsLoaded());
  ComPtr<INumber> thing;
  ASSERT_EQ(Create(kModuleClass, thing), S_OK);
  EXPECT_EQ(NumberOf(thing), kModuleNumber);
  CoFreeUnusedLibraries();
  EXPECT_TRUE(IsLoaded());
  EXPECT_EQ(NumberOf(thing), kModuleNumber);
  thing.Reset();
  EXPECT_TRUE(IsLoaded());
  CoFreeUnusedLibraries();
  EXPECT_FALSE(IsLoaded());
  EXPECT_EQ(Create(kModuleClass, thing), S_OK);
}

TEST_F(ComponentRuntimeTest, SaysWhatIsWrongWithAModule) {
  struct {
    const char* path;
    HRESULT status;
  } const cases[] = {{"", REGDB_E_CLASSNOTREG},
                     {"/no/such/module.so", CO_E_DLLNOTFOUND},
                     {__FILE__, CO_E_DLLNOTFOUND},
                     {"libm.so.6", CO_E_ERRORINDLL},
                     {FXBOX_TEST_MODULE, CLASS_E_CLASSNOTAVAILABLE}};
  for (const auto& [path, status] : cases) {
    RegisterModule(kUnknown, path);
    ComPtr<INumber> thing;
    EXPECT_EQ(Create(kUnknown, thing), status) << path;
    EXPECT_FALSE(thing);
  }
}

TEST_F(ComponentRuntimeTest, ThreadsLoadAndUnloadAtOnce) {
  RegisterModule(kModuleClass, FXBOX_TEST_MODULE);
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&wrong] {
      for (int k = 0; k < 100; ++k) {
        ComPtr<INumber> thing;
        wrong += Create(kModuleClass, thing) != S_OK || NumberOf(thing) != kModuleNumber;
      }
    });
  }
  // While one object lives the module stays, however often it is asked to go.
  ComPtr<INumber> keeper;
  EXPECT_EQ(Create(kModuleClass, keeper), S_OK);
  for (int k = 0; k < 100; ++k) CoFreeUnusedLibraries();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(ComponentRuntimeTest, ProgIdsAndClassIdsLeadToEachOther) {
  RegisterModule(kModuleClass, FXBOX_TEST_MODULE);
  LPOLESTR text = nullptr;
  EXPECT_EQ(ProgIDFromCLSID(kFirst, &text), S_OK);
  EXPECT_EQ(Taken(text), u"Test.First.1");
  EXPECT_EQ(ProgIDFromCLSID(kModuleClass, &text), S_OK);
  EXPECT_EQ(Taken(text), u"Test.Module.1");
  EXPECT_EQ(ProgIDFromCLSID(kSecond, &text), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(text, nullptr);
  struct {
    const char16_t* name;
    HRESULT status;
    CLSID id;
  } const cases[] = {{u"Test.First", S_OK, kFirst},
                     {u"test.FIRST.1", S_OK, kFirst},
                     {u"Test.Module.1", S_OK, kModuleClass},
                     {u"test.module", S_OK, kModuleClass},
                     {u"", CO_E_CLASSSTRING, {}},
                     {u"\\", CO_E_CLASSSTRING, {}}};
  for (const auto& [name, status, expected] : cases) {
    CLSID id;
    EXPECT_EQ(CLSIDFromProgID(name, &id), status);
    EXPECT_EQ(id, expected);
  }
}

TEST_F(ComponentRuntimeTest, IdsAreTexts) {
  OLECHAR buffer[40] = u"unchanged";
  EXPECT_EQ(StringFromGUID2(kFirst, buffer, 38), 0);
  EXPECT_EQ(std::u16string(buffer), u"unchanged");
  EXPECT_EQ(StringFromGUID2(kFirst, buffer, 39), 39);
  const std::u16string printed = buffer;
  EXPECT_EQ(printed, u"{FF1D3D0E-52D6-4C0B-9C9B-0B1E6B1E0001}");
  CLSID id;
  for (const std::u16string& text : {printed, std::u16string(u"Test.First.1")}) {
    EXPECT_EQ(CLSIDFromString(text.c_str(), &id), S_OK);
    EXPECT_EQ(id, kFirst);
  }
  EXPECT_EQ(CLSIDFromString(nullptr, &id), S_OK);
  EXPECT_EQ(id, CLSID{});
  LPOLESTR text = nullptr;
  EXPECT_EQ(StringFromCLSID(kFirst, &text), S_OK);
  EXPECT_EQ(Taken(text), printed);
  for (const std::u16string& bad : {printed + u"x", printed.substr(1), printed.substr(0, 37)}) {
    EXPECT_EQ(CLSIDFromString(bad.c_str(), &id), CO_E_CLASSSTRING);
  }
}

TEST_F(ComponentRuntimeTest, ListsClassesOfCategoriesInOrder) {
  RegisterModule(kModuleClass, FXBOX_TEST_MODULE);
  RegisterModule(kUnknown, FXBOX_TEST_MODULE);
  RegisterModule(kSecond, FXBOX_TEST_MODULE);
  Write("CLSID\\not an id\\Implemented Categories\\" + Text(kCategory), "");
  EXPECT_EQ(Classes({kCategory}), (std::vector<GUID>{kFirst, kSecond, kUnknown, kModuleClass}));
  EXPECT_EQ(Classes({kOther}), std::vector<GUID>{kSecond});
  EXPECT_EQ(Classes({kOther, kCategory}).size(), 4u);

  CATID required = kOther;
  registrar->RegisterClassReqCategories(kUnknown, 1, &required);
  EXPECT_EQ(Classes({kCategory}), (std::vector<GUID>{kFirst, kSecond, kModuleClass}));
  EXPECT_EQ(Classes({kCategory}, {kOther}).size(), 4u);
  ComPtr<IEnumGUID> list;
  EXPECT_EQ(information->EnumImplCategoriesOfClass(kSecond, list.Put()), S_OK);
  EXPECT_EQ(ListOf(list), (std::vector<GUID>{kCategory, kOther}));
  EXPECT_EQ(information->EnumReqCategoriesOfClass(kUnknown, list.Put()), S_OK);
  EXPECT_EQ(ListOf(list), std::vector<GUID>{kOther});

  CATID category = kCategory;
  EXPECT_EQ(information->IsClassOfCategories(kModuleClass, 1, &category, 0, nullptr), S_OK);
  EXPECT_EQ(information->IsClassOfCategories(kModuleClass, ~0u, nullptr, ~0u, nullptr), S_OK);
  EXPECT_EQ(information->IsClassOfCategories(kModuleClass, 0, nullptr, 0, nullptr), E_INVALIDARG);
  EXPECT_EQ(information->IsClassOfCategories(kModuleClass, 1, &category, 1, nullptr), E_INVALIDARG);
  EXPECT_EQ(registrar->UnRegisterClassImplCategories(kModuleClass, 1, &category), S_OK);
  EXPECT_EQ(information->IsClassOfCategories(kModuleClass, 1, &category, 0, nullptr), S_FALSE);
}

TEST_F(ComponentRuntimeTest, DescribesCategories) {
  CATEGORYINFO infos[2] = {{kCategory, kEnglish, u"Filters"},
                           {kCategory, kGerman, u"Filter \u20AC"}};
  ASSERT_EQ(registrar->RegisterCategories(2, infos), S_OK);
  EXPECT_EQ(
      fakes.registry.Read(Hive::ClassesRoot, "Component Categories\\" + Text(kCategory) + "\\409"),
      "Filters");
  struct {
    LCID language;
    const char16_t* text;
  } const cases[] = {{kEnglish, u"Filters"},
                     {kGerman, u"Filter \u20AC"},
                     {0x807, u"Filter \u20AC"},
                     {0, u"Filters"}};
  for (const auto& [language, expected] : cases) {
    LPOLESTR text = nullptr;
    EXPECT_EQ(information->GetCategoryDesc(kCategory, language, &text), S_OK);
    EXPECT_EQ(Taken(text), expected);
  }
  LPOLESTR text = nullptr;
  EXPECT_EQ(information->GetCategoryDesc(kOther, kEnglish, &text), CAT_E_NODESCRIPTION);
  EXPECT_EQ(information->GetCategoryDesc(kUnknown, kEnglish, &text), CAT_E_CATIDNOEXIST);
  ComPtr<IEnumCATEGORYINFO> list;
  CATEGORYINFO told[3] = {};
  ULONG count = 0;
  EXPECT_EQ(information->EnumCategories(kGerman, list.Put()), S_OK);
  EXPECT_EQ(list->Next(3, told, &count), S_FALSE);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(told[0].catid, kCategory);
  EXPECT_EQ(std::u16string(told[0].szDescription), u"Filter \u20AC");

  CATID category = kCategory;
  EXPECT_EQ(registrar->UnRegisterCategories(1, nullptr), E_POINTER);
  EXPECT_EQ(registrar->UnRegisterCategories(0, nullptr), S_OK);
  EXPECT_EQ(registrar->UnRegisterCategories(1, &category), S_OK);
  EXPECT_EQ(information->GetCategoryDesc(kCategory, kEnglish, &text), CAT_E_NODESCRIPTION);
}

TEST_F(ComponentRuntimeTest, ARefusedRegistryIsReported) {
  CATEGORYINFO info = {kCategory, kEnglish, u"Filters"};
  CATID category = kCategory;
  struct {
    RegistryResult result;
    HRESULT status;
  } const cases[] = {{RegistryResult::Denied, E_ACCESSDENIED}, {RegistryResult::Failed, E_FAIL}};
  for (const auto& [result, status] : cases) {
    FailingRegistry first(fakes.registry, 1, result), second(fakes.registry, 1, result);
    fakes.services.registry = &first;
    EXPECT_EQ(registrar->RegisterCategories(1, &info), status);
    fakes.services.registry = &second;
    EXPECT_EQ(registrar->RegisterClassImplCategories(kFirst, 1, &category), status);
    fakes.services.registry = &fakes.registry;
  }
  EXPECT_TRUE(fakes.registry.Snapshot().empty());
}

}  // namespace
}  // namespace platform
