// A window of the toolkit as a window of the system.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "toolkit/windows/Controls.h"

namespace toolkit {

class WindowsWindow : public NativeWindow {
 public:
  WindowsWindow(const WindowSpec& spec, WindowEvents& receiver, WindowsSystem& windowsSystem);
  ~WindowsWindow() override;
  bool IsMade() const { return window != nullptr; }

  ControlId Add(const ControlSpec& spec) override;
  void Place(ControlId control, const Rect& place) override;
  void SetText(ControlId control, const std::string& text) override;
  void SetRange(ControlId slider, int least, int greatest) override;
  void SetValue(ControlId control, int value) override;
  void SetItems(ControlId control, const std::vector<std::string>& items) override;
  void SetColour(ControlId colourButton, Colour colour) override;
  void SetEnabled(ControlId control, bool enabled) override;
  void SetVisible(ControlId control, bool visible) override;
  // The system's screen readers read sliders and edits by themselves.
  void SetValueText(ControlId, const std::string&) override {}
  void SetBubble(ControlId control, const std::string& text) override;
  void Focus(ControlId control) override;
  ControlId Focused() override;
  void SelectAll(ControlId edit) override;
  void Redraw(ControlId canvas) override;

  void SetTitle(const std::string& title) override;
  void SetClientSize(Size size) override;
  void SetMenuBar(const std::vector<MenuEntry>& entries) override;
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

  static void RegisterClasses();
  static void UnregisterClasses();

 private:
  static LRESULT CALLBACK Procedure(HWND handle, UINT message, WPARAM wide, LPARAM more);
  LRESULT Handle(HWND handle, UINT message, WPARAM wide, LPARAM more);
  LRESULT HandleCommand(WPARAM wide, LPARAM more);
  LRESULT HandleNotice(const NMHDR& notice, LPARAM more);
  LRESULT ColoursOf(UINT message, HDC device);
  void TakeLook();
  WindowsControl* Find(ControlId control) const;
  WindowsControl* ByHandle(HWND handle) const;
  bool TellKey(const MSG& message);
  static bool WantsItself(const WindowsControl& control, Key key);

  WindowEvents& events;
  WindowsSystem& system;
  HWND window = nullptr;
  HWND bubbles = nullptr;
  HWND lastFocus = nullptr;
  int defaultButton = 0;
  bool wasRadio = false;  // the control that was made last
  std::vector<std::unique_ptr<WindowsControl>> controls;
};

}  // namespace toolkit
