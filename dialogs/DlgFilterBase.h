// CDlgFilterBase: the window of a filter's dialog, with its copy, lock, delete and dock buttons.
#pragma once

#include <string>

#include "toolkit/ZNDialog.h"

class CPdibFilterDialog;

// What its buttons do goes to the owner's dispatcher by name. A derived class makes its own
// controls in BuildContents.
class CDlgFilterBase : public CZNDialog {
 public:
  CDlgFilterBase(CPdibFilterDialog* dialog, const char* header, const char* help);

  // Makes the window, hidden. False where there is no window system.
  bool CreateModelessFor(void* ownerWindow);
  // The owner goes; nothing is reported to it any more.
  void ForgetOwner() { owner = nullptr; }

  // Whether the filters differ or there are none: the copy button then gives them what is shown.
  void SetMixed(bool mixed);
  bool IsMixed() const { return isMixed; }
  bool IsDataLocked() const { return lock && lock->IsDown(); }
  bool IsDocked() const { return dock && dock->IsDown(); }
  void SetDocked(bool docked);
  void TakeFocus();

 protected:
  // Makes the controls, and places them from `origin` on; gives their size.
  virtual void BuildContents() = 0;
  virtual toolkit::Size PlaceContents(toolkit::Point origin, int leastWidth) = 0;
  virtual void FocusContents() {}

  CPdibFilterDialog* Owner() const { return owner; }
  // UTF-8.
  std::string Words(const char* key) const;
  // A value has changed.
  void Update();

 private:
  void Build() override;
  void OnCancel() override;
  void OnHelp() override;
  bool OnAnyKey(const toolkit::KeyEvent& event) override;
  void OnLook() override { Arrange(); }
  void OnWindowMoved() override;
  void MakeButtons();
  void Arrange();
  int PlaceButtons(int y);
  void RunCopyMenu(toolkit::Point place);
  void Call(const char* name) const;

  CPdibFilterDialog* owner;
  const char* headerKey;
  const char* helpKey;
  CZNButton* copy = nullptr;
  CZNButton* lock = nullptr;
  CZNButton* remove = nullptr;
  CZNButton* dock = nullptr;
  CZNStatic* mixedNote = nullptr;
  struct Caption {
    CZNButton* button;
    std::string text;
  };
  std::vector<Caption> buttons;
  std::string mixedText;
  bool isMixed = false;
};
