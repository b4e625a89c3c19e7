#include "dialogs/WindowsDialog.h"

#include "core/Parameter.h"
#include "dialogs/DlgFilterBase.h"

CWindowsDialog::~CWindowsDialog() {
  CWindowsDialog::DestroyDialogWindow();
}

void CWindowsDialog::CreateDialogWindow(std::intptr_t owner) {
  if (window) return;
  auto made = NewWindow();
  if (made->CreateModelessFor(reinterpret_cast<void*>(owner))) window = std::move(made);
}

void CWindowsDialog::DestroyDialogWindow() {
  if (!window) return;
  window->ForgetOwner();
  CZNDialog::Bury(std::move(window));
}

void CWindowsDialog::Notify(const std::string& text) {
  const auto self = Hold();
  if (text == "DockFilterDialog") {
    TellDock(core::kMessageDock);
  } else if (text == "UndockFilterDialog") {
    TellDock(core::kMessageUndock);
  } else if (text == "UpdateDockedFilterDialog") {
    TellDock(core::kMessageUpdateDocked);
  } else if (text == "FilterClosed") {
    if (window) window->Hide();
  } else {
    CPdibFilterDialog::Notify(text);
  }
}

// The host's answer says whether the dialog is docked now.
void CWindowsDialog::TellDock(int message) {
  if (!window || !window->Native()) return;
  const toolkit::Point place = window->Native()->Position();
  Parameter text;
  text.Set("FilterId", InstanceId());
  text.Set("PosX", place.x);
  text.Set("PosY", place.y);
  const bool docked = PostText(message, static_cast<const char*>(text)) == 1;
  if (window && message != core::kMessageUpdateDocked) window->SetDocked(docked);
}
