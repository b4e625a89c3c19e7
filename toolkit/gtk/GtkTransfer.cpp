#include "toolkit/gtk/GtkTransfer.h"

#include <ole2.h>
#include <winbase.h>
#include <winuser.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "base/CodePage.h"
#include "platform/component/ComPtr.h"
#include "toolkit/gtk/GtkMenu.h"

namespace toolkit {
namespace {

GtkHost library;

// Registered formats have numbers from here up.
constexpr UINT kFirstRegistered = 0xC000;
constexpr std::uint32_t kCopy = 1, kMove = 2;

// --- names: GTK passes on only lower-case names with a stroke, so ours are written in one

std::string GtkNameOf(const std::string& name) {
  std::string encoded = "x-fx/";
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) || c == '-' || c == '.') {
      encoded += static_cast<char>(std::tolower(byte));
    } else {
      char code[4];
      g_snprintf(code, sizeof code, "%%%02x", byte);
      encoded += code;
    }
  }
  return encoded;
}

std::string NameOf(UINT format) {
  char name[256] = "";
  library.formatName(format, name, sizeof name);
  return name;
}

std::vector<std::string> RegisteredNames() {
  std::vector<std::string> names;
  for (UINT format = kFirstRegistered; format <= 0xFFFF; ++format) {
    const std::string name = NameOf(format);
    if (name.empty()) break;
    names.push_back(name);
  }
  return names;
}

// --- from an object

std::vector<FORMATETC> FormatsOf(IDataObject* object) {
  std::vector<FORMATETC> formats;
  platform::ComPtr<IEnumFORMATETC> list;
  if (FAILED(object->EnumFormatEtc(DATADIR_GET, list.Put())) || !list) return formats;
  FORMATETC format = {};
  while (list->Next(1, &format, nullptr) == S_OK) {
    formats.push_back(format);
    if (format.ptd) CoTaskMemFree(format.ptd);
  }
  return formats;
}

// Null when the object does not give it.
GBytes* BytesOf(IDataObject* object, FORMATETC format) {
  STGMEDIUM medium = {};
  format.ptd = nullptr;
  if (FAILED(object->GetData(&format, &medium))) return nullptr;
  GBytes* bytes = nullptr;
  if (medium.tymed == TYMED_HGLOBAL) {
    bytes = g_bytes_new(GlobalLock(medium.hGlobal), GlobalSize(medium.hGlobal));
    GlobalUnlock(medium.hGlobal);
  }
  ReleaseStgMedium(&medium);
  return bytes;
}

// A text in the code page, up to its end mark, as GTK has texts.
GdkContentProvider* TextProvider(GBytes* bytes) {
  gsize size = 0;
  const auto* const text = static_cast<const char*>(g_bytes_get_data(bytes, &size));
  const std::string utf8 = base::ToUtf8(std::string(text, strnlen(text, size)));
  GValue value = G_VALUE_INIT;
  g_value_init(&value, G_TYPE_STRING);
  g_value_set_string(&value, utf8.c_str());
  GdkContentProvider* const provider = gdk_content_provider_new_for_value(&value);
  g_value_unset(&value);
  return provider;
}

GdkContentProvider* ProviderOf(IDataObject* object) {
  std::vector<GdkContentProvider*> parts;
  for (const FORMATETC& format : FormatsOf(object)) {
    const std::string name = NameOf(format.cfFormat);
    GBytes* const bytes = BytesOf(object, format);
    if (!bytes) continue;
    if (!name.empty()) {
      parts.push_back(gdk_content_provider_new_for_bytes(GtkNameOf(name).c_str(), bytes));
    } else if (format.cfFormat == CF_TEXT) {
      parts.push_back(TextProvider(bytes));
    }
    g_bytes_unref(bytes);
  }
  return parts.empty() ? nullptr : gdk_content_provider_new_union(parts.data(), parts.size());
}

// --- to an object

// Bytes that come from another program in pieces.
struct Reading {
  bool isDone = false;
  GOutputStream* bytes = g_memory_output_stream_new_resizable();

  Reading() = default;
  ~Reading() { g_object_unref(bytes); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  static void Spliced(GObject* stream, GAsyncResult* result, gpointer data) {
    g_output_stream_splice_finish(G_OUTPUT_STREAM(stream), result, nullptr);
    static_cast<Reading*>(data)->isDone = true;
  }
  static void Opened(GObject* clipboard, GAsyncResult* result, gpointer data) {
    auto* const reading = static_cast<Reading*>(data);
    GInputStream* const stream =
        gdk_clipboard_read_finish(GDK_CLIPBOARD(clipboard), result, nullptr, nullptr);
    if (!stream) {
      reading->isDone = true;
      return;
    }
    const auto closeBoth = GOutputStreamSpliceFlags(G_OUTPUT_STREAM_SPLICE_CLOSE_SOURCE |
                                                    G_OUTPUT_STREAM_SPLICE_CLOSE_TARGET);
    g_output_stream_splice_async(reading->bytes, stream, closeBoth, G_PRIORITY_DEFAULT, nullptr,
                                 Spliced, reading);
    g_object_unref(stream);
  }
  std::string Text() const {
    auto* const memory = G_MEMORY_OUTPUT_STREAM(bytes);
    return {static_cast<const char*>(g_memory_output_stream_get_data(memory)),
            g_memory_output_stream_get_data_size(memory)};
  }
};

std::string ReadClipboard(GdkClipboard* clipboard, const std::string& name) {
  Reading reading;
  const char* names[] = {name.c_str(), nullptr};
  gdk_clipboard_read_async(clipboard, names, G_PRIORITY_DEFAULT, nullptr, Reading::Opened,
                           &reading);
  RunUntil(reading.isDone);
  return reading.Text();
}

bool Add(IDataObject* object, UINT format, const std::string& bytes) {
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
  if (!block) return false;
  std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
  GlobalUnlock(block);
  FORMATETC record = {};
  record.cfFormat = static_cast<CLIPFORMAT>(format);
  record.dwAspect = DVASPECT_CONTENT;
  record.lindex = -1;
  record.tymed = TYMED_HGLOBAL;
  STGMEDIUM medium = {};
  medium.tymed = TYMED_HGLOBAL;
  medium.hGlobal = block;
  if (SUCCEEDED(object->SetData(&record, &medium, TRUE))) return true;
  ReleaseStgMedium(&medium);
  return false;
}

// --- drags

struct Dragging {
  bool isDone = false;
  DragEnd end = DragEnd::Cancelled;

  static void Finished(GdkDrag*, gpointer data) {
    auto* const dragging = static_cast<Dragging*>(data);
    dragging->end = DragEnd::Dropped;
    dragging->isDone = true;
  }
  static void Cancelled(GdkDrag*, GdkDragCancelReason, gpointer data) {
    static_cast<Dragging*>(data)->isDone = true;
  }
};

GdkDragAction ActionsOf(std::uint32_t effects) {
  int actions = 0;
  if (effects & kCopy) actions |= GDK_ACTION_COPY;
  if (effects & kMove) actions |= GDK_ACTION_MOVE;
  return static_cast<GdkDragAction>(actions);
}

}  // namespace

void SetTransferHost(const GtkHost& host) {
  library = host;
}

bool PutOnClipboard(IDataObject* object) {
  GdkClipboard* const clipboard = gdk_display_get_clipboard(gdk_display_get_default());
  GdkContentProvider* const provider = object ? ProviderOf(object) : nullptr;
  if (object && !provider) return false;
  const bool isSet = gdk_clipboard_set_content(clipboard, provider);
  if (provider) g_object_unref(provider);
  return isSet;
}

// Programs under another system's libraries offer the names as they are, without listing them here.
IDataObject* TakeFromClipboard() {
  GdkClipboard* const clipboard = gdk_display_get_clipboard(gdk_display_get_default());
  auto object = platform::ComPtr<IDataObject>::Attach(library.newTransfer());
  GdkContentFormats* const formats = gdk_content_formats_ref(gdk_clipboard_get_formats(clipboard));
  bool holdsAny = false;
  for (const std::string& name : RegisteredNames()) {
    const std::string offered = GtkNameOf(name);
    const bool isListed = gdk_content_formats_contain_mime_type(formats, offered.c_str());
    if (!isListed && gdk_clipboard_is_local(clipboard)) continue;
    const std::string bytes = ReadClipboard(clipboard, isListed ? offered : name);
    if (!bytes.empty()) holdsAny |= Add(object.Get(), library.registerFormat(name.c_str()), bytes);
  }
  if (gdk_content_formats_contain_mime_type(formats, "text/plain;charset=utf-8")) {
    const std::string text = base::FromUtf8(ReadClipboard(clipboard, "text/plain;charset=utf-8"));
    holdsAny |= Add(object.Get(), CF_TEXT, text + '\0');
  }
  gdk_content_formats_unref(formats);
  return holdsAny ? object.Detach() : nullptr;
}

bool TakeDroppedText(const char* utf8, const std::function<bool(IDataObject*)>& take) {
  const auto object = platform::ComPtr<IDataObject>::Attach(library.newTransfer());
  return Add(object.Get(), CF_TEXT, base::FromUtf8(utf8) + '\0') && take(object.Get());
}

DragEnd RunDrag(GtkWidget* window, IDataObject* object, std::uint32_t allowed,
                std::uint32_t& effect) {
  effect = 0;
  GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(window));
  GdkContentProvider* const provider = object && surface ? ProviderOf(object) : nullptr;
  if (!provider) return DragEnd::Failed;
  GdkDevice* const mouse =
      gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_display_get_default()));
  double x = 0, y = 0;
  gdk_surface_get_device_position(surface, mouse, &x, &y, nullptr);
  GdkDrag* const drag = gdk_drag_begin(surface, mouse, provider, ActionsOf(allowed), 0, 0);
  g_object_unref(provider);
  if (!drag) return DragEnd::Failed;
  Dragging dragging;
  g_signal_connect(drag, "dnd-finished", G_CALLBACK(&Dragging::Finished), &dragging);
  g_signal_connect(drag, "cancel", G_CALLBACK(&Dragging::Cancelled), &dragging);
  RunUntil(dragging.isDone);
  if (dragging.end == DragEnd::Dropped) {
    effect = gdk_drag_get_selected_action(drag) == GDK_ACTION_MOVE ? kMove : kCopy;
  }
  g_signal_handlers_disconnect_by_data(drag, &dragging);
  g_object_unref(drag);
  return dragging.end;
}

}  // namespace toolkit
