#include "toolkit/gtk/GtkNativeWindow.h"

#include <cmath>

#include "toolkit/gtk/GtkMenu.h"
#include "toolkit/gtk/GtkTransfer.h"
#include "toolkit/gtk/Pane.h"
#include "toolkit/gtk/X11Screen.h"

namespace toolkit {
namespace {

constexpr char kOwnData[] = "fxbox-window";
constexpr const char* kLookProperties[] = {"notify::gtk-theme-name",
                                           "notify::gtk-application-prefer-dark-theme",
                                           "notify::gtk-font-name", "notify::gtk-xft-dpi"};

bool CanHaveMnemonic(ControlKind kind) {
  return kind == ControlKind::Slider || kind == ControlKind::Edit ||
         kind == ControlKind::ComboBox || kind == ControlKind::List ||
         kind == ControlKind::ColourButton || kind == ControlKind::Canvas;
}

}  // namespace

GtkNativeWindow::GtkNativeWindow(const WindowSpec& spec, WindowEvents& receiver,
                                 BackendCounts& backendCounts)
    : events(receiver),
      counts(backendCounts),
      window(GTK_WINDOW(gtk_window_new())),
      box(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)),
      pane(NewPane([this](Size size) { events.OnResized(size); })),
      isTool(spec.isTool),
      isOnTop(spec.isOnTop) {
  ++counts.windows;
  gtk_window_set_title(window, spec.title.c_str());
  gtk_window_set_resizable(window, !isTool);
  if (spec.owner) {
    const GtkNativeWindow* const owner = OfHandle(spec.owner);
    gtk_window_set_transient_for(window,
                                 owner ? owner->TopWindow() : static_cast<GtkWindow*>(spec.owner));
  }
  gtk_widget_set_vexpand(pane, TRUE);
  gtk_widget_set_hexpand(pane, TRUE);
  g_object_ref_sink(box);  // which a dock may show in the window's place
  g_object_set_data(G_OBJECT(window), kOwnData, this);
  gtk_box_append(GTK_BOX(box), pane);
  gtk_window_set_child(window, box);
  ListenToWindow();
  ListenToLook();
  if (spec.takesFiles || spec.takesObjects) ListenToDrops(spec);
}

GtkNativeWindow::~GtkNativeWindow() {
  for (const gulong handler : lookHandlers) {
    g_signal_handler_disconnect(gtk_widget_get_settings(GTK_WIDGET(window)), handler);
  }
  if (host) std::exchange(host, nullptr)->GuestGone();
  counts.controls -= static_cast<int>(controls.size());
  controls.clear();
  gtk_window_destroy(window);
  g_object_unref(box);
  --counts.windows;
}

// The handlers on the window itself end with it.
void GtkNativeWindow::ListenToWindow() {
  g_signal_connect(window, "close-request", G_CALLBACK(&CloseAsked), this);
  GtkEventController* const keys = gtk_event_controller_key_new();
  g_signal_connect(keys, "key-pressed", G_CALLBACK(&KeyPressed), this);
  gtk_widget_add_controller(GTK_WIDGET(window), keys);
  GtkEventController* const shortcuts = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(shortcuts, GTK_PHASE_CAPTURE);
  g_signal_connect(shortcuts, "key-pressed", G_CALLBACK(&ShortcutPressed), this);
  gtk_widget_add_controller(GTK_WIDGET(window), shortcuts);
}

void GtkNativeWindow::ListenToLook() {
  const auto changed = +[](GObject*, GParamSpec*, gpointer data) {
    static_cast<GtkNativeWindow*>(data)->events.OnLookChanged();
  };
  for (std::size_t i = 0; i < std::size(lookHandlers); ++i) {
    lookHandlers[i] = g_signal_connect(gtk_widget_get_settings(GTK_WIDGET(window)),
                                       kLookProperties[i], G_CALLBACK(changed), this);
  }
}

// One target for both: what offers files offers their names as a text as well. What any program
// drags comes at least as a text; what ours drag is found in it.
void GtkNativeWindow::ListenToDrops(const WindowSpec& spec) {
  const auto moved = +[](GtkDropTarget* target, double x, double y, gpointer data) {
    auto* const self = static_cast<GtkNativeWindow*>(data);
    GdkDrop* const drop = gtk_drop_target_get_current_drop(target);
    const bool hasFiles =
        gdk_content_formats_contain_mime_type(gdk_drop_get_formats(drop), "text/uri-list");
    if (!hasFiles) self->events.OnObjectOver(self->InPane(x, y));
    return GDK_ACTION_COPY;
  };
  const auto left = +[](GtkDropTarget*, gpointer data) {
    static_cast<GtkNativeWindow*>(data)->events.OnObjectOver(std::nullopt);
  };
  const auto dropped =
      +[](GtkDropTarget*, const GValue* value, double x, double y, gpointer data) -> gboolean {
    return static_cast<GtkNativeWindow*>(data)->TakeDrop(value, x, y);
  };
  GtkDropTarget* const target = gtk_drop_target_new(G_TYPE_INVALID, GDK_ACTION_COPY);
  GType types[2];
  gsize count = 0;
  if (spec.takesFiles) types[count++] = GDK_TYPE_FILE_LIST;
  if (spec.takesObjects) types[count++] = G_TYPE_STRING;
  gtk_drop_target_set_gtypes(target, types, count);
  g_signal_connect(target, "motion", G_CALLBACK(moved), this);
  g_signal_connect(target, "leave", G_CALLBACK(left), this);
  g_signal_connect(target, "drop", G_CALLBACK(dropped), this);
  gtk_widget_add_controller(GTK_WIDGET(window), GTK_EVENT_CONTROLLER(target));
}

bool GtkNativeWindow::TakeDrop(const GValue* value, double x, double y) {
  if (G_VALUE_HOLDS_STRING(value)) {
    const char* const text = g_value_get_string(value);
    const Point place = InPane(x, y);
    return TakeDroppedText(text ? text : "", [this, place](IDataObject* object) {
      return events.OnObjectDropped(object, place);
    });
  }
  std::vector<std::filesystem::path> files;
  const auto* const list = static_cast<GSList*>(g_value_get_boxed(value));
  for (const GSList* at = list; at; at = at->next) {
    char* const path = g_file_get_path(static_cast<GFile*>(at->data));
    if (path) files.emplace_back(path);
    g_free(path);
  }
  events.OnFilesDropped(files);
  return !files.empty();
}

// A place of the window as one of the client area.
Point GtkNativeWindow::InPane(double x, double y) const {
  double inX = 0, inY = 0;
  gtk_widget_translate_coordinates(GTK_WIDGET(window), pane, x, y, &inX, &inY);
  return {static_cast<int>(std::floor(inX)), static_cast<int>(std::floor(inY))};
}

gboolean GtkNativeWindow::CloseAsked(GtkWindow*, gpointer data) {
  static_cast<GtkNativeWindow*>(data)->events.OnCloseRequest();
  return TRUE;
}

gboolean GtkNativeWindow::ShortcutPressed(GtkEventControllerKey*, guint symbol, guint,
                                          GdkModifierType state, gpointer data) {
  KeyEvent event;
  TakeKey(gdk_keyval_to_lower(symbol), state, event);
  return event.key != Key::Other && static_cast<GtkNativeWindow*>(data)->TellShortcut(event);
}

// The window that is docked here has the first word on keys in it.
bool GtkNativeWindow::TellShortcut(const KeyEvent& event) {
  GtkNativeWindow* const inner = WithFocus();
  if (inner->events.KeepsKey(event)) return false;
  return inner->events.OnShortcut(event) || (inner != this && events.OnShortcut(event));
}

// Controls that tell their keys themselves have told this one already.
gboolean GtkNativeWindow::KeyPressed(GtkEventControllerKey*, guint symbol, guint,
                                     GdkModifierType state, gpointer data) {
  return static_cast<GtkNativeWindow*>(data)->WithFocus()->TellKey(symbol, state);
}

bool GtkNativeWindow::TellKey(guint symbol, GdkModifierType state) {
  const GtkControl* const control = Find(Focused());
  const bool hasTold =
      control && (control->Kind() == ControlKind::Slider || control->Kind() == ControlKind::Edit ||
                  control->Kind() == ControlKind::Canvas);
  KeyEvent event;
  return !hasTold && TakeKey(symbol, state, event) && events.OnKey(0, event);
}

// --- docks

GtkNativeWindow* GtkNativeWindow::OfHandle(void* handle) {
  if (!handle || !GTK_IS_WINDOW(handle)) return nullptr;
  return static_cast<GtkNativeWindow*>(g_object_get_data(G_OBJECT(handle), kOwnData));
}

bool GtkNativeWindow::EnterHost(Host* newHost, GtkRoot* top) {
  if (top == GTK_ROOT(window)) return false;
  isShownInHost = IsVisible();
  gtk_widget_hide(GTK_WIDGET(window));
  gtk_window_set_child(window, nullptr);
  gtk_widget_set_visible(box, isShownInHost);
  host = newHost;
  return true;
}

void GtkNativeWindow::LeaveHost() {
  host = nullptr;
  gtk_widget_show(box);
  gtk_window_set_child(window, box);
  if (isShownInHost) gtk_window_present(window);
}

Size GtkNativeWindow::WantedSize() const {
  if (!isShownInHost) return {};
  GtkRequisition natural;
  gtk_widget_get_preferred_size(box, nullptr, &natural);
  return {natural.width, natural.height};
}

GtkWindow* GtkNativeWindow::TopWindow() const {
  GtkRoot* const root = gtk_widget_get_root(box);
  return root ? GTK_WINDOW(root) : window;
}

GtkNativeWindow* GtkNativeWindow::WithFocus() {
  auto* const dock = dynamic_cast<Host*>(Find(Focused()));
  return dock && dock->Guest() ? dock->Guest() : this;
}

ControlId GtkNativeWindow::Add(const ControlSpec& spec) {
  const ControlId id = NextId();
  const bool isRadio = spec.kind == ControlKind::RadioButton;
  if (!isRadio || spec.opensGroup) firstRadio = nullptr;
  controls.push_back(MakeGtkControl(id, spec, firstRadio, events));
  ++counts.controls;
  GtkControl& added = *controls.back();
  if (isRadio && !firstRadio) firstRadio = &added;
  PutIntoPane(pane, added.Widget());
  if (spec.isDefault) gtk_window_set_default_widget(window, added.Widget());
  NameNext(added);
  return id;
}

// The mnemonic of a label goes to the control behind it.
void GtkNativeWindow::NameNext(const GtkControl& added) {
  if (added.Kind() == ControlKind::Static) {
    unnamedLabel = GTK_LABEL(added.Widget());
    return;
  }
  if (unnamedLabel && CanHaveMnemonic(added.Kind())) {
    gtk_label_set_mnemonic_widget(unnamedLabel, added.Widget());
  }
  unnamedLabel = nullptr;
}

void GtkNativeWindow::SetBubble(ControlId control, const std::string& text) {
  const GtkControl* const found = Find(control);
  if (found) gtk_widget_set_tooltip_text(found->Widget(), text.empty() ? nullptr : text.c_str());
}

ControlId GtkNativeWindow::Focused() {
  GtkRoot* const root = gtk_widget_get_root(box);
  GtkWidget* const focus = root ? gtk_root_get_focus(root) : nullptr;
  for (const auto& control : controls) {
    GtkWidget* const widget = control->Widget();
    if (focus && (focus == widget || gtk_widget_is_ancestor(focus, widget))) return control->Id();
  }
  return 0;
}

// --- the window

void GtkNativeWindow::SetTitle(const std::string& title) {
  gtk_window_set_title(window, title.c_str());
}

// A panel keeps this size; a main window starts with it and can be made smaller.
void GtkNativeWindow::SetClientSize(Size size) {
  if (isTool) {
    SetPaneSize(pane, size);
    if (host) host->GuestChanged();
  } else {
    clientSize = size;
    gtk_window_set_default_size(window, size.width, size.height + MenuBarHeight());
  }
}

int GtkNativeWindow::MenuBarHeight() const {
  GtkRequisition natural = {};
  if (menuBar) gtk_widget_get_preferred_size(menuBar, nullptr, &natural);
  return natural.height;
}

void GtkNativeWindow::SetMenuBar(const std::vector<MenuEntry>& entries) {
  if (menuBar) gtk_box_remove(GTK_BOX(box), menuBar);
  menuBar = entries.empty()
                ? nullptr
                : NewMenuBar(GTK_WIDGET(window), entries, [this](int id) { events.OnMenu(id); });
  if (menuBar) gtk_box_prepend(GTK_BOX(box), menuBar);
  if (!isTool && !IsVisible() && clientSize.width > 0) SetClientSize(clientSize);
}

void GtkNativeWindow::SetMenuState(int entry, bool isEnabled, bool isChecked) {
  if (menuBar) SetMenuBarState(GTK_WIDGET(window), entry, isEnabled, isChecked);
}

void GtkNativeWindow::Show(bool activate) {
  if (host) return ShowInHost(true);
  const bool wasHidden = !gtk_widget_get_visible(GTK_WIDGET(window));
  if (activate) {
    gtk_window_present(window);
  } else {
    gtk_widget_show(GTK_WIDGET(window));
  }
  if (wasHidden && isOnTop) SetAboveOthers(window, true);
}

void GtkNativeWindow::Hide() {
  if (host) return ShowInHost(false);
  gtk_widget_hide(GTK_WIDGET(window));
}

void GtkNativeWindow::ShowInHost(bool isShown) {
  isShownInHost = isShown;
  gtk_widget_set_visible(box, isShown);
  host->GuestChanged();
}

bool GtkNativeWindow::IsVisible() {
  if (host) return isShownInHost;
  return gtk_widget_get_visible(GTK_WIDGET(window));
}

void GtkNativeWindow::SetOnTop(bool onTop) {
  isOnTop = onTop;
  if (!host) SetAboveOthers(window, onTop);
}

Point GtkNativeWindow::Position() {
  return ClientOnScreen(TopWindow());
}

void GtkNativeWindow::Move(Point place) {
  if (!host) MoveOnScreen(window, place);
}

int GtkNativeWindow::RunMenu(Point place, const std::vector<MenuEntry>& entries) {
  return RunPopupMenu(pane, place, entries);
}

std::optional<Colour> GtkNativeWindow::AskColour(const std::string& title, Colour start,
                                                 const std::function<void(Colour)>& onTry) {
  return RunColourDialog(TopWindow(), title, start, onTry);
}

std::optional<std::filesystem::path> GtkNativeWindow::AskFile(
    const std::string& title, bool toSave, const std::filesystem::path& start,
    const std::vector<std::string>& patterns) {
  return RunFileDialog(TopWindow(), title, toSave, start, patterns);
}

DragEnd GtkNativeWindow::Drag(IDataObject* object, IDropSource*, std::uint32_t allowed,
                              std::uint32_t& effect) {
  return RunDrag(GTK_WIDGET(TopWindow()), object, allowed, effect);
}

Rect GtkNativeWindow::OnScreen(ControlId control) {
  const GtkControl* const found = Find(control);
  graphene_rect_t bounds;
  GtkWindow* const top = TopWindow();
  if (!found || !gtk_widget_compute_bounds(found->Widget(), GTK_WIDGET(top), &bounds)) return {};
  double offsetX = 0, offsetY = 0;
  gtk_native_get_surface_transform(GTK_NATIVE(top), &offsetX, &offsetY);
  const int scale = gtk_widget_get_scale_factor(found->Widget());
  const Point corner = ClientOnScreen(top);
  const auto pixels = [scale](double units) {
    return static_cast<int>(std::lround(units * scale));
  };
  return {corner.x + pixels(bounds.origin.x + offsetX),
          corner.y + pixels(bounds.origin.y + offsetY), pixels(bounds.size.width),
          pixels(bounds.size.height)};
}

bool GtkNativeWindow::SaveImage(const std::filesystem::path& file) {
  auto* const widget = GTK_WIDGET(TopWindow());
  GskRenderer* const renderer = gtk_native_get_renderer(GTK_NATIVE(widget));
  const int width = gtk_widget_get_width(widget), height = gtk_widget_get_height(widget);
  if (!renderer || width < 1 || height < 1) return false;
  const auto scale = static_cast<float>(gtk_widget_get_scale_factor(widget));
  GtkSnapshot* const snapshot = gtk_snapshot_new();
  gtk_snapshot_scale(snapshot, scale, scale);
  GdkPaintable* const paintable = gtk_widget_paintable_new(widget);
  gdk_paintable_snapshot(paintable, snapshot, width, height);
  g_object_unref(paintable);
  GskRenderNode* const node = gtk_snapshot_free_to_node(snapshot);
  if (!node) return false;
  const auto area = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width) * scale,
                                       static_cast<float>(height) * scale);
  GdkTexture* const texture = gsk_renderer_render_texture(renderer, node, &area);
  const bool isSaved = gdk_texture_save_to_png(texture, file.c_str());
  g_object_unref(texture);
  gsk_render_node_unref(node);
  return isSaved;
}

}  // namespace toolkit
