#include "component/ModuleClasses.h"

#include <algorithm>

#include "core/AnimChain.h"
#include "core/FilterObject.h"
#include "core/PdibFilterChain.h"
#include "core/PdibFilterCreator.h"
#include "filters/FilterClasses.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"

namespace component {
namespace {

ModuleClass Entry(const CLSID& classId, const char* progId, const char* description, bool isFilter,
                  platform::ClassFactory::Maker make) {
  std::string name = progId;
  std::string versionIndependent = name.substr(0, name.rfind('.'));
  return {classId,     std::move(name), std::move(versionIndependent),
          description, isFilter,        std::move(make)};
}

template <class Interface, class Class>
IUnknown* Make() {
  return static_cast<Interface*>(new Class);
}

std::vector<ModuleClass> BuildTable() {
  std::vector<ModuleClass> table;
  for (const FilterClass& row : FilterClasses()) {
    table.push_back(Entry(row.classId, row.progId, kFilterDescription, true,
                          [&row] { return static_cast<IAnimFilter*>(row.make(row)); }));
  }
  table.push_back(Entry(kChainClassId, "ZNFilter.Chain.1", "ZNFilter - Filterchain", false,
                        &Make<IAnimFilterChain, CPdibFilterChain>));
  // It knows the classes of this module also where none is registered.
  table.push_back(Entry(
      kCreatorClassId, "ZNFilter.Creator.1", "ZNFilter - Filtercreator", false, []() -> IUnknown* {
        return static_cast<IAnimFilterCreator*>(new CPdibFilterCreator(FilterClasses()));
      }));
  return table;
}

}  // namespace

const std::vector<ModuleClass>& ModuleClasses() {
  static const std::vector<ModuleClass> table = BuildTable();
  return table;
}

HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return platform::Guard([&] {
    const auto& classes = ModuleClasses();
    const auto found = std::find_if(
        classes.begin(), classes.end(),
        [&classId](const ModuleClass& entry) { return base::SameGuid(entry.classId, classId); });
    if (found == classes.end()) return CLASS_E_CLASSNOTAVAILABLE;
    const auto factory =
        platform::ComPtr<platform::ClassFactory>::Attach(new platform::ClassFactory(found->make));
    return factory->QueryInterface(iid, result);
  });
}

}  // namespace component
