#include "toolkit/gtk/GtkControls.h"

#include "toolkit/gtk/Pane.h"

namespace toolkit {
namespace {

GtkControl& ControlOf(gpointer data) {
  return *static_cast<GtkControl*>(data);
}

bool TellsKeys(ControlKind kind) {
  return kind == ControlKind::Slider || kind == ControlKind::Edit || kind == ControlKind::Canvas;
}

}  // namespace

GtkControl::GtkControl(ControlId controlId, const ControlSpec& spec, GtkWidget* newWidget,
                       WindowEvents& receiver)
    : events(receiver), widget(newWidget), kind(spec.kind), id(controlId) {
  if (!spec.name.empty()) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   spec.name.c_str(), -1);
  }
  const bool isStill = kind == ControlKind::Static || kind == ControlKind::Heading;
  if (isStill || kind == ControlKind::Dock) return;
  ListenToFocus();
  if (TellsKeys(kind)) ListenToKeys();
  if (kind != ControlKind::List) ListenToWheel();
  if (spec.canDrag) ListenToDrag();
  if (kind != ControlKind::Canvas && kind != ControlKind::Edit) ListenToMenuButton();
}

GtkControl::~GtkControl() {
  for (const auto& [object, handler] : listening) {
    g_signal_handler_disconnect(object, handler);
    g_object_unref(object);
  }
}

void GtkControl::Listen(gpointer object, const char* signal, GCallback callback) {
  const gulong handler = g_signal_connect(object, signal, callback, this);
  listening.emplace_back(G_OBJECT(g_object_ref(object)), handler);
}

void GtkControl::Place(const Rect& place) {
  PlaceInPane(gtk_widget_get_parent(widget), widget, place);
}

void GtkControl::SetValueText(const std::string& text) {
  if (kind != ControlKind::Slider) return;
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_VALUE_TEXT,
                                 text.c_str(), -1);
}

void GtkControl::ListenToFocus() {
  GtkEventController* const controller = gtk_event_controller_focus_new();
  const auto enter = +[](GtkEventControllerFocus*, gpointer data) {
    ControlOf(data).events.OnFocus(ControlOf(data).id, true);
  };
  const auto leave = +[](GtkEventControllerFocus*, gpointer data) {
    ControlOf(data).events.OnFocus(ControlOf(data).id, false);
  };
  Listen(controller, "enter", G_CALLBACK(enter));
  Listen(controller, "leave", G_CALLBACK(leave));
  gtk_widget_add_controller(widget, controller);
}

void GtkControl::ListenToKeys() {
  GtkEventController* const controller = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
  const auto pressed = +[](GtkEventControllerKey*, guint symbol, guint, GdkModifierType state,
                           gpointer data) -> gboolean {
    KeyEvent event;
    return TakeKey(symbol, state, event) && ControlOf(data).events.OnKey(ControlOf(data).id, event);
  };
  Listen(controller, "key-pressed", G_CALLBACK(pressed));
  gtk_widget_add_controller(widget, controller);
}

namespace {

// The notches that a control does not use move what it lies in.
void ScrollAround(GtkWidget* widget, double notches) {
  GtkWidget* const around = gtk_widget_get_ancestor(widget, GTK_TYPE_SCROLLED_WINDOW);
  if (!around) return;
  GtkAdjustment* const place = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(around));
  const double step = gtk_adjustment_get_page_size(place) / 4;
  gtk_adjustment_set_value(place, gtk_adjustment_get_value(place) + notches * step);
}

}  // namespace

// Whether the receiver has used the notches or not, the control does not turn by itself.
void GtkControl::ListenToWheel() {
  GtkEventController* const controller =
      gtk_event_controller_scroll_new(GTK_EVENT_CONTROLLER_SCROLL_VERTICAL);
  gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
  const auto scrolled =
      +[](GtkEventControllerScroll*, double, double notches, gpointer data) -> gboolean {
    const GtkControl& control = ControlOf(data);
    GtkWidget* const turned = GTK_WIDGET(g_object_ref(control.widget));
    const bool isUsed = control.events.OnWheel(control.id, -notches, gtk_widget_has_focus(turned));
    if (!isUsed) ScrollAround(turned, notches);
    g_object_unref(turned);
    return TRUE;
  };
  Listen(controller, "scroll", G_CALLBACK(scrolled));
  gtk_widget_add_controller(widget, controller);
}

void GtkControl::ListenToDrag() {
  GtkGesture* const gesture = gtk_gesture_drag_new();
  const auto moved = +[](GtkGestureDrag* drag, double x, double y, gpointer data) {
    GtkControl& control = ControlOf(data);
    const bool isFar =
        gtk_drag_check_threshold(control.widget, 0, 0, static_cast<int>(x), static_cast<int>(y));
    if (!isFar) return;
    gtk_gesture_set_state(GTK_GESTURE(drag), GTK_EVENT_SEQUENCE_CLAIMED);
    gtk_event_controller_reset(GTK_EVENT_CONTROLLER(drag));
    control.events.OnDragBegin(control.id);
  };
  Listen(gesture, "drag-update", G_CALLBACK(moved));
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(gesture), GTK_PHASE_CAPTURE);
  gtk_widget_add_controller(widget, GTK_EVENT_CONTROLLER(gesture));
}

void GtkControl::ListenToMenuButton() {
  GtkGesture* const gesture = gtk_gesture_click_new();
  gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(gesture), 3);
  const auto pressed = +[](GtkGestureClick*, int, double x, double y, gpointer data) {
    const GtkControl& control = ControlOf(data);
    control.events.OnContextMenu(control.id, {static_cast<int>(x), static_cast<int>(y)});
  };
  Listen(gesture, "pressed", G_CALLBACK(pressed));
  gtk_widget_add_controller(widget, GTK_EVENT_CONTROLLER(gesture));
}

std::unique_ptr<GtkControl> MakeGtkControl(ControlId id, const ControlSpec& spec,
                                           GtkControl* firstRadio, WindowEvents& events) {
  auto control = MakeSystemControl(id, spec, firstRadio, events);
  return control ? std::move(control) : MakeOwnControl(id, spec, events);
}

namespace {

struct NamedKey {
  guint symbol;
  Key key;
};
constexpr NamedKey kKeys[] = {
    {GDK_KEY_Left, Key::Left},
    {GDK_KEY_KP_Left, Key::Left},
    {GDK_KEY_Right, Key::Right},
    {GDK_KEY_KP_Right, Key::Right},
    {GDK_KEY_Up, Key::Up},
    {GDK_KEY_KP_Up, Key::Up},
    {GDK_KEY_Down, Key::Down},
    {GDK_KEY_KP_Down, Key::Down},
    {GDK_KEY_Page_Up, Key::PageUp},
    {GDK_KEY_KP_Page_Up, Key::PageUp},
    {GDK_KEY_Page_Down, Key::PageDown},
    {GDK_KEY_KP_Page_Down, Key::PageDown},
    {GDK_KEY_Home, Key::Home},
    {GDK_KEY_KP_Home, Key::Home},
    {GDK_KEY_End, Key::End},
    {GDK_KEY_KP_End, Key::End},
    {GDK_KEY_Return, Key::Enter},
    {GDK_KEY_KP_Enter, Key::Enter},
    {GDK_KEY_Escape, Key::Escape},
    {GDK_KEY_space, Key::Space},
    {GDK_KEY_Delete, Key::Delete},
    {GDK_KEY_KP_Delete, Key::Delete},
    {GDK_KEY_Insert, Key::Insert},
    {GDK_KEY_KP_Insert, Key::Insert},
    {GDK_KEY_BackSpace, Key::Backspace},
    {GDK_KEY_F1, Key::F1},
    {GDK_KEY_F2, Key::F2},
    {GDK_KEY_F3, Key::F3},
    {GDK_KEY_F4, Key::F4},
    {GDK_KEY_F5, Key::F5},
    {GDK_KEY_F6, Key::F6},
    {GDK_KEY_F7, Key::F7},
    {GDK_KEY_F8, Key::F8},
    {GDK_KEY_F9, Key::F9},
    {GDK_KEY_F10, Key::F10},
    {GDK_KEY_F11, Key::F11},
    {GDK_KEY_F12, Key::F12},
};

}  // namespace

bool TakeKey(guint symbol, GdkModifierType state, KeyEvent& event) {
  if (symbol == GDK_KEY_Tab || symbol == GDK_KEY_ISO_Left_Tab) return false;
  event.shift = (state & GDK_SHIFT_MASK) != 0;
  event.control = (state & GDK_CONTROL_MASK) != 0;
  event.alt = (state & GDK_ALT_MASK) != 0;
  for (const NamedKey& named : kKeys) {
    if (named.symbol == symbol) event.key = named.key;
  }
  event.character = gdk_keyval_to_unicode(symbol);
  const bool isLetter = event.key == Key::Other && event.character >= 32;
  if (isLetter) event.key = Key::Character;
  return !(isLetter && event.alt);
}

guint SymbolOf(const KeyEvent& event) {
  for (const NamedKey& named : kKeys) {
    if (named.key == event.key) return named.symbol;
  }
  return gdk_unicode_to_keyval(event.character);
}

}  // namespace toolkit
