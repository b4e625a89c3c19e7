// Where the parts of the window lie, and where the dialog of the selected filter does.
#include <algorithm>
#include <utility>
#include <vector>

#include "desk/DeskWindow.h"
#include "desk/Words.h"

namespace desk {
namespace {

using toolkit::Rect;

constexpr int kPad = 8;
constexpr int kLeftWidth = 272, kRightWidth = 300;
constexpr int kLeastPanel = 160, kLeastMiddle = 240;
constexpr int kLeastPicture = 200, kLeastChain = 96;
constexpr int kHistogram = 110;
constexpr int kStatus = 28;
constexpr int kBorder = 7;
constexpr int kScrollBar = 18;

}  // namespace

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

// Buttons that the window is too narrow for go to a further row. Gives the height of the bar.
int DeskWindow::ArrangeToolBar(int width) {
  const int pad = Units(kPad);
  int x = pad, y = pad, height = 0;
  for (const ToolButton& tool : tools) {
    const toolkit::Size size = tool.button->Preferred(tool.text);
    if (tool.opensGroup) x += 2 * pad;
    if (x > pad && x + size.width > width - pad) {
      x = pad;
      y += height + pad / 2;
    }
    tool.button->Place({x, y, size.width, size.height});
    x += size.width + pad / 2;
    height = std::max(height, size.height);
  }
  return y + height + pad;
}

void DeskWindow::ArrangeSoon() {
  if (std::exchange(isArranging, true)) return;
  System().Post([this] {
    isArranging = false;
    if (isOpen) Arrange();
  });
}

bool DeskWindow::IsDocked(DialogPlace place) const {
  return settings.dialog == place && dialogSize.height > 0;
}

// The dialog keeps the room that the largest one took: pictures that grow and shrink with each
// choice of a filter would be a pain.
void DeskWindow::Arrange() {
  if (client.width < 1 || client.height < 1) return;
  const int pad = Units(kPad), border = Units(kBorder), statusHeight = Units(kStatus);
  if (!std::exchange(isArranged, true)) {
    leftWidth = Units(settings.left ? settings.left : kLeftWidth);
    rightWidth = Units(settings.right ? settings.right : kRightWidth);
  }
  const toolkit::Size wanted = dock->Wanted();
  dialogSize = wanted.height > 0 ? toolkit::Size{std::max(wanted.width, dialogSize.width),
                                                 std::max(wanted.height, dialogSize.height)}
                                 : toolkit::Size();
  const int most = std::max(Units(kLeastPanel), (client.width - Units(kLeastMiddle)) / 2);
  leftWidth = std::clamp(leftWidth, Units(kLeastPanel), most);
  rightWidth = std::clamp(rightWidth, Units(kLeastPanel), most);
  const int forDialog =
      IsDocked(DialogPlace::BelowChain) ? dialogSize.width + Units(kScrollBar) + pad : 0;
  const int rightSide = std::min(std::max(rightWidth, forDialog), most);
  const int top = ArrangeToolBar(client.width);
  const int bottom = std::max(top, client.height - statusHeight - pad);
  const int right = client.width - rightSide;
  ArrangeFilters({pad, leftWidth - pad, top, bottom});
  leftBorder->Place({leftWidth, top, border, bottom - top});
  const int middle = leftWidth + border;
  ArrangePicture({middle, std::max(1, right - border - middle), top, bottom});
  rightBorder->Place({right - border, top, border, bottom - top});
  ArrangeChain({right, rightSide - pad, top, bottom});
  const bool isDocked = dialogSize.height > 0;
  dock->SetVisible(isDocked);
  dialogTitle->SetVisible(isDocked);
  dialogClose->SetVisible(isDocked);
  status->Place({0, client.height - statusHeight, client.width, statusHeight});
  AskForBox();
  if (options.tells) System().Post([this] { TellPlaces(); });
}

void DeskWindow::ArrangeFilters(const Column& column) {
  const int pad = Units(kPad);
  const int editHeight = search->Preferred(Words("DESK_SEARCH")).height;
  const toolkit::Size label = searchLabel->Preferred(Words("DESK_SEARCH"));
  searchLabel->Place(
      {column.left, column.top + (editHeight - label.height) / 2, label.width, label.height});
  const int edit = column.left + label.width + pad;
  search->Place({edit, column.top, std::max(1, column.left + column.width - edit), editHeight});
  const int list = column.top + editHeight + pad;
  filters->Place({column.left, list, column.width, std::max(1, column.bottom - list)});
}

void DeskWindow::ArrangePicture(Column column) {
  if (IsDocked(DialogPlace::BelowPicture)) ArrangeDialog(column, Units(kLeastPicture));
  view->Place({column.left, column.top, column.width, std::max(1, column.bottom - column.top)});
}

void DeskWindow::ArrangeChain(Column column) {
  const int pad = Units(kPad);
  const toolkit::Size title = chainTitle->Preferred(Words("DESK_CHAIN"));
  const int buttonHeight = chainButtons[0]->Preferred(Words("DESK_EDIT")).height;
  const int head = Units(kHistogram) + pad + title.height + pad / 2;
  if (IsDocked(DialogPlace::BelowChain)) {
    ArrangeDialog(column, head + Units(kLeastChain) + pad + buttonHeight);
  }
  histogram->Place({column.left, column.top, column.width, Units(kHistogram)});
  chainTitle->Place(
      {column.left, column.top + Units(kHistogram) + pad, column.width, title.height});
  const int list = column.top + head, buttons = column.bottom - buttonHeight;
  chain->Place({column.left, list, column.width, std::max(1, buttons - pad - list)});
  ArrangeChainButtons({column.left, column.width, buttons, column.bottom});
}

// Side by side over the whole width: each as wide as its words, and an equal share of the rest.
void DeskWindow::ArrangeChainButtons(const Column& column) {
  const int gap = Units(kPad) / 2, count = static_cast<int>(chainButtons.size());
  const char* const keys[] = {"DESK_EDIT", "DESK_SWITCH", "DESK_DELETE"};
  int rest = column.width - (count - 1) * gap;
  std::vector<int> widths;
  for (int i = 0; i < count; ++i) {
    widths.push_back(chainButtons[static_cast<std::size_t>(i)]->Preferred(Words(keys[i])).width);
    rest -= widths.back();
  }
  int x = column.left;
  for (int i = 0; i < count; ++i) {
    const auto at = static_cast<std::size_t>(i);
    const int width = widths[at] + rest / count;
    chainButtons[at]->Place({x, column.top, width, column.bottom - column.top});
    x += width + gap;
  }
}

void DeskWindow::ArrangeDialog(Column& column, int least) {
  const int pad = Units(kPad);
  const toolkit::Size close = dialogClose->Preferred(Words("DESK_CLOSE_DIALOG"));
  const int room = column.bottom - column.top - least - close.height - 2 * pad;
  const int height = std::clamp(dialogSize.height, 1, std::max(1, room));
  const int bar = height < dialogSize.height ? Units(kScrollBar) : 0;
  const int width = std::min(column.width, dialogSize.width + bar);
  const int top = column.bottom - height;
  dock->Place({column.left, top, std::max(width, column.width), height});
  const int head = top - close.height;
  const int title = dialogTitle->Preferred(Words("DESK_DIALOG")).height;
  dialogTitle->Place({column.left, head + (close.height - title) / 2,
                      std::max(1, column.width - close.width - pad), title});
  dialogClose->Place({column.left + column.width - close.width, head, close.width, close.height});
  column.bottom = head - pad;
}

void DeskWindow::AskForBox() {
  session.SetBox(view->Box(), true);
}

void DeskWindow::MoveBorders(int left, int right) {
  leftWidth += left;
  rightWidth += right;
  Arrange();
  if (left) settings.left = leftWidth * 100 / Units(100);
  if (right) settings.right = rightWidth * 100 / Units(100);
}

// --- the dialog of the selected filter

void DeskWindow::PlaceDialog(DialogPlace place) {
  settings.dialog = place;
  dialogSize = {};
  DockDialog();
  ShowState();
  Arrange();
}

// Puts the window of the open dialog where the person wants it. Not in an event of that window.
void DeskWindow::DockDialog() {
  const DialogBench& bench = session.Bench();
  const bool isWanted = bench.IsOpen() && settings.dialog != DialogPlace::Window;
  const bool isDocked = isWanted && dock->Take(bench.Window());
  if (!isDocked) dock->GiveBack();
  session.Bench().ShowDocked(isDocked);
  if (bench.Items().empty()) return;
  const ChainItem* const first = session.Chain().Find(bench.Items()[0]);
  const std::size_t count = bench.Items().size();
  if (first) {
    dialogTitle->SetText(session.Catalog().NameOf(first->progId) +
                         (count > 1 ? " (" + std::to_string(count) + ")" : ""));
  }
}

}  // namespace desk
