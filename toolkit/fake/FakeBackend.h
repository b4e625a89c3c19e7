// A window system in memory, for tests without a display.
#pragma once

#include <ole2.h>

#include <deque>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/component/ComPtr.h"
#include "toolkit/Backend.h"
#include "toolkit/Painter.h"

namespace toolkit {

struct FakeControl {
  ControlSpec spec;
  Rect place;
  std::string text;  // caption, or what stands in an edit
  std::string valueText, bubble;
  std::vector<std::string> items;
  std::vector<CanvasRow> rows;
  Colour colour;
  int least = 0, greatest = 0, value = 0;
  bool isEnabled = true, isVisible = true;
  int redraws = 0;
};

// What was drawn, one line a call: "FillRect 0,0 10x10 255,255,255". Of a picture it has a sum.
class RecordingPainter final : public Painter {
 public:
  explicit RecordingPainter(Size canvas) : area(canvas) {}
  std::vector<std::string> calls;
  int Count(const std::string& beginning) const;

  Size Area() override { return area; }
  void FillRect(const Rect& place, Colour colour) override;
  void DrawLines(std::span<const Spot> corners, Colour colour, double thickness) override;
  void FillShape(std::span<const Spot> corners, Colour colour) override;
  void DrawCircle(Spot centre, double radius, Colour colour, double thickness) override;
  void FillCircle(Spot centre, double radius, Colour colour) override;
  void WriteText(Point place, const std::string& text, Colour colour) override;
  void WriteLine(const Rect& place, const std::string& text, Colour colour,
                 TextAlign align) override;
  void DrawPicture(const Rect& place, const PictureRows& picture) override;
  void Shade(const Rect& place, double strength) override;

 private:
  Size area;
};

// What the person is asked a file with.
struct FileQuestion {
  std::string title;
  bool toSave = false;
  std::filesystem::path start;
  std::vector<std::string> patterns;
};

class FakeBackend;

class FakeWindow final : public NativeWindow {
 public:
  FakeWindow(FakeBackend& ofBackend, const WindowSpec& windowSpec, WindowEvents& windowEvents);
  ~FakeWindow() override;

  // --- what a person does. A control that is hidden or disabled, or not there, refuses: false; and
  // so do all of a window that waits for a modal one.

  bool Slide(ControlId slider, int position);
  bool Click(ControlId control);  // buttons, check boxes, radio buttons
  bool Choose(ControlId list, int index);
  bool Type(ControlId edit, const std::string& text);  // replaces the text
  // To the control with the focus, or the window. True when somebody used it.
  bool Press(Key key, char32_t character = 0) { return Press(KeyEvent{key, character}); }
  bool Press(const KeyEvent& event);
  // An entry of the menu bar by its path, "File", "Open...": text without mnemonics.
  bool ChooseMenu(const std::vector<std::string>& path);
  bool Wheel(ControlId control, double notches);
  bool Mouse(ControlId canvas, MouseAction action, Point place, int button = 1) {
    return Mouse(canvas, {action, place, button});
  }
  bool Mouse(ControlId canvas, const MouseEvent& event);
  bool BeginDrag(ControlId control);
  bool ContextMenu(ControlId control, Point place);
  void DropFiles(const std::vector<std::filesystem::path>& files);
  void DragOver(std::optional<Point> place) { events.OnObjectOver(place); }
  bool DropObject(IDataObject* object, Point place);
  void AskToClose() { events.OnCloseRequest(); }
  void ChangeLook() { events.OnLookChanged(); }

  // --- what is there

  // By name, caption or (of edits) nothing else; 0 when there is none, the first of several. Hidden
  // ones count only where no other has the name.
  ControlId ByName(const std::string& name, ControlKind kind) const;
  const FakeControl& At(ControlId control) const;
  int ControlCount() const { return static_cast<int>(controls.size()); }
  RecordingPainter Paint(ControlId canvas);

  WindowSpec spec;
  std::string title;
  Size client;
  bool isVisible = false, isOnTop = false, isModal = false;
  FakeWindow* host = nullptr;  // that it is docked in
  int activations = 0;
  std::vector<MenuEntry> menuBar;

  // --- NativeWindow

  ControlId Add(const ControlSpec& control) override;
  void Place(ControlId control, const Rect& place) override;
  void SetText(ControlId control, const std::string& text) override;
  void SetRange(ControlId slider, int least, int greatest) override;
  void SetValue(ControlId control, int value) override;
  void SetItems(ControlId control, const std::vector<std::string>& items) override;
  void SetColour(ControlId control, Colour colour) override;
  void SetEnabled(ControlId control, bool enabled) override;
  void SetVisible(ControlId control, bool visible) override;
  void SetRows(ControlId canvas, const std::vector<CanvasRow>& rows) override;
  bool Dock(ControlId dock, void* guest) override;
  Size DockedSize(ControlId dock) override;
  void SetModal(bool modal) override { isModal = modal; }
  void SetValueText(ControlId control, const std::string& text) override;
  void SetBubble(ControlId control, const std::string& text) override;
  void Focus(ControlId control) override;
  ControlId Focused() override { return focused; }
  void SelectAll(ControlId) override {}
  void Redraw(ControlId canvas) override;
  void SetTitle(const std::string& newTitle) override { title = newTitle; }
  void SetClientSize(Size size) override;
  void SetMenuBar(const std::vector<MenuEntry>& entries) override { menuBar = entries; }
  void SetMenuState(int entry, bool isEnabled, bool isChecked) override;
  void Show(bool activate) override;
  void Hide() override;
  bool IsVisible() override { return isVisible; }
  void SetOnTop(bool onTop) override { isOnTop = onTop; }
  Point Position() override { return position; }
  void Move(Point place) override { position = place; }
  void* Handle() override { return this; }
  int RunMenu(Point place, const std::vector<MenuEntry>& entries) override;
  std::optional<Colour> AskColour(const std::string& title, Colour start,
                                  const std::function<void(Colour)>& onTry) override;
  std::optional<std::filesystem::path> AskFile(const std::string& title, bool toSave,
                                               const std::filesystem::path& start,
                                               const std::vector<std::string>& patterns) override;
  DragEnd Drag(IDataObject* object, IDropSource* source, std::uint32_t allowed,
               std::uint32_t& effect) override;
  Rect OnScreen(ControlId control) override { return At(control).place; }
  bool SaveImage(const std::filesystem::path&) override { return false; }

 private:
  bool IsWaiting() const;
  void TellHost();
  FakeControl* Find(ControlId control);
  FakeControl* Usable(ControlId control);
  void ClickRadio(ControlId control);

  FakeBackend& backend;
  WindowEvents& events;
  std::vector<FakeControl> controls;
  ControlId focused = 0;
  Point position;
  FakeWindow* guest = nullptr;
  ControlId dock = 0;  // of the guest
};

// One thread, but for Post. Nothing waits: Pump with nothing to do gives false where it was to
// wait. Derive to measure in another way.
class FakeBackend : public Backend {
 public:
  // Windows in the order of their making; null for those that are gone.
  FakeWindow* Window(std::size_t index) const;
  FakeWindow* LastWindow() const;
  std::size_t WindowsMade() const { return windows.size(); }

  // What the person answers to menus, questions and drags; nothing set means that all is cancelled.
  std::function<int(const std::vector<MenuEntry>&)> onMenu;
  Point menuPlace;  // of the last one, pixels of its window
  std::function<std::optional<Colour>(Colour start, const std::function<void(Colour)>& onTry)>
      onColour;
  std::function<std::optional<std::filesystem::path>(const FileQuestion&)> onFile;
  std::function<DragEnd(IDataObject*, IDropSource*, std::uint32_t allowed, std::uint32_t& effect)>
      onDrag;

  bool refusesWindows = false;
  bool echoes = false;  // values that are set come back as events, as some systems have it
  bool isDark = false;  // the system's own theme
  ThemeChoice theme = ThemeChoice::System;
  std::string language = "en";
  int scale = 100;  // percent

  std::unique_ptr<NativeWindow> NewWindow(const WindowSpec& spec, WindowEvents& events) override;
  Size PreferredSize(ControlKind kind, const std::string& text) override;
  int Scaled(int units) override { return units * scale / 100; }
  Look CurrentLook() override;
  void SetTheme(ThemeChoice choice) override;
  Size WorkArea() override { return {1024, 768}; }
  std::string Language() override { return language; }
  bool Pump(bool wait) override;
  void Post(std::function<void()> task) override;
  bool SetClipboard(IDataObject* object) override;
  IDataObject* Clipboard() override;
  BackendCounts Counts() override;

 private:
  friend class FakeWindow;

  std::vector<FakeWindow*> windows;
  platform::ComPtr<IDataObject> clipboard;
  std::mutex tasksLock;
  std::deque<std::function<void()>> tasks;
  int liveControls = 0;
};

}  // namespace toolkit
