#include "toolkit/gtk/CanvasRows.h"

namespace toolkit {
namespace {

struct Row {
  GtkWidget widget;
};
struct RowClass {
  GtkWidgetClass parent;
};

GType RowType() {
  static const GType type =
      g_type_register_static_simple(GTK_TYPE_WIDGET, "FxboxCanvasRow", sizeof(RowClass), nullptr,
                                    sizeof(Row), nullptr, GTypeFlags(0));
  return type;
}

}  // namespace

// A list item has no state of being checked, so that a row which can be switched is a check box.
GtkWidget* NewCanvasRow(bool canBeSwitched) {
  const GtkAccessibleRole role =
      canBeSwitched ? GTK_ACCESSIBLE_ROLE_CHECKBOX : GTK_ACCESSIBLE_ROLE_LIST_ITEM;
  auto* const row =
      static_cast<GtkWidget*>(g_object_new(RowType(), "accessible-role", role, nullptr));
  gtk_widget_set_can_target(row, FALSE);
  return row;
}

void TellCanvasRow(GtkWidget* row, const CanvasRow& content) {
  auto* const accessible = GTK_ACCESSIBLE(row);
  gtk_accessible_update_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL, content.name.c_str(),
                                 -1);
  gtk_accessible_update_state(accessible, GTK_ACCESSIBLE_STATE_SELECTED,
                              static_cast<int>(content.isSelected), -1);
  if (content.isChecked) {
    const auto state =
        *content.isChecked ? GTK_ACCESSIBLE_TRISTATE_TRUE : GTK_ACCESSIBLE_TRISTATE_FALSE;
    gtk_accessible_update_state(accessible, GTK_ACCESSIBLE_STATE_CHECKED, state, -1);
  }
  const GtkAllocation place = {content.place.x, content.place.y, MAX(content.place.width, 1),
                               MAX(content.place.height, 1)};
  gtk_widget_size_allocate(row, &place, -1);
}

}  // namespace toolkit
