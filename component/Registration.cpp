#include "component/Registration.h"

#include <comcat.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/CodePage.h"
#include "component/ModuleClasses.h"
#include "core/AnimChain.h"
#include "platform/Services.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"
#include "platform/component/SystemInterfaces.h"

namespace component {
namespace {

using platform::ComPtr;
using platform::Hive;
using platform::RegistryResult;

constexpr std::size_t kPathBuffer = 270;  // bytes, the closing zero among them
constexpr LCID kEnglish = 0x409;

// Below which key the classes lie.
struct Root {
  Hive hive;
  const char* prefix;
};
constexpr Root kMachineClasses = {Hive::ClassesRoot, ""};
constexpr Root kUserClasses = {Hive::CurrentUser, "Software\\Classes\\"};

platform::Registry& Registry() {
  return *platform::CurrentServices().registry;
}

std::string TextOf(const GUID& id) {
  char text[base::kGuidTextLength + 1];
  base::PrintGuid(id, text);
  return text;
}

std::string ClassKey(const ModuleClass& entry) {
  return "CLSID\\" + TextOf(entry.classId);
}

// Writes below a root and can put back what was there before.
class RegistryChange {
 public:
  explicit RegistryChange(const Root& root) : hive(root.hive), prefix(root.prefix) {}
  ~RegistryChange() {
    if (kept) return;
    platform::Guard([this] {
      Undo();
      return S_OK;
    });
  }
  RegistryChange(const RegistryChange&) = delete;
  RegistryChange& operator=(const RegistryChange&) = delete;

  bool Write(const std::string& key, std::string_view value) {
    before.emplace_back(prefix + key, Registry().Read(hive, prefix + key));
    return Registry().Write(hive, prefix + key, value) == RegistryResult::Done;
  }
  // Of a key that Write has made.
  bool WriteNamed(const std::string& key, const char* name, std::string_view value) {
    return Registry().WriteNamed(hive, prefix + key, name, value) == RegistryResult::Done;
  }
  void Keep() { kept = true; }

 private:
  void Undo() {
    for (auto change = before.rbegin(); change != before.rend(); ++change) {
      const auto& [key, value] = *change;
      if (value) {
        Registry().Write(hive, key, *value);
      } else {
        Registry().DeleteTree(hive, key);
      }
    }
  }

  const Hive hive;
  const std::string prefix;
  std::vector<std::pair<std::string, std::optional<std::string>>> before;
  bool kept = false;
};

// The path of the file that the module was loaded from, in the code page of the registry; nothing
// when it cannot be written there in full.
std::optional<std::string> ModulePath() {
  const std::filesystem::path path =
      platform::CurrentServices().files->ModuleOf(reinterpret_cast<const void*>(&GetClassObject));
#ifdef _WIN32
  const std::u16string wide = path.u16string();
  const std::string text = base::FromWide(wide);
  if (base::ToWide(text) != wide) return std::nullopt;
#else
  const std::string& text = path.native();
#endif
  if (text.empty() || text.size() >= kPathBuffer) return std::nullopt;
  return text;
}

bool WriteKeys(RegistryChange& change, const ModuleClass& entry, const std::string& path) {
  const std::string classId = TextOf(entry.classId);
  const std::string classKey = ClassKey(entry);
  const std::string& versioned = entry.progId;
  const std::string& independent = entry.versionIndependentProgId;
  return change.Write(classKey, entry.description) &&
         change.Write(classKey + "\\InProcServer32", path) &&
         change.WriteNamed(classKey + "\\InProcServer32", "ThreadingModel", "Both") &&
         change.Write(classKey + "\\ProgID", versioned) &&
         change.Write(classKey + "\\VersionIndependentProgID", independent) &&
         change.Write(independent, entry.description) &&
         change.Write(independent + "\\CLSID", classId) &&
         change.Write(independent + "\\CurVer", versioned) &&
         change.Write(versioned, entry.description) && change.Write(versioned + "\\CLSID", classId);
}

// Calls `enter` for every class behind its keys; all or nothing.
template <class Enter>
HRESULT RegisterClasses(const Root& root, Enter enter) {
  const std::optional<std::string> path = ModulePath();
  if (!path) return SELFREG_E_CLASS;
  RegistryChange change(root);
  for (const ModuleClass& entry : ModuleClasses()) {
    if (!WriteKeys(change, entry, *path) || !enter(change, entry)) return SELFREG_E_CLASS;
  }
  change.Keep();
  return S_OK;
}

void DeleteKeys(const Root& root) {
  for (const ModuleClass& entry : ModuleClasses()) {
    for (const std::string& key : {ClassKey(entry), entry.progId, entry.versionIndependentProgId}) {
      Registry().DeleteTree(root.hive, root.prefix + key);
    }
  }
}

// Holds the component runtime on this thread while it lives. A thread that has it already in
// another way is served too.
class RuntimeScope {
 public:
  RuntimeScope() : initialised(SUCCEEDED(CoInitialize(nullptr))) {}
  ~RuntimeScope() {
    if (initialised) CoUninitialize();
  }
  RuntimeScope(const RuntimeScope&) = delete;
  RuntimeScope& operator=(const RuntimeScope&) = delete;

 private:
  const bool initialised;
};

// The category of filters, through the system's manager.
class FilterCategory {
 public:
  FilterCategory() {
    CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER,
                     platform::IidOf<ICatRegister>(), manager.PutVoid());
  }

  bool Enter(const ModuleClass& entry) {
    if (!manager) return false;
    if (!described) described = Describe();
    CATID category = kFilterCategory;
    return described &&
           SUCCEEDED(manager->RegisterClassImplCategories(entry.classId, 1, &category));
  }
  void Remove(const ModuleClass& entry) {
    CATID category = kFilterCategory;
    if (manager) manager->UnRegisterClassImplCategories(entry.classId, 1, &category);
  }
  void DropWhenUnused() {
    CATID category = kFilterCategory;
    if (manager && !HasRegisteredClass()) manager->UnRegisterCategories(1, &category);
  }

 private:
  bool Describe() {
    CATEGORYINFO info = {kFilterCategory, kEnglish, {}};
    std::copy_n(kFilterCategoryDescription, std::size(kFilterCategoryDescription),
                info.szDescription);
    return SUCCEEDED(manager->RegisterCategories(1, &info));
  }

  // Classes that live in this process alone do not count.
  bool HasRegisteredClass() {
    const auto information = ComPtr<ICatInformation>::Query(manager.Get());
    ComPtr<IEnumGUID> classes;
    CATID category = kFilterCategory;
    if (information) information->EnumClassesOfCategories(1, &category, 0, nullptr, classes.Put());
    CLSID classId;
    while (classes && classes->Next(1, &classId, nullptr) == S_OK) {
      if (Registry().Read(Hive::ClassesRoot, "CLSID\\" + TextOf(classId))) return true;
    }
    return false;
  }

  ComPtr<ICatRegister> manager;
  bool described = false;
};

}  // namespace

HRESULT RegisterModule() {
  const RuntimeScope runtime;
  FilterCategory category;
  const HRESULT status =
      RegisterClasses(kMachineClasses, [&category](RegistryChange&, const ModuleClass& entry) {
        return !entry.isFilter || category.Enter(entry);
      });
  if (FAILED(status)) category.DropWhenUnused();
  return status;
}

HRESULT UnregisterModule() {
  const RuntimeScope runtime;
  FilterCategory category;
  DeleteKeys(kMachineClasses);
  for (const ModuleClass& entry : ModuleClasses()) {
    if (entry.isFilter) category.Remove(entry);
  }
  category.DropWhenUnused();
  return S_OK;
}

HRESULT RegisterForUser() {
  return RegisterClasses(kUserClasses, [](RegistryChange& change, const ModuleClass& entry) {
    const std::string categories = ClassKey(entry) + "\\Implemented Categories\\";
    return !entry.isFilter || change.Write(categories + TextOf(kFilterCategory), "");
  });
}

HRESULT UnregisterForUser() {
  DeleteKeys(kUserClasses);
  return S_OK;
}

}  // namespace component
