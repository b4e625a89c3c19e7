// Parts of this library that lie in shared objects of their own and are loaded when they are
// needed.
#pragma once

#include <string>

namespace platform {

// The file of a part: "webp" is libfxbox4-webp.so.4 on Linux and Fxbox4-webp.dll on Windows.
std::string OwnModuleFile(const std::string& part);

// The address of an exported function of a part, which stays loaded. Its file is looked for in the
// folder that the environment names as FXBOX_MODULES or, without that, beside this library and,
// on Linux, where the system has libraries. Null with the system's reason. Any thread.
void* FindInOwnModule(const std::string& part, const char* function, std::string& reason);

}  // namespace platform
