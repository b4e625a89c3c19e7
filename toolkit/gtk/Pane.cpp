#include "toolkit/gtk/Pane.h"

#include <unordered_map>
#include <utility>

namespace toolkit {
namespace {

struct PaneState {
  std::unordered_map<GtkWidget*, Rect> places;
  std::function<void(Size)> onSize;
  Size least, last;
};

struct Pane {
  GtkWidget widget;
  PaneState* state;
};

struct PaneClass {
  GtkWidgetClass parent;
};

PaneState& StateOf(GtkWidget* pane) {
  return *reinterpret_cast<Pane*>(pane)->state;
}

GtkWidgetClass* parentClass = nullptr;

void Measure(GtkWidget* pane, GtkOrientation orientation, int, int* least, int* natural,
             int* leastBaseline, int* naturalBaseline) {
  const Size size = StateOf(pane).least;
  *least = *natural = orientation == GTK_ORIENTATION_HORIZONTAL ? size.width : size.height;
  *leastBaseline = *naturalBaseline = -1;
}

// A child gets its place at least in the size that it cannot do without.
void AllocateChild(GtkWidget* child, const Rect& place) {
  GtkRequisition least;
  gtk_widget_get_preferred_size(child, &least, nullptr);
  const GtkAllocation allocation = {place.x, place.y, MAX(place.width, least.width),
                                    MAX(place.height, least.height)};
  gtk_widget_size_allocate(child, &allocation, -1);
}

gboolean TellSize(gpointer data) {
  PaneState& state = StateOf(GTK_WIDGET(data));
  if (state.onSize) state.onSize(state.last);
  return G_SOURCE_REMOVE;
}

// The receiver may place controls anew, which cannot be done in the middle of a layout.
void Allocate(GtkWidget* pane, int width, int height, int) {
  PaneState& state = StateOf(pane);
  for (GtkWidget* child = gtk_widget_get_first_child(pane); child;
       child = gtk_widget_get_next_sibling(child)) {
    if (gtk_widget_should_layout(child)) AllocateChild(child, state.places[child]);
  }
  const Size size = {width, height};
  if (std::exchange(state.last, size) == size) return;
  g_idle_add_full(G_PRIORITY_HIGH_IDLE, TellSize, g_object_ref(pane), g_object_unref);
}

void Dispose(GObject* object) {
  auto* const pane = GTK_WIDGET(object);
  StateOf(pane).onSize = nullptr;
  while (GtkWidget* child = gtk_widget_get_first_child(pane)) gtk_widget_unparent(child);
  G_OBJECT_CLASS(parentClass)->dispose(object);
}

void Finalize(GObject* object) {
  delete reinterpret_cast<Pane*>(object)->state;
  G_OBJECT_CLASS(parentClass)->finalize(object);
}

void InitClass(gpointer classData, gpointer) {
  parentClass = static_cast<GtkWidgetClass*>(g_type_class_peek_parent(classData));
  auto* const widgetClass = static_cast<GtkWidgetClass*>(classData);
  widgetClass->measure = Measure;
  widgetClass->size_allocate = Allocate;
  auto* const objectClass = static_cast<GObjectClass*>(classData);
  objectClass->dispose = Dispose;
  objectClass->finalize = Finalize;
}

void Init(GTypeInstance* instance, gpointer) {
  reinterpret_cast<Pane*>(instance)->state = new PaneState;
}

GType PaneType() {
  static const GType type =
      g_type_register_static_simple(GTK_TYPE_WIDGET, "FxboxPane", sizeof(PaneClass), InitClass,
                                    sizeof(Pane), Init, GTypeFlags(0));
  return type;
}

}  // namespace

GtkWidget* NewPane(std::function<void(Size)> onSize) {
  auto* const pane = static_cast<GtkWidget*>(g_object_new(PaneType(), nullptr));
  StateOf(pane).onSize = std::move(onSize);
  return pane;
}

void PutIntoPane(GtkWidget* pane, GtkWidget* child) {
  StateOf(pane).places[child] = {};
  gtk_widget_set_parent(child, pane);
}

void PlaceInPane(GtkWidget* pane, GtkWidget* child, const Rect& place) {
  StateOf(pane).places[child] = place;
  gtk_widget_queue_allocate(pane);
}

void SetPaneSize(GtkWidget* pane, Size size) {
  StateOf(pane).least = size;
  gtk_widget_queue_resize(pane);
}

}  // namespace toolkit
