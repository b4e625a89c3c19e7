// The chain over many pictures: which ones, where to, how far it is.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "desk/Session.h"
#include "toolkit/ZNDialog.h"

namespace desk {

class BatchWindow final : public CZNDialog {
 public:
  explicit BatchWindow(Session& ofSession) : session(ofSession) {}
  ~BatchWindow() override;
  void Open(void* owner);
  int Count() const { return static_cast<int>(inputs.size()); }
  std::function<void(const BatchProgress&)> onOver;

 private:
  void Build() override;
  void OnCancel() override;
  void OnFiles(const std::vector<std::filesystem::path>& files) override;
  // Controls below and beside each other; `at` moves on to the place behind.
  CZNStatic* AddLine(toolkit::Point& at, int width, const std::string& text);
  void AddButtons(toolkit::Point at);
  CZNButton* AddButton(toolkit::Point& at, CZNButton::Kind kind, const std::string& text);
  int Pad();
  void AddPicture();
  void Clear();
  void ChooseFolder();
  void Start();
  void ShowProgress(const BatchProgress& progress);
  void ShowState();

  Session& session;
  std::vector<std::string> inputs;
  CZNListBox* list = nullptr;
  CZNEdit* folder = nullptr;
  CZNStatic* progressText = nullptr;
  CZNButton *add = nullptr, *clear = nullptr, *start = nullptr, *stop = nullptr;
};

}  // namespace desk
