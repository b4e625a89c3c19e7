// The services of the running system; each is defined in platform/linux and in platform/windows.
#pragma once

#include "platform/Services.h"

namespace platform {

// The objects live as long as the process and need no end.
Registry& SystemRegistry();
Profiles& SystemProfiles();
Files& SystemFiles();
Mutexes& SystemMutexes();
Process& SystemProcess();
Desktop& SystemDesktop();
Terminal& SystemTerminal();
Modules& SystemModules();
Fonts& SystemFonts();
SharedMemory& SystemSharedMemory();

}  // namespace platform
