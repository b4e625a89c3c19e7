#include "platform/linux/CategoryManager.h"

#include <objbase.h>

#include <algorithm>
#include <charconv>
#include <span>

#include "base/CodePage.h"
#include "platform/Services.h"
#include "platform/component/Guard.h"
#include "platform/component/ListEnumerator.h"
#include "platform/linux/ClassTable.h"
#include "platform/linux/WideText.h"

namespace platform {
namespace {

constexpr ULONG kAllCategories = 0xFFFFFFFFu;

Registry& ClassRegistry() {
  return *CurrentServices().registry;
}

HRESULT StatusOf(RegistryResult result) {
  switch (result) {
    case RegistryResult::Done:
    case RegistryResult::NotFound:
      return S_OK;  // what is to go is gone
    case RegistryResult::Denied:
      return E_ACCESSDENIED;
    default:
      return E_FAIL;
  }
}

std::string LanguageName(LCID lcid) {
  char digits[8];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, lcid, 16);
  return {digits, end.ptr};
}

// The description in this language, else in its neutral and its main form, in English, or in any.
std::string DescriptionOf(REFCATID category, LCID lcid) {
  constexpr LCID kPrimary = 0x3FF, kMainForm = 0x400, kEnglish = 0x409;
  const std::string key = CategoryKey(category);
  const LCID primary = lcid & kPrimary;
  std::vector<std::string> languages;
  for (const LCID wanted : {lcid, primary, primary | kMainForm, kEnglish}) {
    languages.push_back(LanguageName(wanted));
  }
  for (std::string& name : ClassRegistry().Subkeys(Hive::ClassesRoot, key)) {
    languages.push_back(std::move(name));
  }
  for (const std::string& name : languages) {
    const auto text = ClassRegistry().Read(Hive::ClassesRoot, key + "\\" + name);
    if (text && !text->empty()) return *text;
  }
  return {};
}

bool Contains(std::span<const CATID> categories, const CATID& wanted) {
  return std::any_of(categories.begin(), categories.end(),
                     [&wanted](const CATID& id) { return base::SameGuid(id, wanted); });
}

// What a caller asks of a class: that it implements one of some categories and requires no others
// than some.
class Selection {
 public:
  Selection(ULONG implementedCount, const CATID* implemented, ULONG requiredCount,
            const CATID* required)
      : anyImplemented(implementedCount == kAllCategories),
        anyRequired(requiredCount == kAllCategories) {
    if (!anyImplemented && implemented) oneOf = {implemented, implementedCount};
    if (!anyRequired && required) only = {required, requiredCount};
    valid = (anyImplemented || (implementedCount > 0 && implemented)) &&
            (anyRequired || requiredCount == 0 || required);
  }

  bool IsValid() const { return valid; }

  bool Matches(REFCLSID classId) const {
    return (anyImplemented || ImplementsOne(classId)) && (anyRequired || RequiresNoOther(classId));
  }

 private:
  bool ImplementsOne(REFCLSID classId) const {
    const std::vector<CATID> has = CategoriesOf(classId, CategoryUse::Implemented);
    return std::any_of(has.begin(), has.end(),
                       [this](const CATID& id) { return Contains(oneOf, id); });
  }
  bool RequiresNoOther(REFCLSID classId) const {
    const std::vector<CATID> has = CategoriesOf(classId, CategoryUse::Required);
    return std::all_of(has.begin(), has.end(),
                       [this](const CATID& id) { return Contains(only, id); });
  }

  bool anyImplemented, anyRequired, valid = false;
  std::span<const CATID> oneOf, only;
};

using GuidEnumerator = ListEnumerator<IEnumGUID, GUID>;
using CategoryEnumerator = ListEnumerator<IEnumCATEGORYINFO, CATEGORYINFO>;

HRESULT EnumerateCategories(REFCLSID classId, CategoryUse use, IEnumCATID** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return Guard([&] {
    *result = new GuidEnumerator(CategoriesOf(classId, use));
    return S_OK;
  });
}

// Runs `change`, which gives a registry result, for each item up to the first failure.
template <class Item, class Change>
HRESULT ForEach(ULONG count, const Item* items, Change change) {
  if (count > 0 && !items) return E_POINTER;
  return Guard([&] {
    for (ULONG i = 0; i < count; ++i) {
      const HRESULT status = StatusOf(change(items[i]));
      if (FAILED(status)) return status;
    }
    return S_OK;
  });
}

HRESULT RegisterClass(REFCLSID classId, CategoryUse use, ULONG count, const CATID* categories) {
  return ForEach(count, categories, [&](const CATID& category) {
    const std::string key = CategoriesKey(classId, use) + "\\" + GuidText(category);
    return ClassRegistry().Write(Hive::ClassesRoot, key, "");
  });
}

HRESULT UnRegisterClass(REFCLSID classId, CategoryUse use, ULONG count, const CATID* categories) {
  return ForEach(count, categories, [&](const CATID& category) {
    const std::string key = CategoriesKey(classId, use) + "\\" + GuidText(category);
    return ClassRegistry().DeleteTree(Hive::ClassesRoot, key);
  });
}

}  // namespace

HRESULT CategoryManager::EnumCategories(LCID lcid, IEnumCATEGORYINFO** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return Guard([&] {
    std::vector<CATEGORYINFO> infos;
    for (const CATID& category : AllCategories()) {
      CATEGORYINFO info = {category, lcid, {}};
      const std::u16string text = base::ToWide(DescriptionOf(category, lcid));
      std::copy_n(text.begin(), std::min(text.size(), std::size(info.szDescription) - 1),
                  info.szDescription);
      infos.push_back(info);
    }
    *result = new CategoryEnumerator(std::move(infos));
    return S_OK;
  });
}

HRESULT CategoryManager::GetCategoryDesc(REFCATID category, LCID lcid, LPOLESTR* description) {
  if (!description) return E_POINTER;
  *description = nullptr;
  return Guard([&] {
    const std::string text = DescriptionOf(category, lcid);
    if (!text.empty()) return GiveWideText(text, description);
    return Contains(AllCategories(), category) ? CAT_E_NODESCRIPTION : CAT_E_CATIDNOEXIST;
  });
}

HRESULT CategoryManager::EnumClassesOfCategories(ULONG implementedCount, const CATID* implemented,
                                                 ULONG requiredCount, const CATID* required,
                                                 IEnumCLSID** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  const Selection selection(implementedCount, implemented, requiredCount, required);
  if (!selection.IsValid()) return E_INVALIDARG;
  return Guard([&] {
    std::vector<CLSID> classes = AllClasses();
    std::erase_if(classes, [&](const CLSID& classId) { return !selection.Matches(classId); });
    *result = new GuidEnumerator(std::move(classes));
    return S_OK;
  });
}

HRESULT CategoryManager::IsClassOfCategories(REFCLSID classId, ULONG implementedCount,
                                             const CATID* implemented, ULONG requiredCount,
                                             const CATID* required) {
  const Selection selection(implementedCount, implemented, requiredCount, required);
  if (!selection.IsValid()) return E_INVALIDARG;
  return Guard([&] {
    const bool known = Contains(AllClasses(), classId);
    return known && selection.Matches(classId) ? S_OK : S_FALSE;
  });
}

HRESULT CategoryManager::EnumImplCategoriesOfClass(REFCLSID classId, IEnumCATID** result) {
  return EnumerateCategories(classId, CategoryUse::Implemented, result);
}

HRESULT CategoryManager::EnumReqCategoriesOfClass(REFCLSID classId, IEnumCATID** result) {
  return EnumerateCategories(classId, CategoryUse::Required, result);
}

HRESULT CategoryManager::RegisterCategories(ULONG count, CATEGORYINFO* infos) {
  return ForEach(count, infos, [](const CATEGORYINFO& info) {
    const OLECHAR* end = std::find(info.szDescription, std::end(info.szDescription), u'\0');
    const std::u16string_view text(info.szDescription, end);
    const std::string key = CategoryKey(info.catid) + "\\" + LanguageName(info.lcid);
    return ClassRegistry().Write(Hive::ClassesRoot, key, base::FromWide(text));
  });
}

HRESULT CategoryManager::UnRegisterCategories(ULONG count, CATID* categories) {
  return ForEach(count, categories, [](const CATID& category) {
    return ClassRegistry().DeleteTree(Hive::ClassesRoot, CategoryKey(category));
  });
}

HRESULT CategoryManager::RegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                     CATID* categories) {
  return RegisterClass(classId, CategoryUse::Implemented, count, categories);
}

HRESULT CategoryManager::UnRegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                       CATID* categories) {
  return UnRegisterClass(classId, CategoryUse::Implemented, count, categories);
}

HRESULT CategoryManager::RegisterClassReqCategories(REFCLSID classId, ULONG count,
                                                    CATID* categories) {
  return RegisterClass(classId, CategoryUse::Required, count, categories);
}

HRESULT CategoryManager::UnRegisterClassReqCategories(REFCLSID classId, ULONG count,
                                                      CATID* categories) {
  return UnRegisterClass(classId, CategoryUse::Required, count, categories);
}

}  // namespace platform
