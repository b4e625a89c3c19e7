// The module's entries in the registry, in memory. Machine-wide registration goes through the
// system's category manager, which on Windows writes to the real registry: there the hosts in C
// cover it.
#include "component/Registration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "component/Fxbox4.h"
#include "core/AnimChain.h"
#include "core/FilterClass.h"
#include "platform/fake/FakeServices.h"
#include "tests/component/RequiredClasses.h"

namespace component_test {
namespace {

using platform::FailingRegistry;
using platform::FakeServices;
using platform::Hive;
using platform::ScopedServices;
using testing::Contains;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;

constexpr char kFilterCategoryText[] = "{50988255-CF5D-4E19-85BF-9E17ED51FF1D}";

// Says that the module lies elsewhere.
class ElsewhereFiles final : public platform::Files {
 public:
  explicit ElsewhereFiles(std::filesystem::path path) : module(std::move(path)) {}
  std::optional<std::string> Replace(const std::filesystem::path&, const WriteFile&) override {
    return "not here";
  }
  std::optional<std::string> Move(const std::filesystem::path&,
                                  const std::filesystem::path&) override {
    return "not here";
  }
  std::unique_ptr<platform::GrowingFile> OpenGrowing(const std::filesystem::path&, bool) override {
    return nullptr;
  }
  bool CanReadAndWrite(const std::filesystem::path&) override { return false; }
  std::filesystem::path ModuleOf(const void*) override { return module; }

 private:
  const std::filesystem::path module;
};

struct Registration : testing::Test {
  Registration() {
    // A neighbour's class, which has to survive all of it.
    fakes.registry.Write(Hive::ClassesRoot, "CLSID\\{11111111-2222-3333-4444-555555555555}",
                         "Theirs");
    fakes.registry.Write(Hive::ClassesRoot, "Component Categories\\{CC}\\409", "Theirs");
    fakes.registry.Write(Hive::CurrentUser, "Software\\Classes\\CLSID\\{DD}", "Theirs");
    before = fakes.registry.Snapshot();
    fakes.services.files = &files;
  }

  ElsewhereFiles files{"/opt/photo/Fxbox4.dll"};
  FakeServices fakes;
  ScopedServices scope{fakes.services};
  std::vector<std::string> before;
};

// What one class owes to the registry, as lines of a snapshot.
std::vector<std::string> ClassLines(const std::string& root, const std::string& classId,
                                    const std::string& progId, const std::string& description) {
  const std::string independent = progId.substr(0, progId.size() - 2);
  const std::string classKey = root + "CLSID\\" + classId;
  return {classKey + " = " + description,
          classKey + "\\InProcServer32 = /opt/photo/Fxbox4.dll",
          classKey + "\\InProcServer32 [ThreadingModel] = Both",
          classKey + "\\ProgID = " + progId,
          classKey + "\\VersionIndependentProgID = " + independent,
          root + independent + " = " + description,
          root + independent + "\\CLSID = " + classId,
          root + independent + "\\CurVer = " + progId,
          root + progId + " = " + description,
          root + progId + "\\CLSID = " + classId};
}

void ExpectAllClasses(const std::vector<std::string>& snapshot, const std::string& root) {
  for (const RequiredClass& required : RequiredClasses()) {
    auto lines = ClassLines(root, required.classId, required.progId,
                            "Ostvale Works - Veltrane Picture Filter");
    lines.push_back(root + "CLSID\\" + required.classId + "\\Implemented Categories\\" +
                    kFilterCategoryText + " = ");
    EXPECT_THAT(snapshot, IsSupersetOf(lines)) << required.progId;
  }
  EXPECT_THAT(snapshot, IsSupersetOf(ClassLines(root, "{6E280DD9-4FF3-4EB6-8B56-F7C45A43C51E}",
                                                "ZNFilter.Chain.1", "ZNFilter - Filterchain")));
  EXPECT_THAT(snapshot, IsSupersetOf(ClassLines(root, "{8E1F6E0B-53C7-4E0C-A7C8-1B5D0B2F4A96}",
                                                "ZNFilter.Creator.1", "ZNFilter - Filtercreator")));
}

TEST_F(Registration, OfOneUserStaysBelowTheUsersKey) {
  ASSERT_EQ(S_OK, component::RegisterForUser());
  ExpectAllClasses(fakes.registry.Snapshot(), "HKEY_CURRENT_USER\\Software\\Classes\\");
  EXPECT_THAT(fakes.registry.Subkeys(Hive::ClassesRoot, ""), Not(Contains(HasSubstr("ZNFilter"))));
  EXPECT_EQ(S_OK, component::UnregisterForUser());
  EXPECT_EQ(before, fakes.registry.Snapshot());
}

TEST_F(Registration, FailsWithAPathThatTheRegistryCannotHold) {
  for (const std::size_t length : {269, 270}) {
    ElsewhereFiles elsewhere(std::string(length, 'x'));
    fakes.services.files = &elsewhere;
    const bool fits = length < 270;
    EXPECT_EQ(fits ? S_OK : SELFREG_E_CLASS, component::RegisterForUser());
    if (fits) component::UnregisterForUser();
    EXPECT_EQ(before, fakes.registry.Snapshot());
  }
#ifdef _WIN32
  ElsewhereFiles otherScript(u"C:\\\u30d5\u30a3\u30eb\u30bf\\Fxbox4.dll");
  fakes.services.files = &otherScript;
  EXPECT_EQ(SELFREG_E_CLASS, component::RegisterForUser());
  EXPECT_EQ(before, fakes.registry.Snapshot());
#endif
}

// Lets one call after the other fail and demands all or nothing. What only reads may fail without
// harm.
template <class Register>
void ExpectAllOrNothing(FakeServices& fakes, Register registerAll) {
  ASSERT_EQ(S_OK, registerAll());
  // The calls of the first classes one by one, then samples up to the last class.
  constexpr int kEveryCall = 60;
  constexpr int kStep = 7;
  int refused = 0;
  bool reached = true;
  for (int n = 1; reached && !testing::Test::HasFailure(); n += n < kEveryCall ? 1 : kStep) {
    SCOPED_TRACE(n);
    platform::MemoryRegistry fresh;
    FailingRegistry failing(fresh, n);
    fakes.services.registry = &failing;
    const HRESULT status = registerAll();
    reached = failing.CallCount() >= n;
    if (SUCCEEDED(status)) continue;
    ++refused;
    EXPECT_EQ(SELFREG_E_CLASS, status);
    // The keys that hold classes and categories stay: a real registry has them from the start.
    for (const std::string& line : fresh.Snapshot()) {
      EXPECT_THAT(line, Not(testing::AnyOf(HasSubstr("{"), HasSubstr("ZNFilter"))));
    }
  }
  EXPECT_GT(refused, kEveryCall / 3);
}

TEST_F(Registration, OfOneUserIsAllOrNothing) {
  ExpectAllOrNothing(fakes, [] { return component::RegisterForUser(); });
}

TEST_F(Registration, PutsBackWhatItReplaced) {
  ASSERT_EQ(S_OK, component::RegisterForUser());
  const std::vector<std::string> registered = fakes.registry.Snapshot();
  ElsewhereFiles newer("/opt/newer/Fxbox4.dll");
  fakes.services.files = &newer;
  FailingRegistry failing(fakes.registry, 301);
  fakes.services.registry = &failing;
  EXPECT_EQ(SELFREG_E_CLASS, component::RegisterForUser());
  EXPECT_EQ(registered, fakes.registry.Snapshot());
}

#ifndef _WIN32

TEST_F(Registration, OfTheMachineLeavesNothingBehind) {
  ASSERT_EQ(S_OK, DllRegisterServer());
  const std::vector<std::string> registered = fakes.registry.Snapshot();
  ExpectAllClasses(registered, "HKEY_CLASSES_ROOT\\");
  EXPECT_THAT(registered, Contains(std::string("HKEY_CLASSES_ROOT\\Component Categories\\") +
                                   kFilterCategoryText + "\\409 = Ostvale Works - Filter"));
  EXPECT_EQ(S_OK, DllRegisterServer());
  EXPECT_EQ(registered, fakes.registry.Snapshot());  // twice is no harm
  EXPECT_EQ(S_OK, DllUnregisterServer());
  EXPECT_EQ(before, fakes.registry.Snapshot());
  EXPECT_EQ(S_OK, DllUnregisterServer());
  EXPECT_EQ(before, fakes.registry.Snapshot());
}

TEST_F(Registration, LeavesTheCategoryToOtherModules) {
  ASSERT_EQ(S_OK, DllRegisterServer());
  const std::string theirs =
      std::string("CLSID\\{11111111-2222-3333-4444-555555555555}\\Implemented Categories\\") +
      kFilterCategoryText;
  fakes.registry.Write(Hive::ClassesRoot, theirs, "");
  EXPECT_EQ(S_OK, DllUnregisterServer());
  EXPECT_EQ("Ostvale Works - Filter",
            fakes.registry.Read(Hive::ClassesRoot, std::string("Component Categories\\") +
                                                       kFilterCategoryText + "\\409"));
}

TEST_F(Registration, OfTheMachineIsAllOrNothing) {
  ExpectAllOrNothing(fakes, [] { return DllRegisterServer(); });
}

#endif

}  // namespace
}  // namespace component_test
