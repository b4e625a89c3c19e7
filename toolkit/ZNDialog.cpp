#include "toolkit/ZNDialog.h"

#include <algorithm>
#include <string_view>

#include "settings/TraceLogStd.h"

namespace {

using toolkit::ControlId;

int eventDepth = 0;

std::vector<std::unique_ptr<CZNDialog>>& Graveyard() {
  static std::vector<std::unique_ptr<CZNDialog>> dialogs;
  return dialogs;
}

// While one lives, nothing that was buried is deleted: an event of it may be on its way.
class EventScope {
 public:
  EventScope() { ++eventDepth; }
  ~EventScope() {
    if (--eventDepth > 0) return;
    auto gone = std::exchange(Graveyard(), {});
  }
  EventScope(const EventScope&) = delete;
  EventScope& operator=(const EventScope&) = delete;
};

// Behind an event stands foreign code, through which no exception may pass.
template <class Action>
void RunEvent(Action action) noexcept {
  try {
    const EventScope scope;
    action();
  } catch (...) {
    TraceLog(0).Format(0, "Exception in a window's event");
  }
}

}  // namespace

CZNDialog::~CZNDialog() {
  native.reset();
  for (CZNControl* control : attached) {
    if (control) control->parent = nullptr;
  }
}

bool CZNDialog::CreateModeless(const toolkit::WindowSpec& spec) {
  if (native) return true;
  system = toolkit::CurrentBackend();
  if (system) native = system->NewWindow(spec, *this);
  if (!native) return false;
  Build();
  return true;
}

void CZNDialog::Bury(std::unique_ptr<CZNDialog> dialog) {
  if (!dialog) return;
  dialog->isBuried = true;
  dialog->EndModal(0);
  dialog->Hide();
  if (eventDepth > 0) Graveyard().push_back(std::move(dialog));
}

void CZNDialog::Show(bool activate) {
  if (native && !isBuried) native->Show(activate);
}

void CZNDialog::Hide() {
  if (native) native->Hide();
}

bool CZNDialog::IsVisible() const {
  return native && native->IsVisible();
}

void CZNDialog::SetTitle(const std::string& title) {
  if (native) native->SetTitle(title);
}

void CZNDialog::SetOnTop(bool onTop) {
  if (native) native->SetOnTop(onTop);
}

CZNMenu& CZNDialog::MenuBar() {
  if (!menuBar) menuBar = std::make_unique<CZNMenu>();
  return *menuBar;
}

void CZNDialog::ShowMenuBar() {
  MenuBar().shownBy = this;
  if (native) native->SetMenuBar(menuBar->Entries());
}

int CZNDialog::RunModal() {
  if (!native) return 0;
  const EventScope scope;  // closing does not delete what runs here
  modalResult = 0;
  isModal = true;
  native->SetModal(true);
  Show();
  while (isModal && system->Pump(true)) {
  }
  isModal = false;
  native->SetModal(false);
  Hide();
  return modalResult;
}

void CZNDialog::EndModal(int result) {
  if (!isModal) return;
  isModal = false;
  modalResult = result;
}

CZNControl* CZNDialog::Find(ControlId id) const {
  if (id < 1 || static_cast<std::size_t>(id) > attached.size()) return nullptr;
  return attached[static_cast<std::size_t>(id) - 1];
}

void CZNDialog::OnCancel() {
  EndModal(0);
  Hide();
}

void CZNDialog::Attach(CZNControl& control, const toolkit::ControlSpec& spec) {
  if (!native) return;
  control.id = native->Add(spec);
  attached.resize(std::max(attached.size(), static_cast<std::size_t>(control.id)));
  attached[static_cast<std::size_t>(control.id) - 1] = &control;
}

void CZNDialog::Detach(CZNControl& control) {
  if (Find(control.id) == &control) attached[static_cast<std::size_t>(control.id) - 1] = nullptr;
}

bool CZNDialog::DialogKey(const toolkit::KeyEvent& event) {
  switch (event.key) {
    case toolkit::Key::Escape:
      OnEscape();
      return true;
    case toolkit::Key::F1:
      OnHelp();
      return true;
    case toolkit::Key::Enter:
      OnEnter();
      return false;
    default:
      return false;
  }
}

// Where one types, plain keys and those that edit the text are the control's.
bool CZNDialog::IsForControl(const toolkit::KeyEvent& event) const {
  const CZNControl* const control = native ? Find(native->Focused()) : nullptr;
  if (!control) return false;
  const bool isEdit = control->nativeKind == toolkit::ControlKind::Edit;
  const bool isList = control->nativeKind == toolkit::ControlKind::List ||
                      control->nativeKind == toolkit::ControlKind::ComboBox;
  const bool isSign = event.key == toolkit::Key::Character;
  if (!event.control && !event.alt) return isEdit ? event.key < toolkit::Key::F1 : isList && isSign;
  constexpr std::u32string_view kEditing = U"acvxyz";
  const bool edits =
      isSign ? kEditing.find(event.character) != kEditing.npos : event.key < toolkit::Key::F1;
  return isEdit && event.control && !event.alt && edits;
}

template <class Action>
void CZNDialog::ForControl(ControlId id, Action action) {
  RunEvent([&] {
    CZNControl* control = isBuried ? nullptr : Find(id);
    if (control) action(*control);
  });
}

void CZNDialog::OnValue(ControlId id, int value) {
  ForControl(id, [&](CZNControl& control) { control.HandleValue(value); });
}

void CZNDialog::OnText(ControlId id, const std::string& text) {
  ForControl(id, [&](CZNControl& control) { control.HandleText(text); });
}

void CZNDialog::OnFocus(ControlId id, bool gained) {
  ForControl(id, [&](CZNControl& control) { control.HandleFocus(gained); });
}

bool CZNDialog::OnKey(ControlId id, const toolkit::KeyEvent& event) {
  bool used = false;
  RunEvent([&] {
    if (isBuried) return;
    CZNControl* control = Find(id);
    used = control && control->HandleKey(event);
    if (!used) used = DialogKey(event);
  });
  return used;
}

bool CZNDialog::OnShortcut(const toolkit::KeyEvent& event) {
  bool used = false;
  RunEvent([&] {
    if (isBuried || IsForControl(event)) return;
    used = menuBar && menuBar->shownBy && menuBar->DoShortcut(event);
    if (!used && !isBuried) used = OnAnyKey(event);
  });
  return used;
}

bool CZNDialog::KeepsKey(const toolkit::KeyEvent& event) {
  return !isBuried && IsForControl(event);
}

bool CZNDialog::OnWheel(ControlId id, double notches, bool hasFocus) {
  bool used = false;
  ForControl(id, [&](CZNControl& control) { used = control.HandleWheel(notches, hasFocus); });
  return used;
}

void CZNDialog::OnMouse(ControlId id, const toolkit::MouseEvent& event) {
  ForControl(id, [&](CZNControl& control) { control.HandleMouse(event); });
}

void CZNDialog::OnPaint(ControlId id, toolkit::Painter& painter) {
  ForControl(id, [&](CZNControl& control) { control.HandlePaint(painter); });
}

void CZNDialog::OnDragBegin(ControlId id) {
  ForControl(id, [&](CZNControl& control) { control.HandleDragBegin(); });
}

void CZNDialog::OnContextMenu(ControlId id, toolkit::Point place) {
  ForControl(id, [&](CZNControl& control) { control.HandleContextMenu(place); });
}

void CZNDialog::OnFilesDropped(const std::vector<std::filesystem::path>& files) {
  RunEvent([&] {
    if (!isBuried) OnFiles(files);
  });
}

void CZNDialog::OnObjectOver(std::optional<toolkit::Point> place) {
  RunEvent([&] {
    if (!isBuried) OnDragOver(place);
  });
}

bool CZNDialog::OnObjectDropped(IDataObject* object, toolkit::Point place) {
  bool isUsed = false;
  RunEvent([&] { isUsed = !isBuried && OnDrop(object, place); });
  return isUsed;
}

void CZNDialog::OnDockChanged(ControlId id) {
  ForControl(id, [](CZNControl& control) { control.HandleDockChanged(); });
}

void CZNDialog::OnMenu(int entry) {
  RunEvent([&] {
    if (!isBuried && menuBar) menuBar->Do(entry);
  });
}

void CZNDialog::OnCloseRequest() {
  RunEvent([&] {
    if (!isBuried) OnCancel();
  });
}

void CZNDialog::OnResized(toolkit::Size client) {
  RunEvent([&] {
    if (!isBuried) OnResize(client);
  });
}

void CZNDialog::OnMoved() {
  RunEvent([&] {
    if (!isBuried) OnWindowMoved();
  });
}

void CZNDialog::OnLookChanged() {
  RunEvent([&] {
    if (!isBuried) OnLook();
  });
}
