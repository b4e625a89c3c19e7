#include "toolkit/Backend.h"

#include "settings/TraceLogStd.h"

namespace toolkit {
namespace {

Backend* replaced = nullptr;
bool isReplaced = false;
Backend* systemBackend = nullptr;
std::string whyNot;
ThemeChoice chosenTheme = ThemeChoice::System;

// Once a window system has refused, it is not asked again: a host may open many dialogs.
void OpenOnce() {
  if (systemBackend || !whyNot.empty()) return;
  systemBackend = OpenSystemBackend(whyNot);
  if (systemBackend) return systemBackend->SetTheme(chosenTheme);
  if (whyNot.empty()) whyNot = "no window system";
  TraceLog log(0);
  log.Format(0, "No windows: %s", whyNot.c_str());
}

}  // namespace

Backend* CurrentBackend(std::string* reason) {
  if (!isReplaced) OpenOnce();
  Backend* backend = OpenBackend();
  if (!backend && reason) *reason = isReplaced ? "no window system" : whyNot;
  return backend;
}

Backend* OpenBackend() {
  return isReplaced ? replaced : systemBackend;
}

void ChooseTheme(ThemeChoice choice) {
  if (choice == chosenTheme) return;
  chosenTheme = choice;
  if (Backend* const backend = OpenBackend()) backend->SetTheme(choice);
}

ThemeChoice ChosenTheme() {
  return chosenTheme;
}

ScopedBackend::ScopedBackend(Backend* replacement) : previous(replaced), wasReplaced(isReplaced) {
  replaced = replacement;
  isReplaced = true;
}

ScopedBackend::~ScopedBackend() {
  replaced = previous;
  isReplaced = wasReplaced;
}

}  // namespace toolkit
