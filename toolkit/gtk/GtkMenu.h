// Menus and the dialogs that are the system's own.
#pragma once

#include <gtk/gtk.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/Backend.h"

namespace toolkit {

// A new menu bar for the window, floating; `onChoice` hears the entries that were chosen.
GtkWidget* NewMenuBar(GtkWidget* window, const std::vector<MenuEntry>& entries,
                      std::function<void(int)> onChoice);
// Of an entry of the window's menu bar.
void SetMenuBarState(GtkWidget* window, int entry, bool isEnabled, bool isChecked);

// Each of these waits until the person is done.
int RunPopupMenu(GtkWidget* over, Point place, const std::vector<MenuEntry>& entries);
std::optional<Colour> RunColourDialog(GtkWindow* owner, const std::string& title, Colour start,
                                      const std::function<void(Colour)>& onTry);
std::optional<std::filesystem::path> RunFileDialog(GtkWindow* owner, const std::string& title,
                                                   bool toSave, const std::filesystem::path& start,
                                                   const std::vector<std::string>& patterns);

// Handles events until `isDone`.
void RunUntil(const bool& isDone);

}  // namespace toolkit
