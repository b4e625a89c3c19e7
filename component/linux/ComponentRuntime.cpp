// The module announces its classes to the runtime of its own process: no registration is needed.
#include "platform/linux/ComponentRuntime.h"

#include "component/ModuleClasses.h"
#include "component/ModuleLife.h"
#include "core/AnimChain.h"

namespace component {

void JoinComponentRuntime() {
  std::vector<platform::InProcessClass> classes;
  for (const ModuleClass& entry : ModuleClasses()) {
    std::vector<CATID> categories;
    if (entry.isFilter) categories.push_back(kFilterCategory);
    classes.push_back({entry.classId, entry.progId, entry.versionIndependentProgId, categories});
  }
  platform::AnnounceClasses(&GetClassObject, std::move(classes));
}

void LeaveComponentRuntime() {
  platform::WithdrawClasses(&GetClassObject);
}

}  // namespace component
