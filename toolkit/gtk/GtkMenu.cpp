#include "toolkit/gtk/GtkMenu.h"

#include <cmath>
#include <utility>

#include "toolkit/gtk/GtkControls.h"
#include "toolkit/gtk/GtkText.h"

namespace toolkit {
namespace {

constexpr char kGroup[] = "fxbox";

std::string ActionName(int id) {
  return "entry" + std::to_string(id);
}

// The shortcut as GTK's menus name it; it is only shown there, since an action of that name alone
// listens to no key.
std::string Accelerator(const KeyEvent& shortcut) {
  if (shortcut.key == Key::Other) return {};
  int state = 0;
  if (shortcut.control) state |= GDK_CONTROL_MASK;
  if (shortcut.shift) state |= GDK_SHIFT_MASK;
  if (shortcut.alt) state |= GDK_ALT_MASK;
  char* const name = gtk_accelerator_name(SymbolOf(shortcut), static_cast<GdkModifierType>(state));
  const std::string accelerator = name;
  g_free(name);
  return accelerator;
}

void Choose(GSimpleAction* action, GVariant*, gpointer data) {
  const std::string name = g_action_get_name(G_ACTION(action));
  (*static_cast<std::function<void(int)>*>(data))(std::stoi(name.substr(ActionName(0).size() - 1)));
}

void DeleteChoice(gpointer data, GClosure*) {
  delete static_cast<std::function<void(int)>*>(data);
}

void AddAction(GSimpleActionGroup* group, const MenuEntry& entry,
               const std::function<void(int)>& onChoice) {
  const std::string name = ActionName(entry.id);
  GSimpleAction* const action =
      entry.hasMark || entry.isChecked
          ? g_simple_action_new_stateful(name.c_str(), nullptr,
                                         g_variant_new_boolean(entry.isChecked))
          : g_simple_action_new(name.c_str(), nullptr);
  g_simple_action_set_enabled(action, entry.isEnabled);
  g_signal_connect_data(action, "activate", G_CALLBACK(&Choose),
                        new std::function<void(int)>(onChoice), DeleteChoice, GConnectFlags(0));
  g_action_map_add_action(G_ACTION_MAP(group), G_ACTION(action));
  g_object_unref(action);
}

void AppendEntry(GMenu* section, const MenuEntry& entry) {
  const std::string action = std::string(kGroup) + "." + ActionName(entry.id);
  GMenuItem* const item = g_menu_item_new(WithGtkMnemonic(entry.text).c_str(), action.c_str());
  const std::string accelerator = Accelerator(entry.shortcut);
  if (!accelerator.empty()) {
    g_menu_item_set_attribute(item, "accel", "s", accelerator.c_str());
  }
  g_menu_append_item(section, item);
  g_object_unref(item);
}

// Entries between separators are sections of GTK's.
GMenu* NewMenu(const std::vector<MenuEntry>& entries, GSimpleActionGroup* actions,
               const std::function<void(int)>& onChoice) {
  GMenu* const menu = g_menu_new();
  GMenu* section = g_menu_new();
  const auto close = [&] {
    if (g_menu_model_get_n_items(G_MENU_MODEL(section)) > 0) {
      g_menu_append_section(menu, nullptr, G_MENU_MODEL(section));
    }
    g_object_unref(section);
  };
  for (const MenuEntry& entry : entries) {
    if (!entry.below.empty()) {
      GMenu* const below = NewMenu(entry.below, actions, onChoice);
      g_menu_append_submenu(section, WithGtkMnemonic(entry.text).c_str(), G_MENU_MODEL(below));
      g_object_unref(below);
    } else if (entry.id == 0) {
      close();
      section = g_menu_new();
    } else {
      AddAction(actions, entry, onChoice);
      AppendEntry(section, entry);
    }
  }
  close();
  return menu;
}

GdkRGBA Rgba(Colour colour) {
  const auto part = [](std::uint8_t byte) { return static_cast<float>(byte) / 255.0f; };
  return {part(colour.red), part(colour.green), part(colour.blue), 1.0f};
}

Colour ColourOf(GtkColorChooser* chooser) {
  GdkRGBA rgba;
  gtk_color_chooser_get_rgba(chooser, &rgba);
  const auto byte = [](float part) { return static_cast<std::uint8_t>(std::lround(part * 255)); };
  return {byte(rgba.red), byte(rgba.green), byte(rgba.blue)};
}

// The answer of one of GTK's dialogs.
struct Answer {
  bool isDone = false;
  int response = GTK_RESPONSE_CANCEL;

  static void Take(gpointer, int response, gpointer data) {
    auto* const answer = static_cast<Answer*>(data);
    answer->response = response;
    answer->isDone = true;
  }
};

void AddFilters(GtkFileChooser* chooser, const std::vector<std::string>& patterns) {
  if (patterns.empty()) return;
  GtkFileFilter* const filter = gtk_file_filter_new();
  std::string name;
  for (const std::string& pattern : patterns) {
    gtk_file_filter_add_pattern(filter, pattern.c_str());
    name += (name.empty() ? "" : ", ") + pattern;
  }
  gtk_file_filter_set_name(filter, name.c_str());
  gtk_file_chooser_add_filter(chooser, filter);
  g_object_unref(filter);
}

// A folder, or a file of which the name is proposed when it is to be saved.
void SetStart(GtkFileChooser* chooser, bool toSave, const std::filesystem::path& start) {
  if (start.empty()) return;
  std::error_code error;
  const bool isFolder = std::filesystem::is_directory(start, error);
  const auto folder = isFolder ? start : start.parent_path();
  GFile* const file = g_file_new_for_path(folder.empty() ? "." : folder.c_str());
  gtk_file_chooser_set_current_folder(chooser, file, nullptr);
  g_object_unref(file);
  if (toSave && !isFolder) gtk_file_chooser_set_current_name(chooser, start.filename().c_str());
}

}  // namespace

void RunUntil(const bool& isDone) {
  while (!isDone) g_main_context_iteration(nullptr, TRUE);
}

GtkWidget* NewMenuBar(GtkWidget* window, const std::vector<MenuEntry>& entries,
                      std::function<void(int)> onChoice) {
  GSimpleActionGroup* const actions = g_simple_action_group_new();
  GMenu* const menu = g_menu_new();
  for (const MenuEntry& entry : entries) {
    GMenu* const below = NewMenu(entry.below, actions, onChoice);
    g_menu_append_submenu(menu, WithGtkMnemonic(entry.text).c_str(), G_MENU_MODEL(below));
    g_object_unref(below);
  }
  gtk_widget_insert_action_group(window, kGroup, G_ACTION_GROUP(actions));
  g_object_set_data_full(G_OBJECT(window), kGroup, actions, g_object_unref);
  GtkWidget* const bar = gtk_popover_menu_bar_new_from_model(G_MENU_MODEL(menu));
  g_object_unref(menu);
  return bar;
}

void SetMenuBarState(GtkWidget* window, int entry, bool isEnabled, bool isChecked) {
  auto* const actions = static_cast<GActionMap*>(g_object_get_data(G_OBJECT(window), kGroup));
  GAction* const action =
      actions ? g_action_map_lookup_action(actions, ActionName(entry).c_str()) : nullptr;
  if (!action) return;
  g_simple_action_set_enabled(G_SIMPLE_ACTION(action), isEnabled);
  if (g_action_get_state_type(action)) {
    g_simple_action_set_state(G_SIMPLE_ACTION(action), g_variant_new_boolean(isChecked));
  }
}

// The choice comes after the menu has closed, so the menu waits for the events that are under way.
int RunPopupMenu(GtkWidget* over, Point place, const std::vector<MenuEntry>& entries) {
  int chosen = 0;
  bool isDone = false;
  GSimpleActionGroup* const actions = g_simple_action_group_new();
  GMenu* const menu = NewMenu(entries, actions, [&chosen](int id) { chosen = id; });
  GtkWidget* const popover =
      gtk_popover_menu_new_from_model_full(G_MENU_MODEL(menu), GTK_POPOVER_MENU_NESTED);
  g_object_unref(menu);
  gtk_widget_insert_action_group(popover, kGroup, G_ACTION_GROUP(actions));
  gtk_widget_set_parent(popover, over);
  const GdkRectangle at = {place.x, place.y, 1, 1};
  gtk_popover_set_pointing_to(GTK_POPOVER(popover), &at);
  gtk_popover_set_has_arrow(GTK_POPOVER(popover), FALSE);
  gtk_widget_set_halign(popover, GTK_ALIGN_START);
  const auto closed = +[](GtkPopover*, gpointer data) { *static_cast<bool*>(data) = true; };
  g_signal_connect(popover, "closed", G_CALLBACK(closed), &isDone);
  gtk_popover_popup(GTK_POPOVER(popover));
  RunUntil(isDone);
  while (g_main_context_pending(nullptr)) g_main_context_iteration(nullptr, FALSE);
  gtk_widget_unparent(popover);
  g_object_unref(actions);
  return chosen;
}

std::optional<Colour> RunColourDialog(GtkWindow* owner, const std::string& title, Colour start,
                                      const std::function<void(Colour)>& onTry) {
  GtkWidget* const dialog = gtk_color_chooser_dialog_new(title.c_str(), owner);
  auto* const chooser = GTK_COLOR_CHOOSER(dialog);
  const GdkRGBA rgba = Rgba(start);
  gtk_color_chooser_set_use_alpha(chooser, FALSE);
  gtk_color_chooser_set_rgba(chooser, &rgba);
  gtk_window_set_modal(GTK_WINDOW(dialog), TRUE);
  const auto tried = +[](GtkColorChooser* asked, GParamSpec*, gpointer data) {
    const auto& tell = *static_cast<const std::function<void(Colour)>*>(data);
    if (tell) tell(ColourOf(asked));
  };
  auto tell = onTry;
  g_signal_connect(dialog, "notify::rgba", G_CALLBACK(tried), &tell);
  Answer answer;
  g_signal_connect(dialog, "response", G_CALLBACK(&Answer::Take), &answer);
  gtk_window_present(GTK_WINDOW(dialog));
  RunUntil(answer.isDone);
  const Colour chosen = ColourOf(chooser);
  gtk_window_destroy(GTK_WINDOW(dialog));
  if (answer.response != GTK_RESPONSE_OK) return std::nullopt;
  return chosen;
}

std::optional<std::filesystem::path> RunFileDialog(GtkWindow* owner, const std::string& title,
                                                   bool toSave, const std::filesystem::path& start,
                                                   const std::vector<std::string>& patterns) {
  GtkFileChooserNative* const dialog = gtk_file_chooser_native_new(
      title.c_str(), owner, toSave ? GTK_FILE_CHOOSER_ACTION_SAVE : GTK_FILE_CHOOSER_ACTION_OPEN,
      nullptr, nullptr);
  auto* const chooser = GTK_FILE_CHOOSER(dialog);
  AddFilters(chooser, patterns);
  SetStart(chooser, toSave, start);
  gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(dialog), TRUE);
  Answer answer;
  g_signal_connect(dialog, "response", G_CALLBACK(&Answer::Take), &answer);
  gtk_native_dialog_show(GTK_NATIVE_DIALOG(dialog));
  RunUntil(answer.isDone);
  std::optional<std::filesystem::path> chosen;
  if (answer.response == GTK_RESPONSE_ACCEPT) {
    GFile* const file = gtk_file_chooser_get_file(chooser);
    if (char* const path = file ? g_file_get_path(file) : nullptr) {
      chosen = path;
      g_free(path);
    }
    if (file) g_object_unref(file);
  }
  g_object_unref(dialog);
  return chosen;
}

}  // namespace toolkit
