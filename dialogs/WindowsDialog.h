// CWindowsDialog: the life of a dialog's window.
#pragma once

#include "dialogs/PdibFilterDialog.h"

// Makes, hides and ends the window and docks it. A class says which window it has.
class CWindowsDialog : public CPdibFilterDialog {
 public:
  using CPdibFilterDialog::CPdibFilterDialog;
  ~CWindowsDialog() override;

  void Notify(const std::string& text) override;

 protected:
  // A new window, without the system's.
  virtual std::unique_ptr<CDlgFilterBase> NewWindow() = 0;

  void CreateDialogWindow(std::intptr_t owner) override;
  void DestroyDialogWindow() override;

 private:
  void TellDock(int message);
};
