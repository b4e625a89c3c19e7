// The controls of a window as widgets of GTK.
#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <utility>
#include <vector>

#include "toolkit/Backend.h"

namespace toolkit {

// One control: its widget, which a pane owns once it was put there, and what it tells the receiver
// of the window's events. Nothing of the object may be looked at after an event was told: it may be
// gone.
class GtkControl {
 public:
  virtual ~GtkControl();
  GtkControl(const GtkControl&) = delete;
  GtkControl& operator=(const GtkControl&) = delete;

  GtkWidget* Widget() const { return widget; }
  ControlKind Kind() const { return kind; }
  ControlId Id() const { return id; }

  void Place(const Rect& place);
  void SetEnabled(bool enabled) { gtk_widget_set_sensitive(widget, enabled); }
  void SetVisible(bool visible) { gtk_widget_set_visible(widget, visible); }
  void Focus() { gtk_widget_grab_focus(widget); }
  void Redraw() { gtk_widget_queue_draw(widget); }
  virtual void SetText(const std::string&) {}
  virtual void SetRange(int, int) {}
  virtual void SetValue(int) {}
  virtual void SetItems(const std::vector<std::string>&) {}
  virtual void SetColour(Colour) {}
  virtual void SetValueText(const std::string& text);
  virtual void SetRows(const std::vector<CanvasRow>&) {}
  virtual bool Dock(void*) { return false; }
  virtual Size DockedSize() { return {}; }
  virtual void SelectAll() {}

 protected:
  GtkControl(ControlId controlId, const ControlSpec& spec, GtkWidget* newWidget,
             WindowEvents& receiver);

  // Connects a callback whose last argument is this control.
  void Listen(gpointer object, const char* signal, GCallback callback);
  // A change that is no event.
  template <class Change>
  void Quietly(Change change) {
    isQuiet = true;
    change();
    isQuiet = false;
  }
  void TellValue(int value) {
    if (!isQuiet) events.OnValue(id, value);
  }

  WindowEvents& events;
  bool isQuiet = false;

 private:
  void ListenToFocus();
  void ListenToKeys();
  void ListenToWheel();
  void ListenToDrag();
  void ListenToMenuButton();

  GtkWidget* widget;
  ControlKind kind;
  ControlId id;
  std::vector<std::pair<GObject*, gulong>> listening;
};

// A new control of the kind that `spec` tells. `firstRadio` is the first button of the group that
// a radio button belongs to, null for the first one itself.
std::unique_ptr<GtkControl> MakeGtkControl(ControlId id, const ControlSpec& spec,
                                           GtkControl* firstRadio, WindowEvents& events);
// The two halves of it: null for a kind that is not GTK's own, and what is left.
std::unique_ptr<GtkControl> MakeSystemControl(ControlId id, const ControlSpec& spec,
                                              GtkControl* firstRadio, WindowEvents& events);
std::unique_ptr<GtkControl> MakeOwnControl(ControlId id, const ControlSpec& spec,
                                           WindowEvents& events);

// The key of an event of GTK. Tab and keys for mnemonics are none of ours: false.
bool TakeKey(guint symbol, GdkModifierType state, KeyEvent& event);
// GTK's symbol for the key, without regard to shift.
guint SymbolOf(const KeyEvent& event);

}  // namespace toolkit
