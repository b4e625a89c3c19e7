#include "component/ModuleLife.h"

#include "component/ModuleClasses.h"
#include "core/AnimDialog.h"
#include "core/Diagnostics.h"
#include "dialogs/Dialogs.h"
#include "platform/LargeBlock.h"
#include "settings/TraceLogStd.h"
#include "settings/ZNDebugMonitor.h"
#include "toolkit/ZNControls.h"

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
  Attempt([] {
    // Any address of the module stands for it.
    StartLogging(reinterpret_cast<HMODULE>(&GetClassObject), true, false, nullptr);
    core::SetLogSink(core::WriteToTraceLog);
  });
  Attempt([] {
    core::SetDialogMaker(&dialogs::NewFilterDialog);
    CZNSlider::AttachBitmaps({reinterpret_cast<void*>(&GetClassObject), "IDB_SLIDER_HD",
                              "IDB_SLIDER_CC", "IDB_SLIDER_TMB"},
                             true, true);
  });
  Attempt(JoinComponentRuntime);
}

void ModuleStop() noexcept {
  Attempt(LeaveComponentRuntime);
  Attempt([] {
    CZNSlider::DetachBitmaps();
    core::SetDialogMaker(nullptr);
  });
  Attempt([] { platform::FreeKeptBlocks(); });
  Attempt([] {
    EndDebugMonitor();
    TraceLog::StopLogging(false);
  });
}

void ModuleStopAtProcessEnd() noexcept {
  Attempt(StopLoggingAtProcessEnd);
}

}  // namespace component
