#include "toolkit/gtk/GtkControls.h"

#include <cmath>

#include "toolkit/gtk/CairoPainter.h"
#include "toolkit/gtk/CanvasRows.h"
#include "toolkit/gtk/GtkNativeWindow.h"
#include "toolkit/gtk/GtkText.h"
#include "toolkit/gtk/Pane.h"

namespace toolkit {
namespace {

GtkControl& ControlOf(gpointer data) {
  return *static_cast<GtkControl*>(data);
}

// --- texts

class TextControl final : public GtkControl {
 public:
  TextControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_label_new(nullptr), receiver) {
    gtk_label_set_xalign(Label(), 0);
    if (spec.kind == ControlKind::Heading) gtk_widget_add_css_class(Widget(), "heading");
    SetText(spec.text);
  }

  void SetText(const std::string& text) override {
    gtk_label_set_text_with_mnemonic(Label(), WithGtkMnemonic(text).c_str());
  }

 private:
  GtkLabel* Label() const { return GTK_LABEL(Widget()); }
};

// --- buttons

// What screen readers say: GTK would say the mnemonic's mark, and the caption twice.
void TellCaption(GtkWidget* button, const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '&' && ++i == text.size()) break;
    plain += text[i];
  }
  auto* const accessible = GTK_ACCESSIBLE(button);
  gtk_accessible_reset_relation(accessible, GTK_ACCESSIBLE_RELATION_LABELLED_BY);
  gtk_accessible_update_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL, plain.c_str(), -1);
}

class ButtonControl final : public GtkControl {
 public:
  ButtonControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_button_new_with_mnemonic(WithGtkMnemonic(spec.text).c_str()),
                   receiver) {
    Listen(Widget(), "clicked", G_CALLBACK(&Clicked));
    TellCaption(Widget(), spec.text);
  }

  void SetText(const std::string& text) override {
    gtk_button_set_label(GTK_BUTTON(Widget()), WithGtkMnemonic(text).c_str());
    TellCaption(Widget(), text);
  }

 private:
  static void Clicked(GtkButton*, gpointer data) {
    static_cast<ButtonControl*>(data)->TellValue(0);
  }
};

class ToggleControl final : public GtkControl {
 public:
  ToggleControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec,
                   gtk_toggle_button_new_with_mnemonic(WithGtkMnemonic(spec.text).c_str()),
                   receiver) {
    Listen(Widget(), "toggled", G_CALLBACK(&Toggled));
    TellCaption(Widget(), spec.text);
  }

  void SetText(const std::string& text) override {
    gtk_button_set_label(GTK_BUTTON(Widget()), WithGtkMnemonic(text).c_str());
    TellCaption(Widget(), text);
  }
  void SetValue(int value) override {
    Quietly([&] { gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(Widget()), value != 0); });
  }

 private:
  static void Toggled(GtkToggleButton* button, gpointer data) {
    static_cast<ToggleControl*>(data)->TellValue(gtk_toggle_button_get_active(button));
  }
};

// Check boxes and radio buttons; the latter tell only that they were chosen.
class CheckControl final : public GtkControl {
 public:
  CheckControl(ControlId newId, const ControlSpec& spec, GtkControl* firstRadio,
               WindowEvents& receiver)
      : GtkControl(newId, spec,
                   gtk_check_button_new_with_mnemonic(WithGtkMnemonic(spec.text).c_str()),
                   receiver) {
    if (spec.kind == ControlKind::RadioButton && firstRadio) {
      gtk_check_button_set_group(Check(), GTK_CHECK_BUTTON(firstRadio->Widget()));
    }
    Listen(Widget(), "toggled", G_CALLBACK(&Toggled));
    TellCaption(Widget(), spec.text);
  }

  void SetText(const std::string& text) override {
    gtk_check_button_set_label(Check(), WithGtkMnemonic(text).c_str());
    TellCaption(Widget(), text);
  }
  void SetValue(int value) override {
    Quietly([&] { gtk_check_button_set_active(Check(), value != 0); });
  }

 private:
  GtkCheckButton* Check() const { return GTK_CHECK_BUTTON(Widget()); }

  static void Toggled(GtkCheckButton* button, gpointer data) {
    auto* const self = static_cast<CheckControl*>(data);
    const bool isOn = gtk_check_button_get_active(button);
    if (isOn || self->Kind() == ControlKind::CheckBox) self->TellValue(isOn);
  }
};

// --- sliders

class SliderControl final : public GtkControl {
 public:
  SliderControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_scale_new_with_range(GTK_ORIENTATION_HORIZONTAL, 0, 1, 1),
                   receiver),
        look(spec.look) {
    gtk_scale_set_draw_value(Scale(), FALSE);
    gtk_scale_set_digits(Scale(), 0);
    gtk_range_set_round_digits(Range(), 0);
    gtk_scale_set_has_origin(Scale(), look == SliderLook::FromZero);
    Listen(Widget(), "value-changed", G_CALLBACK(&Moved));
  }

  void SetRange(int least, int greatest) override {
    Quietly([&] {
      gtk_range_set_range(Range(), least, greatest);
      gtk_scale_clear_marks(Scale());
      if (look == SliderLook::AroundZero) {
        gtk_scale_add_mark(Scale(), (least + greatest) / 2.0, GTK_POS_BOTTOM, nullptr);
      }
    });
  }
  void SetValue(int value) override {
    Quietly([&] { gtk_range_set_value(Range(), value); });
  }

 private:
  GtkScale* Scale() const { return GTK_SCALE(Widget()); }
  GtkRange* Range() const { return GTK_RANGE(Widget()); }

  static void Moved(GtkRange* range, gpointer data) {
    static_cast<SliderControl*>(data)->TellValue(
        static_cast<int>(std::lround(gtk_range_get_value(range))));
  }

  SliderLook look;
};

// --- edits and lists

class EditControl final : public GtkControl {
 public:
  EditControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_entry_new(), receiver) {
    gtk_entry_set_activates_default(GTK_ENTRY(Widget()), TRUE);
    gtk_editable_set_width_chars(Editable(), 0);
    Listen(Widget(), "changed", G_CALLBACK(&Changed));
  }

  void SetText(const std::string& text) override {
    Quietly([&] { gtk_editable_set_text(Editable(), text.c_str()); });
  }
  void SelectAll() override { gtk_editable_select_region(Editable(), 0, -1); }

 private:
  GtkEditable* Editable() const { return GTK_EDITABLE(Widget()); }

  static void Changed(GtkEditable* editable, gpointer data) {
    auto* const self = static_cast<EditControl*>(data);
    if (!self->isQuiet) self->events.OnText(self->Id(), gtk_editable_get_text(editable));
  }
};

std::vector<const char*> Pointers(const std::vector<std::string>& items) {
  std::vector<const char*> pointers;
  for (const std::string& item : items) pointers.push_back(item.c_str());
  pointers.push_back(nullptr);
  return pointers;
}

class ChoiceControl final : public GtkControl {
 public:
  ChoiceControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_drop_down_new_from_strings(Pointers({}).data()), receiver) {
    Listen(Widget(), "notify::selected", G_CALLBACK(&Chosen));
  }

  void SetItems(const std::vector<std::string>& items) override {
    Quietly([&] {
      GtkStringList* const model = gtk_string_list_new(Pointers(items).data());
      gtk_drop_down_set_model(DropDown(), G_LIST_MODEL(model));
      g_object_unref(model);
    });
  }
  void SetValue(int value) override {
    Quietly([&] {
      gtk_drop_down_set_selected(DropDown(),
                                 value < 0 ? GTK_INVALID_LIST_POSITION : static_cast<guint>(value));
    });
  }

 private:
  GtkDropDown* DropDown() const { return GTK_DROP_DOWN(Widget()); }

  static void Chosen(GtkDropDown* list, GParamSpec*, gpointer data) {
    const guint chosen = gtk_drop_down_get_selected(list);
    static_cast<ChoiceControl*>(data)->TellValue(
        chosen == GTK_INVALID_LIST_POSITION ? -1 : static_cast<int>(chosen));
  }
};

// A list box that scrolls.
class ListControl final : public GtkControl {
 public:
  ListControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_scrolled_window_new(), receiver),
        list(GTK_LIST_BOX(gtk_list_box_new())) {
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(Widget()), GTK_WIDGET(list));
    gtk_scrolled_window_set_has_frame(GTK_SCROLLED_WINDOW(Widget()), TRUE);
    Listen(list, "row-selected", G_CALLBACK(&Selected));
  }

  void SetItems(const std::vector<std::string>& items) override {
    Quietly([&] {
      while (GtkListBoxRow* row = gtk_list_box_get_row_at_index(list, 0)) {
        gtk_list_box_remove(list, GTK_WIDGET(row));
      }
      for (const std::string& item : items) {
        GtkWidget* const label = gtk_label_new(item.c_str());
        gtk_label_set_xalign(GTK_LABEL(label), 0);
        gtk_list_box_append(list, label);
      }
    });
  }
  void SetValue(int value) override {
    Quietly([&] {
      gtk_list_box_select_row(list,
                              value < 0 ? nullptr : gtk_list_box_get_row_at_index(list, value));
    });
  }

 private:
  static void Selected(GtkListBox*, GtkListBoxRow* row, gpointer data) {
    static_cast<ListControl*>(data)->TellValue(row ? gtk_list_box_row_get_index(row) : -1);
  }

  GtkListBox* list;
};

// --- colour buttons and canvases

class ColourControl final : public GtkControl {
 public:
  ColourControl(ControlId newId, const ControlSpec& spec, WindowEvents& receiver)
      : GtkControl(newId, spec, gtk_button_new(), receiver), swatch(gtk_drawing_area_new()) {
    gtk_button_set_child(GTK_BUTTON(Widget()), swatch);
    gtk_drawing_area_set_content_width(GTK_DRAWING_AREA(swatch), 24);
    gtk_drawing_area_set_content_height(GTK_DRAWING_AREA(swatch), 14);
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(swatch), &Draw, this, nullptr);
    Listen(Widget(), "clicked", G_CALLBACK(&Clicked));
  }
  ~ColourControl() override {
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(swatch), nullptr, nullptr, nullptr);
  }

  void SetColour(Colour newColour) override {
    colour = newColour;
    gtk_widget_queue_draw(swatch);
  }

 private:
  static void Draw(GtkDrawingArea* area, cairo_t* cairo, int width, int height, gpointer data) {
    CairoPainter painter(GTK_WIDGET(area), cairo, {width, height});
    const Colour colour = static_cast<ColourControl*>(data)->colour;
    painter.FillRect({0, 0, width, height}, MixedColour(colour, {128, 128, 128}, 0.5));
    painter.FillRect({1, 1, width - 2, height - 2}, colour);
  }
  static void Clicked(GtkButton*, gpointer data) {
    static_cast<ColourControl*>(data)->TellValue(0);
  }

  GtkWidget* swatch;
  Colour colour;
};

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

// --- what all controls tell

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
  switch (spec.kind) {
    case ControlKind::Static:
    case ControlKind::Heading:
      return std::make_unique<TextControl>(id, spec, events);
    case ControlKind::Button:
      return std::make_unique<ButtonControl>(id, spec, events);
    case ControlKind::ToggleButton:
      return std::make_unique<ToggleControl>(id, spec, events);
    case ControlKind::CheckBox:
    case ControlKind::RadioButton:
      return std::make_unique<CheckControl>(id, spec, firstRadio, events);
    case ControlKind::Slider:
      return std::make_unique<SliderControl>(id, spec, events);
    case ControlKind::Edit:
      return std::make_unique<EditControl>(id, spec, events);
    case ControlKind::ComboBox:
      return std::make_unique<ChoiceControl>(id, spec, events);
    case ControlKind::List:
      return std::make_unique<ListControl>(id, spec, events);
    case ControlKind::ColourButton:
      return std::make_unique<ColourControl>(id, spec, events);
    case ControlKind::Dock:
      return std::make_unique<DockControl>(id, spec, events);
    case ControlKind::Canvas:
      break;
  }
  return std::make_unique<CanvasControl>(id, spec, events);
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
