// What happens once when the module comes into a process, and once when it goes.
#pragma once

namespace component {

// Called by the system's loader, on one thread, before and after everything else in the module.
// They pass no exception on.
void ModuleStart() noexcept;
void ModuleStop() noexcept;

// The latter where the process ends and other modules may be gone already: only the log has a last
// line to write.
void ModuleStopAtProcessEnd() noexcept;

// The module's part in the component runtime; each system has its own.
void JoinComponentRuntime();
void LeaveComponentRuntime();

}  // namespace component
