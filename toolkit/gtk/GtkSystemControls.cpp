// The controls that GTK draws: texts, buttons, sliders, edits and lists.
#include <cmath>

#include "toolkit/gtk/CairoPainter.h"
#include "toolkit/gtk/GtkControls.h"
#include "toolkit/gtk/GtkText.h"

namespace toolkit {
namespace {

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
// --- colour buttons

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

}  // namespace

std::unique_ptr<GtkControl> MakeSystemControl(ControlId id, const ControlSpec& spec,
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
    case ControlKind::Canvas:
    case ControlKind::Dock:
      break;
  }
  return nullptr;
}

}  // namespace toolkit
