#include "toolkit/gtk/GtkTheme.h"

#include <filesystem>

namespace toolkit {
namespace {

constexpr char kPreferDark[] = "gtk-application-prefer-dark-theme";
constexpr char kThemeName[] = "gtk-theme-name";
constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kPortalSettings[] = "org.freedesktop.portal.Settings";
constexpr char kAppearance[] = "org.freedesktop.appearance";
constexpr char kScheme[] = "color-scheme";

// Where no bus runs, GIO would start one.
bool HasSessionBus() {
  if (g_getenv("DBUS_SESSION_BUS_ADDRESS")) return true;
  std::error_code error;
  return std::filesystem::exists(std::filesystem::path(g_get_user_runtime_dir()) / "bus", error);
}

std::string ThemeName(GtkSettings* settings) {
  char* name = nullptr;
  g_object_get(settings, kThemeName, &name, nullptr);
  const std::string copy = name ? name : "";
  g_free(name);
  return copy;
}

}  // namespace

GtkTheme::GtkTheme() : settings(gtk_settings_get_default()) {
  g_object_get(settings, kPreferDark, &ownPrefersDark, nullptr);
  if (HasSessionBus()) g_bus_get(G_BUS_TYPE_SESSION, nullptr, &Connected, this);
}

void GtkTheme::Connected(GObject*, GAsyncResult* result, gpointer data) {
  GDBusConnection* const connection = g_bus_get_finish(result, nullptr);
  if (!connection) return;
  g_dbus_connection_signal_subscribe(connection, kPortal, kPortalSettings, "SettingChanged",
                                     kPortalPath, kAppearance, G_DBUS_SIGNAL_FLAGS_NONE, &Changed,
                                     data, nullptr);
  g_dbus_connection_call(connection, kPortal, kPortalPath, kPortalSettings, "Read",
                         g_variant_new("(ss)", kAppearance, kScheme), G_VARIANT_TYPE("(v)"),
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &Answered, data);
}

void GtkTheme::Answered(GObject* connection, GAsyncResult* result, gpointer data) {
  GVariant* const answer =
      g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr);
  if (!answer) return;
  GVariant* value = nullptr;
  g_variant_get(answer, "(v)", &value);
  static_cast<GtkTheme*>(data)->TakeWish(value);
  g_variant_unref(value);
  g_variant_unref(answer);
}

void GtkTheme::Changed(GDBusConnection*, const char*, const char*, const char*, const char*,
                       GVariant* arguments, gpointer data) {
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssv)"))) return;
  const char* key = nullptr;
  GVariant* value = nullptr;
  g_variant_get(arguments, "(&s&sv)", nullptr, &key, &value);
  if (g_str_equal(key, kScheme)) static_cast<GtkTheme*>(data)->TakeWish(value);
  g_variant_unref(value);
}

// The answer of "Read" is wrapped once more than the value of a change.
void GtkTheme::TakeWish(GVariant* value) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARIANT)) {
    GVariant* const inner = g_variant_get_variant(value);
    TakeWish(inner);
    g_variant_unref(inner);
    return;
  }
  if (!g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32)) return;
  const guint32 number = g_variant_get_uint32(value);
  wish = number <= 2 ? static_cast<Wish>(number) : Wish::None;
  Apply();
}

void GtkTheme::Choose(ThemeChoice newChoice) {
  choice = newChoice;
  Apply();
}

// A theme that is dark by its name has a light sister of the name before "-dark".
void GtkTheme::Apply() {
  gtk_settings_reset_property(settings, kThemeName);
  const std::string name = ThemeName(settings);
  const bool isLight = choice == ThemeChoice::Light;
  if (isLight && name.ends_with("-dark")) {
    g_object_set(settings, kThemeName, name.substr(0, name.size() - 5).c_str(), nullptr);
  }
  const bool desktopIsDark = wish == Wish::None ? ownPrefersDark : wish == Wish::Dark;
  const gboolean isDark = choice == ThemeChoice::System ? desktopIsDark : !isLight;
  gboolean wasDark = FALSE;
  g_object_get(settings, kPreferDark, &wasDark, nullptr);
  if (isDark != wasDark) g_object_set(settings, kPreferDark, isDark, nullptr);
}

}  // namespace toolkit
