// Every dialog over its real filter: what its controls do, say and take in room.
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "core/PdibFilter.h"
#include "dialogs/DialogText.h"
#include "dialogs/Words.h"
#include "filters/FilterClasses.h"
#include "tests/dialogs/DialogRig.h"
#include "tests/dialogs/LayoutCheck.h"
#include "tests/filters/ClassOf.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/QuotedWords.h"
#include "tests/support/Sheets.h"
#include "tests/support/TestFilters.h"

namespace {

using platform::ComPtr;
using testing_support::ClassOf;
using testing_support::DialogRig;
using testing_support::LayoutFaults;
using testing_support::TextFilter;
using toolkit::ControlId;
using toolkit::ControlKind;
using toolkit::FakeControl;
using toolkit::Key;

std::string TextOf(FilterObject& filter) {
  char text[8000] = "";
  filter.GetParameter(text, sizeof text);
  return text;
}

class Panels : public DialogRig {
 protected:
  // The dialog of a class over a filter of it; without one over a new one.
  void OpenOver(const DialogClass& row, const ComPtr<FilterObject>& over = {}) {
    if (host) ReleaseDialogHost(std::exchange(host, nullptr));
    Make(row.progId);
    const FilterClass& filterClass = ClassOf(row.progId);
    filter = over ? over : ComPtr<FilterObject>::Attach(filterClass.make(filterClass));
    if (!over) filter->SetParameter(row.defaultText, 1);
    Connect(static_cast<IAnimFilter*>(filter.Get()));
    OpenDialog();
    TakeLog();
  }
  void CloseDialog() {
    dialog->Close();
    DropDialog();
    EXPECT_EQ(backend.Counts(), toolkit::BackendCounts());
  }

  // Of all that can be set and is not a text. Which channel is on show is not the filter's.
  std::vector<std::string> ShownValues() {
    std::vector<std::string> values;
    for (ControlId id = 1; id <= Window().ControlCount(); ++id) {
      const FakeControl& control = Window().At(id);
      if (control.spec.name != "Channel")
        values.push_back(control.spec.name + " " + std::to_string(control.value));
    }
    return values;
  }

  ComPtr<FilterObject> filter;
};

TEST_F(Panels, EveryClassHasItsDialogWithItsWords) {
  const std::set<std::string> without = {"ZNFilter.RedEye.1", "ZNFilter.WaterSign.1",
                                         "ZNFilter.PrintScale.1", "ZNFilter.Zero.1"};
  std::size_t count = 0;
  for (const FilterClass& row : FilterClasses()) {
    const auto dialogObject = ComPtr<IUnknown>::Attach(dialogs::NewFilterDialog(row.progId));
    EXPECT_EQ(bool(dialogObject), without.count(row.progId) == 0) << row.progId;
    count += dialogObject ? 1 : 0;
  }
  EXPECT_EQ(count, dialogs::DialogClasses().size());
  for (const DialogClass* row : dialogs::DialogClasses()) {
    SCOPED_TRACE(row->className);
    const FilterClass& filterClass = ClassOf(row->progId);
    std::string name = filterClass.className;
    name.replace(name.rfind("Filter"), 6, "Dialog");
    EXPECT_EQ(row->className, name);
    std::string key = filterClass.nameKey;
    if (key.ends_with("_NAME")) key.replace(key.size() - 4, 4, "HEADER");
    EXPECT_EQ(row->headerKey, key);
    EXPECT_STREQ(row->helpKey ? row->helpKey : "", filterClass.helpKey ? filterClass.helpKey : "");
    const std::string text = filterClass.defaultText ? filterClass.defaultText : "";
    const bool isWhole = !text.empty() && text.find('%') == std::string::npos;
    EXPECT_TRUE(!isWhole || row->defaultText == text) << row->defaultText;
  }
  EXPECT_EQ(dialogs::NewFilterDialog("ZNFilter.Sepia"), nullptr);
  EXPECT_EQ(dialogs::NewFilterDialog(nullptr), nullptr);
}

// --- what a dialog has

// Writes down a dialog as a person finds it: each control in use with what its ends, or a turn of
// it, give the filter, and what else each turn brings up.
class Sheet {
 public:
  Sheet(toolkit::FakeWindow& ofWindow, const std::string& textOfFilter)
      : window(ofWindow), text(textOfFilter) {
    words = " ; gives " + text;
    InUse();
    WriteNew();
    for (ControlId id = 1; id <= window.ControlCount(); ++id) WriteTurns(id);
  }
  std::string words;

 private:
  using Words = std::multiset<std::string>;

  static std::string NameOf(const FakeControl& control) {
    return control.spec.name.empty() ? control.text : control.spec.name;
  }

  Words Items() const {
    Words items;
    std::istringstream stream(text);
    for (std::string item; std::getline(stream >> std::ws, item, ',');) items.insert(item);
    return items;
  }
  // What one has and the other has not.
  static std::string Without(const Words& all, const Words& known) {
    std::vector<std::string> rest;
    std::set_difference(all.begin(), all.end(), known.begin(), known.end(),
                        std::back_inserter(rest));
    return testing_support::Joined(rest, ", ");
  }

  // The items of the filter's text that an act changes.
  std::string After(const std::function<bool()>& act) {
    const Words before = Items();
    if (!act()) return "no";
    const std::string changed = Without(Items(), before);
    return changed.empty() ? "the same" : changed;
  }
  // Of one key alone the second value: "Sepia=000 to 100".
  static std::string Ends(const std::string& least, const std::string& greatest) {
    const std::string key = least.substr(0, least.find('=') + 1);
    return least + " to " + (greatest.starts_with(key) ? greatest.substr(key.size()) : greatest);
  }

  void WriteNew() {
    for (ControlId id = 1; id <= window.ControlCount(); ++id) {
      const FakeControl control = window.At(id);
      if (!control.isVisible || !control.isEnabled || !seen.insert(id).second) continue;
      const std::string what = Described(id, control);
      if (!what.empty()) words += " ; " + NameOf(control) + what;
    }
  }

  std::string Described(ControlId id, const FakeControl& control) {
    constexpr const char* kLooks[] = {"", " from zero", " around zero"};
    const auto slide = [&](int to) { return After([&] { return window.Slide(id, to); }); };
    const auto type = [&](const std::string& typed) {
      window.Focus(id);
      return After([&] { return window.Type(id, typed) && (window.Press(Key::Enter), true); });
    };
    std::string least;
    switch (control.spec.kind) {
      case ControlKind::Slider:
        least = slide(control.least);
        least = Ends(least, slide(control.greatest));
        slide(control.value);
        return kLooks[static_cast<int>(control.spec.look)] + (": " + least);
      case ControlKind::Edit:
        // The number beside a slider is the slider's.
        if (window.ByName(NameOf(control), ControlKind::Slider)) return {};
        least = type("-999999999");
        least = Ends(least, type("999999999"));
        type(control.text);
        return " typed: " + least;
      case ControlKind::CheckBox:
      case ControlKind::RadioButton:
        return control.value ? " is on" : " is off";
      case ControlKind::ColourButton:
        return ": " + After([&] { return window.Click(id); });
      case ControlKind::ComboBox:
        return control.value < 0
                   ? " at nothing"
                   : " at " + control.items.at(static_cast<std::size_t>(control.value));
      default:
        return {};
    }
  }

  void WriteTurns(ControlId id) {
    const FakeControl control = window.At(id);
    const auto turn = [&](const std::string& to, const std::function<bool()>& act) {
      const std::string given = After(act);
      if (given == "no") return;
      words += " ; " + NameOf(control) + " " + to + ": " + given + InUse();
      WriteNew();
    };
    const auto click = [&] { return window.Click(id); };
    if (control.spec.kind == ControlKind::ComboBox) {
      for (int i = static_cast<int>(control.items.size()); i-- > 0;) {
        turn(control.items[static_cast<std::size_t>(i)], [&] { return window.Choose(id, i); });
      }
    } else if (control.spec.kind == ControlKind::RadioButton) {
      turn("on", click);
    } else if (control.spec.kind == ControlKind::CheckBox) {
      turn("turned", click);
      turn("back", click);
    }
  }

  // What can be used now and could not before, and what no more.
  std::string InUse() {
    Words names;
    for (ControlId id = 1; id <= window.ControlCount(); ++id) {
      const FakeControl& control = window.At(id);
      const bool counts = control.spec.kind != ControlKind::Static && control.isVisible;
      if (counts && control.isEnabled) names.insert(NameOf(control));
    }
    const Words before = std::exchange(used, names);
    const std::string more = Without(names, before), fewer = Without(before, names);
    return (more.empty() ? "" : ", now " + more) + (fewer.empty() ? "" : ", no more " + fewer);
  }

  toolkit::FakeWindow& window;
  const std::string& text;
  std::set<ControlId> seen;
  Words used;
};

// Whether a label, a slider and its number follow, placed as in all rows.
bool IsSliderRow(const toolkit::FakeWindow& window, ControlId id) {
  if (id + 2 > window.ControlCount()) return false;
  const FakeControl &label = window.At(id), &slider = window.At(id + 1),
                    &number = window.At(id + 2);
  const toolkit::Rect at = slider.place;
  std::string name = label.text;
  name.erase(std::remove(name.begin(), name.end(), '&'), name.end());
  return label.spec.kind == ControlKind::Static && slider.spec.kind == ControlKind::Slider &&
         number.spec.kind == ControlKind::Edit && slider.isVisible && slider.isEnabled &&
         label.isVisible && number.isVisible && number.isEnabled &&
         label.place == toolkit::Rect{12, at.y + 4, label.place.width, 16} &&
         at == toolkit::Rect{at.x, at.y, 200, 24} &&
         number.place == toolkit::Rect{at.x + 208, at.y - 1, number.place.width, 26} &&
         number.text == slider.valueText && slider.spec.name == name && number.spec.name == name;
}

// The controls of a dialog. Of a row with a slider the sheet has its place, the widths of label and
// number, and the value; of the row of buttons that dialogs end with its place.
std::string PanelControls(toolkit::FakeWindow& window) {
  std::string text;
  for (ControlId id = 1; id <= window.ControlCount(); ++id) {
    if (IsSliderRow(window, id)) {
      const FakeControl &label = window.At(id), &slider = window.At(id + 1);
      text += " ; row " + std::to_string(slider.place.x) + "," + std::to_string(slider.place.y) +
              " " + label.text + " " + std::to_string(label.place.width) + " " +
              std::to_string(window.At(id + 2).place.width) + " = " + slider.valueText;
      id += 2;
    } else if (window.At(id).isVisible) {
      text += testing_support::LookText(testing_support::Look(window, id), {});
    }
  }
  const std::size_t at = text.rfind(" ; 12,");
  const std::string y = text.substr(at + 6, text.find(' ', at + 6) - at - 6);
  const std::string foot = " ; 12," + y + " 59x26 2 Apply off ; 79," + y + " 52x26 3 Lock ; 139," +
                           y + " 66x26 2 Remove ; 213," + y + " 52x26 3 Dock";
  return text.ends_with(foot) ? text.replace(at, foot.size(), " ; foot " + y) : text;
}

// All dialogs against the sheets that were read through.
TEST_F(Panels, AreAsTheirSheetsSay) {
  backend.onColour = [](toolkit::Colour, const auto&) { return toolkit::Colour{1, 2, 3}; };
  std::string sheets;
  for (const DialogClass* row : dialogs::DialogClasses()) {
    if (host) ReleaseDialogHost(std::exchange(host, nullptr));
    Make(row->progId);
    TextFilter& filterOfText = *Attach("-");  // it lacks all keys
    OpenDialog();
    dialog->Show();
    const std::string controls = PanelControls(Window());
    Call("ButtonTop");
    const ControlId focused = Window().Focused();
    sheets += std::string(row->progId) + (focused ? " at " + Window().At(focused).spec.name : "") +
              " " + testing_support::TitleAndSize(Window()) +
              testing_support::Wrapped(controls + Sheet(Window(), filterOfText.text).words);
    CloseDialog();
  }
  testing_support::ExpectSheet(sheets, FXBOX_SOURCE "/tests/dialogs/sheets.txt");
}

// The text that a dialog reports as its own is what it drags.
TEST_F(Panels, ReportsSharpenWithoutItsVersion) {
  Make("ZNFilter.Sharpen.1");
  OpenDialog();
  Window().Slide(Slider("Strength"), 30);
  std::string dragged;
  backend.onDrag = [&](IDataObject* object, IDropSource*, std::uint32_t, std::uint32_t&) {
    FORMATETC format = {};
    ComPtr<IEnumFORMATETC> list;
    object->EnumFormatEtc(DATADIR_GET, list.Put());
    int count = 0;
    while (list->Next(1, &format, nullptr) == S_OK) ++count;
    dragged = std::to_string(count);
    return toolkit::DragEnd::Cancelled;
  };
  Call("ButtonTopDrag");
  EXPECT_EQ(dragged, "3");
}

// --- every control of every dialog

// Changes a control as a person would; false where there is nothing to change.
bool Change(toolkit::FakeWindow& window, ControlId id) {
  const FakeControl control = window.At(id);
  switch (control.spec.kind) {
    case ControlKind::Slider:
      return window.Slide(id,
                          control.value < control.greatest ? control.value + 1 : control.value - 1);
    case ControlKind::CheckBox:
      return window.Click(id);
    case ControlKind::RadioButton:
      return control.value == 0 && window.Click(id);
    case ControlKind::ColourButton:
      return window.Click(id);
    case ControlKind::ComboBox:
      return control.items.size() > 1 &&
             window.Choose(id, (control.value + 1) % static_cast<int>(control.items.size()));
    case ControlKind::Edit:
      return window.Type(id, control.text == "12" ? "13" : "12");
    default:
      return false;
  }
}

// And what the filter holds then, a second dialog shows.
TEST_F(Panels, EveryControlReachesItsFilterByOneUpdate) {
  backend.onColour = [](toolkit::Colour start, const auto&) {
    return toolkit::Colour{static_cast<std::uint8_t>(start.red ^ 1), 7, 9};
  };
  for (const DialogClass* row : dialogs::DialogClasses()) {
    SCOPED_TRACE(row->className);
    OpenOver(*row);
    int changes = 0;
    // Choices show other controls, so all are walked several times.
    for (int pass = 0; pass < 8; ++pass) {
      for (ControlId id = 1; id <= Window().ControlCount(); ++id) {
        const FakeControl control = Window().At(id);
        const std::string before = TextOf(*filter.Get());
        if (!control.isEnabled || !control.isVisible || !Change(Window(), id)) continue;
        const std::string log = TakeLog();
        const auto updates = std::count(log.begin(), log.end(), '\n') / 2;
        EXPECT_LE(updates, 1) << control.spec.name << control.spec.text;
        // The sides of a crop are kept only together.
        const bool isSide = std::string(row->className).find("Crop") != std::string::npos &&
                            (control.spec.name == "Width" || control.spec.name == "Height");
        if (updates == 0 || isSide) continue;
        ++changes;
        EXPECT_NE(TextOf(*filter.Get()), before) << control.spec.name << control.spec.text;
      }
    }
    EXPECT_GT(changes, 7);
    const auto values = ShownValues();
    const auto kept = filter;
    CloseDialog();
    OpenOver(*row, kept);
    EXPECT_EQ(ShownValues(), values);
    CloseDialog();
  }
}

// A filter that repeats a measurement measures anew when its dialog changes it.
TEST_F(Panels, AChangeEndsARepeatedMeasurement) {
  Make("ZNFilter.Tonwert.1");
  const auto* const text =
      Attach("ExBlit=1, AutoContrast=1, AutoContrastRGB=0, AutoTone=0, Hi=000");
  OpenDialog();
  Window().Click(Window().ByName("Automatic tone", ControlKind::CheckBox));
  ASSERT_EQ(text->given.size(), 1u);
  EXPECT_TRUE(text->given[0].ends_with(",ExBlit=0")) << text->given[0];
}

TEST_F(Panels, GreyPointIsPickedInThePicture) {
  Make("ZNFilter.WhiteBlackGrey.1");
  const auto* const text =
      Attach("RedG=255, GreenG=255, BlueG=255, Mode=2, Opacity=050, FilterOn=1");
  OpenDialog();
  TakeLog();
  Window().Click(Window().ByName("Pick in the picture", ControlKind::ToggleButton));
  EXPECT_EQ(TakeLog(),
            "messages 14 ToolBarNotifications\n"
            "messages 5 page=4 57954 \"ColorPicker\" 1\n"
            "messages 15 page=4\n");
  Call("ColorPicker", "Red=10;\r\nGreen=20;\r\nBlue=300;\r\n");
  Call("ColorPicker", "");
  EXPECT_EQ(text->given, std::vector<std::string>{
                             "RedG=010, GreenG=020, BlueG=255, Mode=2, Opacity=050, FilterOn=1"});
  const AnimMessage reset = {1, 57808, 1, 2};
  ComPtr<IAnimMessageReceiver>::Query(dialog.Get())->OnHostMessage(&reset);
  EXPECT_EQ(text->text, "RedG=255, GreenG=255, BlueG=255, Mode=2, Opacity=100, FilterOn=1");
  // The host's picker is told of the end by a dialog that still picks, and by no other.
  TakeLog();
  dialog->Close();
  EXPECT_NE(TakeLog().find("ToolBarNotifications"), std::string::npos);
  Make("ZNFilter.WhiteBlackGrey.1");
  OpenDialog();
  TakeLog();
  dialog->Close();
  EXPECT_EQ(TakeLog().find("ToolBarNotifications"), std::string::npos);
}

class PanelTexts : public testing_support::CommaLocale {};

// As filters print them there, and as records and defaults have them everywhere.
TEST_F(PanelTexts, NumbersComeWithEitherPoint) {
  constexpr PanelField kFields[] = {{"Radius", "Radius=%.1f", FieldKind::Real},
                                    {"Percent", ",Percent=%d", FieldKind::Integer}};
  for (const char* text : {"Radius=2,5,Percent=7", "Radius=2.5,Percent=7"}) {
    PanelValues values(kFields);
    dialogs::ReadDialogText(text, values);
    EXPECT_EQ(values.Number("Radius"), 2.5) << text;
    EXPECT_EQ(values.Number("Percent"), 7);
    EXPECT_EQ(dialogs::PrintDialogText(values), "Radius=2,5,Percent=7");
  }
}

// --- room and words

TEST_F(Panels, FitTheScreenAndCutNoText) {
  for (const char* language : {"en", "de"}) {
    for (const int scale : {100, 250}) {
      backend.language = language;
      backend.scale = scale;
      for (const DialogClass* row : dialogs::DialogClasses()) {
        SCOPED_TRACE(std::string(row->className) + " " + language);
        OpenOver(*row);
        const toolkit::Size most = {1024 * scale / 100, 730 * scale / 100};  // and a title bar
        EXPECT_EQ(LayoutFaults(Window(), backend, most), std::vector<std::string>());
        CloseDialog();
      }
    }
  }
}

TEST(Words, AreThereInBothLanguagesAndAllUsed) {
  std::set<std::string> used;
  for (const std::string& word : testing_support::QuotedWords(FXBOX_SOURCE "/dialogs")) {
    const bool isKey = testing_support::StartsWithAny(word, {"IDS_", "IDB_", "HLP_", "COMMON_"});
    if (isKey || word == "PrintCrop" || word == "PrintPad") used.insert(word);
  }
  EXPECT_GT(used.size(), 150u);
  for (const char* file : {"en.txt", "de.txt"}) {
    const std::string path = FXBOX_SOURCE "/resources/strings/" + std::string(file);
    EXPECT_EQ(testing_support::KeysOfWords(path), used);
  }
  for (const std::string& key : used) {
    EXPECT_NE(dialogs::FindWords(key.c_str(), "de"), nullptr) << key;
    EXPECT_NE(dialogs::FindWords(key.c_str(), "en"), nullptr) << key;
  }
  EXPECT_STREQ(dialogs::FindWords("IDS_COLOR_GREEN", "de"), "Gr\xC3\xBCn");
  EXPECT_STREQ(dialogs::FindWords("IDS_COLOR_GREEN", "fr"), "Green");
  EXPECT_EQ(dialogs::FindWords("IDS_COLOR", "en"), nullptr);
}

}  // namespace
