// CPanelDialog and CDlgPanel: the dialog of every class whose controls are rows of data.
#pragma once

#include <memory>

#include "dialogs/DialogClass.h"
#include "dialogs/DlgFilterBase.h"
#include "dialogs/WindowsDialog.h"

// The window: a panel over the values of the class's fields.
class CDlgPanel : public CDlgFilterBase {
 public:
  CDlgPanel(CPdibFilterDialog* dialog, const DialogClass& dialogClass);

  const PanelValues& Values() const { return values; }
  // Shows a parameter text; reports nothing.
  void SetParameterText(const char* text);
  std::string ParameterText() const;
  // What the person has changed since the last SetParameterText.
  std::string Changes() const;
  // Changes values as the person would.
  void Change(const std::function<void(PanelValues&)>& change);

 protected:
  void BuildContents() override;
  toolkit::Size PlaceContents(toolkit::Point origin, int leastWidth) override;
  void FocusContents() override;
  // The canvas of a row that has one.
  virtual CZNPanelCanvas* MakeCanvas(const PanelRow&) { return nullptr; }
  // Controls below the panel.
  virtual void BuildMore() {}
  virtual toolkit::Size PlaceMore(toolkit::Point, int) { return {}; }
  // Text or values that belong together are brought in order after a change or a new text.
  virtual void Complete(PanelValues&, const char* /*changedKey*/) {}
  void ShowValues();
  // Reports the change of a value, if the text shows one: a choice of what is shown is none.
  void TakeChange(const char* changedKey);

  PanelValues values;

 private:
  const DialogClass& row;
  PanelValues given;  // by the last text
  std::string shownText;
  std::unique_ptr<CZNPanel> panel;
};

// One slider and nothing else.
class CDlgSingleSlider final : public CDlgPanel {
 public:
  using CDlgPanel::CDlgPanel;
  double Position() const { return values.Number(values.Fields()[0].key); }
};

class CPanelDialog : public CWindowsDialog {
 public:
  explicit CPanelDialog(const DialogClass& dialogClass);

 protected:
  const DialogClass& Class() const { return row; }
  CDlgPanel* Panel() const;

  std::unique_ptr<CDlgFilterBase> NewWindow() override;
  void ParameterToWindow(const char* text) override;
  std::string WindowToParameter() override;
  void LoadDefault() override;
  // Shows the default and gives it to the filters.
  void Reset() override;
  std::string TextToSend() override;
  std::string ChangesToSend() override;

 private:
  const DialogClass& row;
};
