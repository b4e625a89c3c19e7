// A window of the toolkit as a window of the system.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "toolkit/ControlWindow.h"
#include "toolkit/windows/Controls.h"
#include "toolkit/windows/DropTarget.h"
#include "toolkit/windows/Menus.h"

namespace toolkit {

class WindowsWindow : public ControlWindow<WindowsControl> {
 public:
  // What a docked window lives in.
  class Host {
   public:
    virtual void GuestChanged() = 0;  // wants another size, was hidden or shown
    virtual void GuestGone() = 0;     // it is about to be destroyed
    // Scrolls to a part of the guest.
    virtual void ShowGuestPart(const RECT& onScreen) = 0;

   protected:
    ~Host() = default;
  };

  WindowsWindow(const WindowSpec& spec, WindowEvents& receiver, WindowsSystem& windowsSystem);
  ~WindowsWindow() override;
  bool IsMade() const { return window != nullptr; }

  ControlId Add(const ControlSpec& spec) override;
  void SetBubble(ControlId control, const std::string& text) override;
  ControlId Focused() override;

  void SetTitle(const std::string& title) override;
  void SetClientSize(Size size) override;
  void SetMenuBar(const std::vector<MenuEntry>& entries) override;
  void SetMenuState(int entry, bool isEnabled, bool isChecked) override;
  void SetModal(bool isModal) override;
  void Show(bool activate) override;
  void Hide() override;
  bool IsVisible() override;
  void SetOnTop(bool onTop) override;
  Point Position() override;
  void Move(Point place) override;
  void* Handle() override { return window; }
  int RunMenu(Point place, const std::vector<MenuEntry>& entries) override;
  std::optional<Colour> AskColour(const std::string& title, Colour start,
                                  const std::function<void(Colour)>& onTry) override;
  std::optional<std::filesystem::path> AskFile(const std::string& title, bool toSave,
                                               const std::filesystem::path& start,
                                               const std::vector<std::string>& patterns) override;
  DragEnd Drag(IDataObject* object, IDropSource* source, std::uint32_t allowed,
               std::uint32_t& effect) override;
  Rect OnScreen(ControlId control) override;
  bool SaveImage(const std::filesystem::path& file) override;

  // The window that a message on its way to a window or control belongs to; null for others.
  static WindowsWindow* Of(HWND windowOrControl);
  // The window of a handle that one of ours gave; null for any other.
  static WindowsWindow* OfHandle(void* handle);
  // From now on the window is a part of `place`, which the host puts it in; and no more. False when
  // that is a part of this window itself.
  bool EnterHost(Host* newHost, HWND place);
  void LeaveHost();
  void PlaceInHost(const Rect& place);
  Size WantedSize() const;
  // A control has the focus now: where its window is docked, the dock shows it.
  static void Reveal(HWND control);

  // Takes a message that the thread is about to handle; true when it is done with.
  static bool TakeMessage(MSG& message);
  // Where theme, font or scale have changed, gives all windows of the thread the new ones.
  static void TakeLook(WindowsSystem& system);

  static void RegisterClasses();
  static void UnregisterClasses();

 private:
  static LRESULT CALLBACK Procedure(HWND handle, UINT message, WPARAM wide, LPARAM more);
  LRESULT Handle(HWND handle, UINT message, WPARAM wide, LPARAM more);
  LRESULT HandleCommand(WPARAM wide, LPARAM more);
  LRESULT HandleNotice(const NMHDR& notice, LPARAM more);
  LRESULT HandleDrawing(UINT message, WPARAM wide, LPARAM more);
  LRESULT HandleWindow(HWND handle, UINT message, WPARAM wide, LPARAM more);
  LRESULT ColoursOf(UINT message, HDC device);
  bool RestoreFocus(WPARAM activation);
  HWND TopWindow() const { return GetAncestor(window, GA_ROOT); }
  // That this one is docked in; null without one.
  WindowsWindow* Outer() const;
  void ShowLook();
  void ShowMenuBar();
  void FillMenuBar();
  WindowsControl* ByHandle(HWND handle) const;
  bool TellShortcut(const MSG& message);
  bool TellKey(const MSG& message);
  static bool WantsItself(const WindowsControl& control, Key key);

  WindowEvents& events;
  WindowsSystem& system;
  HWND window = nullptr;
  HWND bubbles = nullptr;
  HWND lastFocus = nullptr;
  int defaultButton = 0;
  bool wasRadio = false;  // the control that was made last
  std::vector<MenuEntry> barEntries;
  std::unique_ptr<WindowsMenu> bar;
  std::unique_ptr<DropRegistration> drops;
  Host* host = nullptr;
  Size wanted;             // of the client area, as it was set last
  LONG_PTR freeStyle = 0;  // outside of docks
  HWND freeOwner = nullptr;
};

}  // namespace toolkit
