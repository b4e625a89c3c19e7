#include "toolkit/fake/FakeBackend.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace toolkit {
namespace {

constexpr int kLetterWidth = 7;
constexpr int kLineHeight = 16;

std::string ShownText(const std::string& text) {
  std::string shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '&' && i + 1 < text.size()) ++i;
    shown += text[i];
  }
  return shown;
}

int LetterCount(const std::string& utf8) {
  return static_cast<int>(
      std::count_if(utf8.begin(), utf8.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

template <class... Arguments>
std::string Line(const char* format, Arguments... arguments) {
  char text[200];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
  std::snprintf(text, sizeof text, format, arguments...);
#pragma GCC diagnostic pop
  return text;
}

std::string PlaceText(const Rect& place) {
  return Line("%d,%d %dx%d", place.x, place.y, place.width, place.height);
}

std::string ColourText(Colour colour) {
  return Line("%d,%d,%d", colour.red, colour.green, colour.blue);
}

// Tells many numbers by one, of which a few digits are shown.
class Sum {
 public:
  void Add(int number) { sum = sum * 31 + static_cast<std::uint32_t>(number); }
  std::uint32_t Shown() const { return sum & 0xFFFF; }

 private:
  std::uint32_t sum = 0;
};

// Of many corners a few, with their number and a sum over all.
std::string CornersText(std::span<const Spot> corners) {
  const bool isShort = corners.size() <= 16;
  Sum sum;
  for (const Spot& corner : corners) {
    for (const double at : {corner.x, corner.y}) sum.Add(static_cast<int>(at * 16));
  }
  std::string text =
      isShort ? "" : Line(" %d %04x:", static_cast<int>(corners.size()), sum.Shown());
  for (std::size_t i = 0; i < corners.size(); i += isShort ? 1 : 64) {
    text += Line(" %.1f,%.1f", corners[i].x, corners[i].y);
  }
  return text;
}

}  // namespace

// --- RecordingPainter

int RecordingPainter::Count(const std::string& beginning) const {
  return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
    return call.starts_with(beginning);
  }));
}

void RecordingPainter::FillRect(const Rect& place, Colour colour) {
  calls.push_back("FillRect " + PlaceText(place) + " " + ColourText(colour));
}

void RecordingPainter::DrawLines(std::span<const Spot> corners, Colour colour, double thickness) {
  calls.push_back("DrawLines " + ColourText(colour) + CornersText(corners) +
                  Line(" by %.1f", thickness));
}

void RecordingPainter::FillShape(std::span<const Spot> corners, Colour colour) {
  calls.push_back("FillShape " + ColourText(colour) + CornersText(corners));
}

void RecordingPainter::DrawCircle(Spot centre, double radius, Colour colour, double thickness) {
  calls.push_back(Line("DrawCircle %.1f,%.1f %.1f ", centre.x, centre.y, radius) +
                  ColourText(colour) + Line(" by %.1f", thickness));
}

void RecordingPainter::FillCircle(Spot centre, double radius, Colour colour) {
  calls.push_back(Line("FillCircle %.1f,%.1f %.1f ", centre.x, centre.y, radius) +
                  ColourText(colour));
}

void RecordingPainter::WriteText(Point place, const std::string& text, Colour colour) {
  calls.push_back(Line("WriteText %d,%d ", place.x, place.y) + text + " " + ColourText(colour));
}

void RecordingPainter::WriteLine(const Rect& place, const std::string& text, Colour colour,
                                 TextAlign align) {
  calls.push_back("WriteLine " + PlaceText(place) + " " + text + " " + ColourText(colour) +
                  Line(" at %d", static_cast<int>(align)));
}

void RecordingPainter::DrawPicture(const Rect& place, const PictureRows& picture) {
  Sum sum;
  const auto add = [&sum](const std::uint8_t* row, int count) {
    for (int i = 0; i < count; ++i) sum.Add(row[i]);
  };
  for (int y = 0; y < picture.height; ++y) {
    add(picture.colourRows[y], 3 * picture.width);
    if (picture.maskRows) add(picture.maskRows[y], picture.width);
  }
  calls.push_back(Line("DrawPicture %04x ", sum.Shown()) + PlaceText(place) +
                  Line(" of %dx%d", picture.width, picture.height));
}

void RecordingPainter::Shade(const Rect& place, double strength) {
  calls.push_back("Shade " + PlaceText(place) + Line(" by %.1f", strength));
}

// --- FakeWindow

FakeWindow::FakeWindow(FakeBackend& ofBackend, const WindowSpec& windowSpec,
                       WindowEvents& windowEvents)
    : spec(windowSpec),
      title(windowSpec.title),
      isOnTop(windowSpec.isOnTop),
      backend(ofBackend),
      events(windowEvents) {
  backend.windows.push_back(this);
}

FakeWindow::~FakeWindow() {
  if (guest) guest->host = nullptr;
  if (host) {
    host->guest = nullptr;
    host->events.OnDockChanged(host->dock);
  }
  std::replace(backend.windows.begin(), backend.windows.end(), this,
               static_cast<FakeWindow*>(nullptr));
  backend.liveControls -= ControlCount();
}

FakeControl* FakeWindow::Find(ControlId control) {
  const bool exists = control >= 1 && control <= ControlCount();
  return exists ? &controls[static_cast<std::size_t>(control) - 1] : nullptr;
}

FakeControl* FakeWindow::Usable(ControlId control) {
  FakeControl* found = Find(control);
  return found && found->isEnabled && found->isVisible && !IsWaiting() ? found : nullptr;
}

bool FakeWindow::IsWaiting() const {
  const FakeWindow* const top = host ? host : this;
  return std::any_of(backend.windows.begin(), backend.windows.end(), [&](const FakeWindow* other) {
    return other && other->isModal && (other->spec.owner == this || other->spec.owner == top);
  });
}

const FakeControl& FakeWindow::At(ControlId control) const {
  return controls.at(static_cast<std::size_t>(control) - 1);
}

ControlId FakeWindow::ByName(const std::string& name, ControlKind kind) const {
  ControlId hidden = 0;
  for (ControlId id = 1; id <= ControlCount(); ++id) {
    const FakeControl& control = At(id);
    if (control.spec.kind != kind) continue;
    if (control.spec.name != name && ShownText(control.spec.text) != name) continue;
    if (control.isVisible) return id;
    if (!hidden) hidden = id;
  }
  return hidden;
}

bool FakeWindow::Slide(ControlId slider, int place) {
  FakeControl* control = Usable(slider);
  if (!control || place < control->least || place > control->greatest) return false;
  focused = slider;
  control->value = place;
  events.OnValue(slider, place);
  return true;
}

void FakeWindow::ClickRadio(ControlId control) {
  ControlId first = control;
  while (first > 1 && !At(first).spec.opensGroup) --first;
  for (ControlId id = first; id <= ControlCount(); ++id) {
    const ControlSpec& other = At(id).spec;
    if (other.kind != ControlKind::RadioButton || (other.opensGroup && id != first)) break;
    Find(id)->value = id == control;
  }
}

bool FakeWindow::Click(ControlId id) {
  FakeControl* control = Usable(id);
  if (!control) return false;
  const ControlKind kind = control->spec.kind;
  focused = id;
  if (kind == ControlKind::CheckBox || kind == ControlKind::ToggleButton) {
    control->value = !control->value;
  } else if (kind == ControlKind::RadioButton) {
    ClickRadio(id);
  } else if (kind != ControlKind::Button && kind != ControlKind::ColourButton) {
    return false;
  }
  events.OnValue(id, control->value);
  return true;
}

bool FakeWindow::Choose(ControlId list, int index) {
  FakeControl* control = Usable(list);
  if (!control || index < 0 || static_cast<std::size_t>(index) >= control->items.size())
    return false;
  focused = list;
  control->value = index;
  events.OnValue(list, index);
  return true;
}

bool FakeWindow::Type(ControlId edit, const std::string& text) {
  FakeControl* control = Usable(edit);
  if (!control || control->spec.kind != ControlKind::Edit) return false;
  Focus(edit);
  control->text = text;
  events.OnText(edit, text);
  return true;
}

bool FakeWindow::Press(const KeyEvent& event) {
  if (IsWaiting()) return false;
  FakeWindow* const outer = host;
  if (!events.KeepsKey(event)) {
    if (events.OnShortcut(event)) return true;
    if (outer && outer->events.OnShortcut(event)) return true;
  }
  return events.OnKey(focused, event);
}

void FakeWindow::DropFiles(const std::vector<std::filesystem::path>& files) {
  if (spec.takesFiles) events.OnFilesDropped(files);
}

bool FakeWindow::DropObject(IDataObject* object, Point place) {
  if (!spec.takesObjects || IsWaiting()) return false;
  events.OnObjectOver(place);
  events.OnObjectOver(std::nullopt);
  return events.OnObjectDropped(object, place);
}

bool FakeWindow::ChooseMenu(const std::vector<std::string>& path) {
  const std::vector<MenuEntry>* level = &menuBar;
  int chosen = 0;
  for (const std::string& name : path) {
    const auto found = std::find_if(level->begin(), level->end(), [&](const MenuEntry& entry) {
      return ShownText(entry.text) == name;
    });
    if (found == level->end() || !found->isEnabled) return false;
    chosen = found->id;
    level = &found->below;
  }
  if (chosen == 0) return false;
  events.OnMenu(chosen);
  return true;
}

bool FakeWindow::Wheel(ControlId control, double notches) {
  return Usable(control) && events.OnWheel(control, notches, focused == control);
}

bool FakeWindow::Mouse(ControlId canvas, const MouseEvent& event) {
  if (!Usable(canvas)) return false;
  events.OnMouse(canvas, event);
  return true;
}

bool FakeWindow::BeginDrag(ControlId control) {
  const FakeControl* found = Usable(control);
  if (!found || !found->spec.canDrag) return false;
  events.OnDragBegin(control);
  return true;
}

bool FakeWindow::ContextMenu(ControlId control, Point place) {
  if (!Usable(control)) return false;
  events.OnContextMenu(control, place);
  return true;
}

RecordingPainter FakeWindow::Paint(ControlId canvas) {
  const Rect& place = At(canvas).place;
  RecordingPainter painter({place.width, place.height});
  events.OnPaint(canvas, painter);
  return painter;
}

ControlId FakeWindow::Add(const ControlSpec& control) {
  FakeControl added;
  added.spec = control;
  added.text = control.text;
  controls.push_back(added);
  ++backend.liveControls;
  return ControlCount();
}

void FakeWindow::Place(ControlId control, const Rect& place) {
  if (FakeControl* found = Find(control)) found->place = place;
}

void FakeWindow::SetText(ControlId control, const std::string& text) {
  FakeControl* found = Find(control);
  if (!found) return;
  found->text = text;
  if (backend.echoes && found->spec.kind == ControlKind::Edit) events.OnText(control, text);
}

void FakeWindow::SetRange(ControlId slider, int least, int greatest) {
  FakeControl* found = Find(slider);
  if (!found) return;
  found->least = least;
  found->greatest = greatest;
}

void FakeWindow::SetValue(ControlId control, int value) {
  FakeControl* found = Find(control);
  if (!found) return;
  found->value = value;
  if (backend.echoes) events.OnValue(control, value);
}

void FakeWindow::SetItems(ControlId control, const std::vector<std::string>& items) {
  if (FakeControl* found = Find(control)) found->items = items;
}

void FakeWindow::SetColour(ControlId control, Colour colour) {
  if (FakeControl* found = Find(control)) found->colour = colour;
}

void FakeWindow::SetEnabled(ControlId control, bool enabled) {
  if (FakeControl* found = Find(control)) found->isEnabled = enabled;
}

void FakeWindow::SetVisible(ControlId control, bool visible) {
  if (FakeControl* found = Find(control)) found->isVisible = visible;
}

void FakeWindow::SetRows(ControlId canvas, const std::vector<CanvasRow>& rows) {
  if (FakeControl* found = Find(canvas)) found->rows = rows;
}

bool FakeWindow::Dock(ControlId control, void* window) {
  const FakeControl* const found = Find(control);
  if (!found || found->spec.kind != ControlKind::Dock) return false;
  const auto wanted = std::find(backend.windows.begin(), backend.windows.end(), window);
  FakeWindow* const next = window && wanted != backend.windows.end() ? *wanted : nullptr;
  if (window && (!next || next == this)) return false;
  if (guest) guest->host = nullptr;
  guest = next;
  dock = control;
  if (guest) guest->host = this;
  return true;
}

Size FakeWindow::DockedSize(ControlId control) {
  return guest && control == dock && guest->isVisible ? guest->client : Size();
}

void FakeWindow::TellHost() {
  if (host) host->events.OnDockChanged(host->dock);
}

void FakeWindow::SetClientSize(Size size) {
  client = size;
  TellHost();
}

void FakeWindow::Hide() {
  isVisible = false;
  TellHost();
}

void FakeWindow::SetValueText(ControlId control, const std::string& text) {
  if (FakeControl* found = Find(control)) found->valueText = text;
}

void FakeWindow::SetBubble(ControlId control, const std::string& text) {
  if (FakeControl* found = Find(control)) found->bubble = text;
}

void FakeWindow::Focus(ControlId control) {
  if (focused == control) return;
  const ControlId before = std::exchange(focused, control);
  if (before) events.OnFocus(before, false);
  if (control) events.OnFocus(control, true);
}

void FakeWindow::Redraw(ControlId canvas) {
  if (FakeControl* found = Find(canvas)) ++found->redraws;
}

static void SetStateIn(std::vector<MenuEntry>& entries, int id, bool isEnabled, bool isChecked) {
  for (MenuEntry& entry : entries) {
    SetStateIn(entry.below, id, isEnabled, isChecked);
    if (entry.id != id) continue;
    entry.isEnabled = isEnabled;
    entry.isChecked = isChecked;
  }
}

void FakeWindow::SetMenuState(int entry, bool isEnabled, bool isChecked) {
  SetStateIn(menuBar, entry, isEnabled, isChecked);
}

void FakeWindow::Show(bool activate) {
  isVisible = true;
  if (activate) ++activations;
  TellHost();
}

int FakeWindow::RunMenu(Point place, const std::vector<MenuEntry>& entries) {
  backend.menuPlace = place;
  return backend.onMenu ? backend.onMenu(entries) : 0;
}

std::optional<Colour> FakeWindow::AskColour(const std::string&, Colour start,
                                            const std::function<void(Colour)>& onTry) {
  return backend.onColour ? backend.onColour(start, onTry) : std::nullopt;
}

std::optional<std::filesystem::path> FakeWindow::AskFile(const std::string& question, bool toSave,
                                                         const std::filesystem::path& start,
                                                         const std::vector<std::string>& patterns) {
  if (!backend.onFile) return std::nullopt;
  return backend.onFile({question, toSave, start, patterns});
}

DragEnd FakeWindow::Drag(IDataObject* object, IDropSource* source, std::uint32_t allowed,
                         std::uint32_t& effect) {
  effect = 0;
  return backend.onDrag ? backend.onDrag(object, source, allowed, effect) : DragEnd::Cancelled;
}

// --- FakeBackend

FakeWindow* FakeBackend::Window(std::size_t index) const {
  return index < windows.size() ? windows[index] : nullptr;
}

FakeWindow* FakeBackend::LastWindow() const {
  const auto found = std::find_if(windows.rbegin(), windows.rend(),
                                  [](const FakeWindow* window) { return window != nullptr; });
  return found == windows.rend() ? nullptr : *found;
}

std::unique_ptr<NativeWindow> FakeBackend::NewWindow(const WindowSpec& spec, WindowEvents& events) {
  if (refusesWindows) return nullptr;
  return std::make_unique<FakeWindow>(*this, spec, events);
}

Size FakeBackend::PreferredSize(ControlKind kind, const std::string& text) {
  const int width = LetterCount(ShownText(text)) * kLetterWidth;
  Size size = {width, kLineHeight};
  switch (kind) {
    case ControlKind::Static:
    case ControlKind::Heading:
      break;
    case ControlKind::CheckBox:
    case ControlKind::RadioButton:
      size = {width + 22, kLineHeight + 4};
      break;
    case ControlKind::Slider:
      size = {160, 24};
      break;
    case ControlKind::Canvas:
      size = {32, 32};
      break;
    case ControlKind::ColourButton:
      size = {48, 26};
      break;
    default:
      size = {width + 24, kLineHeight + 10};
  }
  return {Scaled(size.width), Scaled(size.height)};
}

Look FakeBackend::CurrentLook() {
  const bool wantsDark = theme == ThemeChoice::System ? isDark : theme == ThemeChoice::Dark;
  if (!wantsDark) return {};
  return {true, {53, 53, 53}, {238, 238, 238}, {45, 45, 45}, {90, 90, 90}, {21, 83, 158}};
}

void FakeBackend::SetTheme(ThemeChoice choice) {
  theme = choice;
  for (FakeWindow* window : std::vector(windows)) {
    if (window) window->ChangeLook();
  }
}

bool FakeBackend::Pump(bool wait) {
  for (bool isFirst = true;; isFirst = false) {
    std::function<void()> task;
    {
      const std::lock_guard hold(tasksLock);
      if (tasks.empty()) return !isFirst || !wait;
      task = std::move(tasks.front());
      tasks.pop_front();
    }
    task();
    if (wait) return true;
  }
}

void FakeBackend::Post(std::function<void()> task) {
  const std::lock_guard hold(tasksLock);
  tasks.push_back(std::move(task));
}

bool FakeBackend::SetClipboard(IDataObject* object) {
  clipboard = platform::ComPtr<IDataObject>(object);
  return true;
}

IDataObject* FakeBackend::Clipboard() {
  return platform::ComPtr<IDataObject>(clipboard).Detach();
}

BackendCounts FakeBackend::Counts() {
  const auto live = std::count_if(windows.begin(), windows.end(),
                                  [](const FakeWindow* window) { return window != nullptr; });
  return {static_cast<int>(live), liveControls, 0, 0};
}

}  // namespace toolkit
