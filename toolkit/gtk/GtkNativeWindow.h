// A window of the toolkit as a window of GTK.
#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <vector>

#include "toolkit/ControlWindow.h"
#include "toolkit/gtk/GtkControls.h"

namespace toolkit {

class GtkNativeWindow final : public ControlWindow<GtkControl> {
 public:
  // What a docked window lives in.
  class Host {
   public:
    virtual void GuestChanged() = 0;  // wants another size, was hidden or shown
    virtual void GuestGone() = 0;     // it is about to be destroyed
    virtual GtkNativeWindow* Guest() = 0;

   protected:
    ~Host() = default;
  };

  // `counts` outlives the window.
  GtkNativeWindow(const WindowSpec& spec, WindowEvents& receiver, BackendCounts& counts);
  ~GtkNativeWindow() override;

  ControlId Add(const ControlSpec& spec) override;
  void SetBubble(ControlId control, const std::string& text) override;
  ControlId Focused() override;

  void SetTitle(const std::string& title) override;
  void SetClientSize(Size size) override;
  void SetMenuBar(const std::vector<MenuEntry>& entries) override;
  void SetMenuState(int entry, bool isEnabled, bool isChecked) override;
  void SetModal(bool isModal) override { gtk_window_set_modal(window, isModal); }
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

  // The window of a handle that one of ours gave; null for any other.
  static GtkNativeWindow* OfHandle(void* handle);
  // From now on the contents are the host's to show, in the window `top`; and no more. False when
  // that is this window itself.
  bool EnterHost(Host* newHost, GtkRoot* top);
  void LeaveHost();
  GtkWidget* Contents() const { return box; }
  Size WantedSize() const;

 private:
  // That is on the screen: this one, or the one that it is docked in.
  GtkWindow* TopWindow() const;
  // The guest of one of the docks, where it has the focus; else this one.
  GtkNativeWindow* WithFocus();
  bool TellShortcut(const KeyEvent& event);
  bool TellKey(guint symbol, GdkModifierType state);
  void ShowInHost(bool isShown);
  Point InPane(double x, double y) const;
  void ListenToWindow();
  void ListenToLook();
  void ListenToDrops(const WindowSpec& spec);
  bool TakeDrop(const GValue* value, double x, double y);
  int MenuBarHeight() const;
  void NameNext(const GtkControl& added);
  static gboolean ShortcutPressed(GtkEventControllerKey*, guint symbol, guint,
                                  GdkModifierType state, gpointer data);
  static gboolean CloseAsked(GtkWindow*, gpointer data);
  static gboolean KeyPressed(GtkEventControllerKey*, guint symbol, guint, GdkModifierType state,
                             gpointer data);

  WindowEvents& events;
  BackendCounts& counts;
  GtkWindow* window;
  GtkWidget* box;
  GtkWidget* menuBar = nullptr;
  Size clientSize;  // of a main window, as it was set
  GtkWidget* pane;
  Host* host = nullptr;
  bool isShownInHost = false;
  bool isTool;
  bool isOnTop;
  GtkControl* firstRadio = nullptr;  // of the group that is being made
  GtkLabel* unnamedLabel = nullptr;  // whose mnemonic goes to the next control
  gulong lookHandlers[4] = {};
};

}  // namespace toolkit
