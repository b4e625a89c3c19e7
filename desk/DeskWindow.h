// The window of fxbox-desk.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "desk/DeskSettings.h"
#include "desk/PictureView.h"
#include "desk/Session.h"
#include "desk/Views.h"
#include "platform/component/ComPtr.h"
#include "toolkit/ZNDialog.h"

namespace desk {

struct DeskOptions {
  std::vector<std::string> files;  // to begin with: pictures and chains
  std::string exportFile;          // where Export writes without asking
  bool tells = false;              // says on standard output what is seen, for programs that watch
  std::filesystem::path state;     // what is kept between runs
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
  void Build() override;
  void OnResize(toolkit::Size size) override;
  void OnLook() override;
  void OnCancel() override;
  void OnEscape() override {}
  void OnFiles(const std::vector<std::filesystem::path>& files) override;
  void OnDragOver(std::optional<toolkit::Point> place) override;
  bool OnDrop(IDataObject* object, toolkit::Point place) override;

  void MakeToolBar();
  void MakeChainPanel();
  void MakePanels();
  void ConnectViews();
  void ConnectSession();
  void ConnectDialog();
  void FillMenus();
  void FillFileMenu();
  void FillEditMenu();
  void FillViewMenu();
  void FillRecent();

  // --- layout

  // What is left for the picture and the sides, in pixels.
  struct Column {
    int left, width, top, bottom;
  };
  void Arrange();
  void ArrangeSoon();
  void MoveBorders(int left, int right);  // by how much the sides grow
  int ArrangeToolBar(int width);
  void ArrangeFilters(const Column& column);
  void ArrangePicture(Column column);
  void ArrangeChain(Column column);
  void ArrangeChainButtons(const Column& column);
  // Takes the place for the docked dialog off the lower end of the column; it keeps `least`.
  void ArrangeDialog(Column& column, int least);
  bool IsDocked(DialogPlace place) const;
  int Units(int units) { return System().Scaled(units); }

  // --- the dialog of the selected filter

  void PlaceDialog(DialogPlace place);
  void DockDialog();

  // Asks what becomes of a chain that is not saved; false when all stays as it is.
  bool MayLeave();
  void AskOpen();
  void AskSaveChain();
  void AskLoadChain();
  void AskExport();
  void ExportAgain();
  void RunBatch();
  platform::ComPtr<IDataObject> Selected();
  void Copy();
  void Paste();
  void Cut();
  void DragOut();
  // The chain that an object holds, or is as a text, comes to a place of the chain.
  bool TakeChain(IDataObject* object, int place);
  void SwitchSelection();
  void OpenDialog();
  void FollowSelection();
  std::optional<toolkit::Point> InChain(toolkit::Point place) const;
  void Drag(const CatalogEntry& entry, toolkit::Point place, bool isDrop);
  void Click(toolkit::Spot share);
  void ShowMessages();

  void ShowTitle();
  void ShowState();
  void ShowTool();
  // In the status line.
  void Say(const std::string& text);
  void ShowStatus();
  void ShowPointer(std::optional<toolkit::Spot> share);
  void AskForBox();
  void Tell(const std::string& line);
  void TellPlaces();
  void TellReady();

  const DeskOptions options;
  DeskSettings settings;
  Session session;
  bool isOpen = false;
  bool isArranged = false;
  bool isAsking = false;
  toolkit::Size client;

  struct ToolButton {
    CZNButton* button;
    std::string name, text;
    bool opensGroup;
  };
  std::vector<ToolButton> tools;
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
  CZNStatic* dialogTitle = nullptr;
  CZNButton* dialogClose = nullptr;
  CZNDock* dock = nullptr;
  toolkit::Size dialogSize;  // the largest that was wanted since the dialog was opened
  bool isArranging = false;
  bool isDraggingOut = false;
  Splitter *leftBorder = nullptr, *rightBorder = nullptr;
  StatusLine* status = nullptr;
  int leftWidth = 0, rightWidth = 0;

  struct {
    int undo = 0, redo = 0, before = 0, split = 0, mask = 0;
    int dialog[3] = {}, theme[3] = {};
  } entries;
  CZNMenu* recentMenu = nullptr;
  std::string message;  // the last one, for the status line
  std::string pixelText;
  std::string exportFile;
  std::unique_ptr<CZNDialog> messageWindow, batchWindow;
};

}  // namespace desk
