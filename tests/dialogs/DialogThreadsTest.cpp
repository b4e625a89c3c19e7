// One thread pulls while another moves controls; the thread sanitizer watches.
#include <atomic>
#include <thread>

#include "tests/dialogs/DialogRig.h"
#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace {

using platform::ComPtr;
using testing_support::DialogRig;
using testing_support::Rig;

class DialogThreads : public DialogRig {};

// Whole pulls, each after a Prepare, as a host's worker makes them.
void PullUntil(const std::atomic<bool>& ends, Rig& rig, std::atomic<int>& pulls) {
  while (!ends) {
    rig.PullWhole();
    ++pulls;
  }
}

TEST_F(DialogThreads, PullsGoOnWhileControlsMove) {
  for (const char* progId : {"ZNFilter.RGBColor.1", "ZNFilter.GradCurves.1", "ZNFilter.HSB.1"}) {
    SCOPED_TRACE(progId);
    if (host) ReleaseDialogHost(std::exchange(host, nullptr));
    Make(progId);
    Rig rig(testing_support::Noise(24, 16, testing_support::Masks::Opaque, 1),
            testing_support::ClassOf(progId));
    Connect(static_cast<IAnimFilter*>(&rig.Filter()));
    OpenDialog();
    std::atomic<bool> ends = false;
    std::atomic<int> pulls = 0;
    std::thread worker([&] { PullUntil(ends, rig, pulls); });
    for (int move = 0; move < 200 || pulls < 3; ++move) {
      for (toolkit::ControlId id = 1; id <= Window().ControlCount(); ++id) {
        const auto& control = Window().At(id);
        if (control.spec.kind == toolkit::ControlKind::Slider) {
          Window().Slide(id, (control.value + move) % (control.greatest + 1));
        } else if (control.spec.kind == toolkit::ControlKind::CheckBox) {
          Window().Click(id);
        }
      }
    }
    ends = true;
    worker.join();
    dialog->Close();
    DropDialog();
  }
}

}  // namespace
