// Menus, their shortcuts, and themes, over the window system in memory.
#include <gtest/gtest.h>

#include "toolkit/Shortcut.h"
#include "toolkit/ZNDialog.h"
#include "toolkit/ZNTheme.h"
#include "toolkit/fake/FakeBackend.h"

namespace {

using toolkit::FakeWindow;
using toolkit::Key;
using toolkit::KeyEvent;

KeyEvent Pressed(const char* words) {
  return toolkit::ShortcutOf(words);
}

TEST(Shortcuts, AreReadAndNamed) {
  struct {
    const char* words;
    const char* german;
  } const rows[] = {{"Ctrl+O", "Strg+O"},
                    {"Ctrl+Shift+S", "Strg+Umschalt+S"},
                    {"Alt+F4", "Alt+F4"},
                    {"Del", "Entf"},
                    {"Ctrl++", "Strg++"},
                    {"Ctrl+PgUp", "Strg+Bild auf"},
                    {"0", "0"}};
  for (const auto& row : rows) {
    EXPECT_EQ(toolkit::ShortcutName(Pressed(row.words), "en"), row.words);
    EXPECT_EQ(toolkit::ShortcutName(Pressed(row.words), "de"), row.german);
  }
  for (const char* wrong : {"", "Ctrl+", "Ctrl+Oo", "Strg+O", "F13", "Ctrl"}) {
    EXPECT_EQ(Pressed(wrong), KeyEvent()) << wrong;
    EXPECT_EQ(toolkit::ShortcutName(Pressed(wrong), "en"), "");
  }
}

TEST(Shortcuts, CountShiftWithLettersAndNamedKeysOnly) {
  EXPECT_TRUE(toolkit::IsShortcut({Key::Character, U'O', false, true, false}, Pressed("Ctrl+O")));
  EXPECT_FALSE(toolkit::IsShortcut({Key::Character, U'o', true, true, false}, Pressed("Ctrl+O")));
  EXPECT_TRUE(toolkit::IsShortcut({Key::Character, U'+', true, true, false}, Pressed("Ctrl++")));
  EXPECT_FALSE(toolkit::IsShortcut({Key::F5, 0, true}, Pressed("F5")));
  EXPECT_FALSE(toolkit::IsShortcut({Key::Other}, KeyEvent())) << "no key is no shortcut";
}

class Menus : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(dialog.CreateModeless({.title = "Test"}));
    CZNMenu& file = dialog.MenuBar().AddBelow("&File");
    open = file.Add("&Open...\tCtrl+O", [this] { done += "open "; });
    file.AddSeparator();
    grid = file.AddBelow("&View").AddCheck("&Grid\tF5", [this] {
      dialog.MenuBar().Check(grid, !dialog.MenuBar().IsChecked(grid));
      done += "grid ";
    });
    file.Add("&Copy\tCtrl+C", [this] { done += "copy "; });
    file.Add("&Next\tRight", [this] { done += "next "; });
    file.Add("&Zero\t0", [this] { done += "zero "; });
    dialog.ShowMenuBar();
  }
  FakeWindow& Window() { return *backend.LastWindow(); }

  toolkit::FakeBackend backend;
  toolkit::ScopedBackend scope{&backend};
  CZNDialog dialog;
  std::string done;
  int open = 0, grid = 0;
};

TEST_F(Menus, AnEntryDoesItsActionByChoiceAndByShortcut) {
  EXPECT_TRUE(Window().ChooseMenu({"File", "Open..."}));
  EXPECT_TRUE(Window().ChooseMenu({"File", "View", "Grid"}));
  EXPECT_TRUE(Window().Press(Pressed("Ctrl+O")));
  EXPECT_TRUE(Window().Press(Key::F5));
  EXPECT_EQ(done, "open grid open grid ");
  EXPECT_FALSE(Window().ChooseMenu({"File", "View"})) << "it only opens what lies below";
  EXPECT_FALSE(Window().Press(Pressed("Ctrl+Q")));
}

TEST_F(Menus, AStateShowsAtOnce) {
  Window().ChooseMenu({"File", "View", "Grid"});
  EXPECT_TRUE(Window().menuBar[0].below[2].below[0].isChecked);
  EXPECT_TRUE(Window().menuBar[0].below[2].below[0].hasMark);
  dialog.MenuBar().Enable(open, false);
  EXPECT_FALSE(Window().menuBar[0].below[0].isEnabled);
  EXPECT_FALSE(Window().Press(Pressed("Ctrl+O")));
  EXPECT_EQ(done, "grid ");
}

TEST_F(Menus, WhereOneTypesEditingKeysAreTheText) {
  auto& edit = dialog.Make<CZNEdit>("Name");
  edit.Focus();
  Window().Press(Pressed("Ctrl+C"));
  Window().Press(Key::Right);
  EXPECT_EQ(done, "");
  EXPECT_TRUE(Window().Press(Pressed("Ctrl+O")));
  EXPECT_TRUE(Window().Press(Key::F5));
  dialog.Make<CZNButton>("&Apply").Focus();
  EXPECT_TRUE(Window().Press(Pressed("Ctrl+C")));
  EXPECT_TRUE(Window().Press(Key::Right));
  EXPECT_EQ(done, "open grid copy next ");
  // In a list one types what it is to go to.
  for (const bool isOpen : {false, true}) {
    dialog.Make<CZNComboBox>("List", std::vector<std::string>{"0"}, isOpen).Focus();
    Window().Press(Pressed("0"));
    EXPECT_EQ(std::exchange(done, ""), isOpen ? "" : "open grid copy next ");
    EXPECT_TRUE(Window().Press(Pressed("Ctrl+C")));
    EXPECT_EQ(std::exchange(done, ""), "copy ");
  }
  dialog.Make<CZNButton>("&Other").Focus();
  Window().Press(Pressed("0"));
  EXPECT_EQ(done, "zero ");
}

// The menu of the last files is made anew by one of its own entries.
TEST_F(Menus, AnActionMayChangeTheMenuOrBuryTheWindow) {
  auto window = std::make_unique<CZNDialog>();
  window->CreateModeless({});
  window->MenuBar().Add("&One\tF2", [&, kept = std::string("still here")] {
    window->MenuBar().Clear();
    window->MenuBar().Add("&Two\tF3", [&] { CZNDialog::Bury(std::move(window)); });
    window->ShowMenuBar();
    done += kept;
  });
  window->ShowMenuBar();
  FakeWindow& shown = Window();
  EXPECT_TRUE(shown.Press(Key::F2));
  EXPECT_EQ(done, "still here");
  EXPECT_TRUE(shown.Press(Key::F3));
  EXPECT_EQ(backend.Counts().windows, 1);
}

TEST_F(Menus, OneThatPopsUpDoesWhatIsChosen) {
  CZNMenu menu;
  menu.Add("&Reset", [this] { done += "reset "; });
  const int second = menu.Add("&Delete\tDel", [this] { done += "delete "; });
  backend.onMenu = [&](const auto& entries) {
    EXPECT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].shortcut.key, Key::Delete);
    return second;
  };
  EXPECT_TRUE(menu.Run(dialog, {3, 4}));
  backend.onMenu = nullptr;
  EXPECT_FALSE(menu.Run(dialog, {3, 4}));
  EXPECT_EQ(done, "delete ");
}

struct LookCounter final : CZNDialog {
  int looks = 0;
  void OnLook() override { ++looks; }
};

TEST(Themes, FollowTheSystemUntilOneIsChosen) {
  toolkit::FakeBackend backend;
  const toolkit::ScopedBackend scope(&backend);
  LookCounter window;
  window.CreateModeless({});
  EXPECT_FALSE(CZNTheme::IsDark());
  backend.isDark = true;
  EXPECT_TRUE(CZNTheme::IsDark());
  CZNTheme::Choose(toolkit::ThemeChoice::Light);
  EXPECT_FALSE(CZNTheme::IsDark());
  CZNTheme::Choose(toolkit::ThemeChoice::Light);
  EXPECT_EQ(window.looks, 1) << "nothing was changed";
  CZNTheme::Choose(toolkit::ThemeChoice::System);
  EXPECT_TRUE(CZNTheme::IsDark());
  EXPECT_EQ(CZNTheme::Mixed({0, 100, 200}, {100, 0, 200}, 0.25), (toolkit::Colour{25, 75, 200}));
}

}  // namespace
