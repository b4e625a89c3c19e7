// The backend over GTK 4, and the function by which the library opens it.
#include <gtk/gtk.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <map>
#include <utility>

#include "toolkit/gtk/GtkModule.h"
#include "toolkit/gtk/GtkNativeWindow.h"
#include "toolkit/gtk/GtkTheme.h"
#include "toolkit/gtk/GtkTransfer.h"

namespace toolkit {
namespace {

// Takes events for a control that is only measured.
class NoEvents final : public WindowEvents {
 public:
  void OnValue(ControlId, int) override {}
  void OnText(ControlId, const std::string&) override {}
  void OnFocus(ControlId, bool) override {}
  bool OnKey(ControlId, const KeyEvent&) override { return false; }
  bool OnShortcut(const KeyEvent&) override { return false; }
  bool OnWheel(ControlId, double, bool) override { return false; }
  void OnMouse(ControlId, const MouseEvent&) override {}
  void OnPaint(ControlId, Painter&) override {}
  void OnDragBegin(ControlId) override {}
  void OnContextMenu(ControlId, Point) override {}
  void OnMenu(int) override {}
  void OnCloseRequest() override {}
  void OnResized(Size) override {}
  void OnMoved() override {}
  void OnLookChanged() override {}
};

Colour NamedColour(GtkStyleContext* style, const char* name, Colour otherwise) {
  GdkRGBA rgba;
  if (!gtk_style_context_lookup_color(style, name, &rgba)) return otherwise;
  const auto byte = [](float part) { return static_cast<std::uint8_t>(std::lround(part * 255)); };
  return {byte(rgba.red), byte(rgba.green), byte(rgba.blue)};
}

int Luma(Colour colour) {
  return colour.red * 299 + colour.green * 587 + colour.blue * 114;
}

class GtkBackend final : public Backend {
 public:
  std::unique_ptr<NativeWindow> NewWindow(const WindowSpec& spec, WindowEvents& events) override {
    if (!gdk_display_get_default()) return nullptr;
    return std::make_unique<GtkNativeWindow>(spec, events, counts);
  }

  Size PreferredSize(ControlKind kind, const std::string& text) override;
  int Scaled(int units) override;
  Look CurrentLook() override;
  void SetTheme(ThemeChoice choice) override { theme.Choose(choice); }
  Size WorkArea() override;
  std::string Language() override;
  bool Pump(bool wait) override;
  void Post(std::function<void()> task) override;
  bool SetClipboard(IDataObject* object) override { return PutOnClipboard(object); }
  IDataObject* Clipboard() override { return TakeFromClipboard(); }
  BackendCounts Counts() override { return counts; }

 private:
  Size Measure(ControlKind kind, const std::string& text);

  BackendCounts counts;
  GtkTheme theme;
  std::map<std::pair<ControlKind, std::string>, Size> measured;
  double measuredAt = 0;  // dots per inch
};

double DotsPerInch() {
  int dpi = 0;
  g_object_get(gtk_settings_get_default(), "gtk-xft-dpi", &dpi, nullptr);
  return dpi > 0 ? dpi / 1024.0 : 96.0;
}

Size GtkBackend::PreferredSize(ControlKind kind, const std::string& text) {
  if (const double now = DotsPerInch(); std::exchange(measuredAt, now) != now) measured.clear();
  const auto [entry, isNew] = measured.try_emplace({kind, text});
  if (isNew) entry->second = Measure(kind, text);
  return entry->second;
}

// A control that no window holds has the size that it would have in one.
Size GtkBackend::Measure(ControlKind kind, const std::string& text) {
  NoEvents none;
  ControlSpec spec;
  spec.kind = kind;
  spec.text = text;
  auto control = MakeGtkControl(1, spec, nullptr, none);
  GtkWidget* const widget = GTK_WIDGET(g_object_ref_sink(control->Widget()));
  if (kind == ControlKind::ComboBox || kind == ControlKind::List) control->SetItems({text});
  if (kind == ControlKind::Edit) {
    gtk_editable_set_width_chars(GTK_EDITABLE(widget),
                                 static_cast<int>(g_utf8_strlen(text.c_str(), -1)) + 1);
  }
  GtkRequisition natural;
  gtk_widget_get_preferred_size(widget, nullptr, &natural);
  control.reset();  // which still knows the widget
  g_object_unref(widget);
  Size least = {0, 0};
  if (kind == ControlKind::Slider) least = {Scaled(160), Scaled(24)};
  if (kind == ControlKind::Canvas) least = {Scaled(32), Scaled(32)};
  return {std::max(natural.width, least.width), std::max(natural.height, least.height)};
}

int GtkBackend::Scaled(int units) {
  return static_cast<int>(std::lround(units * DotsPerInch() / 96.0));
}

Look GtkBackend::CurrentLook() {
  GtkWidget* const probe = GTK_WIDGET(g_object_ref_sink(gtk_label_new(nullptr)));
  GtkStyleContext* const style = gtk_widget_get_style_context(probe);
  Look look;
  look.window = NamedColour(style, "theme_bg_color", {246, 245, 244});
  look.text = NamedColour(style, "theme_fg_color", {46, 52, 54});
  look.field = NamedColour(style, "theme_base_color", {255, 255, 255});
  look.line = NamedColour(style, "borders", {205, 199, 194});
  look.accent = NamedColour(style, "theme_selected_bg_color", {53, 132, 228});
  look.isDark = Luma(look.window) < Luma(look.text);
  if (look.isDark) {
    // Dark themes have them for large areas; on a canvas they are lines.
    look.line = MixedColour(look.field, look.text, 0.4);
    look.accent = MixedColour(look.accent, look.text, 0.4);
  }
  g_object_unref(probe);
  return look;
}

Size GtkBackend::WorkArea() {
  GListModel* const monitors = gdk_display_get_monitors(gdk_display_get_default());
  auto* const monitor = static_cast<GdkMonitor*>(g_list_model_get_item(monitors, 0));
  if (!monitor) return {1024, 768};
  GdkRectangle area;
  gdk_monitor_get_geometry(monitor, &area);
  g_object_unref(monitor);
  return {area.width, area.height};
}

std::string GtkBackend::Language() {
  const char* const* const names = g_get_language_names();
  const std::string name = names && names[0] ? names[0] : "";
  return name.size() < 2 || name == "C" ? "en" : name.substr(0, 2);
}

bool GtkBackend::Pump(bool wait) {
  if (!gdk_display_get_default()) return false;
  if (wait) g_main_context_iteration(nullptr, TRUE);
  while (!wait && g_main_context_pending(nullptr)) g_main_context_iteration(nullptr, FALSE);
  return true;
}

void GtkBackend::Post(std::function<void()> task) {
  const auto run = +[](gpointer data) -> gboolean {
    (*static_cast<std::function<void()>*>(data))();
    return G_SOURCE_REMOVE;
  };
  const auto free = +[](gpointer data) { delete static_cast<std::function<void()>*>(data); };
  g_idle_add_full(G_PRIORITY_DEFAULT, run, new std::function<void()>(std::move(task)), free);
}

}  // namespace
}  // namespace toolkit

// The locale of the process stays the host's.
extern "C" __attribute__((visibility("default"))) toolkit::Backend* FxboxOpenGtkBackend(
    const toolkit::GtkHost& host, std::string& reason) {
  gtk_disable_setlocale();
  // Screen readers tell programs apart by it.
  if (!g_get_prgname()) g_set_prgname(program_invocation_short_name);
  if (!gtk_init_check()) {
    reason = "there is no display that windows could be shown on";
    return nullptr;
  }
  toolkit::SetTransferHost(host);
  static toolkit::GtkBackend backend;
  return &backend;
}
