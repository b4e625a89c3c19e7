// The places of the window that draw themselves: picture, filters, chain, histogram.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "desk/ChainDocument.h"
#include "desk/FilterCatalog.h"
#include "desk/LoadedPicture.h"
#include "toolkit/Painter.h"
#include "toolkit/ZNControls.h"
#include "toolkit/ZNDialog.h"
#include "toolkit/ZNTheme.h"

namespace desk {

// Rows of a picture as a painter takes them.
toolkit::PictureRows ShownRows(const MemoryPicture& picture);

// The chief numbers of a filter in a few words, UTF-8: "Sepia 50, Opacity 80".
std::string ParameterSummary(const ChainItem& item);

// A list that scrolls and draws its rows, all of one height.
class RowList : public CZNCanvas {
 public:
  RowList(CZNDialog& dialog, const std::string& name, int rowUnits);

  // Tells screen readers of the rows as they are now.
  void TellRows();

 protected:
  virtual int RowCount() const = 0;
  virtual void PaintRow(toolkit::Painter& painter, int row, const toolkit::Rect& place) = 0;
  virtual void PaintOver(toolkit::Painter&) {}
  virtual void PressRow(int row, const toolkit::MouseEvent& event) = 0;
  virtual toolkit::CanvasRow Told(int row) const = 0;

  int RowHeight() const;
  int RowAt(int y) const;  // beyond the last where there is none
  toolkit::Rect PlaceOf(int row) const;
  void ShowRow(int row);
  void KeepInRange();
  int Units(int units) const;
  int hovered = -1;

  void HandleMouse(const toolkit::MouseEvent& event) override;
  void HandlePaint(toolkit::Painter& painter) override;

 private:
  bool HandleWheel(double notches, bool hasFocus) override;

  int rowUnits;
  int scroll = 0;
};

// The filters that can be added, in groups; a search leaves those that match.
class FilterList final : public RowList {
 public:
  FilterList(CZNDialog& dialog, const FilterCatalog& filterCatalog);

  void Search(const std::string& words);
  // The class in each row, null for the name of a group.
  const CatalogEntry* At(int row) const { return rows[static_cast<std::size_t>(row)].entry; }
  int RowCount() const override { return static_cast<int>(rows.size()); }

  std::function<void(const CatalogEntry&)> onChosen;
  // Dragged: places are those of the window; the drop comes last.
  std::function<void(const CatalogEntry&, toolkit::Point, bool isDrop)> onDrag;

 private:
  toolkit::CanvasRow Told(int row) const override;
  void PaintOver(toolkit::Painter& painter) override;
  void MakeCurrent(int row);
  struct Row {
    std::string group;
    const CatalogEntry* entry = nullptr;
  };
  void PaintRow(toolkit::Painter& painter, int row, const toolkit::Rect& place) override;
  void PressRow(int row, const toolkit::MouseEvent& event) override;
  void HandleMouse(const toolkit::MouseEvent& event) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;

  const FilterCatalog& catalog;
  std::vector<Row> rows;
  int pressed = -1;
  toolkit::Point pressedAt;
  bool isDragging = false;
  int current = -1;
};

// The chain: what is done first stands on top.
class ChainList final : public RowList {
 public:
  ChainList(CZNDialog& dialog, const FilterCatalog& filterCatalog, ChainDocument& chain);

  int RowCount() const override { return static_cast<int>(document.Items().size()); }
  // Shows where a filter would go that is dragged over a place of the list; nothing with none.
  void ShowDrop(std::optional<toolkit::Point> place);
  // The place in the chain for a drop there.
  int DropPlace(toolkit::Point place) const;
  toolkit::Rect CheckPlace(int row) const;  // what switches a filter off and on
  void Reveal();

  std::function<void()> onOpen;     // the selection's dialog is wanted
  std::function<void()> onDragOut;  // the selection is dragged out of the list

 private:
  toolkit::CanvasRow Told(int row) const override;
  void PaintRow(toolkit::Painter& painter, int row, const toolkit::Rect& place) override;
  void PaintOver(toolkit::Painter& painter) override;
  void PressRow(int row, const toolkit::MouseEvent& event) override;
  void HandleMouse(const toolkit::MouseEvent& event) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;
  void SelectRow(int row, bool extends, bool toggles);
  void Drop(toolkit::Point place);
  void MoveSelection(int step);

  const FilterCatalog& catalog;
  ChainDocument& document;
  int pressed = -1;
  int anchor = 0;  // the item from which a selection is extended, wherever it moves
  toolkit::Point pressedAt;
  bool isDragging = false;
  bool selectsOnRelease = false;
  std::optional<int> drop;
};

// How often each value occurs in the picture.
class HistogramView final : public CZNCanvas {
 public:
  explicit HistogramView(CZNDialog& dialog);
  void Show(const PicturePointer& picture);

 private:
  void HandlePaint(toolkit::Painter& painter) override;

  std::array<std::array<int, 256>, 3> counts = {};
  int most = 0;
};

// A thin bar between two parts of the window, which can be moved.
class Splitter final : public CZNCanvas {
 public:
  explicit Splitter(CZNDialog& dialog);
  std::function<void(int dx)> onMove;

 private:
  void HandleMouse(const toolkit::MouseEvent& event) override;
  void HandlePaint(toolkit::Painter& painter) override;

  std::optional<toolkit::Point> pressedAt;
};

// One line of words.
class StatusLine final : public CZNCanvas {
 public:
  explicit StatusLine(CZNDialog& dialog);
  void Show(const std::string& newText, const std::string& newRight);

 private:
  void HandlePaint(toolkit::Painter& painter) override;

  std::string text, right;
};

}  // namespace desk
