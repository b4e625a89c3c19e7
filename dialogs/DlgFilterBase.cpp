#include "dialogs/DlgFilterBase.h"

#include <algorithm>

#include "base/CodePage.h"
#include "dialogs/DlgDebug.h"
#include "dialogs/PdibFilterDialog.h"
#include "toolkit/Shortcut.h"

namespace {

constexpr int kMargin = 12;
constexpr int kGap = 8;

}  // namespace

CDlgFilterBase::CDlgFilterBase(CPdibFilterDialog* dialog, const char* header, const char* help)
    : owner(dialog), headerKey(header), helpKey(help) {}

bool CDlgFilterBase::CreateModelessFor(void* ownerWindow) {
  toolkit::WindowSpec spec;
  toolkit::CurrentBackend();  // its language is that of the words
  spec.title = Words(headerKey);
  spec.owner = ownerWindow;
  return CreateModeless(spec);
}

std::string CDlgFilterBase::Words(const char* key) const {
  return owner ? owner->Words(key) : key;
}

void CDlgFilterBase::Call(const char* name) const {
  if (owner) owner->Dispatch(name, 0, 0, 0);
}

void CDlgFilterBase::Update() {
  if (owner) owner->Notify("UpdateFilter");
}

void CDlgFilterBase::MakeButtons() {
  const auto make = [&](const char* key, CZNButton::Kind kind, bool canDrag) {
    buttons.push_back({nullptr, Words(key)});
    buttons.back().button = &Make<CZNButton>(buttons.back().text, kind, canDrag);
    return buttons.back().button;
  };
  using Kind = CZNButton::Kind;
  copy = make("IDS_COMMON_COPY", Kind::Push, true);
  lock = make("IDS_COMMON_LOCK", Kind::Toggle, false);
  remove = make("IDS_COMMON_DELETE", Kind::Push, false);
  dock = make("IDS_COMMON_DOCK", Kind::Toggle, false);
  copy->SetBubble(Words("IDS_COMMON_COPY_BUBBLE"));
  lock->SetBubble(Words("IDS_COMMON_LOCK_BUBBLE"));
  remove->SetBubble(Words("COMMON_COPY_MENU_DELETE_FILTER"));
  copy->onPress = [this] { Call("ButtonTop"); };
  copy->onDrag = [this] { Call("ButtonTopDrag"); };
  copy->onContextMenu = [this](toolkit::Point place) { RunCopyMenu(place); };
  lock->onPress = [this] { Call("bu_lock"); };
  remove->onPress = [this] { Call("ButtonTopDelete"); };
  dock->onPress = [this] {
    if (owner) owner->Notify(IsDocked() ? "DockFilterDialog" : "UndockFilterDialog");
  };
}

void CDlgFilterBase::RunCopyMenu(toolkit::Point place) {
  CZNMenu menu;
  const int copying =
      menu.Add(Words("COMMON_COPY_MENU_COPY_FILTER"), [this] { Call("ButtonTop"); });
  menu.Add(Words("COMMON_COPY_MENU_DELETE_FILTER"), [this] { Call("ButtonTopDelete"); });
  menu.Enable(copying, isMixed);
  place.x += copy->Where().x;
  place.y += copy->Where().y;
  menu.Run(*this, place);
}

void CDlgFilterBase::Build() {
  BuildContents();
  mixedText = Words("IDS_COMMON_MIXED");
  mixedNote = &Make<CZNStatic>(mixedText);
  mixedNote->SetVisible(false);
  MakeButtons();
  copy->Enable(false);
  Arrange();
}

void CDlgFilterBase::Arrange() {
  const int margin = System().Scaled(kMargin);
  const int gap = System().Scaled(kGap);
  const toolkit::Size note = mixedNote->Preferred(mixedText);
  int leastWidth = note.width;
  int buttonsWidth = -gap;
  for (const Caption& caption : buttons) {
    buttonsWidth += caption.button->Preferred(caption.text).width + gap;
  }
  leastWidth = std::max(leastWidth, buttonsWidth);
  const toolkit::Size contents = PlaceContents({margin, margin}, leastWidth);
  const int width = std::max(leastWidth, contents.width);
  const int noteY = margin + contents.height + gap;
  mixedNote->Place({margin, noteY, width, note.height});
  const int buttonsHeight = PlaceButtons(noteY + note.height + gap);
  Native()->SetClientSize({width + 2 * margin, noteY + note.height + gap + buttonsHeight + margin});
}

int CDlgFilterBase::PlaceButtons(int y) {
  int x = System().Scaled(kMargin);
  int height = 0;
  for (const Caption& caption : buttons) {
    const toolkit::Size size = caption.button->Preferred(caption.text);
    caption.button->Place({x, y, size.width, size.height});
    x += size.width + System().Scaled(kGap);
    height = std::max(height, size.height);
  }
  return height;
}

void CDlgFilterBase::SetMixed(bool mixed) {
  isMixed = mixed;
  if (!mixedNote) return;
  mixedNote->SetVisible(mixed);
  copy->Enable(mixed);
}

void CDlgFilterBase::SetDocked(bool docked) {
  if (dock) dock->SetDown(docked);
}

void CDlgFilterBase::TakeFocus() {
  FocusContents();
}

void CDlgFilterBase::OnCancel() {
  if (owner) owner->CloseWindow();
}

void CDlgFilterBase::OnHelp() {
  if (!owner || !helpKey) return;
  const std::string text = base::FromUtf8(Words(helpKey));
  owner->Dispatch("GetContexthelp", reinterpret_cast<std::intptr_t>(text.c_str()), 0, 0);
}

// For developers: the window that gives the filters any text.
bool CDlgFilterBase::OnAnyKey(const toolkit::KeyEvent& event) {
  if (!owner || !toolkit::IsShortcut(event, toolkit::ShortcutOf("Ctrl+Shift+D"))) return false;
  CDlgDebug::ShowFor(owner);
  return true;
}

void CDlgFilterBase::OnWindowMoved() {
  if (owner && IsDocked()) owner->Notify("UpdateDockedFilterDialog");
}
