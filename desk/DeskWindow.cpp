#include "desk/DeskWindow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "base/CodePage.h"
#include "desk/Words.h"
#include "host/Texts.h"

namespace desk {
namespace {

using toolkit::Point;
using toolkit::Rect;

constexpr double kStep = 1.25;

std::string Percent(double share) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f %%", share < 0.1 ? 1 : 0, share * 100);
  return text;
}

std::string PixelText(const std::array<BYTE, 4>& pixel) {
  char text[64];
  std::snprintf(text, sizeof text, "%3d %3d %3d", pixel[2], pixel[1], pixel[0]);
  return pixel[3] == 0 ? text : text + Words("DESK_PIXEL_MASK", std::to_string(pixel[3]));
}

// The session lists the filters by their names, so the language comes before it.
const DeskOptions& WithLanguage(const DeskOptions& options) {
  toolkit::Backend* const backend = toolkit::CurrentBackend();
  ChooseLanguage(backend ? backend->Language() : "en");
  return options;
}

std::filesystem::path SettingsFile(const DeskOptions& options) {
  return options.state / "settings";
}

}  // namespace

DeskWindow::DeskWindow(const DeskOptions& deskOptions)
    : options(WithLanguage(deskOptions)),
      settings(ReadSettings(SettingsFile(options))),
      session([this](std::function<void()> task) { System().Post(std::move(task)); },
              deskOptions.state, deskOptions.files.empty()),
      exportFile(deskOptions.exportFile) {}

DeskWindow::~DeskWindow() {
  if (dock) dock->onChange = nullptr;
  session.Bench().onClosed = nullptr;
  session.Bench().Close();
  if (settings != ReadSettings(SettingsFile(options))) {
    WriteSettings(SettingsFile(options), settings);
  }
}

bool DeskWindow::Open() {
  toolkit::WindowSpec spec;
  spec.title = Words("DESK_TITLE");
  spec.isTool = false;
  spec.takesFiles = spec.takesObjects = true;
  CZNTheme::Choose(settings.theme);
  if (!CreateModeless(spec)) return false;
  isOpen = true;
  const toolkit::Size screen = System().WorkArea();
  client = {std::min(Units(1240), screen.width - Units(20)),
            std::min(Units(800), screen.height - Units(60))};
  Native()->SetClientSize(client);
  Arrange();
  view->onPaint = [this] { System().Post([this] { TellReady(); }); };
  Show();
  view->Focus();
  filters->TellRows();
  ShowState();
  if (!options.files.empty()) {
    session.OpenAll(options.files);
  } else if (session.Recover()) {
    Say(Words("DESK_IS_BACK"));
  }
  return true;
}

// --- making

void DeskWindow::Build() {
  MakeToolBar();
  MakePanels();
  ConnectViews();
  ConnectSession();
  ConnectDialog();
  FillMenus();
}

void DeskWindow::MakeToolBar() {
  using Action = std::function<void()>;
  const auto add = [this](const std::string& name, bool opensGroup, CZNButton::Kind kind,
                          Action action) {
    const std::string text = Words("DESK_" + name);
    auto& button = Make<CZNButton>(text, kind);
    button.SetBubble(Words("DESK_" + name + "_BUBBLE"));
    button.onPress = std::move(action);
    tools.push_back({&button, name, text, opensGroup});
    return &button;
  };
  using Kind = CZNButton::Kind;
  add("OPEN", false, Kind::Push, [this] { AskOpen(); });
  add("EXPORT", false, Kind::Push, [this] { AskExport(); });
  undoButton = add("UNDO", true, Kind::Push, [this] { session.Chain().Undo(); });
  redoButton = add("REDO", false, Kind::Push, [this] { session.Chain().Redo(); });
  add("FIT", true, Kind::Push, [this] { view->Fit(); });
  add("FULL", false, Kind::Push, [this] { view->SetScale(1); });
  const auto compare = [this](Comparison wanted) {
    view->Compare(view->Compared() == wanted ? Comparison::After : wanted);
    ShowState();
  };
  beforeButton = add("BEFORE", true, Kind::Toggle, [compare] { compare(Comparison::Before); });
  splitButton = add("SPLIT", false, Kind::Toggle, [compare] { compare(Comparison::Split); });
  maskButton = add("MASK", false, Kind::Toggle, [this] {
    view->ShowMask(!view->ShowsMask());
    ShowState();
  });
}

void DeskWindow::MakePanels() {
  searchLabel = &Make<CZNStatic>(Words("DESK_SEARCH"));
  search = &Make<CZNEdit>(Words("DESK_SEARCH_NAME"));
  search->SetBubble(Words("DESK_SEARCH_BUBBLE"));
  filters = &Make<FilterList>(session.Catalog());
  filters->SetBubble(Words("DESK_FILTERS_BUBBLE"));
  leftBorder = &Make<Splitter>();
  view = &Make<PictureView>();
  rightBorder = &Make<Splitter>();
  MakeChainPanel();
  dialogTitle = &Make<CZNStatic>(Words("DESK_DIALOG"), true);
  dialogClose = &Make<CZNButton>(Words("DESK_CLOSE_DIALOG"));
  dialogClose->SetBubble(Words("DESK_CLOSE_DIALOG_BUBBLE"));
  dock = &Make<CZNDock>(Words("DESK_DIALOG"));
  status = &Make<StatusLine>();
}

void DeskWindow::MakeChainPanel() {
  histogram = &Make<HistogramView>();
  chainTitle = &Make<CZNStatic>(Words("DESK_CHAIN"), true);
  chain = &Make<ChainList>(session.Catalog(), session.Chain());
  const auto add = [this](const std::string& name, std::function<void()> action) {
    auto& button = Make<CZNButton>(Words("DESK_" + name));
    button.SetBubble(Words("DESK_" + name + "_BUBBLE"));
    button.onPress = std::move(action);
    chainButtons.push_back(&button);
  };
  add("EDIT", [this] { OpenDialog(); });
  add("SWITCH", [this] { SwitchSelection(); });
  add("DELETE", [this] { session.Chain().Remove(session.Chain().Selection()); });
}

void DeskWindow::ConnectViews() {
  search->onChange = [this] { filters->Search(search->Text()); };
  search->onEnter = [this] {
    for (int row = 0; row < filters->RowCount(); ++row) {
      if (!filters->At(row)) continue;
      session.AddFilter(filters->At(row)->progId);
      return OpenDialog();
    }
  };
  filters->onChosen = [this](const CatalogEntry& entry) {
    session.AddFilter(entry.progId);
    OpenDialog();
  };
  filters->onDrag = [this](const CatalogEntry& entry, Point place, bool isDrop) {
    Drag(entry, place, isDrop);
  };
  chain->onOpen = [this] { OpenDialog(); };
  chain->onDragOut = [this] { DragOut(); };
  leftBorder->onMove = [this](int dx) { MoveBorders(dx, 0); };
  rightBorder->onMove = [this](int dx) { MoveBorders(0, -dx); };
  view->onPointer = [this](auto share) { ShowPointer(share); };
  view->onZoom = [this] {
    AskForBox();
    ShowStatus();
  };
  view->onClick = [this](toolkit::Spot share) { Click(share); };
  view->onCrop = [this](const CropFrame& frame) { session.SetCrop(frame); };
}

void DeskWindow::ConnectSession() {
  const auto say = [this](const std::string& kind, const std::string& text) {
    Say(text);
    Tell(kind + " " + text);
  };
  session.onPicture = [this] {
    view->Clear();
    view->Fit();
    ShowTitle();
    FillRecent();
    Tell("picture " + session.Name());
  };
  session.onItems = [this] {
    chain->Reveal();
    FollowSelection();
    if (!session.HasPicture()) ShowTitle();
    ShowState();
    Tell("chain " + base::ToUtf8(TextOf(session.Chain().Items())));
  };
  session.onSelection = [this] {
    chain->TellRows();
    chain->Redraw();
    FollowSelection();
    ShowState();
  };
  session.onShown = [this] {
    view->Show(session.Shown());
    histogram->Show(session.Shown().shown);
    ShowStatus();
    Tell("shown " + std::to_string(static_cast<int>(session.Shown().stage)));
  };
  session.onMessage = [say](const std::string& text) { say("message", text); };
  session.onDone = [say](const std::string& text) { say("done", text); };
}

void DeskWindow::ConnectDialog() {
  DialogBench& bench = session.Bench();
  bench.onPicker = [this] { ShowTool(); };
  bench.onOpening = [this] { DockDialog(); };
  bench.onClosed = [this] {
    ShowTool();
    ArrangeSoon();
  };
  // The button is one of the window that moves, so that happens behind its event.
  bench.onDock = [this](bool wanted) {
    const bool isFree = settings.dialog == DialogPlace::Window;
    if (wanted == isFree) {
      settings.dialog = wanted ? DialogPlace::BelowChain : DialogPlace::Window;
      System().Post([this] { PlaceDialog(settings.dialog); });
    }
    return wanted;
  };
  dialogClose->onPress = [this] {
    session.Bench().Close();
    chain->Focus();
  };
  dock->onChange = [this] { ArrangeSoon(); };
}

void DeskWindow::FillMenus() {
  MenuBar().Clear();
  FillFileMenu();
  FillEditMenu();
  FillViewMenu();
  ShowMenuBar();
}

void DeskWindow::FillFileMenu() {
  CZNMenu& file = MenuBar().AddBelow(Words("DESK_MENU_FILE"));
  file.Add(Words("DESK_MENU_OPEN") + "\tCtrl+O", [this] { AskOpen(); });
  recentMenu = &file.AddBelow(Words("DESK_MENU_RECENT"));
  FillRecent();
  file.AddSeparator();
  file.Add(Words("DESK_MENU_LOAD") + "\tCtrl+L", [this] { AskLoadChain(); });
  file.Add(Words("DESK_MENU_SAVE") + "\tCtrl+S", [this] {
    if (session.HasChainFile()) session.SaveOwnChain();
  });
  file.Add(Words("DESK_MENU_SAVE_AS") + "\tCtrl+Shift+S", [this] { AskSaveChain(); });
  file.AddSeparator();
  file.Add(Words("DESK_MENU_EXPORT") + "\tCtrl+Shift+E", [this] { AskExport(); });
  file.Add(Words("DESK_MENU_EXPORT_AGAIN") + "\tCtrl+E", [this] { ExportAgain(); });
  file.Add(Words("DESK_MENU_BATCH") + "\tCtrl+B", [this] { RunBatch(); });
  file.AddSeparator();
  file.Add(Words("DESK_MENU_QUIT") + "\tCtrl+Q", [this] { OnCancel(); });
}

void DeskWindow::FillEditMenu() {
  CZNMenu& edit = MenuBar().AddBelow(Words("DESK_MENU_EDIT"));
  entries.undo = edit.Add(Words("DESK_MENU_UNDO") + "\tCtrl+Z", [this] { session.Chain().Undo(); });
  entries.redo = edit.Add(Words("DESK_MENU_REDO") + "\tCtrl+Y", [this] { session.Chain().Redo(); });
  edit.AddSeparator();
  edit.Add(Words("DESK_MENU_CUT") + "\tCtrl+X", [this] { Cut(); });
  edit.Add(Words("DESK_MENU_COPY") + "\tCtrl+C", [this] { Copy(); });
  edit.Add(Words("DESK_MENU_PASTE") + "\tCtrl+V", [this] { Paste(); });
  edit.Add(Words("DESK_MENU_DELETE") + "\tDel",
           [this] { session.Chain().Remove(session.Chain().Selection()); });
  edit.Add(Words("DESK_MENU_ALL") + "\tCtrl+A", [this] {
    std::set<int> all;
    for (const ChainItem& item : session.Chain().Items()) all.insert(item.id);
    session.Chain().Select(all);
  });
  edit.AddSeparator();
  edit.Add(Words("DESK_MENU_EDIT_FILTER") + "\tF4", [this] { OpenDialog(); });
  edit.Add(Words("DESK_MENU_SWITCH") + "\tF5", [this] { SwitchSelection(); });
  edit.Add(Words("DESK_MENU_SEARCH") + "\tCtrl+F", [this] { search->Focus(); });
}

void DeskWindow::FillViewMenu() {
  CZNMenu& seen = MenuBar().AddBelow(Words("DESK_MENU_VIEW"));
  seen.Add(Words("DESK_MENU_FIT") + "\tCtrl+0", [this] { view->Fit(); });
  seen.Add(Words("DESK_MENU_FULL") + "\tCtrl+1", [this] { view->SetScale(1); });
  seen.Add(Words("DESK_MENU_ZOOM_IN") + "\tCtrl++", [this] { view->ZoomBy(kStep); });
  seen.Add(Words("DESK_MENU_ZOOM_OUT") + "\tCtrl+-", [this] { view->ZoomBy(1 / kStep); });
  seen.AddSeparator();
  entries.before =
      seen.AddCheck(Words("DESK_MENU_BEFORE") + "\tB", [this] { beforeButton->onPress(); });
  entries.split =
      seen.AddCheck(Words("DESK_MENU_SPLIT") + "\tS", [this] { splitButton->onPress(); });
  entries.mask = seen.AddCheck(Words("DESK_MENU_MASK") + "\tM", [this] { maskButton->onPress(); });
  seen.AddSeparator();
  CZNMenu& dialog = seen.AddBelow(Words("DESK_MENU_DIALOG"));
  const char* const places[] = {"DESK_MENU_DIALOG_WINDOW", "DESK_MENU_DIALOG_CHAIN",
                                "DESK_MENU_DIALOG_PICTURE"};
  for (int i = 0; i < 3; ++i) {
    entries.dialog[i] =
        dialog.AddCheck(Words(places[i]), [this, i] { PlaceDialog(static_cast<DialogPlace>(i)); });
  }
  CZNMenu& theme = seen.AddBelow(Words("DESK_MENU_THEME"));
  const char* const themes[] = {"DESK_MENU_SYSTEM", "DESK_MENU_LIGHT", "DESK_MENU_DARK"};
  for (int i = 0; i < 3; ++i) {
    entries.theme[i] = theme.AddCheck(Words(themes[i]), [this, i] {
      settings.theme = static_cast<toolkit::ThemeChoice>(i);
      CZNTheme::Choose(settings.theme);
      ShowState();
    });
  }
  seen.Add(Words("DESK_MENU_MESSAGES") + "\tF8", [this] { ShowMessages(); });
}

void DeskWindow::FillRecent() {
  if (!recentMenu) return;
  recentMenu->Clear();
  for (const std::string& name : session.Recent()) {
    recentMenu->Add(name, [this, name] {
      if (MayLeave()) session.Open(name);
    });
  }
  if (MenuBar().Entries().size() > 1) {
    ShowMenuBar();
    ShowState();
  }
}

// --- what is told

void DeskWindow::ShowTitle() {
  const std::string file = session.HasPicture()     ? session.Name()
                           : session.HasChainFile() ? host::Utf8Of(session.ChainFile())
                                                    : "";
  SetTitle((file.empty() ? "" : file + " - ") + Words("DESK_TITLE"));
}

void DeskWindow::ShowState() {
  const ChainDocument& document = session.Chain();
  MenuBar().Enable(entries.undo, document.CanUndo());
  MenuBar().Enable(entries.redo, document.CanRedo());
  undoButton->Enable(document.CanUndo());
  redoButton->Enable(document.CanRedo());
  undoButton->SetBubble(document.CanUndo() ? Words("DESK_UNDO_BUBBLE", Words(document.UndoName()))
                                           : Words("DESK_UNDO_NONE"));
  redoButton->SetBubble(document.CanRedo() ? Words("DESK_REDO_BUBBLE", Words(document.RedoName()))
                                           : Words("DESK_REDO_NONE"));
  beforeButton->SetDown(view->Compared() == Comparison::Before);
  splitButton->SetDown(view->Compared() == Comparison::Split);
  maskButton->SetDown(view->ShowsMask());
  MenuBar().Check(entries.before, view->Compared() == Comparison::Before);
  MenuBar().Check(entries.split, view->Compared() == Comparison::Split);
  MenuBar().Check(entries.mask, view->ShowsMask());
  for (int i = 0; i < 3; ++i) {
    MenuBar().Check(entries.dialog[i], static_cast<int>(settings.dialog) == i);
    MenuBar().Check(entries.theme[i], static_cast<int>(settings.theme) == i);
  }
  ShowTool();
  for (CZNButton* const button : chainButtons) button->Enable(!document.Selection().empty());
  const std::size_t count = document.Items().size();
  chainTitle->SetText(count == 0   ? Words("DESK_CHAIN")
                      : count == 1 ? Words("DESK_CHAIN_ONE")
                                   : Words("DESK_CHAIN_MANY", std::to_string(count)));
}

void DeskWindow::ShowTool() {
  view->SetCrop(session.Crop());
  view->TakeClicks(session.Tool() == PictureTool::RedEye || session.Bench().WaitsForColour());
}

void DeskWindow::Say(const std::string& text) {
  message = text;
  ShowStatus();
}

void DeskWindow::ShowStatus() {
  std::string left = message;
  if (const auto& shown = session.Shown(); shown.after) {
    char size[160];
    std::snprintf(size, sizeof size, "%d x %d   %s   ", shown.fullSize.width, shown.fullSize.height,
                  Percent(view->Scale()).c_str());
    left = size + session.Exactness() + (message.empty() ? "" : "   |   " + message);
  }
  status->Show(left, pixelText);
}

void DeskWindow::ShowPointer(std::optional<toolkit::Spot> share) {
  pixelText.clear();
  if (const PicturePointer& picture = session.Shown().shown; share && picture) {
    const auto pair = session.PixelAt(static_cast<int>(share->x * picture->Width()),
                                      static_cast<int>(share->y * picture->Height()));
    const host::Size full = session.Shown().fullSize;
    const std::string place = std::to_string(static_cast<int>(share->x * full.width)) + ", " +
                              std::to_string(static_cast<int>((1 - share->y) * full.height));
    if (pair) {
      pixelText = Words("DESK_PIXEL", place, PixelText(pair->before)) +
                  Words("DESK_PIXEL_AFTER", PixelText(pair->after));
    }
  }
  ShowStatus();
}

void DeskWindow::Tell(const std::string& line) {
  if (!options.tells) return;
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

void DeskWindow::TellPlaces() {
  const auto tell = [this](const std::string& what, const CZNControl& control) {
    const Rect place = Native()->OnScreen(control.Id());
    Tell("place " + what + " " + std::to_string(place.x) + " " + std::to_string(place.y) + " " +
         std::to_string(place.width) + " " + std::to_string(place.height));
  };
  tell("search", *search);
  tell("filters", *filters);
  tell("view", *view);
  tell("chain", *chain);
  tell("dialog", *dock);
  for (const ToolButton& tool : tools) tell("tool-" + tool.name, *tool.button);
}

// Clicks and keys find their way from the first painting on.
void DeskWindow::TellReady() {
  view->onPaint = nullptr;
  Tell("ready");
}

}  // namespace desk
