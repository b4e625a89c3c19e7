// The desk's window over the window system in memory: what a person does, and what comes of it.
#include "desk/DeskWindow.h"

#include <gmock/gmock.h>

#include <chrono>
#include <set>
#include <thread>

#include "base/CodePage.h"
#include "core/DataXferObj.h"
#include "core/DragText.h"
#include "core/TransferFormats.h"
#include "host/Texts.h"
#include "tests/platform/Support.h"
#include "tests/support/Sheets.h"
#include "toolkit/fake/FakeBackend.h"

namespace {

using testing::HasSubstr;
using toolkit::ControlId;
using toolkit::ControlKind;
using toolkit::Key;
using toolkit::MouseAction;
using toolkit::Point;
using toolkit::Rect;

class Desk : public testing::Test {
 protected:
  Desk() {
    Reopen();
    WritePicture();
  }
  ~Desk() override { window.reset(); }

  void Reopen(const std::vector<std::string>& files = {}) {
    window.reset();
    desk::DeskOptions options;
    options.files = files;
    options.state = folder / "state";
    window = std::make_unique<desk::DeskWindow>(options);
    EXPECT_TRUE(window->Open());
    native = backend.LastWindow();
  }

  void WritePicture() {
    MemoryPicture picture("test", 320, 200, true, true);
    for (int y = 0; y < 200; ++y) {
      std::fill_n(picture.MaskRows()[y], 320, BYTE{0});
      for (int x = 0; x < 320 * 3; ++x)
        picture.ColourRows()[y][x] = static_cast<BYTE>(x / 5 + y / 4);
    }
    imageio::WriteImage(folder / "photo.ppm", imageio::Format::Pnm, 320, 200,
                        {picture.ColourRows(), picture.MaskRows()});
  }
  template <class Condition>
  bool Await(Condition condition) {
    for (int i = 0; i < 3000 && !condition(); ++i) {
      backend.Pump(false);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
  }
  bool OpenPicture() {
    native->DropFiles({folder / "photo.ppm"});
    return Await([&] { return window->Work().Shown().stage == desk::RenderStage::Full; });
  }
  ControlId Canvas(const char* name) { return native->ByName(name, ControlKind::Canvas); }
  void ClickAt(const char* canvas, Point place) {
    native->Mouse(Canvas(canvas), MouseAction::Press, place);
    native->Mouse(Canvas(canvas), MouseAction::Release, place);
  }
  void DragTo(const char* canvas, Point from, Point to) {
    native->Mouse(Canvas(canvas), MouseAction::Press, from);
    native->Mouse(Canvas(canvas), MouseAction::Move, {(from.x + to.x) / 2, (from.y + to.y) / 2});
    native->Mouse(Canvas(canvas), MouseAction::Move, to);
    native->Mouse(Canvas(canvas), MouseAction::Release, to);
  }
  // Rows of the chain are this high.
  static int RowMiddle(int row) { return row * 44 + 22; }
  std::string Order() {
    std::string order;
    for (const auto& item : window->Work().Chain().Items()) {
      order += item.progId.substr(9, 2) + (item.isOn ? " " : "- ");
    }
    return order;
  }
  void Add(const char* progId) { window->Work().AddFilter(progId); }
  bool Press(Key key, char32_t character, bool control = false) {
    toolkit::KeyEvent event{key, character};
    event.control = control;
    return native->Press(event);
  }

  testing_support::TemporaryFolder folder;
  toolkit::FakeBackend backend;
  toolkit::ScopedBackend scope{&backend};
  std::unique_ptr<desk::DeskWindow> window;
  toolkit::FakeWindow* native = nullptr;
};

TEST_F(Desk, AddsAFilterThatIsSearchedAndEditsItInItsDialog) {
  ASSERT_TRUE(OpenPicture());
  native->Type(native->ByName("Search for filters", ControlKind::Edit), "sepia");
  ClickAt("Filters", {60, 30 + 15});
  EXPECT_EQ(Order(), "Se ");
  toolkit::FakeWindow* const dialog = backend.LastWindow();
  ASSERT_NE(dialog, native) << "its dialog is open";
  const auto slider = dialog->ByName("Strength", ControlKind::Slider);
  ASSERT_NE(slider, 0);
  ASSERT_TRUE(dialog->Slide(slider, 60));
  ASSERT_TRUE(dialog->Slide(slider, 70));
  EXPECT_EQ(window->Work().Chain().Items()[0].parameters, "Sepia=070");
  native->Focus(Canvas("Chain"));  // where one types, the keys are the field's
  EXPECT_TRUE(Press(Key::Character, 'z', true));
  EXPECT_EQ(window->Work().Chain().Items()[0].parameters, "Sepia=000") << "one movement, one step";
  EXPECT_EQ(dialog->At(slider).value, 0) << "the dialog follows";
  Press(Key::Character, 'y', true);
  EXPECT_EQ(dialog->At(slider).value, 70);
}

// Where it lies then, the sheet says.
TEST_F(Desk, TheDialogsOwnButtonsDockAndFreeIt) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.Sepia.1");
  const auto isShown = [&] {
    return native->At(native->ByName("Filter dialog", ControlKind::Dock)).isVisible;
  };
  EXPECT_FALSE(isShown());
  ASSERT_TRUE(native->Click(native->ByName("Edit", ControlKind::Button)));
  toolkit::FakeWindow* const dialog = backend.LastWindow();
  backend.Pump(false);
  ASSERT_TRUE(isShown());
  EXPECT_EQ(dialog->host, native);
  const auto dock = dialog->ByName("Dock", ControlKind::ToggleButton);
  EXPECT_EQ(dialog->At(dock).value, 1);
  ASSERT_TRUE(dialog->Click(dock));
  EXPECT_EQ(dialog->host, native) << "behind its own event";
  backend.Pump(false);
  EXPECT_EQ(dialog->host, nullptr);
  EXPECT_TRUE(dialog->isVisible);
  EXPECT_FALSE(isShown());
  ASSERT_TRUE(native->ChooseMenu({"View", "Filter dialog", "Below the picture"}));
  EXPECT_TRUE(isShown());
  ASSERT_TRUE(native->Click(native->ByName("Close", ControlKind::Button)));
  backend.Pump(false);
  EXPECT_FALSE(isShown());
  EXPECT_FALSE(window->Work().Bench().IsOpen());
}

// A second desk has them, over another order of windows.
TEST_F(Desk, RemembersHowItIsWanted) {
  ASSERT_TRUE(native->ChooseMenu({"View", "Filter dialog", "In a window of its own"}));
  ASSERT_TRUE(native->ChooseMenu({"View", "Theme", "Dark"}));
  DragTo("Border", {2, 100}, {42, 100});
  const ControlId right = Canvas("Picture") + 1;
  for (const MouseAction action : {MouseAction::Press, MouseAction::Move, MouseAction::Release}) {
    native->Mouse(right, action, {action == MouseAction::Press ? 2 : -18, 100});
  }
  const auto places = [&] {
    return std::vector{native->At(Canvas("Filters")).place, native->At(Canvas("Chain")).place};
  };
  const auto before = places();
  EXPECT_EQ(before[1].width, 292 + 20);
  Reopen();
  EXPECT_EQ(backend.theme, toolkit::ThemeChoice::Dark);
  EXPECT_EQ(places(), before);
  Add("ZNFilter.Sepia.1");
  ASSERT_TRUE(native->Click(native->ByName("Edit", ControlKind::Button)));
  EXPECT_EQ(backend.LastWindow()->host, nullptr);
  testing_support::WriteFile(folder / "state" / "settings", "dialog=7\nleft=-3\nright=x\ntheme");
  EXPECT_EQ(desk::ReadSettings(folder / "state" / "settings"), desk::DeskSettings());
  CZNTheme::Choose(toolkit::ThemeChoice::System);
}

TEST_F(Desk, TakesWhatIsDroppedAndGivesWhatIsDraggedOut) {
  Add("ZNFilter.Sepia.1");
  Add("ZNFilter.Invert.1");
  const auto drop = [&](const std::string& text, Point place) {
    const auto object = platform::ComPtr<CDataXferObj>::Attach(new CDataXferObj);
    AddPlainText(object.Get(), text.c_str());
    return native->DropObject(object.Get(), place);
  };
  const Rect list = native->At(Canvas("Chain")).place;
  const Point between{list.x + 20, list.y + 44};
  const std::string text =
      *core::MakeDragText("ZNFilter.Emboss.1(EmbossStrength=020)", "to a friend");
  EXPECT_TRUE(drop("Hello,\r\n" + text + "\r\nbye", between));
  EXPECT_EQ(Order(), "Se Em In ");
  EXPECT_TRUE(drop("ZNFilter.Histo.1(Intensity=010)", {5, 5}));
  EXPECT_EQ(Order(), "Se Em In Hi ") << "beside the list: at the end";
  EXPECT_FALSE(drop("no chain at all", between));
  EXPECT_EQ(Order(), "Se Em In Hi ");

  // Out of the window, and back into the list.
  std::string out;
  backend.onDrag = [&](IDataObject* object, IDropSource* source, std::uint32_t, std::uint32_t&) {
    out = ReadPlainText(object).value_or("");
    EXPECT_EQ(source->QueryContinueDrag(TRUE, MK_LBUTTON), DRAGDROP_S_CANCEL);
    EXPECT_EQ(source->QueryContinueDrag(FALSE, MK_LBUTTON), S_OK);
    EXPECT_EQ(source->QueryContinueDrag(FALSE, 0), DRAGDROP_S_DROP);
    return toolkit::DragEnd::Dropped;
  };
  DragTo("Chain", {150, RowMiddle(1)}, {-300, 40});
  EXPECT_EQ(out, *core::MakeDragText("ZNFilter.Emboss.1(EmbossStrength=020)", ""));
  EXPECT_EQ(Order(), "Se Em In Hi ");
  backend.onDrag = [&](IDataObject* object, IDropSource*, std::uint32_t, std::uint32_t&) {
    EXPECT_TRUE(native->DropObject(object, {list.x + 20, list.y + 1}));
    return toolkit::DragEnd::Dropped;
  };
  DragTo("Chain", {150, RowMiddle(1)}, {-300, 40});
  EXPECT_EQ(Order(), "Em Se In Hi ") << "moved, not doubled";
}

TEST_F(Desk, EditsSeveralFiltersAtOnce) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.Sepia.1");
  Add("ZNFilter.Invert.1");
  Add("ZNFilter.Sepia.1");
  ClickAt("Chain", {150, RowMiddle(0)});
  auto& chain = window->Work().Chain();
  chain.Select({chain.Items()[0].id, chain.Items()[2].id});
  ASSERT_TRUE(native->Click(native->ByName("Edit", ControlKind::Button)));
  toolkit::FakeWindow* const dialog = backend.LastWindow();
  ASSERT_TRUE(dialog->Slide(dialog->ByName("Strength", ControlKind::Slider), 25));
  EXPECT_EQ(chain.Items()[0].parameters, "Sepia=025");
  EXPECT_EQ(chain.Items()[2].parameters, "Sepia=025");
  chain.Undo();
  EXPECT_EQ(chain.Items()[0].parameters, chain.Items()[2].parameters);
  EXPECT_EQ(chain.Items()[0].parameters, "Sepia=000");
  dialog->AskToClose();
  for (const std::size_t item : {0, 2})
    chain.SetParameters({{chain.Items()[item].id, "Sepia=033"}});
  ASSERT_TRUE(native->Click(native->ByName("Edit", ControlKind::Button)));
  toolkit::FakeWindow* const again = backend.LastWindow();
  EXPECT_EQ(again->At(again->ByName("Strength", ControlKind::Slider)).value, 33);
}

TEST_F(Desk, WorksOnTheChainWithTheMouse) {
  Add("ZNFilter.Sepia.1");
  Add("ZNFilter.Invert.1");
  Add("ZNFilter.Emboss.1");
  DragTo("Chain", {150, RowMiddle(2)}, {150, 3});
  EXPECT_EQ(Order(), "Em Se In ");
  DragTo("Chain", {150, RowMiddle(0)}, {150, RowMiddle(9)});
  EXPECT_EQ(Order(), "Se In Em ");
  ClickAt("Chain", {20, RowMiddle(1)});
  EXPECT_EQ(Order(), "Se In- Em ");
  DragTo("Chain", {150, RowMiddle(1)}, {152, RowMiddle(1) + 2});
  EXPECT_EQ(Order(), "Se In- Em ") << "a hand that trembles";
  Press(Key::Delete, 0);
  EXPECT_EQ(Order(), "Se Em ");
  Press(Key::Character, 'z', true);
  Press(Key::Character, 'z', true);
  EXPECT_EQ(Order(), "Se In Em ");
}

TEST_F(Desk, WorksOnTheChainByKeys) {
  for (const char* progId : {"Sepia", "Invert", "Emboss"}) {
    Add(("ZNFilter." + std::string(progId) + ".1").c_str());
  }
  native->Focus(Canvas("Chain"));
  // The order, with a star at what is selected.
  const auto after = [&](toolkit::KeyEvent event) {
    native->Press(event);
    std::string rows;
    for (const auto& row : native->At(Canvas("Chain")).rows) {
      rows += row.name.substr(0, 2) + (*row.isChecked ? "" : "-") + (row.isSelected ? "* " : " ");
    }
    return rows;
  };
  const auto key = [](Key which, bool shift = false, bool alt = false) {
    return toolkit::KeyEvent{which, 0, shift, false, alt};
  };
  EXPECT_EQ(after(key(Key::Up)), "Se Ne* Em ");
  EXPECT_EQ(after(key(Key::Up)), "Se* Ne Em ");
  EXPECT_EQ(after(key(Key::Up)), "Se* Ne Em ") << "the first one";
  EXPECT_EQ(after(key(Key::Down)), "Se Ne* Em ");
  EXPECT_EQ(after(key(Key::Up)), "Se* Ne Em ");
  EXPECT_EQ(after(key(Key::Down, false, true)), "Ne Se* Em ");
  EXPECT_EQ(after(key(Key::Down, true)), "Ne Se* Em* ");
  EXPECT_EQ(after(key(Key::Up, false, true)), "Se* Em* Ne ");
  EXPECT_EQ(after(key(Key::Space)), "Se-* Em-* Ne ");
  EXPECT_EQ(after(key(Key::Down)), "Se- Em- Ne* ");
  EXPECT_EQ(after(key(Key::Down)), "Se- Em- Ne* ") << "the last one";
  EXPECT_EQ(after(key(Key::Down, false, true)), "Se- Em- Ne* ");
  EXPECT_EQ(after(key(Key::Up, false, true)), "Se- Ne* Em- ") << "one step, not to the front";
  EXPECT_EQ(after(key(Key::Down, false, true)), "Se- Em- Ne* ");
  EXPECT_EQ(after(key(Key::Up)), "Se- Em-* Ne ");
  EXPECT_EQ(after(key(Key::Space)), "Se- Em* Ne ");
  EXPECT_EQ(after(key(Key::Delete)), "Se- Ne* ");
  EXPECT_EQ(backend.LastWindow(), native);
  EXPECT_EQ(after(key(Key::Enter)), "Se- Ne* ");
  EXPECT_NE(backend.LastWindow(), native) << "its dialog";
}

TEST_F(Desk, TakesFiltersThatAreDraggedToTheirPlace) {
  Add("ZNFilter.Sepia.1");
  Add("ZNFilter.Invert.1");
  native->Type(native->ByName("Search for filters", ControlKind::Edit), "emboss");
  const Rect from = native->At(Canvas("Filters")).place, to = native->At(Canvas("Chain")).place;
  const Point start{60, 45};
  const Point betweenBoth{to.x - from.x + 100, to.y - from.y + 44};
  DragTo("Filters", start, betweenBoth);
  EXPECT_EQ(Order(), "Se Em In ");
  DragTo("Filters", start, {500, 5000});
  EXPECT_EQ(Order(), "Se Em In ") << "dropped nowhere";
}

// The window in its states, one after the other, as a person goes through them.
class DeskStates : public Desk {
 protected:
  void Look(const std::string& state) {
    EXPECT_TRUE(Await([&] { return window->Work().Renderer().IsIdle(); }));
    backend.Pump(false);
    const std::string words = testing_support::Drawn(*native, told, host::Utf8Of(folder.Path()));
    const std::string title = words.substr(0, words.find('\n') + 1);
    sheet += "--- " + state + "\n" +
             (std::exchange(titleTold, title) == title ? words.substr(title.size()) : words);
  }
  void Search(const char* words) {
    native->Type(native->ByName("Search for filters", ControlKind::Edit), words);
  }
  void At(const char* canvas, MouseAction action, Point place) {
    native->Mouse(Canvas(canvas), action, place, action == MouseAction::DoublePress ? 1 : 0);
  }
  void ClickWith(bool shift, bool control, int row) {
    for (const MouseAction action : {MouseAction::Press, MouseAction::Release}) {
      native->Mouse(Canvas("Chain"), {action, {150, RowMiddle(row)}, 1, shift, control});
    }
  }
  // The windows of messages and of batches.
  void ShowOthers() {
    const auto look = [&](const char* state, toolkit::FakeWindow& other) {
      sheet += std::string("--- ") + state + "\n" +
               testing_support::Drawn(other, told, host::Utf8Of(folder.Path()));
    };
    native->ChooseMenu({"View", "Messages..."});
    told.clear();
    look("no messages", *backend.LastWindow());
    native->ChooseMenu({"File", "Batch..."});
    told.clear();
    toolkit::FakeWindow& batch = *backend.LastWindow();
    look("a batch", batch);
    const auto press = [&](const char* button) {
      EXPECT_TRUE(batch.Click(batch.ByName(button, ControlKind::Button))) << button;
      look(button, batch);
    };
    press("Clear");
    backend.onFile = [&](const toolkit::FileQuestion& question) {
      sheet += "asks " + question.title + " " + question.start.filename().string() + "\n";
      return folder / "photo.ppm";
    };
    press("Add...");
    batch.DropFiles({folder / "missing.ppm"});
    press("Start");
    EXPECT_TRUE(Await([&] { return !window->Work().IsWorking(); }));
    backend.Pump(false);
    look("done", batch);
  }

  testing_support::ToldControls told;
  std::string sheet, titleTold;
};

TEST_F(DeskStates, AreAsTheirSheetSays) {
  native->Wheel(Canvas("Filters"), -100);
  native->Wheel(Canvas("Filters"), 1);
  Look("empty, the filters scrolled to their end and a bit back");
  Search("no such filter");
  Look("nothing found");
  Search("sha");
  ASSERT_TRUE(OpenPicture());
  for (const char* progId : {"Sepia", "Invert", "Tonwert"}) {
    Add(("ZNFilter." + std::string(progId) + ".1").c_str());
  }
  ClickAt("Chain", {20, RowMiddle(1)});
  Look("three filters, one of them off");
  At("Filters", MouseAction::Move, {60, 70});
  At("Chain", MouseAction::Move, {60, RowMiddle(0)});
  At("Picture", MouseAction::Move, {130, 260});
  Look("the mouse over two lists and the picture");
  for (const char* const canvas : {"Filters", "Chain", "Picture"}) {
    At(canvas, MouseAction::Leave, {});
  }
  native->Focus(Canvas("Filters"));
  for (const Key key : {Key::End, Key::Down, Key::Up, Key::Home, Key::Up}) {
    native->Press(key);
    Look("a key among the filters");
  }
  ClickWith(false, false, 0);
  ClickWith(true, false, 1);
  ClickWith(false, true, 2);
  ClickWith(false, true, 0);
  Look("the chain by Shift and Control");
  ClickWith(false, false, 1);
  Look("one of two that were selected");
  ClickWith(false, false, 3);
  Look("a press below the last one");
  ClickWith(true, false, 2);
  ClickWith(true, false, 0);
  native->DragOver(Point{native->At(Canvas("Chain")).place.x + 20, 180 + 70});
  Look("something over the chain");
  native->DragOver(std::nullopt);
  At("Picture", MouseAction::Move, {300, 260});
  native->Wheel(Canvas("Picture"), 6);
  Look("enlarged at the pointer");
  native->Focus(Canvas("Picture"));
  for (const Key key : {Key::Left, Key::Up, Key::Up, Key::Right, Key::Down, Key::Right}) {
    native->Press(key);
  }
  DragTo("Picture", {100, 100}, {130, 160});
  for (const MouseAction action : {MouseAction::Press, MouseAction::Move, MouseAction::Release}) {
    native->Mouse(Canvas("Picture"), action, {130, 160}, 2);  // which moves nothing
  }
  Look("moved");
  At("Picture", MouseAction::DoublePress, {100, 300});
  native->ChooseMenu({"View", "Zoom out"});
  At("Picture", MouseAction::DoublePress, {100, 300});
  Look("fitted by two quick presses");
  At("Picture", MouseAction::DoublePress, {100, 300});
  native->ChooseMenu({"View", "Split"});
  Look("split, at 100 %");
  DragTo("Picture", {209, 20}, {260, 20});
  DragTo("Border", {3, 100}, {43, 60});
  Look("the line and a border moved");
  native->ChooseMenu({"View", "Mask"});
  native->ChooseMenu({"View", "Zoom in"});
  native->ChooseMenu({"View", "Zoom in"});
  Look("the mask, larger");
  native->ChooseMenu({"View", "Mask"});
  native->ChooseMenu({"View", "Fit"});
  native->ChooseMenu({"View", "Zoom out"});
  Add("ZNFilter.Crop.1");
  auto& chain = window->Work().Chain();
  const int crop = *chain.Selection().begin();
  chain.SetParameters({{crop, "LeftMargin=0.250,RightMargin=0.750,TopMargin=0.900"}});
  backend.isDark = true;
  backend.scale = 150;
  native->ChangeLook();
  Look("a crop, in the dark");
  native->ChooseMenu({"Edit", "Edit filter..."});
  native->ChooseMenu({"View", "Filter dialog", "Below the picture"});
  Look("its dialog, below the picture");
  chain.Select({chain.Items()[3].id});
  Look("a smaller dialog in its room");
  native->Focus(Canvas("Filters"));
  for (const Key key : {Key::Home, Key::Enter}) native->Press(key);
  native->ChooseMenu({"View", "Filter dialog", "Below the chain"});
  Look("a filter by its key, its dialog below the chain");
  ShowOthers();
  testing_support::ExpectSheet(sheet, FXBOX_SOURCE "/tests/desk/window.txt");
}

// Every command, by its button, its key or its entry in the menu, over the same picture and chain:
// what it asks, what it leaves behind, and what is other then in the window.
class DeskCommands : public Desk {
 protected:
  using Menu = std::vector<toolkit::MenuEntry>;

  DeskCommands() {
    testing_support::WriteFile(folder / "other.chain", "ZNFilter.Emboss.1(EmbossStrength=020)\n");
    testing_support::WriteFile(
        folder / "photo.chain",
        "ZNFilter.Sepia.1(Sepia=050)\n//off ZNFilter.Invert.1(Inversity=100)\n");
    std::filesystem::copy(folder / "photo.ppm", folder / "other.ppm");
    backend.onFile = [this](const toolkit::FileQuestion& question) {
      events += " ; asks " + question.title + (question.toSave ? " to save " : " from ") +
                host::Utf8Of(question.start) + " " + question.patterns.at(0);
      exports = question.toSave && question.patterns[0] != "*.chain";
      return folder.Path() / (std::string(question.toSave ? "saved" : "other") +
                              (question.patterns[0] == "*.chain" ? ".chain" : ".ppm"));
    };
    Prepare();
  }

  // Until what the loader and then the renderer give is on show, and an export is told.
  bool Settle() {
    const auto isIdle = [this] {
      auto& work = window->Work();
      const auto& status = native->At(Canvas("Status")).valueText;
      return !window->IsOpen() || (!work.IsLoading() && work.Renderer().IsIdle() &&
                                   (!exports || status.find("Exported") != status.npos));
    };
    const bool isLoaded = Await(isIdle);
    backend.Pump(false);
    const bool isShown = Await(isIdle);
    backend.Pump(false);
    return isLoaded && isShown;
  }
  // The picture; a chain as it was saved, of which the second filter is selected, between steps
  // back and forth; and a filter on the clipboard.
  void Prepare() {
    window.reset();
    exports = false;
    std::filesystem::remove_all(folder / "state");
    for (const std::string& name : Files()) {
      if (name.starts_with("saved")) std::filesystem::remove(folder.Path() / name);
    }
    CZNTheme::Choose(toolkit::ThemeChoice::System);
    Reopen();
    window->Work().Open(host::Utf8Of(folder / "photo.ppm"));
    ASSERT_TRUE(Settle());
    desk::ChainDocument& chain = window->Work().Chain();
    const int first = chain.Items()[0].id, second = chain.Items()[1].id;
    chain.Select({first});
    Press(Key::Character, 'c', true);
    for (const char* const text : {"Sepia=060", "Sepia=050", "Sepia=070"}) {
      chain.SetParameters({{first, text}});
    }
    chain.Undo();
    chain.Select({second});
    native->ChooseMenu({"View", "Zoom in"});
    native->Focus(Canvas("Chain"));
    ASSERT_TRUE(Settle());
    files = Files();
    state = State();
    windows = backend.WindowsMade();
    events.clear();
  }
  std::set<std::string> Files() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
      if (entry.path().parent_path().filename() != "state") names.insert(entry.path().filename());
    }
    return names;
  }
  static void AddMarks(const Menu& menu, std::set<std::string>& marks) {
    for (const toolkit::MenuEntry& entry : menu) {
      if (entry.isChecked) marks.insert("check at " + entry.text);
      if (!entry.isEnabled) marks.insert(entry.text + " refused");
      AddMarks(entry.below, marks);
    }
  }
  std::set<std::string> State() {
    std::set<std::string> all = {native->title,
                                 native->Focused() ? "keys to " + NameOf(native->Focused()) : ""};
    const auto clipboard = platform::ComPtr<IDataObject>::Attach(backend.Clipboard());
    all.insert("clipboard " + ReadPlainText(clipboard.Get()).value_or("empty"));
    AddMarks(native->menuBar, all);
    for (ControlId id = 1; id <= native->ControlCount(); ++id) {
      const auto& control = native->At(id);
      if (!control.isVisible) continue;
      const auto look = testing_support::Look(*native, id);
      all.insert(look[0] + look[1] + (control.value ? " down" : ""));
      all.insert(control.bubble);
    }
    return all;
  }
  std::string NameOf(ControlId id) {
    const auto& spec = native->At(id).spec;
    return spec.name.empty() ? spec.text : spec.name;
  }

  // What an act did, and then all as it was.
  std::string After(const std::function<bool()>& act) {
    std::string words = act() ? "" : " ; refused";
    EXPECT_TRUE(Settle());
    if (!window->IsOpen()) words += " ; the end";
    for (std::size_t i = windows; i < backend.WindowsMade(); ++i) {
      if (backend.Window(i)) words += " ; window " + backend.Window(i)->title;
    }
    for (const std::string& name : Files()) words += files.count(name) ? "" : " ; file " + name;
    for (const std::string& piece : State()) words += state.count(piece) ? "" : " ; " + piece;
    words = events + words;
    Prepare();
    return testing_support::Nameless(words, host::Utf8Of(folder.Path()));
  }
  void AddEntries(const std::vector<std::string>& path, const Menu& menu) {
    std::string group;
    for (const toolkit::MenuEntry& entry : menu) {
      if (entry.text.empty()) group = "(behind a line) ";
      std::vector<std::string> to = path;
      to.push_back(entry.text);
      to.back().erase(std::remove(to.back().begin(), to.back().end(), '&'), to.back().end());
      AddEntries(to, entry.below);
      if (entry.id == 0) continue;
      const bool hasKey = entry.shortcut != toolkit::KeyEvent();
      const std::string words =
          After([&] { return hasKey ? native->Press(entry.shortcut) : native->ChooseMenu(to); });
      Write(std::exchange(group, "") + testing_support::Joined(to, " > ") +
                (hasKey ? " by its key" : ""),
            words);
    }
  }
  // Two ways to the same end are told as such.
  void Write(const std::string& name, const std::string& words) {
    const std::string known = words.empty() ? "" : ways.emplace(words, name).first->second;
    const bool isNew = words.empty() || known == name;
    sheet += testing_support::Wrapped(testing_support::Nameless(
        name + (isNew ? words : " ; as " + known), host::Utf8Of(folder.Path())));
  }

  std::set<std::string> files, state;
  std::map<std::string, std::string> ways;
  std::size_t windows = 0;
  std::string events, sheet;
  bool exports = false;
};

TEST_F(DeskCommands, AreAsTheirSheetSays) {
  const Menu menu = native->menuBar;
  AddEntries({}, menu);
  for (ControlId id = 1; id <= native->ControlCount(); ++id) {
    const auto kind = native->At(id).spec.kind;
    const bool isButton = kind == ControlKind::Button || kind == ControlKind::ToggleButton;
    if (!isButton || !native->At(id).isVisible) continue;
    Write(NameOf(id), After([&] {
            const bool isClicked = native->Click(id);
            native->Focus(Canvas("Chain"));
            return isClicked;
          }));
  }
  testing_support::ExpectSheet(sheet, FXBOX_SOURCE "/tests/desk/commands.txt");
}

TEST_F(Desk, CropsByHandlesInThePicture) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.Crop.1");
  ASSERT_TRUE(Await([&] { return window->Work().Renderer().IsIdle(); }));
  const Rect view = native->At(Canvas("Picture")).place;
  const int left = (view.width - 320) / 2, top = (view.height - 200) / 2;
  const struct {
    Point from, to;  // in the picture
    double left, right, bottom, top;
  } drags[] = {
      {{0, 100}, {80, 100}, 0.25, 1, 0, 1},          {{320, 100}, {304, 100}, 0.25, 0.95, 0, 1},
      {{160, 200}, {160, 150}, 0.25, 0.95, 0.25, 1}, {{160, 0}, {160, 20}, 0.25, 0.95, 0.25, 0.9},
      {{160, 80}, {176, 100}, 0.3, 1, 0.15, 0.8},    {{96, 40}, {80, 20}, 0.25, 1, 0.15, 0.9},
      {{20, 20}, {60, 60}, 0.25, 1, 0.15, 0.9}};  // beside it
  for (const auto& d : drags) {
    DragTo("Picture", {left + d.from.x, top + d.from.y}, {left + d.to.x, top + d.to.y});
    const auto frame = desk::CropOf(window->Work().Chain().Items()[0].parameters);
    EXPECT_NEAR(frame.left, d.left, 0.01) << d.from.x;
    EXPECT_NEAR(frame.right, d.right, 0.01) << d.from.x;
    EXPECT_NEAR(frame.bottom, d.bottom, 0.01) << d.from.y;
    EXPECT_NEAR(frame.top, d.top, 0.01) << d.from.y;
  }
  window->Work().Chain().Select({});
  ASSERT_TRUE(Await([&] {
    return window->Work().Shown().after && window->Work().Shown().after->Width() == 240;
  }));
}

TEST_F(Desk, MarksRedEyesByClicks) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.RedEye.1");
  const Rect view = native->At(Canvas("Picture")).place;
  const int left = (view.width - 320) / 2, top = (view.height - 200) / 2;
  ClickAt("Picture", {left + 80, top + 50});
  const std::string text = window->Work().Chain().Items()[0].parameters;
  EXPECT_NEAR(desk::NumberIn(text, "X1", 0), 0.25, 0.01) << text;
  EXPECT_NEAR(desk::NumberIn(text, "Y1", 0), 0.75, 0.01) << text;
  ClickAt("Picture", {left + 81, top + 50});
  EXPECT_EQ(desk::NumberIn(window->Work().Chain().Items()[0].parameters, "N", -1), 0) << "no more";
}

TEST_F(Desk, ShowsAMessageForEachBadFile) {
  std::vector<std::filesystem::path> files;
  for (int i = 0; i < 100; ++i) {
    files.push_back(folder.Path() / ("bad" + std::to_string(i) + ".png"));
    testing_support::WriteFile(files.back(), "bad");
  }
  Add("ZNFilter.Sepia.1");
  native->DropFiles(files);
  EXPECT_EQ(window->Work().Messages().size(), 100u);
  toolkit::FakeWindow* const messages = backend.LastWindow();
  ASSERT_NE(messages, native);
  EXPECT_EQ(messages->At(messages->ByName("Messages", ControlKind::List)).items.size(), 100u);
  EXPECT_EQ(Order(), "Se ");
}

TEST_F(Desk, BeginsWithTheFilesThatItIsCalledWith) {
  const auto chain = folder / "warm.chain", picture = folder / "photo.ppm";
  testing_support::WriteFile(chain, "ZNFilter.Sepia.1(Sepia=020)\n");
  Reopen({host::Utf8Of(chain)});
  EXPECT_EQ(Order(), "Se ");
  EXPECT_THAT(native->title, testing::StartsWith(host::Utf8Of(chain)));
  Add("ZNFilter.Invert.1");
  Press(Key::Character, 's', true);
  EXPECT_THAT(testing_support::ReadFile(chain), HasSubstr("ZNFilter.Invert.1("));
  Reopen({host::Utf8Of(picture), host::Utf8Of(chain)});
  ASSERT_TRUE(Await([&] { return window->Work().HasPicture(); }));
  EXPECT_THAT(native->title, testing::StartsWith(host::Utf8Of(picture)));
  EXPECT_THAT(Order(), HasSubstr("Se "));
  EXPECT_THAT(Order(), HasSubstr("In "));
}

TEST_F(Desk, EndsWithItsWindow) {
  ASSERT_TRUE(OpenPicture());
  native->Press(Key::Escape);
  EXPECT_TRUE(window->IsOpen()) << "Escape ends nothing";
  native->AskToClose();
  EXPECT_FALSE(window->IsOpen());
  EXPECT_FALSE(native->isVisible);
}

TEST_F(Desk, LeavesNoChainUnsaved) {
  for (const char* answer : {"Cancel", "Do not save", "Save"}) {
    SCOPED_TRACE(answer);
    Reopen();
    ASSERT_TRUE(OpenPicture());
    Add("ZNFilter.Sepia.1");
    const auto file = window->Work().ChainFile();
    backend.Post([&] {
      toolkit::FakeWindow& question = *backend.LastWindow();
      EXPECT_TRUE(question.Click(question.ByName(answer, ControlKind::Button)));
    });
    native->AskToClose();
    EXPECT_EQ(window->IsOpen(), std::string(answer) == "Cancel");
    EXPECT_EQ(std::filesystem::exists(file), std::string(answer) == "Save");
  }
  // What is saved needs no question; nobody's answer is as good as "Cancel".
  Reopen();
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.Invert.1");
  native->AskToClose();
  EXPECT_TRUE(window->IsOpen());
  ASSERT_TRUE(window->Work().SaveChain(host::Utf8Of(window->Work().ChainFile())));
  native->AskToClose();
  EXPECT_FALSE(window->IsOpen());
}

}  // namespace
