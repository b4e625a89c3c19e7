// The component runtime's door for modules that live in the process already.
#pragma once

#include <objbase.h>

#include <string>
#include <vector>

#include "base/Export.h"

namespace platform {

// One class of a module in the process.
struct InProcessClass {
  CLSID classId;
  std::string progId;                    // versioned; empty when the class has none
  std::string versionIndependentProgId;  // empty when the class has none
  std::vector<CATID> categories;         // those that the class implements
};

using GetClassObjectFunction = HRESULT (*)(REFCLSID classId, REFIID iid, void** result);

// Makes the classes known to CoCreateInstance, the ProgID functions and the category manager, in
// this order and ahead of registered ones. A class id that is known already is not taken again.
// Thread-safe.
FXBOX_API void AnnounceClasses(GetClassObjectFunction getClassObject,
                               std::vector<InProcessClass> classes);
// Forgets the classes that came with this function.
FXBOX_API void WithdrawClasses(GetClassObjectFunction getClassObject);

}  // namespace platform
