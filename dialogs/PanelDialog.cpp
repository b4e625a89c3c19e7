#include "dialogs/PanelDialog.h"

#include "dialogs/DialogText.h"

// --- CDlgPanel

CDlgPanel::CDlgPanel(CPdibFilterDialog* dialog, const DialogClass& dialogClass)
    : CDlgFilterBase(dialog, dialogClass.headerKey, dialogClass.helpKey),
      values(dialogClass.fields),
      row(dialogClass),
      given(dialogClass.fields) {}

void CDlgPanel::BuildContents() {
  panel = std::make_unique<CZNPanel>(
      *this, row.rows, values, [this](const char* key) { return Words(key); },
      [this](const PanelRow& canvasRow) { return MakeCanvas(canvasRow); });
  panel->onChange = [this](const char* key) { TakeChange(key); };
  shownText = ParameterText();
  BuildMore();
}

toolkit::Size CDlgPanel::PlaceContents(toolkit::Point origin, int leastWidth) {
  const toolkit::Size rows = panel->Layout(origin, leastWidth);
  const int gap = System().Scaled(8);
  const toolkit::Size more =
      PlaceMore({origin.x, origin.y + rows.height + gap}, std::max(leastWidth, rows.width));
  if (more.height == 0) return rows;
  return {std::max(rows.width, more.width), rows.height + gap + more.height};
}

void CDlgPanel::FocusContents() {
  if (panel) panel->Focus();
}

void CDlgPanel::ShowValues() {
  if (panel) panel->ShowValues();
}

void CDlgPanel::SetParameterText(const char* text) {
  dialogs::ReadDialogText(text, values);
  Complete(values, nullptr);
  given = values;
  shownText = ParameterText();
  ShowValues();
}

void CDlgPanel::TakeChange(const char* changedKey) {
  Complete(values, changedKey);
  ShowValues();
  const std::string text = ParameterText();
  if (std::exchange(shownText, text) != text) Update();
}

std::string CDlgPanel::ParameterText() const {
  return dialogs::PrintDialogText(values);
}

std::string CDlgPanel::Changes() const {
  return dialogs::PrintChanges(values, given);
}

void CDlgPanel::Change(const std::function<void(PanelValues&)>& change) {
  change(values);
  TakeChange(nullptr);
}

// --- CPanelDialog

CPanelDialog::CPanelDialog(const DialogClass& dialogClass)
    : CWindowsDialog(dialogClass.progId), row(dialogClass) {}

CDlgPanel* CPanelDialog::Panel() const {
  return static_cast<CDlgPanel*>(window.get());
}

std::unique_ptr<CDlgFilterBase> CPanelDialog::NewWindow() {
  const bool isOneSlider = row.rows.size() == 1 && row.rows[0].control == RowControl::Slider;
  if (isOneSlider) return std::make_unique<CDlgSingleSlider>(this, row);
  return std::make_unique<CDlgPanel>(this, row);
}

void CPanelDialog::ParameterToWindow(const char* text) {
  if (window) Panel()->SetParameterText(text);
}

std::string CPanelDialog::WindowToParameter() {
  return window ? Panel()->ParameterText() : std::string();
}

void CPanelDialog::LoadDefault() {
  ParameterToWindow(row.defaultText);
}

void CPanelDialog::Reset() {
  if (!window) return;
  LoadDefault();
  Notify("UpdateFilter");
}

std::string CPanelDialog::TextToSend() {
  std::string text = WindowToParameter();
  if (text.empty()) return text;
  text += row.sentSuffix;
  if (row.endsMeasurement && LastText().find("ExBlit=1") != std::string::npos) {
    text += ",ExBlit=0";
  }
  return text;
}

std::string CPanelDialog::ChangesToSend() {
  return window ? Panel()->Changes() : std::string();
}
