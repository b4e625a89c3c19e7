// The widget that holds the controls of a window, each where it was placed.
#pragma once

#include <gtk/gtk.h>

#include <functional>

#include "toolkit/Geometry.h"

namespace toolkit {

// A new pane, floating as all new widgets. `onSize` hears each new size of the pane after it was
// laid out, while the pane lives.
GtkWidget* NewPane(std::function<void(Size)> onSize);

// The pane becomes the child's parent.
void PutIntoPane(GtkWidget* pane, GtkWidget* child);
void PlaceInPane(GtkWidget* pane, GtkWidget* child, const Rect& place);
// The least size of the pane.
void SetPaneSize(GtkWidget* pane, Size size);

}  // namespace toolkit
