#include "component/ModuleLife.h"

namespace component {
namespace {

// A module that cannot join still serves hosts that call its exported functions.
template <class Step>
void Attempt(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

}  // namespace

void ModuleStart() noexcept {
  Attempt(JoinComponentRuntime);
}

void ModuleStop() noexcept {
  Attempt(LeaveComponentRuntime);
}

}  // namespace component
