// The dialogs of all classes in real windows, over filters with a picture:
//
//   dialogs_on_screen pictures FOLDER [dark]   a picture of each, FOLDER/<class name>.png
//   dialogs_on_screen list                     class name, ProgID, what the filter does, a line
//   each dialogs_on_screen check                    sizes and texts by the system's measure, and
//   times dialogs_on_screen repeat TIMES             opens and closes them; memory and counters
//   stay flat
//
// The exit status is 0 when all is well.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "dialogs/Dialogs.h"
#include "tests/dialogs/LayoutCheck.h"
#include "tests/dialogs/OpenDialog.h"
#include "tests/dialogs/ProcessUse.h"
#include "toolkit/ZNTheme.h"

namespace {

using testing_support::ClassOf;
using testing_support::ObservedBackend;
using testing_support::OpenDialog;
using testing_support::PumpFor;
using toolkit::Backend;
using Clock = std::chrono::steady_clock;

// Windows in memory, with the real system's sizes of texts.
class MeasuredBackend final : public toolkit::FakeBackend {
 public:
  explicit MeasuredBackend(Backend& system) : real(system) {}
  toolkit::Size PreferredSize(toolkit::ControlKind kind, const std::string& text) override {
    return real.PreferredSize(kind, text);
  }
  int Scaled(int units) override { return real.Scaled(units); }

 private:
  Backend& real;
};

int Picture(ObservedBackend& backend, const std::filesystem::path& folder) {
  int failures = 0;
  std::filesystem::create_directories(folder);
  for (const DialogClass* row : dialogs::DialogClasses()) {
    const OpenDialog open(*row);
    PumpFor(backend, 200);
    backend.last->Move({0, 0});
    PumpFor(backend, 100);
    if (backend.last->SaveImage(folder / (std::string(row->className) + ".png"))) continue;
    std::printf("%s: no picture\n", row->className);
    ++failures;
  }
  return failures;
}

int List() {
  for (const DialogClass* row : dialogs::DialogClasses()) {
    std::printf("%s\t%s\t%s\n", row->className, row->progId, ClassOf(row->progId).gloss);
  }
  return 0;
}

// Large enough for what is shown at this scale; below a title bar.
int CheckLayout(Backend& system) {
  int faults = 0;
  MeasuredBackend measured(system);
  const toolkit::ScopedBackend scope(&measured);
  const toolkit::Size most = {system.Scaled(1024), system.Scaled(730)};
  for (const char* language : {"en", "de"}) {
    measured.language = language;
    for (const DialogClass* row : dialogs::DialogClasses()) {
      const OpenDialog open(*row);
      for (const auto& fault :
           testing_support::LayoutFaults(*measured.LastWindow(), measured, most)) {
        std::printf("%s (%s): %s\n", row->className, language, fault.c_str());
        ++faults;
      }
    }
  }
  return faults;
}

double Milliseconds(Clock::time_point since) {
  return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

// On the clock, and of the processor alone: other programs may keep the machine busy.
struct Times {
  double clock = 0, work = 0;
};

// From the call that opens a dialog until it is drawn and nothing more waits.
Times TimeToOpen(Backend& backend, const DialogClass& row) {
  const auto start = Clock::now();
  const double workBefore = ProcessTime();
  const OpenDialog open(row);
  backend.Pump(false);
  const Times times = {Milliseconds(start), ProcessTime() - workBefore};
  PumpFor(backend, 20);
  return times;
}

// In milliseconds. All has room for a busy machine: the thirty sliders of the colour balance take
// 40 of work under Wine, and up to 130 at each try while the machine is full.
constexpr Times kMostFirst = {5000, 1000}, kMostLater = {1000, 250};

bool IsOver(const Times& times, const Times& most) {
  return times.clock > most.clock || times.work > most.work;
}

int Judge(const char* name, const Times& times, const Times& most) {
  if (!IsOver(times, most)) return 0;
  std::printf("%s: %.0f ms, %.0f ms of work\n", name, times.clock, times.work);
  return 1;
}

// Another try, a while later, where other programs may have been in the way.
Times TimeOfLater(Backend& backend, const DialogClass& row) {
  constexpr int kTries = 8;
  Times times = TimeToOpen(backend, row);
  for (int i = 1; i < kTries && IsOver(times, kMostLater); ++i) {
    PumpFor(backend, 100 * i);
    times = TimeToOpen(backend, row);
  }
  return times;
}

int CheckTimes(Backend& backend, Clock::time_point start) {
  const auto& rows = dialogs::DialogClasses();
  TimeToOpen(backend, *rows.front());
  const Times first = {Milliseconds(start), ProcessTime()};
  int faults = Judge("first", first, kMostFirst);
  Times sum;
  for (const DialogClass* row : rows) {
    const Times times = TimeOfLater(backend, *row);
    sum = {sum.clock + times.clock, sum.work + times.work};
    faults += Judge(row->className, times, kMostLater);
  }
  const auto count = static_cast<double>(rows.size());
  std::printf("first %.0f ms (%.0f of work), then %.1f ms (%.1f of work) on average\n", first.clock,
              first.work, sum.clock / count, sum.work / count);
  return faults;
}

#ifdef FXBOX_MEMORY_GROWS
constexpr bool kMemoryGrows = true;
#else
constexpr bool kMemoryGrows = false;
#endif

// After the first round all that is made once is there.
int Repeat(Backend& backend, int times) {
  const auto& rows = dialogs::DialogClasses();
  std::size_t before = 0;
  for (int i = 0; i < times; ++i) {
    const OpenDialog open(*rows[static_cast<std::size_t>(i) % rows.size()]);
    PumpFor(backend, 5);
    if (i == std::max(times / 2, 2 * static_cast<int>(rows.size()))) before = ProcessMemory();
  }
  PumpFor(backend, 50);
  const std::size_t after = ProcessMemory();
  const bool isClean = backend.Counts() == toolkit::BackendCounts();
  std::printf("%d times; memory %zu kB, then %zu kB; counters %s\n", times, before / 1024,
              after / 1024, isClean ? "at zero" : "not at zero");
  const bool isFlat = kMemoryGrows || before == 0 || after < before + before / 20;
  return isClean && isFlat ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  const auto start = Clock::now();
  std::string reason;
  Backend* const system = toolkit::CurrentBackend(&reason);
  if (!system || count < 2) {
    std::fprintf(stderr, "%s\n", system ? "what shall be done?" : reason.c_str());
    return 2;
  }
  // As the module does at its start.
  CZNSlider::AttachBitmaps(
      {reinterpret_cast<void*>(&PumpFor), "IDB_SLIDER_HD", "IDB_SLIDER_CC", "IDB_SLIDER_TMB"}, true,
      true);
  ObservedBackend backend(*system);
  const toolkit::ScopedBackend scope(&backend);
  const std::string task = arguments[1];
  if (count > 3) CZNTheme::Choose(toolkit::ThemeChoice::Dark);
  int failures = 0;
  if (task == "pictures" && count > 2) failures = Picture(backend, arguments[2]);
  if (task == "list") return List();
  if (task == "check") failures = CheckTimes(backend, start) + CheckLayout(*system);
  if (task == "repeat" && count > 2) failures = Repeat(backend, std::atoi(arguments[2]));
  std::printf("%s\n", failures ? "wrong" : "well");
  return failures != 0;
}
