#include "dialogs/DlgDebug.h"

#include "dialogs/PdibFilterDialog.h"

namespace {

std::unique_ptr<CDlgDebug>& Current() {
  static std::unique_ptr<CDlgDebug> dialog;
  return dialog;
}

}  // namespace

void CDlgDebug::Provide(CPdibFilterDialog* dialog) {
  if (!Current()) Current().reset(new CDlgDebug(dialog));
}

void CDlgDebug::Forget(const CPdibFilterDialog*) {
  if (Current()) CZNDialog::Bury(std::move(Current()));
}

bool CDlgDebug::Exists() {
  return Current() != nullptr;
}

void CDlgDebug::ShowFor(CPdibFilterDialog* dialog) {
  Provide(dialog);
  CDlgDebug& debug = *Current();
  debug.owner = dialog;
  if (!debug.CreateModeless({.title = "Debug"})) return;
  debug.edit->SetEditText(dialog->ShownText());
  debug.Show();
  debug.edit->Focus();
}

std::string CDlgDebug::Text() {
  return Current() && Current()->edit ? Current()->edit->Text() : std::string();
}

void CDlgDebug::Build() {
  const int gap = System().Scaled(8);
  edit = &Make<CZNEdit>("Parameter");
  auto& apply = Make<CZNButton>("&Apply", CZNButton::Kind::Default);
  const toolkit::Size line = edit->Preferred("");
  const toolkit::Size button = apply.Preferred("Apply");
  const int width = System().Scaled(420);
  edit->Place({gap, gap, width - 3 * gap - button.width, line.height});
  apply.Place({width - gap - button.width, gap, button.width, button.height});
  apply.onPress = [this] { owner->Notify("UpdateFilterDebug"); };
  edit->onEnter = apply.onPress;
  Native()->SetClientSize({width, std::max(line.height, button.height) + 2 * gap});
}
