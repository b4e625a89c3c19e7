#include "platform/linux/ClassTable.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <new>

#include "platform/RegistryKey.h"
#include "platform/Services.h"

namespace platform {
namespace {

struct AnnouncedClass {
  GetClassObjectFunction getClassObject;
  InProcessClass known;
};

// Never destroyed: modules withdraw their classes while the process ends, in no certain order.
struct AnnouncedClasses {
  std::mutex lock;
  std::vector<AnnouncedClass> classes;
};

AnnouncedClasses& Announced() {
  // Within the module's own data, so that nothing is left when the module is unloaded.
  alignas(AnnouncedClasses) static std::byte place[sizeof(AnnouncedClasses)];
  static auto* announced = new (place) AnnouncedClasses;
  return *announced;
}

// Runs `visit` for each announced class until it says false.
template <class Visit>
void VisitAnnounced(Visit visit) {
  AnnouncedClasses& announced = Announced();
  const std::lock_guard guard(announced.lock);
  for (const AnnouncedClass& entry : announced.classes) {
    if (!visit(entry)) return;
  }
}

template <class Visit>
void VisitAnnouncedClass(REFCLSID classId, Visit visit) {
  VisitAnnounced([&](const AnnouncedClass& entry) {
    if (!base::SameGuid(entry.known.classId, classId)) return true;
    visit(entry);
    return false;
  });
}

Registry& ClassRegistry() {
  return *CurrentServices().registry;
}

std::string RegisteredText(const std::string& key) {
  return ClassRegistry().Read(Hive::ClassesRoot, key).value_or("");
}

void AddOnce(std::vector<GUID>& ids, const GUID& id) {
  const auto same = [&id](const GUID& other) { return base::SameGuid(id, other); };
  if (std::none_of(ids.begin(), ids.end(), same)) ids.push_back(id);
}

// Adds the ids that name keys directly below.
void AddSubkeyIds(const std::string& key, std::vector<GUID>& ids) {
  for (const std::string& name : ClassRegistry().Subkeys(Hive::ClassesRoot, key)) {
    if (const std::optional<GUID> id = GuidOf(name)) AddOnce(ids, *id);
  }
}

}  // namespace

void AnnounceClasses(GetClassObjectFunction getClassObject, std::vector<InProcessClass> classes) {
  AnnouncedClasses& announced = Announced();
  const std::lock_guard guard(announced.lock);
  for (InProcessClass& offered : classes) {
    const auto same = [&offered](const AnnouncedClass& entry) {
      return base::SameGuid(entry.known.classId, offered.classId);
    };
    if (std::any_of(announced.classes.begin(), announced.classes.end(), same)) continue;
    announced.classes.push_back({getClassObject, std::move(offered)});
  }
}

void WithdrawClasses(GetClassObjectFunction getClassObject) {
  AnnouncedClasses& announced = Announced();
  const std::lock_guard guard(announced.lock);
  std::erase_if(announced.classes, [getClassObject](const AnnouncedClass& entry) {
    return entry.getClassObject == getClassObject;
  });
  announced.classes.shrink_to_fit();
}

GetClassObjectFunction AnnouncedFunction(REFCLSID classId) {
  GetClassObjectFunction found = nullptr;
  VisitAnnouncedClass(classId,
                      [&found](const AnnouncedClass& entry) { found = entry.getClassObject; });
  return found;
}

std::string RegisteredModule(REFCLSID classId) {
  return RegisteredText(ClassKey(classId) + "\\InProcServer32");
}

std::string ProgIdOf(REFCLSID classId) {
  std::string progId;
  VisitAnnouncedClass(classId,
                      [&progId](const AnnouncedClass& entry) { progId = entry.known.progId; });
  return !progId.empty() ? progId : RegisteredText(ClassKey(classId) + "\\ProgID");
}

std::optional<CLSID> ClassOfProgId(std::string_view progId) {
  if (progId.empty()) return std::nullopt;
  std::optional<CLSID> found;
  VisitAnnounced([&](const AnnouncedClass& entry) {
    const InProcessClass& known = entry.known;
    if (SameName(progId, known.progId) || SameName(progId, known.versionIndependentProgId)) {
      found = known.classId;
    }
    return !found;
  });
  return found ? found : GuidOf(RegisteredText(std::string(progId) + "\\CLSID"));
}

std::vector<CLSID> AllClasses() {
  std::vector<CLSID> classes;
  VisitAnnounced([&classes](const AnnouncedClass& entry) {
    classes.push_back(entry.known.classId);
    return true;
  });
  AddSubkeyIds("CLSID", classes);
  return classes;
}

std::vector<CATID> CategoriesOf(REFCLSID classId, CategoryUse use) {
  std::vector<CATID> categories;
  if (use == CategoryUse::Implemented) {
    VisitAnnouncedClass(classId, [&categories](const AnnouncedClass& entry) {
      categories = entry.known.categories;
    });
  }
  AddSubkeyIds(CategoriesKey(classId, use), categories);
  return categories;
}

std::vector<CATID> AllCategories() {
  std::vector<CATID> categories;
  AddSubkeyIds(kCategoriesRoot, categories);
  VisitAnnounced([&categories](const AnnouncedClass& entry) {
    for (const CATID& category : entry.known.categories) AddOnce(categories, category);
    return true;
  });
  return categories;
}

}  // namespace platform
