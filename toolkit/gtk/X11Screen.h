// Places of windows on an X11 screen, which GTK itself does not tell. On other displays all this
// does nothing.
#pragma once

#include <gtk/gtk.h>

#include "toolkit/Geometry.h"

namespace toolkit {

// Left top corner of the window's client area, in pixels of the screen; 0, 0 where it is unknown.
Point ClientOnScreen(GtkWindow* window);
void MoveOnScreen(GtkWindow* window, Point place);
// Asks the window manager to keep the window above others.
void SetAboveOthers(GtkWindow* window, bool above);

}  // namespace toolkit
