// The window of fxbox-desk.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "desk/PictureView.h"
#include "desk/Session.h"
#include "desk/Views.h"
#include "toolkit/ZNDialog.h"

namespace desk {

struct DeskOptions {
  std::string picture;          // to begin with; empty for none
  std::string exportFile;       // where Export writes without asking
  bool tells = false;           // says on standard output what is seen, for programs that watch
  std::filesystem::path state;  // what is kept between runs
};

class DeskWindow final : public CZNDialog {
 public:
  explicit DeskWindow(const DeskOptions& deskOptions);
  ~DeskWindow() override;

  // Makes and shows the window; false where none can be opened.
  bool Open();
  bool IsOpen() const { return isOpen; }
  Session& Work() { return session; }

 private:
  struct Command;

  void Build() override;
  void OnResize(toolkit::Size size) override;
  void OnLook() override;
  void OnCancel() override;
  void OnEscape() override {}
  void OnFiles(const std::vector<std::filesystem::path>& files) override;

  void MakeToolBar();
  void MakePanels();
  void Connect();
  void FillMenus();
  void FillRecent();
  void Arrange();
  int ArrangeToolBar(int width);

  // Asks what becomes of a chain that is not saved; false when all stays as it is.
  bool MayLeave();
  void AskOpen();
  void AskSaveChain();
  void AskLoadChain();
  void AskExport();
  void ExportAgain();
  void RunBatch();
  void Copy();
  void Paste();
  void Cut();
  void SwitchSelection();
  void OpenDialog();
  void FollowSelection();
  void Drag(const CatalogEntry& entry, toolkit::Point place, bool isDrop);
  void Click(toolkit::Spot share);
  void ShowMessages();

  void ShowState();
  void ShowTool();
  void ShowStatus();
  void ShowPointer(std::optional<toolkit::Spot> share);
  void AskForBox();
  void Tell(const std::string& line);
  void TellPlaces();

  const DeskOptions options;
  Session session;
  bool isOpen = false;
  bool isArranged = false;
  bool isAsking = false;
  toolkit::Size client;

  std::vector<CZNButton*> tools;
  std::vector<std::string> toolTexts;
  CZNButton *beforeButton = nullptr, *splitButton = nullptr, *maskButton = nullptr;
  CZNButton *undoButton = nullptr, *redoButton = nullptr;
  CZNStatic* searchLabel = nullptr;
  CZNEdit* search = nullptr;
  FilterList* filters = nullptr;
  PictureView* view = nullptr;
  HistogramView* histogram = nullptr;
  ChainList* chain = nullptr;
  CZNStatic* chainTitle = nullptr;
  std::vector<CZNButton*> chainButtons;
  std::vector<std::string> chainTexts;
  Splitter *leftBorder = nullptr, *rightBorder = nullptr;
  StatusLine* status = nullptr;
  int leftWidth = 0, rightWidth = 0;

  struct {
    int undo = 0, redo = 0, before = 0, split = 0, mask = 0, fit = 0;
  } entries;
  CZNMenu* recentMenu = nullptr;
  std::string message;  // the last one, for the status line
  std::string pixelText;
  std::string exportFile;
  std::unique_ptr<CZNDialog> messageWindow, batchWindow;
};

}  // namespace desk
