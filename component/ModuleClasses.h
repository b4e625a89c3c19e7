// The object table: every class that the module serves.
#pragma once

#include <string>
#include <vector>

#include "platform/component/ClassFactory.h"

namespace component {

struct ModuleClass {
  CLSID classId;
  std::string progId;
  std::string versionIndependentProgId;
  const char* description;
  bool isFilter;  // belongs to the category of filters
  platform::ClassFactory::Maker make;
};

// The filters in sort order, then the chain and the creator. Lives as long as the module.
const std::vector<ModuleClass>& ModuleClasses();

// The class object of one of them; CLASS_E_CLASSNOTAVAILABLE and a null result for another id. What
// the module itself calls and takes the address of: on Linux the exported function of the same task
// may be that of another module in the process.
HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** result);

}  // namespace component
