// Light or dark windows: as somebody chose, else as the desktop has it.
#pragma once

#include <gtk/gtk.h>

#include <string>

#include "toolkit/Backend.h"

namespace toolkit {

// GTK itself knows only the desktop's theme by name. Most desktops tell light or dark apart from
// it, through their settings portal on the session's message bus, which is asked without waiting;
// without a bus there is the name alone. Lives as long as the process.
class GtkTheme {
 public:
  GtkTheme();
  GtkTheme(const GtkTheme&) = delete;
  GtkTheme& operator=(const GtkTheme&) = delete;

  void Choose(ThemeChoice newChoice);

 private:
  enum class Wish { None, Dark, Light };  // numbered as the portal does

  void TakeWish(GVariant* value);
  void Apply();
  static void Connected(GObject*, GAsyncResult* result, gpointer data);
  static void Answered(GObject* connection, GAsyncResult* result, gpointer data);
  static void Changed(GDBusConnection*, const char*, const char*, const char*, const char*,
                      GVariant* arguments, gpointer data);

  GtkSettings* settings;
  gboolean ownPrefersDark = FALSE;  // GTK's own setting
  ThemeChoice choice = ThemeChoice::System;
  Wish wish = Wish::None;
};

}  // namespace toolkit
