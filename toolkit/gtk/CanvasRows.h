// Rows of a canvas that is a list, for screen readers.
#pragma once

#include <gtk/gtk.h>

#include "toolkit/CanvasRole.h"

namespace toolkit {

// A widget that shows nothing and takes nothing, floating as all new widgets.
GtkWidget* NewCanvasRow(bool canBeSwitched);
void TellCanvasRow(GtkWidget* row, const CanvasRow& content);

}  // namespace toolkit
