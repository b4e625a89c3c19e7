// What a person asks of the window: files, the clipboard, drags, dialogs.
#include <algorithm>

#include "core/DataXferObj.h"
#include "core/DragText.h"
#include "core/TransferFormats.h"
#include "desk/BatchWindow.h"
#include "desk/DeskWindow.h"
#include "desk/LoadedPicture.h"
#include "desk/MessageWindow.h"
#include "desk/Words.h"
#include "host/Texts.h"
#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"
#include "toolkit/ZNMessage.h"

namespace desk {

using toolkit::Point;
using toolkit::Rect;

// --- what is asked for

bool DeskWindow::MayLeave() {
  if (!session.HasChainFile() || !session.IsModified()) return true;
  if (isAsking) return false;
  isAsking = true;
  const int answer = ZNAskButton(
      Words("DESK_TITLE"), Words("DESK_ASK_SAVE"),
      {Words("DESK_ASK_SAVE_YES"), Words("DESK_ASK_SAVE_NO"), Words("DESK_ASK_SAVE_CANCEL")},
      Handle());
  isAsking = false;
  if (answer == 0) return session.SaveOwnChain();
  return answer == 1;
}

void DeskWindow::AskOpen() {
  const auto file = Native()->AskFile(Words("DESK_ASK_OPEN"), false, host::PathOf(session.Name()),
                                      kPicturePatterns);
  if (file && MayLeave()) session.Open(host::Utf8Of(*file));
}

void DeskWindow::AskLoadChain() {
  const auto file =
      Native()->AskFile(Words("DESK_ASK_LOAD"), false, session.ChainFile(), {"*.chain", "*.txt"});
  if (file) session.LoadChain(host::Utf8Of(*file));
}

void DeskWindow::AskSaveChain() {
  const auto file =
      Native()->AskFile(Words("DESK_ASK_SAVE_AS"), true, session.ChainFile(), {"*.chain"});
  if (file) session.SaveChain(host::Utf8Of(*file));
}

void DeskWindow::AskExport() {
  if (!session.HasPicture()) return;
  std::filesystem::path start = host::PathOf(session.Name());
  std::filesystem::path proposed = start.stem();
  proposed += "-fxbox";
  proposed += start.extension();
  start.replace_filename(proposed);
  const auto file = Native()->AskFile(Words("DESK_ASK_EXPORT"), true, start, kPicturePatterns);
  if (!file) return;
  exportFile = host::Utf8Of(*file);
  session.Export(exportFile);
}

void DeskWindow::ExportAgain() {
  if (exportFile.empty()) return AskExport();
  session.Export(exportFile);
}

void DeskWindow::RunBatch() {
  auto window = std::make_unique<BatchWindow>(session);
  BatchWindow& shownWindow = *window;
  batchWindow = std::move(window);
  shownWindow.onOver = [this](const BatchProgress& progress) {
    Tell("batched " + std::to_string(progress.done) + " " + std::to_string(progress.count));
  };
  shownWindow.Open(Handle());
  Tell("batch " + std::to_string(shownWindow.Count()));
}

void DeskWindow::ShowMessages() {
  auto window = std::make_unique<MessageWindow>(session.Messages());
  MessageWindow& shownWindow = *window;
  messageWindow = std::move(window);
  shownWindow.Open(Handle());
}

// The selected filters as clipboard and drags take them; null without any.
platform::ComPtr<IDataObject> DeskWindow::Selected() {
  const auto object = platform::ComPtr<CDataXferObj>::Attach(new CDataXferObj);
  if (!core::AddDraggedChain(object.Get(), session.CopyText())) return {};
  return platform::ComPtr<IDataObject>(object.Get());
}

void DeskWindow::Copy() {
  const auto object = Selected();
  if (object && System().SetClipboard(object.Get())) Tell("copied");
}

void DeskWindow::Cut() {
  Copy();
  session.Chain().Remove(session.Chain().Selection());
}

// Behind what is selected, or at the end.
void DeskWindow::Paste() {
  const auto object = platform::ComPtr<IDataObject>::Attach(System().Clipboard());
  if (!object) return;
  int place = static_cast<int>(session.Chain().Items().size());
  for (const int item : session.Chain().Selection()) place = session.Chain().PlaceOf(item) + 1;
  TakeChain(object.Get(), place);
}

bool DeskWindow::TakeChain(IDataObject* object, int place) {
  const auto content = core::ReadDraggedChain(object);
  const auto plain = content ? std::nullopt : ReadPlainText(object);
  const bool isTaken = session.Paste(content ? content->chain : plain.value_or(""), place);
  if (!isTaken) Say(Words("DESK_NO_CHAIN"));
  return isTaken;
}

namespace {

// The drag ends with the left button, and with Escape.
class DragSource final : public platform::ComObject<DragSource, IDropSource> {
 public:
  HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escapePressed, DWORD keys) override {
    constexpr DWORD kLeftButton = 1;
    if (escapePressed) return DRAGDROP_S_CANCEL;
    return keys & kLeftButton ? S_OK : DRAGDROP_S_DROP;
  }
  HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD) override { return DRAGDROP_S_USEDEFAULTCURSORS; }
};

}  // namespace

void DeskWindow::DragOut() {
  constexpr std::uint32_t kCopy = 1;
  const auto object = Selected();
  if (!object) return;
  const auto source = platform::ComPtr<IDropSource>::Attach(new DragSource);
  std::uint32_t effect = 0;
  isDraggingOut = true;
  Native()->Drag(object.Get(), source.Get(), kCopy, effect);
  isDraggingOut = false;
  chain->ShowDrop(std::nullopt);
}

// A place of the window as one of the chain's list; nothing outside of it.
std::optional<Point> DeskWindow::InChain(Point place) const {
  const Rect list = chain->Where();
  if (!list.Contains(place)) return std::nullopt;
  return Point{place.x - list.x, place.y - list.y};
}

void DeskWindow::OnDragOver(std::optional<Point> place) {
  chain->ShowDrop(place ? InChain(*place) : std::nullopt);
}

// What comes back into the list that it was dragged out of is moved.
bool DeskWindow::OnDrop(IDataObject* object, Point place) {
  const auto inChain = InChain(place);
  const int to =
      inChain ? chain->DropPlace(*inChain) : static_cast<int>(session.Chain().Items().size());
  if (!isDraggingOut) return TakeChain(object, to);
  if (inChain) session.Chain().Move(session.Chain().Selection(), to);
  return inChain.has_value();
}

void DeskWindow::SwitchSelection() {
  const auto& chosen = session.Chain().Selection();
  if (chosen.empty()) return;
  session.Chain().Switch(chosen, !session.Chain().Find(*chosen.begin())->isOn);
}

void DeskWindow::OpenDialog() {
  if (session.Chain().Selection().empty()) return;
  if (!session.EditSelection(Handle())) Say(Words("DESK_NO_DIALOG"));
}

// An open dialog goes over to what is selected now.
void DeskWindow::FollowSelection() {
  if (!session.Bench().IsOpen()) return;
  std::vector<int> chosen;
  for (const ChainItem& item : session.Chain().Selected()) chosen.push_back(item.id);
  if (chosen == session.Bench().Items()) return;
  const toolkit::ControlId focused = Native()->Focused();
  if (!session.EditSelection(Handle())) session.Bench().Close();
  const bool isDocked = settings.dialog != DialogPlace::Window;
  if (CZNControl* const before = isDocked && focused != dock->Id() ? Find(focused) : nullptr) {
    before->Focus();  // whoever goes through the chain by keys goes on
  }
}

void DeskWindow::Drag(const CatalogEntry& entry, Point place, bool isDrop) {
  const auto inChain = InChain(place);
  chain->ShowDrop(isDrop ? std::nullopt : inChain);
  if (!isDrop) return;
  if (inChain) {
    session.AddFilter(entry.progId, chain->DropPlace(*inChain));
  } else if (view->Where().Contains(place)) {
    session.AddFilter(entry.progId);
  } else {
    return;
  }
  OpenDialog();
}

void DeskWindow::Click(toolkit::Spot share) {
  if (session.Tool() == PictureTool::RedEye) return session.ClickEye(share.x, share.y);
  const PicturePointer& picture = session.Shown().shown;
  if (!picture || !session.Bench().WaitsForColour()) return;
  const auto pair = session.PixelAt(static_cast<int>(share.x * picture->Width()),
                                    static_cast<int>(share.y * picture->Height()));
  if (pair) session.Bench().PickColour(pair->before[2], pair->before[1], pair->before[0]);
}

void DeskWindow::OnFiles(const std::vector<std::filesystem::path>& files) {
  std::vector<std::string> names;
  for (const auto& file : files) names.push_back(host::Utf8Of(file));
  const bool isPicture = !std::all_of(names.begin(), names.end(), &Session::IsChainFile);
  if (isPicture && !MayLeave()) return;
  const std::size_t before = session.Messages().size();
  session.OpenAll(names);
  if (session.Messages().size() > before) ShowMessages();
}

// Escape closes nothing; the close button does.
void DeskWindow::OnCancel() {
  if (!isOpen || !MayLeave()) return;
  isOpen = false;
  session.Bench().Close();
  session.Finish();
  Hide();
}

}  // namespace desk
