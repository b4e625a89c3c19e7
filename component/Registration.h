// The module's entries in the registry.
#pragma once

#include <unknwn.h>

#ifdef _WIN32
#include <olectl.h>  // SELFREG_E_CLASS
#endif

namespace component {

// For all users, with the category of filters. S_OK, or SELFREG_E_CLASS with everything put back to
// what it was: no rights, a path that the registry cannot hold, a category manager that fails.
HRESULT RegisterModule();

// Removes every class from the registry and from the category, and the category itself when no
// registered class of any module is left in it. What is not there does not matter: always S_OK.
HRESULT UnregisterModule();

// The same below the current user's own classes, which needs no rights. The category is entered
// with the classes; its description belongs to the machine.
HRESULT RegisterForUser();
HRESULT UnregisterForUser();

}  // namespace component
