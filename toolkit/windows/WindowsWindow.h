// A window of the toolkit as a window of the system.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "toolkit/ControlWindow.h"
#include "toolkit/windows/Controls.h"
#include "toolkit/windows/Menus.h"

namespace toolkit {

class WindowsWindow : public ControlWindow<WindowsControl> {
 public:
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
};

}  // namespace toolkit
