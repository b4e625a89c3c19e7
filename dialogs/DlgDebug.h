// CDlgDebug: gives the filters of a dialog any text that a developer types.
#pragma once

#include <string>

#include "toolkit/ZNDialog.h"

class CPdibFilterDialog;

// One for the process, made with the first dialog that is linked to a host. It shows itself only on
// demand.
class CDlgDebug final : public CZNDialog {
 public:
  // Makes it for this dialog when there is none.
  static void Provide(CPdibFilterDialog* dialog);
  // Ends it, with any dialog's end.
  static void Forget(const CPdibFilterDialog* dialog);
  static bool Exists();
  // Shows the window, for this dialog from then on.
  static void ShowFor(CPdibFilterDialog* dialog);
  // What was typed.
  static std::string Text();

 private:
  explicit CDlgDebug(CPdibFilterDialog* dialog) : owner(dialog) {}
  void Build() override;

  CPdibFilterDialog* owner;
  CZNEdit* edit = nullptr;
};
