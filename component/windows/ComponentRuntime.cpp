// OLE is ready on the thread that loads the module, as hosts expect it.
#include <ole2.h>

#include "component/ModuleLife.h"

namespace component {
namespace {

// The thread whose count the module has raised; 0 when it has not.
DWORD initialisedThread = 0;

}  // namespace

void JoinComponentRuntime() {
  if (OleInitialize(nullptr) == S_OK) initialisedThread = GetCurrentThreadId();
}

// The count belongs to a thread: another one must not lower its own in place of it.
void LeaveComponentRuntime() {
  if (initialisedThread == GetCurrentThreadId()) OleUninitialize();
  initialisedThread = 0;
}

}  // namespace component
