// Parts of this library that lie in shared objects of their own and are loaded when they are
// needed.
#pragma once

#include <string>

namespace platform {

// The address of an exported function in such a shared object, which stays loaded. It is looked for
// in the folder that the environment names as FXBOX_MODULES or, without that, beside this library
// and where the system has libraries. Null with the system's reason. Any thread.
void* FindInOwnModule(const std::string& file, const char* function, std::string& reason);

}  // namespace platform
