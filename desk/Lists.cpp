// The lists of filters and of the chain.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "desk/Views.h"
#include "desk/Words.h"

namespace desk {
namespace {

using toolkit::Colour;
using toolkit::Key;
using toolkit::MouseAction;
using toolkit::Point;
using toolkit::Rect;

constexpr int kFilterRow = 30;
constexpr int kChainRow = 44;
constexpr int kIcon = 20;
// How far a press moves before it is a drag.
constexpr int kDragStart = 6;
constexpr double kRowsANotch = 3;

bool IsFar(Point a, Point b) {
  return std::abs(a.x - b.x) > kDragStart || std::abs(a.y - b.y) > kDragStart;
}

Rect Middle(const Rect& place, int side) {
  return {place.x, place.y + (place.height - side) / 2, side, side};
}

// An icon over a plain ground: a painter would show squares where nothing is.
void PaintIcon(toolkit::Painter& painter, const Rect& place, const CatalogEntry* entry,
               Colour ground, const toolkit::Look& look) {
  if (!entry || !entry->icon) {
    const toolkit::Spot centre{place.x + place.width / 2.0, place.y + place.height / 2.0};
    return painter.FillCircle(centre, place.width / 4.0,
                              CZNTheme::Mixed(look.text, look.window, 0.5));
  }
  const MemoryPicture& icon = *entry->icon;
  std::vector<std::vector<BYTE>> rows;
  std::vector<const BYTE*> pointers;
  const BYTE colours[] = {ground.blue, ground.green, ground.red};
  for (int y = 0; y < icon.Height(); ++y) {
    auto& row = rows.emplace_back(icon.ColourRows()[y], icon.ColourRows()[y] + 3 * icon.Width());
    for (std::size_t i = 0; i < row.size(); ++i) {
      const int mask = icon.MaskRows()[y][i / 3];
      row[i] = static_cast<BYTE>((row[i] * (255 - mask) + colours[i % 3] * mask + 127) / 255);
    }
  }
  for (const auto& row : rows) pointers.push_back(row.data());
  painter.DrawPicture(place, {icon.Width(), icon.Height(), pointers.data(), nullptr});
}

}  // namespace

toolkit::PictureRows ShownRows(const MemoryPicture& picture) {
  return {picture.Width(), picture.Height(), picture.ColourRows(), picture.MaskRows()};
}

// --- RowList

RowList::RowList(CZNDialog& dialog, const std::string& name, int rowHeightUnits)
    : CZNCanvas(dialog, name, toolkit::CanvasRole::List), rowUnits(rowHeightUnits) {}

void RowList::TellRows() {
  std::vector<toolkit::CanvasRow> told;
  for (int row = 0; row < RowCount(); ++row) {
    told.push_back(Told(row));
    told.back().place = PlaceOf(row);
  }
  SetRows(std::move(told));
}

int RowList::Units(int units) const {
  return Native() ? Dialog()->System().Scaled(units) : units;
}

int RowList::RowHeight() const {
  return std::max(1, Units(rowUnits));
}

int RowList::RowAt(int y) const {
  return std::min((std::max(y, 0) + scroll) / RowHeight(), RowCount());
}

Rect RowList::PlaceOf(int row) const {
  return {0, row * RowHeight() - scroll, Where().width, RowHeight()};
}

void RowList::KeepInRange() {
  scroll = std::clamp(scroll, 0, std::max(0, RowCount() * RowHeight() - Where().height));
}

void RowList::ShowRow(int row) {
  const Rect place = PlaceOf(row);
  if (place.y < 0) scroll += place.y;
  if (place.Bottom() > Where().height) scroll += place.Bottom() - Where().height;
  KeepInRange();
  TellRows();
  Redraw();
}

bool RowList::HandleWheel(double notches, bool) {
  scroll -= static_cast<int>(std::lround(notches * kRowsANotch * RowHeight()));
  KeepInRange();
  TellRows();
  Redraw();
  return true;
}

void RowList::HandleMouse(const toolkit::MouseEvent& event) {
  const int row = event.action == MouseAction::Leave ? -1 : RowAt(event.place.y);
  if (row != hovered) Redraw();
  hovered = row;
  const bool isPress =
      event.action == MouseAction::Press || event.action == MouseAction::DoublePress;
  if (isPress && event.button == 1) PressRow(row, event);
}

void RowList::HandlePaint(toolkit::Painter& painter) {
  KeepInRange();
  const toolkit::Look look = CZNTheme::Colours();
  const toolkit::Size area = painter.Area();
  painter.FillRect({0, 0, area.width, area.height}, look.field);
  for (int row = RowAt(0); row < RowCount() && PlaceOf(row).y < area.height; ++row) {
    PaintRow(painter, row, PlaceOf(row));
  }
  const int all = RowCount() * RowHeight();
  if (all > area.height) {
    const int length = std::max(Units(24), area.height * area.height / all);
    const int at = (area.height - length) * scroll / (all - area.height);
    painter.FillRect({area.width - Units(5), at, Units(4), length},
                     CZNTheme::Mixed(look.field, look.text, 0.3));
  }
  PaintOver(painter);
}

// --- FilterList

FilterList::FilterList(CZNDialog& dialog, const FilterCatalog& filterCatalog)
    : RowList(dialog, Words("DESK_FILTERS"), kFilterRow), catalog(filterCatalog) {
  Search("");
}

void FilterList::Search(const std::string& words) {
  rows.clear();
  std::string group;
  for (const CatalogEntry* const entry : catalog.Search(words)) {
    if (entry->group != group) rows.push_back({group = entry->group, nullptr});
    rows.push_back({"", entry});
  }
  current = -1;
  KeepInRange();
  TellRows();
  Redraw();
}

void FilterList::PaintRow(toolkit::Painter& painter, int row, const Rect& place) {
  const toolkit::Look look = CZNTheme::Colours();
  const CatalogEntry* const entry = At(row);
  if (!entry) {
    const Rect text{Units(14), place.y + Units(4), place.width - Units(24),
                    place.height - Units(4)};
    return painter.WriteLine(text, rows[static_cast<std::size_t>(row)].group,
                             CZNTheme::Mixed(look.text, look.field, 0.35));
  }
  const double share = row == current ? 0.3 : row == hovered ? 0.12 : 0;
  const Colour ground = CZNTheme::Mixed(look.field, look.accent, share);
  painter.FillRect(place, ground);
  Rect icon = Middle(place, Units(kIcon));
  icon.x = Units(14);
  PaintIcon(painter, icon, entry, ground, look);
  const int left = icon.Right() + Units(10);
  painter.WriteLine({left, place.y, place.width - left - Units(12), place.height}, entry->name,
                    look.text);
}

void FilterList::PressRow(int row, const toolkit::MouseEvent& event) {
  pressed = row < RowCount() && At(row) ? row : -1;
  pressedAt = event.place;
  isDragging = false;
}

void FilterList::HandleMouse(const toolkit::MouseEvent& event) {
  RowList::HandleMouse(event);
  const CatalogEntry* const entry = pressed >= 0 && pressed < RowCount() ? At(pressed) : nullptr;
  if (!entry) return;
  const Point inWindow{Where().x + event.place.x, Where().y + event.place.y};
  if (event.action == MouseAction::Move && event.button == 1) {
    isDragging = isDragging || IsFar(event.place, pressedAt);
    if (isDragging && onDrag) onDrag(*entry, inWindow, false);
  } else if (event.action == MouseAction::Release) {
    pressed = -1;
    if (isDragging) {
      if (onDrag) onDrag(*entry, inWindow, true);
    } else if (onChosen) {
      onChosen(*entry);
    }
  }
}

void FilterList::PaintOver(toolkit::Painter& painter) {
  if (RowCount() > 0) return;
  const toolkit::Look look = CZNTheme::Colours();
  painter.WriteLine({Units(14), 0, painter.Area().width - Units(28), Units(kChainRow)},
                    Words("DESK_NO_MATCH"), CZNTheme::Mixed(look.text, look.field, 0.4));
}

toolkit::CanvasRow FilterList::Told(int row) const {
  const Row& shown = rows[static_cast<std::size_t>(row)];
  return {shown.entry ? shown.entry->name : shown.group, row == current, {}, {}};
}

void FilterList::MakeCurrent(int row) {
  current = row;
  SetValueText(At(row)->name);
  ShowRow(row);
}

bool FilterList::HandleKey(const toolkit::KeyEvent& event) {
  const bool isFar = event.key == Key::Home || event.key == Key::End;
  const int step = event.key == Key::Down || event.key == Key::Home ? 1
                   : event.key == Key::Up || event.key == Key::End  ? -1
                                                                    : 0;
  if (event.key == Key::Enter || event.key == Key::Space) {
    if (current >= 0 && onChosen) onChosen(*At(current));
    return current >= 0;
  }
  if (step == 0) return false;
  int row = (isFar ? (step > 0 ? -1 : RowCount()) : current) + step;
  while (row >= 0 && row < RowCount() && !At(row)) row += step;
  if (row < 0 || row >= RowCount()) return true;
  MakeCurrent(row);
  return true;
}

// --- ChainList

ChainList::ChainList(CZNDialog& dialog, const FilterCatalog& filterCatalog, ChainDocument& chain)
    : RowList(dialog, Words("DESK_CHAIN"), kChainRow), catalog(filterCatalog), document(chain) {}

toolkit::CanvasRow ChainList::Told(int row) const {
  const ChainItem& item = document.Items()[static_cast<std::size_t>(row)];
  return {catalog.NameOf(item.progId) + ", " + ParameterSummary(item),
          document.Selection().contains(item.id),
          item.isOn,
          {}};
}

Rect ChainList::CheckPlace(int row) const {
  const Rect place = PlaceOf(row);
  const int side = Units(16);
  return {Units(12), place.y + (place.height - side) / 2, side, side};
}

void ChainList::Reveal() {
  for (int row = 0; row < RowCount(); ++row) {
    if (document.Selection().contains(document.Items()[static_cast<std::size_t>(row)].id)) {
      return ShowRow(row);
    }
  }
  KeepInRange();
  TellRows();
  Redraw();
}

namespace {

void PaintCheck(toolkit::Painter& painter, const Rect& box, bool isOn, const toolkit::Look& look) {
  const Colour edge = CZNTheme::Mixed(look.text, look.field, 0.4);
  painter.FillRect(box, isOn ? look.accent : edge);
  if (!isOn) painter.FillRect({box.x + 1, box.y + 1, box.width - 2, box.height - 2}, look.field);
  if (!isOn) return;
  const auto at = [&](double x, double y) {
    return toolkit::Spot{box.x + x * box.width, box.y + y * box.height};
  };
  const toolkit::Spot tick[] = {at(0.22, 0.52), at(0.42, 0.72), at(0.8, 0.28)};
  painter.DrawLines(tick, {255, 255, 255}, box.width / 8.0);
}

}  // namespace

void ChainList::PaintRow(toolkit::Painter& painter, int row, const Rect& place) {
  const toolkit::Look look = CZNTheme::Colours();
  const ChainItem& item = document.Items()[static_cast<std::size_t>(row)];
  const CatalogEntry* const entry = catalog.Find(item.progId);
  const bool isSelected = document.Selection().contains(item.id);
  const double share = isSelected ? 0.3 : row == hovered ? 0.12 : 0;
  const Colour ground = CZNTheme::Mixed(look.field, look.accent, share);
  painter.FillRect(place, ground);
  PaintCheck(painter, CheckPlace(row), item.isOn, look);
  Rect icon = Middle(place, Units(kIcon));
  icon.x = Units(38);
  PaintIcon(painter, icon, entry, ground, look);
  const Colour name = item.isOn ? look.text : CZNTheme::Mixed(look.text, look.field, 0.5);
  const int left = icon.Right() + Units(10);
  const int width = place.width - left - Units(12), half = place.height / 2;
  painter.WriteLine({left, place.y + Units(2), width, half}, catalog.NameOf(item.progId), name);
  painter.WriteLine({left, place.y + half - Units(1), width, half}, ParameterSummary(item),
                    CZNTheme::Mixed(look.text, look.field, item.isOn ? 0.4 : 0.65));
  painter.FillRect({0, place.Bottom() - 1, place.width, 1},
                   CZNTheme::Mixed(look.field, look.text, 0.08));
}

void ChainList::PaintOver(toolkit::Painter& painter) {
  const toolkit::Look look = CZNTheme::Colours();
  const toolkit::Size area = painter.Area();
  if (RowCount() == 0) {
    painter.WriteLine({Units(14), 0, area.width - Units(28), Units(kChainRow)},
                      Words("DESK_NO_FILTER"), CZNTheme::Mixed(look.text, look.field, 0.4));
  }
  if (!drop) return;
  const int y = std::clamp(PlaceOf(*drop).y, 1, area.height - 2);
  painter.FillRect({Units(4), y - 1, area.width - Units(8), Units(3)}, look.accent);
}

void ChainList::SelectRow(int row, bool extends, bool toggles) {
  if (row < 0 || row >= RowCount()) return document.Select({});
  const auto idAt = [&](int at) { return document.Items()[static_cast<std::size_t>(at)].id; };
  std::set<int> chosen = toggles ? document.Selection() : std::set<int>();
  if (extends) {
    const int from = document.Find(anchor) ? document.PlaceOf(anchor) : row;
    for (int at = std::min(from, row); at <= std::max(from, row); ++at) chosen.insert(idAt(at));
  } else {
    anchor = idAt(row);
    if (!chosen.insert(idAt(row)).second) chosen.erase(idAt(row));
  }
  document.Select(chosen);
  Redraw();
}

void ChainList::PressRow(int row, const toolkit::MouseEvent& event) {
  pressed = row < RowCount() ? row : -1;
  pressedAt = event.place;
  isDragging = selectsOnRelease = false;
  if (pressed < 0) return SelectRow(-1, false, false);
  const ChainItem item = document.Items()[static_cast<std::size_t>(row)];
  if (CheckPlace(row).Contains(event.place)) {
    pressed = -1;
    const bool isPart = document.Selection().contains(item.id);
    return document.Switch(isPart ? document.Selection() : std::set<int>{item.id}, !item.isOn);
  }
  // A press on one of several selected ones may begin to drag them all.
  selectsOnRelease = document.Selection().contains(item.id) && !event.shift && !event.control;
  if (!selectsOnRelease) SelectRow(row, event.shift, event.control);
  if (event.action == MouseAction::DoublePress && onOpen) onOpen();
}

void ChainList::HandleMouse(const toolkit::MouseEvent& event) {
  RowList::HandleMouse(event);
  if (pressed < 0) return;
  if (event.action == MouseAction::Move && event.button == 1) {
    isDragging = isDragging || IsFar(event.place, pressedAt);
    const bool isOut = IsFar(event.place, {std::clamp(event.place.x, 0, Where().width),
                                           std::clamp(event.place.y, 0, Where().height)});
    if (isDragging && isOut && onDragOut) {
      pressed = -1;
      isDragging = false;
      ShowDrop(std::nullopt);
      return onDragOut();
    }
    if (isDragging) ShowDrop(event.place);
  } else if (event.action == MouseAction::Release) {
    const int row = std::exchange(pressed, -1);
    if (isDragging) return Drop(event.place);
    if (selectsOnRelease) SelectRow(row, false, false);
  }
}

void ChainList::ShowDrop(std::optional<Point> place) {
  drop = place ? std::optional(DropPlace(*place)) : std::nullopt;
  Redraw();
}

int ChainList::DropPlace(Point place) const {
  return std::clamp(RowAt(place.y + RowHeight() / 2), 0, RowCount());
}

void ChainList::Drop(Point place) {
  isDragging = false;
  drop.reset();
  document.Move(document.Selection(), DropPlace(place));
  Redraw();
}

void ChainList::MoveSelection(int step) {
  const auto& items = document.Items();
  int first = RowCount(), last = -1;
  for (int row = 0; row < RowCount(); ++row) {
    if (!document.Selection().contains(items[static_cast<std::size_t>(row)].id)) continue;
    first = std::min(first, row);
    last = row;
  }
  if (last >= 0) document.Move(document.Selection(), step < 0 ? first - 1 : last + 2);
}

bool ChainList::HandleKey(const toolkit::KeyEvent& event) {
  const int step = event.key == Key::Down ? 1 : event.key == Key::Up ? -1 : 0;
  if (step != 0 && event.alt) {
    MoveSelection(step);
  } else if (step != 0 && RowCount() > 0) {
    int row = -1;
    for (int at = 0; at < RowCount(); ++at) {
      const int itemId = document.Items()[static_cast<std::size_t>(at)].id;
      if (document.Selection().contains(itemId) && (row < 0 || step > 0)) row = at;
    }
    row = std::clamp(row + step, 0, RowCount() - 1);
    SelectRow(row, event.shift, false);
    SetValueText(catalog.NameOf(document.Items()[static_cast<std::size_t>(row)].progId));
    ShowRow(row);
  } else if (event.key == Key::Delete) {
    document.Remove(document.Selection());
  } else if (event.key == Key::Enter) {
    if (onOpen) onOpen();
  } else if (event.key == Key::Space && !document.Selection().empty()) {
    const ChainItem* const item = document.Find(*document.Selection().begin());
    document.Switch(document.Selection(), !item->isOn);
  } else {
    return false;
  }
  return true;
}

}  // namespace desk
