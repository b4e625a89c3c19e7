#include "desk/DeskWindow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "base/CodePage.h"
#include "core/DataXferObj.h"
#include "core/DragText.h"
#include "desk/BatchWindow.h"
#include "desk/MessageWindow.h"
#include "host/Texts.h"
#include "toolkit/ZNMessage.h"

namespace desk {
namespace {

using toolkit::Point;
using toolkit::Rect;

constexpr int kPad = 8;
constexpr int kLeftWidth = 272, kRightWidth = 280;
constexpr int kLeastPanel = 160, kLeastMiddle = 240;
constexpr int kHistogram = 110;
constexpr int kStatus = 28;
constexpr int kBorder = 7;
constexpr double kStep = 1.25;

const std::vector<std::string> kPicturePatterns = {"*.jpg", "*.jpeg", "*.png", "*.tif", "*.tiff",
                                                   "*.bmp", "*.ppm",  "*.pgm", "*.pam", "*.pnm"};

std::string Percent(double share) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f %%", share < 0.1 ? 1 : 0, share * 100);
  return text;
}

std::string PixelText(const std::array<BYTE, 4>& pixel) {
  char text[64];
  std::snprintf(text, sizeof text, "%3d %3d %3d", pixel[2], pixel[1], pixel[0]);
  return pixel[3] == 0 ? text : std::string(text) + " mask " + std::to_string(pixel[3]);
}

}  // namespace

DeskWindow::DeskWindow(const DeskOptions& deskOptions)
    : options(deskOptions),
      session([this](std::function<void()> task) { System().Post(std::move(task)); },
              deskOptions.state, deskOptions.picture.empty()),
      exportFile(deskOptions.exportFile) {}

DeskWindow::~DeskWindow() = default;

bool DeskWindow::Open() {
  toolkit::WindowSpec spec;
  spec.title = "fxbox desk";
  spec.isTool = false;
  spec.takesFiles = true;
  if (!CreateModeless(spec)) return false;
  isOpen = true;
  const toolkit::Size screen = System().WorkArea();
  client = {std::min(System().Scaled(1240), screen.width - System().Scaled(20)),
            std::min(System().Scaled(800), screen.height - System().Scaled(60))};
  Native()->SetClientSize(client);
  Arrange();
  Show();
  ShowState();
  if (!options.picture.empty()) {
    session.Open(options.picture);
  } else if (session.Recover()) {
    message = "The work of last time is back";
    ShowStatus();
  }
  return true;
}

// --- making

void DeskWindow::Build() {
  MakeToolBar();
  MakePanels();
  Connect();
  FillMenus();
}

void DeskWindow::MakeToolBar() {
  const auto add = [this](const std::string& text, const std::string& bubble, bool isToggle,
                          std::function<void()> action) {
    auto& button =
        Make<CZNButton>(text, isToggle ? CZNButton::Kind::Toggle : CZNButton::Kind::Push);
    button.SetBubble(bubble);
    button.onPress = std::move(action);
    tools.push_back(&button);
    toolTexts.push_back(text);
    return &button;
  };
  add("&Open", "Open a picture (Ctrl+O)", false, [this] { AskOpen(); });
  add("&Export", "Write the result as a picture file (Ctrl+E)", false, [this] { AskExport(); });
  undoButton =
      add("Undo", "Take back the last step (Ctrl+Z)", false, [this] { session.Chain().Undo(); });
  redoButton = add("Redo", "Do the step again (Ctrl+Y)", false, [this] { session.Chain().Redo(); });
  add("Fit", "The whole picture (Ctrl+0)", false, [this] { view->Fit(); });
  add("100 %", "A pixel of the picture for one of the screen (Ctrl+1)", false,
      [this] { view->SetScale(1); });
  const auto compare = [this](Comparison wanted) {
    view->Compare(view->Compared() == wanted ? Comparison::After : wanted);
    ShowState();
  };
  beforeButton = add("Before", "The picture without the chain (B)", true,
                     [compare] { compare(Comparison::Before); });
  splitButton = add("Split", "Before and after side by side (S)", true,
                    [compare] { compare(Comparison::Split); });
  maskButton = add("Mask", "What is opaque, in white (M)", true, [this] {
    view->ShowMask(!view->ShowsMask());
    ShowState();
  });
}

void DeskWindow::MakePanels() {
  searchLabel = &Make<CZNStatic>("&Search");
  search = &Make<CZNEdit>("Search for filters");
  search->SetBubble("Search for filters (Ctrl+F)");
  filters = &Make<FilterList>(session.Catalog());
  leftBorder = &Make<Splitter>();
  view = &Make<PictureView>();
  rightBorder = &Make<Splitter>();
  histogram = &Make<HistogramView>();
  chainTitle = &Make<CZNStatic>("Chain", true);
  chain = &Make<ChainList>(session.Catalog(), session.Chain());
  const auto add = [this](const std::string& text, std::function<void()> action) {
    auto& button = Make<CZNButton>(text);
    button.onPress = std::move(action);
    chainButtons.push_back(&button);
    chainTexts.push_back(text);
  };
  add("E&dit", [this] { OpenDialog(); });
  add("On / off", [this] { SwitchSelection(); });
  add("Delete", [this] { session.Chain().Remove(session.Chain().Selection()); });
  status = &Make<StatusLine>();
}

void DeskWindow::Connect() {
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
  leftBorder->onMove = [this](int dx) {
    leftWidth += dx;
    Arrange();
  };
  rightBorder->onMove = [this](int dx) {
    rightWidth -= dx;
    Arrange();
  };
  view->onPointer = [this](auto share) { ShowPointer(share); };
  view->onZoom = [this] {
    AskForBox();
    ShowStatus();
  };
  view->onClick = [this](toolkit::Spot share) { Click(share); };

  session.onPicture = [this] {
    view->Clear();
    view->Fit();
    SetTitle(session.Name() + " - fxbox desk");
    FillRecent();
    Tell("picture " + session.Name());
  };
  session.onItems = [this] {
    chain->Reveal();
    FollowSelection();
    ShowState();
    Tell("chain " + base::ToUtf8(TextOf(session.Chain().Items())));
  };
  session.onSelection = [this] {
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
  session.onMessage = [this](const std::string& text) {
    message = text;
    ShowStatus();
    Tell("message " + text);
  };
  session.onDone = [this](const std::string& text) {
    message = text;
    ShowStatus();
    Tell("done " + text);
  };
  view->onCrop = [this](const CropFrame& frame) { session.SetCrop(frame); };
  session.Bench().onPicker = [this] { ShowTool(); };
}

void DeskWindow::FillMenus() {
  CZNMenu& bar = MenuBar();
  bar.Clear();
  CZNMenu& file = bar.AddBelow("&File");
  file.Add("&Open picture...\tCtrl+O", [this] { AskOpen(); });
  recentMenu = &file.AddBelow("Open &recent");
  FillRecent();
  file.AddSeparator();
  file.Add("&Load chain...\tCtrl+L", [this] { AskLoadChain(); });
  file.Add("&Save chain\tCtrl+S", [this] {
    if (session.HasPicture()) session.SaveChain(host::Utf8Of(session.ChainFile()));
  });
  file.Add("Save chain &as...\tCtrl+Shift+S", [this] { AskSaveChain(); });
  file.AddSeparator();
  file.Add("&Export...\tCtrl+Shift+E", [this] { AskExport(); });
  file.Add("Export a&gain\tCtrl+E", [this] { ExportAgain(); });
  file.Add("&Batch...\tCtrl+B", [this] { RunBatch(); });
  file.AddSeparator();
  file.Add("&Quit\tCtrl+Q", [this] { OnCancel(); });

  CZNMenu& edit = bar.AddBelow("&Edit");
  entries.undo = edit.Add("&Undo\tCtrl+Z", [this] { session.Chain().Undo(); });
  entries.redo = edit.Add("&Redo\tCtrl+Y", [this] { session.Chain().Redo(); });
  edit.AddSeparator();
  edit.Add("Cu&t\tCtrl+X", [this] { Cut(); });
  edit.Add("&Copy\tCtrl+C", [this] { Copy(); });
  edit.Add("&Paste\tCtrl+V", [this] { Paste(); });
  edit.Add("&Delete\tDel", [this] { session.Chain().Remove(session.Chain().Selection()); });
  edit.Add("Select &all\tCtrl+A", [this] {
    std::set<int> all;
    for (const ChainItem& item : session.Chain().Items()) all.insert(item.id);
    session.Chain().Select(all);
  });
  edit.AddSeparator();
  edit.Add("&Edit filter...\tF4", [this] { OpenDialog(); });
  edit.Add("Switch &off or on\tF5", [this] { SwitchSelection(); });
  edit.Add("&Search for a filter\tCtrl+F", [this] { search->Focus(); });

  CZNMenu& seen = bar.AddBelow("&View");
  seen.Add("&Fit\tCtrl+0", [this] { view->Fit(); });
  seen.Add("&100 %\tCtrl+1", [this] { view->SetScale(1); });
  seen.Add("Zoom &in\tCtrl++", [this] { view->ZoomBy(kStep); });
  seen.Add("Zoom &out\tCtrl+-", [this] { view->ZoomBy(1 / kStep); });
  seen.AddSeparator();
  entries.before = seen.AddCheck("&Before\tB", [this] { beforeButton->onPress(); });
  entries.split = seen.AddCheck("&Split\tS", [this] { splitButton->onPress(); });
  entries.mask = seen.AddCheck("&Mask\tM", [this] { maskButton->onPress(); });
  seen.AddSeparator();
  CZNMenu& theme = seen.AddBelow("&Theme");
  theme.Add("&System", [] { CZNTheme::Choose(toolkit::ThemeChoice::System); });
  theme.Add("&Light", [] { CZNTheme::Choose(toolkit::ThemeChoice::Light); });
  theme.Add("&Dark", [] { CZNTheme::Choose(toolkit::ThemeChoice::Dark); });
  seen.Add("M&essages...\tF8", [this] { ShowMessages(); });
  ShowMenuBar();
}

void DeskWindow::FillRecent() {
  if (!recentMenu) return;
  recentMenu->Clear();
  for (const std::string& name : session.Recent()) {
    recentMenu->Add(name, [this, name] {
      if (MayLeave()) session.Open(name);
    });
  }
  if (MenuBar().Entries().size() > 1) ShowMenuBar();
}

// --- layout

void DeskWindow::OnResize(toolkit::Size size) {
  client = size;
  Arrange();
}

void DeskWindow::OnLook() {
  Arrange();
  for (CZNCanvas* canvas : std::initializer_list<CZNCanvas*>{filters, view, histogram, chain,
                                                             leftBorder, rightBorder, status}) {
    canvas->Redraw();
  }
}

// Gives the height of the bar.
int DeskWindow::ArrangeToolBar(int) {
  const int pad = System().Scaled(kPad);
  int x = pad, height = 0;
  for (std::size_t i = 0; i < tools.size(); ++i) {
    const toolkit::Size size = tools[i]->Preferred(toolTexts[i]);
    const bool opensGroup =
        tools[i] == undoButton || toolTexts[i] == "Fit" || tools[i] == beforeButton;
    if (opensGroup) x += 2 * pad;
    tools[i]->Place({x, pad, size.width, size.height});
    x += size.width + pad / 2;
    height = std::max(height, size.height);
  }
  return height + 2 * pad;
}

void DeskWindow::Arrange() {
  if (client.width < 1 || client.height < 1) return;
  const auto unit = [this](int units) { return System().Scaled(units); };
  const int pad = unit(kPad), border = unit(kBorder), statusHeight = unit(kStatus);
  if (!isArranged) {
    leftWidth = unit(kLeftWidth);
    rightWidth = unit(kRightWidth);
    isArranged = true;
  }
  const int most = std::max(unit(kLeastPanel), (client.width - unit(kLeastMiddle)) / 2);
  leftWidth = std::clamp(leftWidth, unit(kLeastPanel), most);
  rightWidth = std::clamp(rightWidth, unit(kLeastPanel), most);
  const int top = ArrangeToolBar(client.width);
  const int bottom = std::max(top, client.height - statusHeight);

  const int editHeight = search->Preferred("Sepia").height;
  const toolkit::Size label = searchLabel->Preferred("&Search");
  searchLabel->Place({pad, top + (editHeight - label.height) / 2, label.width, label.height});
  const int edit = 2 * pad + label.width;
  search->Place({edit, top, leftWidth - edit, editHeight});
  filters->Place({pad, top + editHeight + pad, leftWidth - pad,
                  std::max(1, bottom - top - editHeight - 2 * pad)});
  leftBorder->Place({leftWidth, top, border, bottom - top - pad});
  const int right = client.width - rightWidth;
  view->Place({leftWidth + border, top, std::max(1, right - border - leftWidth - border),
               std::max(1, bottom - top - pad)});
  rightBorder->Place({right - border, top, border, bottom - top - pad});

  const int inner = rightWidth - pad;
  histogram->Place({right, top, inner, unit(kHistogram)});
  int y = top + unit(kHistogram) + pad;
  const toolkit::Size title = chainTitle->Preferred("Chain");
  chainTitle->Place({right, y, inner, title.height});
  y += title.height + pad / 2;
  const int buttonHeight = chainButtons[0]->Preferred(chainTexts[0]).height;
  chain->Place({right, y, inner, std::max(1, bottom - y - buttonHeight - 2 * pad)});
  const int count = static_cast<int>(chainButtons.size());
  const int width = (inner - (count - 1) * pad / 2) / count;
  for (int i = 0; i < count; ++i) {
    chainButtons[static_cast<std::size_t>(i)]->Place(
        {right + i * (width + pad / 2), bottom - buttonHeight - pad, width, buttonHeight});
  }
  status->Place({0, client.height - statusHeight, client.width, statusHeight});
  AskForBox();
  if (options.tells) System().Post([this] { TellPlaces(); });
}

void DeskWindow::AskForBox() {
  session.SetBox(view->Box(), true);
}

// --- what is asked for

bool DeskWindow::MayLeave() {
  if (!session.HasPicture() || !session.IsModified()) return true;
  if (isAsking) return false;
  isAsking = true;
  const int answer = ZNAskButton("fxbox desk", "The chain of this picture is not saved.",
                                 {"&Save", "&Do not save", "&Cancel"});
  isAsking = false;
  if (answer == 0) return session.SaveChain(host::Utf8Of(session.ChainFile()));
  return answer == 1;
}

void DeskWindow::AskOpen() {
  const auto file =
      Native()->AskFile("Open a picture", false, host::PathOf(session.Name()), kPicturePatterns);
  if (file && MayLeave()) session.Open(host::Utf8Of(*file));
}

void DeskWindow::AskLoadChain() {
  const auto file =
      Native()->AskFile("Load a chain", false, session.ChainFile(), {"*.chain", "*.txt"});
  if (file) session.LoadChain(host::Utf8Of(*file));
}

void DeskWindow::AskSaveChain() {
  const auto file = Native()->AskFile("Save the chain", true, session.ChainFile(), {"*.chain"});
  if (file) session.SaveChain(host::Utf8Of(*file));
}

void DeskWindow::AskExport() {
  if (!session.HasPicture()) return;
  std::filesystem::path start = host::PathOf(session.Name());
  std::filesystem::path proposed = start.stem();
  proposed += "-fxbox";
  proposed += start.extension();
  start.replace_filename(proposed);
  const auto file = Native()->AskFile("Export the result", true, start, kPicturePatterns);
  if (!file) return;
  exportFile = host::Utf8Of(*file);
  session.Export(exportFile);
}

void DeskWindow::ExportAgain() {
  if (exportFile.empty()) return AskExport();
  session.Export(exportFile);
}

void DeskWindow::RunBatch() {
  auto window = std::make_unique<BatchWindow>(session);
  BatchWindow& shownWindow = *window;
  batchWindow = std::move(window);
  shownWindow.Open(Handle());
}

void DeskWindow::ShowMessages() {
  auto window = std::make_unique<MessageWindow>(session.Messages());
  MessageWindow& shownWindow = *window;
  messageWindow = std::move(window);
  shownWindow.Open(Handle());
}

void DeskWindow::Copy() {
  const std::string text = session.CopyText();
  const auto object = platform::ComPtr<CDataXferObj>::Attach(new CDataXferObj);
  if (core::AddDraggedChain(object.Get(), text)) System().SetClipboard(object.Get());
}

void DeskWindow::Cut() {
  Copy();
  session.Chain().Remove(session.Chain().Selection());
}

// Behind what is selected, or at the end.
void DeskWindow::Paste() {
  const auto object = platform::ComPtr<IDataObject>::Attach(System().Clipboard());
  const auto content = core::ReadDraggedChain(object.Get());
  if (!content) return;
  int place = static_cast<int>(session.Chain().Items().size());
  for (const int item : session.Chain().Selection()) place = session.Chain().PlaceOf(item) + 1;
  session.Paste(content->chain, place);
}

void DeskWindow::SwitchSelection() {
  const auto& chosen = session.Chain().Selection();
  if (chosen.empty()) return;
  session.Chain().Switch(chosen, !session.Chain().Find(*chosen.begin())->isOn);
}

void DeskWindow::OpenDialog() {
  if (session.Chain().Selection().empty()) return;
  if (!session.EditSelection(Handle())) {
    message = "This filter has no dialog";
    ShowStatus();
  }
}

// An open dialog goes over to what is selected now.
void DeskWindow::FollowSelection() {
  if (!session.Bench().IsOpen()) return;
  std::vector<int> chosen;
  for (const ChainItem& item : session.Chain().Items()) {
    if (session.Chain().Selection().contains(item.id)) chosen.push_back(item.id);
  }
  if (chosen == session.Bench().Items()) return;
  if (!session.EditSelection(Handle())) session.Bench().Close();
}

void DeskWindow::Drag(const CatalogEntry& entry, Point place, bool isDrop) {
  const Rect list = chain->Where();
  const Point inList{place.x - list.x, place.y - list.y};
  const bool isInside = list.Contains(place);
  chain->ShowDrop(isInside && !isDrop ? std::optional(inList) : std::nullopt);
  if (!isDrop) return;
  if (isInside) {
    session.AddFilter(entry.progId, chain->DropPlace(inList));
  } else if (view->Where().Contains(place)) {
    session.AddFilter(entry.progId);
  } else {
    return;
  }
  OpenDialog();
}

void DeskWindow::Click(toolkit::Spot share) {
  if (session.Tool() == PictureTool::RedEye) return session.ClickEye(share.x, share.y);
  const PicturePointer& picture = session.Shown().shown;
  if (!picture || !session.Bench().WaitsForColour()) return;
  const auto pair = session.PixelAt(static_cast<int>(share.x * picture->Width()),
                                    static_cast<int>(share.y * picture->Height()));
  if (pair) session.Bench().PickColour(pair->before[2], pair->before[1], pair->before[0]);
}

void DeskWindow::OnFiles(const std::vector<std::filesystem::path>& files) {
  std::vector<std::string> names;
  for (const auto& file : files) names.push_back(host::Utf8Of(file));
  const bool isPicture = std::any_of(files.begin(), files.end(),
                                     [](const auto& file) { return file.extension() != ".chain"; });
  if (isPicture && !MayLeave()) return;
  const std::size_t before = session.Messages().size();
  session.OpenAll(names);
  if (session.Messages().size() > before) ShowMessages();
}

// Escape closes nothing; the close button does.
void DeskWindow::OnCancel() {
  if (!isOpen || !MayLeave()) return;
  isOpen = false;
  session.Bench().Close();
  session.Finish();
  Hide();
}

// --- what is told

void DeskWindow::ShowState() {
  const ChainDocument& document = session.Chain();
  MenuBar().Enable(entries.undo, document.CanUndo());
  MenuBar().Enable(entries.redo, document.CanRedo());
  undoButton->Enable(document.CanUndo());
  redoButton->Enable(document.CanRedo());
  beforeButton->SetDown(view->Compared() == Comparison::Before);
  splitButton->SetDown(view->Compared() == Comparison::Split);
  maskButton->SetDown(view->ShowsMask());
  MenuBar().Check(entries.before, view->Compared() == Comparison::Before);
  MenuBar().Check(entries.split, view->Compared() == Comparison::Split);
  MenuBar().Check(entries.mask, view->ShowsMask());
  ShowTool();
  for (CZNButton* const button : chainButtons) button->Enable(!document.Selection().empty());
  const std::size_t count = document.Items().size();
  chainTitle->SetText(count == 0 ? "Chain"
                                 : "Chain: " + std::to_string(count) +
                                       (count == 1 ? " filter" : " filters"));
}

void DeskWindow::ShowTool() {
  view->SetCrop(session.Crop());
  view->TakeClicks(session.Tool() == PictureTool::RedEye || session.Bench().WaitsForColour());
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
      pixelText =
          place + "    before " + PixelText(pair->before) + "    after " + PixelText(pair->after);
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
  const auto tell = [this](const std::string& what, const CZNControl& control,
                           std::optional<Rect> part = std::nullopt) {
    Rect place = Native()->OnScreen(control.Id());
    if (part) place = {place.x + part->x, place.y + part->y, part->width, part->height};
    Tell("place " + what + " " + std::to_string(place.x) + " " + std::to_string(place.y) + " " +
         std::to_string(place.width) + " " + std::to_string(place.height));
  };
  tell("search", *search);
  tell("filters", *filters);
  tell("view", *view);
  tell("chain", *chain);
  for (std::size_t i = 0; i < tools.size(); ++i) {
    std::string what = toolTexts[i];
    std::erase_if(what, [](char c) { return c == '&' || c == ' ' || c == '%'; });
    tell("tool-" + what, *tools[i]);
  }
  Tell("ready");
}

}  // namespace desk
