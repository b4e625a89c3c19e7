// What the toolkit needs of a window system. Each backend (toolkit/windows, toolkit/gtk and, for
// tests, toolkit/fake) is these two classes and a Painter, and nothing more: values and their
// ranges, echo guards, keyboard steps, layout, curves and dials lie above, once for all.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Export.h"
#include "toolkit/CanvasRole.h"
#include "toolkit/Events.h"
#include "toolkit/Geometry.h"

struct IDataObject;
struct IDropSource;

namespace toolkit {

// All texts are UTF-8. In texts of controls and menus "&" stands before the mnemonic and "&&" is
// one "&"; the mnemonic of a Static leads to the next control that takes the focus. All calls come
// on the thread that opened the first window, but Backend::Post.

enum class ControlKind {
  Static,        // a text
  Heading,       // a text over a group of controls
  Button,        // push button
  ToggleButton,  // stays down; values 0 and 1
  CheckBox,      // values 0 and 1
  RadioButton,   // values 0 and 1; one of its group is 1
  Slider,        // horizontal, whole positions of a range
  Edit,          // one line of text
  ComboBox,      // a list that drops down, without an edit; value is the index or -1
  List,          // the same, open
  ColourButton,  // a push button that shows a colour
  Canvas,        // a place that the receiver draws itself
  Dock           // a place for another window, which scrolls there; see NativeWindow::Dock
};

// The scale behind a slider: plain, from none to much, or with its zero in the middle.
enum class SliderLook { Plain, FromZero, AroundZero };

struct ControlSpec {
  ControlKind kind = ControlKind::Static;
  std::string text;         // caption; empty for sliders, edits, lists and canvases
  std::string name;         // for screen readers, where the caption stands in another control
  bool opensGroup = false;  // of radio buttons: the first one of a group
  bool canDrag = false;     // OnDragBegin is wanted
  bool isDefault = false;   // of buttons: Enter presses it
  CanvasRole role = CanvasRole::Picture;
  SliderLook look = SliderLook::Plain;
};

struct WindowSpec {
  std::string title;
  void* owner = nullptr;  // handle of the window above which it floats, if the backend knows it
  bool isTool = true;     // a floating panel with a fixed size; otherwise a main window
  bool isOnTop = false;
  bool takesFiles = false;    // that are dropped on it, see WindowEvents::OnFilesDropped
  bool takesObjects = false;  // other things that are, see WindowEvents::OnObjectDropped
};

struct MenuEntry {
  int id = 0;  // above 0; 0 is a separator or, with `below`, a submenu
  std::string text;
  bool isEnabled = true;
  bool isChecked = false;
  bool hasMark = false;  // keeps a place for a check mark
  KeyEvent shortcut;     // is only shown; WindowEvents::OnShortcut tells that it was pressed
  std::vector<MenuEntry> below;
};

// Colours of a theme, by default a light one.
struct Look {
  bool isDark = false;
  Colour window = {246, 245, 244}, text = {46, 52, 54}, field = {255, 255, 255},
         line = {205, 199, 194}, accent = {53, 132, 228};
  bool operator==(const Look&) const = default;
};

enum class ThemeChoice { System, Light, Dark };

enum class DragEnd { Dropped, Cancelled, Failed };

// A window with its controls. Made hidden. Calls about a control that does not exist do nothing.
class NativeWindow {
 public:
  virtual ~NativeWindow() = default;

  // --- controls

  // The new control's id: 1, 2, ... The order of making is the tab order. Made visible, enabled,
  // at 0, 0 with no size.
  virtual ControlId Add(const ControlSpec& spec) = 0;
  // Pixels of the client area.
  virtual void Place(ControlId control, const Rect& place) = 0;
  virtual void SetText(ControlId control, const std::string& text) = 0;
  // Least and greatest position of a slider, both included. Position, steps and keys are the
  // receiver's business.
  virtual void SetRange(ControlId slider, int least, int greatest) = 0;
  // See WindowEvents::OnValue. No event comes of it.
  virtual void SetValue(ControlId control, int value) = 0;
  virtual void SetItems(ControlId control, const std::vector<std::string>& items) = 0;
  virtual void SetColour(ControlId colourButton, Colour colour) = 0;
  virtual void SetEnabled(ControlId control, bool enabled) = 0;
  virtual void SetVisible(ControlId control, bool visible) = 0;
  // What a screen reader says of the value of a slider, canvas or colour button ("12.5"), and of
  // the rows of a canvas that is a list. And the bubble help.
  virtual void SetRows(ControlId canvas, const std::vector<CanvasRow>& rows) = 0;
  virtual void SetValueText(ControlId control, const std::string& text) = 0;
  virtual void SetBubble(ControlId control, const std::string& text) = 0;
  virtual void Focus(ControlId control) = 0;
  virtual ControlId Focused() = 0;
  virtual void SelectAll(ControlId edit) = 0;
  virtual void Redraw(ControlId canvas) = 0;

  // --- docks

  // Takes another window of the same backend, by its handle, into the dock: it has no frame there
  // and moves with this window. Null, or another window, gives back the one that was there, with
  // its frame and as visible as it was. False for a handle that is none of this backend's. Neither
  // may happen inside an event of the guest.
  virtual bool Dock(ControlId dock, void* guest) = 0;
  // The size that the guest wants; nothing while it is hidden, or without one.
  virtual Size DockedSize(ControlId dock) = 0;

  // --- the window

  virtual void SetTitle(const std::string& title) = 0;
  virtual void SetClientSize(Size size) = 0;
  virtual void SetMenuBar(const std::vector<MenuEntry>& entries) = 0;
  // Of an entry of the menu bar that was set last.
  virtual void SetMenuState(int entry, bool isEnabled, bool isChecked) = 0;
  virtual void Show(bool activate) = 0;
  virtual void Hide() = 0;
  virtual bool IsVisible() = 0;
  // While it is, the window that owns this one, and those docked there, take no input.
  virtual void SetModal(bool isModal) = 0;
  // Above all other windows, without a move and without activating it. Where the display cannot do
  // it nothing happens.
  virtual void SetOnTop(bool onTop) = 0;
  // Left top corner of the frame on the screen; a display that tells no places says 0, 0.
  virtual Point Position() = 0;
  virtual void Move(Point place) = 0;
  // The system's handle: HWND, GtkWindow*.
  virtual void* Handle() = 0;
  // Opens a menu at a place of the client area and waits until it is closed; the id of the chosen
  // entry, 0 for none.
  virtual int RunMenu(Point place, const std::vector<MenuEntry>& entries) = 0;
  // Asks for a colour and waits; nothing when it was cancelled. `onTry` is called with each colour
  // that is tried out meanwhile, where the system's dialog tells them.
  virtual std::optional<Colour> AskColour(const std::string& title, Colour start,
                                          const std::function<void(Colour)>& onTry) = 0;
  // Asks for a file to open or to save to and waits. `patterns` are "*.fp2" and the like.
  virtual std::optional<std::filesystem::path> AskFile(
      const std::string& title, bool toSave, const std::filesystem::path& start,
      const std::vector<std::string>& patterns) = 0;
  // Drags the object from the control of OnDragBegin and waits for the end. `allowed` and `effect`
  // are the bits 1 copy and 2 move.
  virtual DragEnd Drag(IDataObject* object, IDropSource* source, std::uint32_t allowed,
                       std::uint32_t& effect) = 0;

  // --- for tests and pictures of windows

  // The control on the screen, in pixels of the whole screen.
  virtual Rect OnScreen(ControlId control) = 0;
  // Writes what the window shows as a PNG file; false when it cannot.
  virtual bool SaveImage(const std::filesystem::path& file) = 0;
};

// What is still alive, for tests of leaks.
struct BackendCounts {
  int windows = 0, controls = 0, fonts = 0, drawings = 0;
  bool operator==(const BackendCounts&) const = default;
};

class Backend {
 public:
  // Null when it cannot be made. `events` outlives the window.
  virtual std::unique_ptr<NativeWindow> NewWindow(const WindowSpec& spec, WindowEvents& events) = 0;

  // The size in which a control of this kind shows the text (of a combo box or list: its widest
  // item; of an edit: its longest content) uncut, with all borders. For a slider or canvas without
  // a text the least useful size.
  virtual Size PreferredSize(ControlKind kind, const std::string& text) = 0;
  // Pixels of a distance that is `units` wide at 100 % scaling.
  virtual int Scaled(int units) = 0;
  virtual Look CurrentLook() = 0;
  // From now on the colours of this theme; WindowEvents::OnLookChanged tells all windows.
  virtual void SetTheme(ThemeChoice choice) = 0;
  // Size of the screen's free area.
  virtual Size WorkArea() = 0;
  // Two small letters: "de", "en".
  virtual std::string Language() = 0;

  // Handles the events that wait; with `wait` sleeps until there is one. False when there will
  // never be one again.
  virtual bool Pump(bool wait) = 0;
  // Runs `task` on the windows' thread, later. Any thread.
  virtual void Post(std::function<void()> task) = 0;
  // Puts the object on the clipboard; null empties it. And what lies there, or null; the caller
  // gives the reference back.
  virtual bool SetClipboard(IDataObject* object) = 0;
  virtual IDataObject* Clipboard() = 0;

  virtual BackendCounts Counts() = 0;

 protected:
  ~Backend() = default;
};

// The backend in force: the system's, opened at the first call, until a test puts another in its
// place. Null where no windows can be opened; `reason`, when given, then says why, and the log has
// it once.
FXBOX_API Backend* CurrentBackend(std::string* reason = nullptr);

// The backend in force if it is open already.
FXBOX_API Backend* OpenBackend();

// The theme of all windows, for the backend in force and those that are opened later.
FXBOX_API void ChooseTheme(ThemeChoice choice);
FXBOX_API ThemeChoice ChosenTheme();

// Puts another backend (or none) in force while it lives. For tests; not thread-safe.
class FXBOX_API ScopedBackend {
 public:
  explicit ScopedBackend(Backend* replacement);
  ~ScopedBackend();
  ScopedBackend(const ScopedBackend&) = delete;
  ScopedBackend& operator=(const ScopedBackend&) = delete;

 private:
  Backend* previous;
  bool wasReplaced;
};

// Opens the window system of this build; the one function that toolkit/windows and toolkit/gtk each
// supply. Null, and the reason, when there is none.
Backend* OpenSystemBackend(std::string& reason);

}  // namespace toolkit
