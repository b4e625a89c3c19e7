// The controls that are ours: canvases, which the receiver paints, and docks.
#include <cmath>

#include "toolkit/gtk/CairoPainter.h"
#include "toolkit/gtk/CanvasRows.h"
#include "toolkit/gtk/GtkControls.h"
#include "toolkit/gtk/GtkNativeWindow.h"

namespace toolkit {
namespace {

// --- canvases

// What can be changed by keys is a slider to screen readers: its value is told as a text.
GtkAccessibleRole RoleOf(CanvasRole role) {
  switch (role) {
    case CanvasRole::Adjustable:
      return GTK_ACCESSIBLE_ROLE_SLIDER;
    case CanvasRole::List:
      return GTK_ACCESSIBLE_ROLE_LIST;
    case CanvasRole::Status:
      return GTK_ACCESSIBLE_ROLE_STATUS;
    case CanvasRole::Border:
      return GTK_ACCESSIBLE_ROLE_SEPARATOR;
    default:
      return GTK_ACCESSIBLE_ROLE_IMG;
  }
}

GtkWidget* NewCanvas(CanvasRole role) {
  return static_cast<GtkWidget*>(
      g_object_new(GTK_TYPE_DRAWING_AREA, "accessible-role", RoleOf(role), nullptr));
}

class CanvasControl final : public GtkControl {
 public:
  CanvasControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, NewCanvas(spec.role), receiver),
        role(spec.role),
        takesFocus(TakesFocus(spec.role)) {
    gtk_widget_set_focusable(Widget(), takesFocus);
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(Widget()), &Draw, this, nullptr);
    GtkEventController* const mouse = gtk_event_controller_legacy_new();
    Listen(mouse, "event", G_CALLBACK(&Handle));
    gtk_widget_add_controller(Widget(), mouse);
    GtkEventController* const motion = gtk_event_controller_motion_new();
    Listen(motion, "leave", G_CALLBACK(&Left));
    gtk_widget_add_controller(Widget(), motion);
  }
  ~CanvasControl() override {
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(Widget()), nullptr, nullptr, nullptr);
    DropRows();
  }

  void SetValueText(const std::string& text) override {
    const auto property = role == CanvasRole::Adjustable ? GTK_ACCESSIBLE_PROPERTY_VALUE_TEXT
                                                         : GTK_ACCESSIBLE_PROPERTY_DESCRIPTION;
    gtk_accessible_update_property(GTK_ACCESSIBLE(Widget()), property, text.c_str(), -1);
  }

  // Each row is a widget that nobody sees or clicks: it is there for screen readers alone.
  void SetRows(const std::vector<CanvasRow>& newRows) override {
    if (newRows.size() != rows.size()) DropRows();
    while (rows.size() < newRows.size()) {
      rows.push_back(NewCanvasRow(newRows[rows.size()].isChecked.has_value()));
      gtk_widget_set_parent(rows.back(), Widget());
    }
    for (std::size_t i = 0; i < rows.size(); ++i) TellCanvasRow(rows[i], newRows[i]);
  }

 private:
  static void Draw(GtkDrawingArea* area, cairo_t* cairo, int width, int height, gpointer data) {
    CairoPainter painter(GTK_WIDGET(area), cairo, {width, height});
    auto* const self = static_cast<CanvasControl*>(data);
    self->events.OnPaint(self->Id(), painter);
  }

  static gboolean Handle(GtkEventController*, GdkEvent* event, gpointer data) {
    auto* const self = static_cast<CanvasControl*>(data);
    switch (gdk_event_get_event_type(event)) {
      case GDK_BUTTON_PRESS:
        self->Press(event);
        return TRUE;
      case GDK_BUTTON_RELEASE:
        self->Tell(event, MouseAction::Release,
                   static_cast<int>(gdk_button_event_get_button(event)));
        return TRUE;
      case GDK_MOTION_NOTIFY:
        self->Tell(event, MouseAction::Move, HeldButton(event));
        return FALSE;
      default:
        return FALSE;
    }
  }

  static int HeldButton(GdkEvent* event) {
    const GdkModifierType state = gdk_event_get_modifier_state(event);
    return state & GDK_BUTTON1_MASK   ? 1
           : state & GDK_BUTTON3_MASK ? 2
           : state & GDK_BUTTON2_MASK ? 3
                                      : 0;
  }

  static void Left(GtkEventControllerMotion*, gpointer data) {
    auto* const self = static_cast<CanvasControl*>(data);
    self->events.OnMouse(self->Id(), {MouseAction::Leave, {}, 0});
  }

  // GTK's middle and right buttons are 2 and 3.
  static int ButtonNumber(guint button) { return button == 2 ? 3 : button == 3 ? 2 : 1; }

  Point PlaceOf(GdkEvent* event) const {
    double x = 0, y = 0, offsetX = 0, offsetY = 0, ownX = 0, ownY = 0;
    gdk_event_get_position(event, &x, &y);
    GtkNative* const native = gtk_widget_get_native(Widget());
    gtk_native_get_surface_transform(native, &offsetX, &offsetY);
    gtk_widget_translate_coordinates(GTK_WIDGET(native), Widget(), x - offsetX, y - offsetY, &ownX,
                                     &ownY);
    return {static_cast<int>(std::floor(ownX)), static_cast<int>(std::floor(ownY))};
  }

  void Press(GdkEvent* event) {
    if (takesFocus) gtk_widget_grab_focus(Widget());
    const guint32 time = gdk_event_get_time(event);
    const Point place = PlaceOf(event);
    const guint button = gdk_button_event_get_button(event);
    int longest = 400, farthest = 5;
    g_object_get(gtk_widget_get_settings(Widget()), "gtk-double-click-time", &longest,
                 "gtk-double-click-distance", &farthest, nullptr);
    const bool isSecond =
        button == lastButton && time - lastTime <= static_cast<guint32>(longest) &&
        std::abs(place.x - lastPlace.x) <= farthest && std::abs(place.y - lastPlace.y) <= farthest;
    lastButton = isSecond ? 0 : button;
    lastTime = time;
    lastPlace = place;
    if (button == 3) return events.OnContextMenu(Id(), place);
    Tell(event, isSecond ? MouseAction::DoublePress : MouseAction::Press, static_cast<int>(button));
  }

  void Tell(GdkEvent* event, MouseAction action, int button) {
    if (action != MouseAction::Move) button = ButtonNumber(static_cast<guint>(button));
    const GdkModifierType state = gdk_event_get_modifier_state(event);
    events.OnMouse(Id(), {action, PlaceOf(event), button, (state & GDK_SHIFT_MASK) != 0,
                          (state & GDK_CONTROL_MASK) != 0});
  }

  void DropRows() {
    for (GtkWidget* const row : rows) gtk_widget_unparent(row);
    rows.clear();
  }

  CanvasRole role;
  bool takesFocus;
  std::vector<GtkWidget*> rows;
  guint lastButton = 0;
  guint32 lastTime = 0;
  Point lastPlace;
};

// --- docks

class DockControl final : public GtkControl, public GtkNativeWindow::Host {
 public:
  DockControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_scrolled_window_new(), receiver) {}
  ~DockControl() override { DockControl::Dock(nullptr); }

  bool Dock(void* window) override {
    GtkNativeWindow* const next = GtkNativeWindow::OfHandle(window);
    if (window && !next) return false;
    if (next == guest) return true;
    if (guest) {
      gtk_scrolled_window_set_child(Scrolled(), nullptr);
      std::exchange(guest, nullptr)->LeaveHost();
    }
    if (next && next->EnterHost(this, gtk_widget_get_root(Widget()))) {
      guest = next;
      gtk_scrolled_window_set_child(Scrolled(), guest->Contents());
    }
    return guest == next;
  }
  Size DockedSize() override { return guest ? guest->WantedSize() : Size(); }

  void GuestChanged() override { events.OnDockChanged(Id()); }
  void GuestGone() override {
    gtk_scrolled_window_set_child(Scrolled(), nullptr);
    guest = nullptr;
    events.OnDockChanged(Id());
  }
  GtkNativeWindow* Guest() override { return guest; }

 private:
  GtkScrolledWindow* Scrolled() const { return GTK_SCROLLED_WINDOW(Widget()); }

  GtkNativeWindow* guest = nullptr;
};

}  // namespace

std::unique_ptr<GtkControl> MakeOwnControl(ControlId id, const ControlSpec& spec,
                                           WindowEvents& events) {
  if (spec.kind == ControlKind::Dock) return std::make_unique<DockControl>(id, spec, events);
  return std::make_unique<CanvasControl>(id, spec, events);
}

}  // namespace toolkit
