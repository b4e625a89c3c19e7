#include "toolkit/gtk/X11Screen.h"

#include <gdk/x11/gdkx.h>

namespace toolkit {
namespace {

// The window as X11 knows it.
struct Known {
  Display* display = nullptr;
  Window window = 0;
  explicit operator bool() const { return display != nullptr; }
};

Known Find(GtkWindow* window) {
  GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(window));
  if (!surface || !GDK_IS_X11_SURFACE(surface)) return {};
  return {GDK_SURFACE_XDISPLAY(surface), GDK_SURFACE_XID(surface)};
}

}  // namespace

Point ClientOnScreen(GtkWindow* window) {
  const Known known = Find(window);
  if (!known) return {};
  int x = 0, y = 0;
  Window child = 0;
  XTranslateCoordinates(known.display, known.window, DefaultRootWindow(known.display), 0, 0, &x, &y,
                        &child);
  return {x, y};
}

void MoveOnScreen(GtkWindow* window, Point place) {
  if (const Known known = Find(window)) {
    XMoveWindow(known.display, known.window, place.x, place.y);
    XFlush(known.display);
  }
}

void SetAboveOthers(GtkWindow* window, bool above) {
  const Known known = Find(window);
  if (!known) return;
  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = known.window;
  event.xclient.message_type = XInternAtom(known.display, "_NET_WM_STATE", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = above ? 1 : 0;  // add, remove
  event.xclient.data.l[1] =
      static_cast<long>(XInternAtom(known.display, "_NET_WM_STATE_ABOVE", False));
  event.xclient.data.l[3] = 1;  // asked by a program
  XSendEvent(known.display, DefaultRootWindow(known.display), False,
             SubstructureRedirectMask | SubstructureNotifyMask, &event);
  XFlush(known.display);
}

}  // namespace toolkit
