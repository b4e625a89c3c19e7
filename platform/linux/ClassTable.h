// The classes that the component runtime knows: announced ones, and behind them registered ones.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/ClassKeys.h"
#include "platform/linux/ComponentRuntime.h"

namespace platform {

// All functions may be called from any thread; none calls into a module.

// The function of the module that announced the class, or null.
GetClassObjectFunction AnnouncedFunction(REFCLSID classId);

// The shared object that is registered for the class; empty when there is none.
std::string RegisteredModule(REFCLSID classId);

// Empty when the class is unknown or has no ProgID.
std::string ProgIdOf(REFCLSID classId);
// Takes both kinds of ProgID, in whatever case.
std::optional<CLSID> ClassOfProgId(std::string_view progId);

// Announced classes in their order, then registered ones by class id; each once.
std::vector<CLSID> AllClasses();

// What the class announced together with what is registered for it.
std::vector<CATID> CategoriesOf(REFCLSID classId, CategoryUse use);

// Registered categories, then those that only announced classes name.
std::vector<CATID> AllCategories();

}  // namespace platform
