// Panels as data: rows of controls over named values, and the one builder that makes them.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "base/Export.h"
#include "toolkit/Backend.h"
#include "toolkit/ZNControls.h"

class CZNDialog;

// A Real is printed and read with the decimal point of the process's locale, as most filters have
// it, a PointReal with a point. A Text is percent-encoded UTF-8.
enum class FieldKind { Integer, Flag, Real, PointReal, Hexadecimal, Text };

// A value that a panel edits, or only shows.
struct PanelField {
  const char* key = "";  // "Sepia"
  // Its piece of a parameter text, "Sepia=%.3d", of a Text what stands before it; null for none.
  const char* printed = nullptr;
  FieldKind kind = FieldKind::Integer;
  double start = 0;
};

// Values by key. A key that is not there reads as 0 or empty, and setting it does nothing.
class FXBOX_API PanelValues {
 public:
  explicit PanelValues(std::span<const PanelField> panelFields);

  std::span<const PanelField> Fields() const { return fields; }
  double Number(const char* key) const;
  const std::string& Text(const char* key) const;
  // True when it was another one before.
  bool SetNumber(const char* key, double number);
  bool SetText(const char* key, const std::string& text);
  bool operator==(const PanelValues& other) const;

 private:
  struct Value {
    double number = 0;
    std::string text;
    bool operator==(const Value&) const = default;
  };
  std::size_t IndexOf(const char* key) const;

  std::span<const PanelField> fields;
  std::vector<Value> values;
};

enum class RowControl {
  Slider,    // with a number field beside it
  Number,    // a number field alone
  CheckBox,  // its caption stands in it
  Radio,     // one button a choice; the value is the index
  Choice,    // a combo box; the value is the index
  Colour,    // a colour button over three keys: red, green, blue
  Text,      // a line of text
  Angle,     // a dial with a number field
  Canvas     // what the maker of the panel supplies
};

struct RowCondition {
  const char* key = nullptr;  // without one it holds always
  double value = 1;
  bool isEqual = true;  // or else: is another one
};

struct PanelRow {
  RowControl control = RowControl::Slider;
  std::array<const char*, 4> keys = {};
  const char* caption = "";  // key of the words
  ValueRange range = {};
  const char* group = nullptr;  // key of the heading that stands over rows of the same group
  std::span<const char* const> choices = {};  // keys of the words
  RowCondition shown = {}, enabled = {};
  int slot = -1;  // rows of one slot share a place, and one of them at most is shown
  toolkit::SliderLook look = toolkit::SliderLook::Plain;
  double shownFactor = 1;     // the range and what is shown are the value times this
  toolkit::Size canvas = {};  // least size in units at 100 %
};

// A canvas of a panel.
class FXBOX_API CZNPanelCanvas : public CZNCanvas {
 public:
  using CZNCanvas::CZNCanvas;
  std::function<void()> onChange;

  virtual void Show(const PanelValues& values) = 0;
  virtual void Store(PanelValues& values) const = 0;
};

// Makes the rows' controls in a dialog and keeps controls and values equal. Rows, fields and values
// outlive the panel.
class FXBOX_API CZNPanel {
 public:
  // UTF-8 words for a key.
  using Words = std::function<std::string(const char* key)>;
  // Makes the canvas of a row, by CZNDialog::Make.
  using CanvasMaker = std::function<CZNPanelCanvas*(const PanelRow& row)>;

  CZNPanel(CZNDialog& dialog, std::span<const PanelRow> panelRows, PanelValues& panelValues,
           const Words& words, const CanvasMaker& makeCanvas = nullptr);
  ~CZNPanel();
  CZNPanel(const CZNPanel&) = delete;
  CZNPanel& operator=(const CZNPanel&) = delete;

  // Brings all controls to the values. Reports nothing.
  void ShowValues();
  // Places the controls from `origin` on, at least `leastWidth` wide; gives the size.
  toolkit::Size Layout(toolkit::Point origin, int leastWidth);

  // To the first control that can be used.
  void Focus();

  // The person changed the value, or one of the values, of a key.
  std::function<void(const char* key)> onChange;

 private:
  struct Row;
  class Layouter;

  void AddRow(const PanelRow& data, const Words& words, const CanvasMaker& makeCanvas);
  void AddCaption(Row& row, const std::string& text);
  void AddSlider(Row& row, const std::string& name);
  void AddNumber(Row& row, const std::string& name);
  void AddCheckBox(Row& row, const std::string& text);
  void AddChoices(Row& row, const std::string& name, const Words& words);
  void AddColour(Row& row, const std::string& name);
  void AddText(Row& row, const std::string& name);
  void AddDial(Row& row, const std::string& name);
  void AddCanvas(Row& row, const CanvasMaker& makeCanvas);
  std::string WithMnemonic(const std::string& text);
  bool Holds(const RowCondition& condition) const;
  void ApplyConditions();
  double Shown(const Row& row) const;
  void TakeNumber(Row& row, double shown);
  void Report(Row& row);

  CZNDialog& dialog;
  PanelValues& values;
  std::vector<std::unique_ptr<Row>> rows;
  std::set<char> mnemonics;
};
