// A window with one control of each kind, for tests that click and type in it. Prints where each
// control lies on the screen, then a line for each change, until it is closed or ten minutes
// are over.
//
//   window-host [IMAGE]   IMAGE: a picture of the window, written as soon as it is shown
#include <chrono>
#include <cstdio>
#include <thread>

#include "toolkit/Painter.h"
#include "toolkit/ZNDialog.h"
#include "toolkit/ZNMessage.h"
#include "toolkit/ZNTheme.h"

namespace {

using toolkit::Rect;

// A place that tells what is done with the mouse in it.
class Board final : public CZNCanvas {
 public:
  explicit Board(CZNDialog& dialog) : CZNCanvas(dialog, "Board") {}

 private:
  void HandleMouse(const toolkit::MouseEvent& event) override {
    static const char* const kNames[] = {"press", "move", "release", "double", "leave"};
    if (event.action == toolkit::MouseAction::Move && event.button == 0) return;
    std::printf("board %s %d,%d button %d\n", kNames[static_cast<int>(event.action)], event.place.x,
                event.place.y, event.button);
  }
  bool HandleKey(const toolkit::KeyEvent& event) override {
    if (event.key != toolkit::Key::Character || event.control) return false;
    std::printf("board key %c\n", static_cast<char>(event.character));
    return true;
  }
  void HandlePaint(toolkit::Painter& painter) override {
    const toolkit::Size area = painter.Area();
    painter.FillRect({0, 0, area.width, area.height}, {255, 255, 255});
    const toolkit::Spot line[] = {{0, area.height * 1.0}, {area.width * 1.0, 0}};
    painter.DrawLines(line, {200, 30, 30}, 2);
    painter.FillCircle({area.width / 2.0, area.height / 2.0}, 8, {30, 90, 200});
    painter.WriteText({4, 4}, "Größe", {0, 0, 0});
    std::uint8_t colour[2][6] = {{255, 0, 0, 0, 255, 0}, {0, 0, 255, 255, 255, 255}};
    std::uint8_t mask[2][2] = {{0, 0}, {0, 255}};
    const std::uint8_t* const colours[] = {colour[0], colour[1]};
    const std::uint8_t* const masks[] = {mask[0], mask[1]};
    painter.DrawPicture({area.width - 44, 4, 40, 40}, {2, 2, colours, masks});
  }
};

// A window that lives in the host's dock, until it is let out.
class GuestWindow final : public CZNDialog {
 public:
  CZNSlider* slider = nullptr;
  CZNEdit* edit = nullptr;

 private:
  void Build() override {
    const auto unit = [this](int units) { return System().Scaled(units); };
    slider = &Make<CZNSlider>("Depth", ValueRange{0, 100, 1, 0}, toolkit::SliderLook::Plain);
    slider->Place({unit(8), unit(4), unit(240), unit(32)});
    slider->onChange = [this] { std::printf("guest slider %.0f\n", slider->Value()); };
    edit = &Make<CZNEdit>("Title");
    edit->Place({unit(8), unit(40), unit(240), unit(34)});
    edit->onChange = [this] { std::printf("guest edit %s\n", edit->Text().c_str()); };
    Native()->SetClientSize({unit(256), unit(80)});
  }
  void OnCancel() override {
    std::printf("guest closed\n");
    Hide();
  }
};

class HostWindow final : public CZNDialog {
 public:
  bool isOpen = true;
  int tellsIn = 0;  // turns of the loop, until all is laid out anew

  void Tell() {
    for (const auto& [name, control] : named) {
      const Rect place = Native()->OnScreen(control->Id());
      std::printf("place %s %d %d %d %d\n", name, place.x, place.y, place.width, place.height);
    }
    if (guest) {
      TellGuest("guestslider", *guest->slider);
      TellGuest("guestedit", *guest->edit);
    }
    std::printf("ready\n");
    std::fflush(stdout);
  }

 private:
  void TellGuest(const char* name, const CZNControl& control) {
    const Rect place = guest->Native()->OnScreen(control.Id());
    std::printf("place %s %d %d %d %d\n", name, place.x, place.y, place.width, place.height);
  }
  // Docks the guest, or lets it out; tells where everything is a little later.
  void DockGuest(bool isDocked) {
    if (!guest) {
      guest = std::make_unique<GuestWindow>();
      guest->CreateModeless({.title = "Guest", .owner = Handle()});
    }
    if (isDocked) {
      std::printf("docked %d\n", dock->Take(guest->Handle()));
    } else {
      dock->GiveBack();
      std::printf("free\n");
    }
    guest->Show();
    tellsIn = 4;
  }
  void Ask() {
    std::printf("asking\n");
    std::fflush(stdout);
    std::printf("answer %d\n", ZNAskButton("Question", "Well?", {"&Yes", "&No"}, Handle()));
  }
  void Build() override {
    Make<CZNStatic>("&Strength").Place(Row(0));
    slider = &Add("slider", Make<CZNSlider>("Strength", ValueRange{0, 100, 1, 0},
                                            toolkit::SliderLook::FromZero));
    slider->onChange = [this] { std::printf("slider %.0f\n", slider->Value()); };
    Make<CZNStatic>("&Width").Place(Row(2));
    field = &Add("field", Make<CZNNumberField>("Width", ValueRange{0, 500, 1, 0}));
    field->onChange = [this] { std::printf("field %.0f\n", field->Value()); };
    auto& check = Add("check", Make<CZNCheckBox>("&Keep proportions"));
    check.onChange = [&check] { std::printf("check %d\n", check.IsChecked()); };
    radios = std::make_unique<CZNRadioGroup>(*this, std::vector<std::string>{"&Left", "&Right"});
    for (std::size_t i = 0; i < radios->Count(); ++i)
      Add(i == 0 ? "radio" : "otherradio", radios->Button(i));
    radios->onChange = [this] { std::printf("radio %d\n", radios->Chosen()); };
    auto& combo = Add("combo", Make<CZNComboBox>("Kind", std::vector<std::string>{"One", "Two"}));
    combo.onChange = [&combo] { std::printf("combo %d\n", combo.Chosen()); };
    auto& list =
        Add("list", Make<CZNListBox>("Presets", std::vector<std::string>{"Red", "Blue"}), 3);
    list.onChange = [&list] { std::printf("list %d\n", list.Chosen()); };
    auto& toggle = Add("toggle", Make<CZNButton>("Lo&ck", CZNButton::Kind::Toggle));
    toggle.onPress = [&toggle] { std::printf("toggle %d\n", toggle.IsDown()); };
    auto& button = Add("button", Make<CZNButton>("&Apply", CZNButton::Kind::Default));
    button.onPress = [] { std::printf("button\n"); };
    Add("board", Make<Board>(), 4);
    dock = &Add("dock", Make<CZNDock>("Dock"), 3);
    dock->onChange = [this] {
      const toolkit::Size wanted = dock->Wanted();
      std::printf("wanted %d\n", wanted.width > 0 && wanted.height > 0);
    };
    AddMenus();
    slider->SetValue(50);
    field->SetValue(20);
    Native()->SetClientSize({System().Scaled(300), next});
  }
  void AddMenus() {
    CZNMenu& file = MenuBar().AddBelow("&File");
    file.Add("&Open...\tCtrl+O", [] { std::printf("menu open\n"); });
    file.Add("&All\tCtrl+A", [] { std::printf("menu all\n"); });
    CZNMenu& recent = file.AddBelow("&Recent");
    recent.Add("&First", [] { std::printf("menu first\n"); });
    CZNMenu& view = MenuBar().AddBelow("&View");
    grid = view.AddCheck("&Grid\tF5", [this] {
      MenuBar().Check(grid, !MenuBar().IsChecked(grid));
      std::printf("menu grid %d\n", MenuBar().IsChecked(grid));
    });
    view.Add("&In\tF2", [this] { DockGuest(true); });
    view.Add("O&ut\tF3", [this] { System().Post([this] { DockGuest(false); }); });
    view.Add("A&sk\tF7", [this] { Ask(); });
    view.AddSeparator();
    const int off = view.Add("O&ff\tF6", [] { std::printf("menu off\n"); });
    view.Add("&Dark\tCtrl+Shift+D", [] { CZNTheme::Choose(toolkit::ThemeChoice::Dark); });
    ShowMenuBar();
    MenuBar().Enable(off, false);
  }
  void OnLook() override { std::printf("look %s\n", CZNTheme::IsDark() ? "dark" : "light"); }
  void OnCancel() override {
    isOpen = false;
    std::printf("closed\n");
  }

  Rect Row(int row, int rows = 1) {
    const int height = System().Scaled(34);
    next = (row + rows) * height;
    return {System().Scaled(8), row * height, System().Scaled(284), rows * height - 4};
  }
  template <class Control>
  Control& Add(const char* name, Control& control, int rows = 1) {
    const int height = System().Scaled(34);
    control.Place(Row((next + height - 1) / height, rows));
    named.emplace_back(name, &control);
    return control;
  }

  std::vector<std::pair<const char*, CZNControl*>> named;
  std::unique_ptr<CZNRadioGroup> radios;
  std::unique_ptr<GuestWindow> guest;
  CZNDock* dock = nullptr;
  CZNSlider* slider = nullptr;
  CZNNumberField* field = nullptr;
  int next = 0;
  int grid = 0;
};

void PumpFor(toolkit::Backend& backend, std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end && backend.Pump(false)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace

int main(int count, char** arguments) {
  CZNSlider::AttachBitmaps(
      {reinterpret_cast<void*>(&PumpFor), "IDB_SLIDER_HD", "IDB_SLIDER_CC", "IDB_SLIDER_TMB"}, true,
      true);
  HostWindow window;
  toolkit::WindowSpec spec;
  spec.title = "Window host";
  if (!window.CreateModeless(spec)) {
    std::string reason;
    toolkit::CurrentBackend(&reason);
    std::fprintf(stderr, "no window: %s\n", reason.c_str());
    return 2;
  }
  window.Show();
  toolkit::Backend& backend = *toolkit::CurrentBackend();
  PumpFor(backend, std::chrono::milliseconds(500));
  if (count > 1 && !window.Native()->SaveImage(arguments[1])) return 1;
  window.Tell();
  for (int i = 0; window.isOpen && i < 6000; ++i) {
    PumpFor(backend, std::chrono::milliseconds(100));
    if (window.tellsIn > 0 && --window.tellsIn == 0) window.Tell();
    std::fflush(stdout);
  }
  return window.isOpen ? 1 : 0;
}
