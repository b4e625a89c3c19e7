#include "desk/BatchWindow.h"

#include <algorithm>

#include "desk/LoadedPicture.h"
#include "desk/Words.h"
#include "host/Texts.h"

namespace desk {

BatchWindow::~BatchWindow() {
  session.onBatch = nullptr;
}

void BatchWindow::Open(void* owner) {
  toolkit::WindowSpec spec;
  spec.title = Words("DESK_BATCH_TITLE");
  spec.owner = owner;
  spec.takesFiles = true;
  session.onBatch = [this](const BatchProgress& progress) { ShowProgress(progress); };
  if (!CreateModeless(spec)) return;
  if (session.HasPicture()) OnFiles({host::PathOf(session.Name())});
  ShowState();
  Show();
}

void BatchWindow::Build() {
  const int pad = Pad(), width = System().Scaled(560), listHeight = System().Scaled(220);
  toolkit::Point at = {pad, pad};
  AddLine(at, width, Words("DESK_BATCH_PICTURES"));
  list = &Make<CZNListBox>(Words("DESK_BATCH_PICTURES_NAME"), std::vector<std::string>());
  list->Place({at.x, at.y, width, listHeight});
  at.y += listHeight + pad;
  AddLine(at, width, Words("DESK_BATCH_FOLDER"));
  folder = &Make<CZNEdit>(Words("DESK_BATCH_FOLDER_NAME"));
  const int editHeight = folder->Preferred("folder").height;
  folder->Place({at.x, at.y, width, editHeight});
  folder->onChange = [this] { ShowState(); };
  at.y += editHeight + pad;
  progressText = AddLine(at, width, " ");
  at.y += pad / 2;
  AddButtons(at);
  const int buttonHeight = start->Preferred(Words("DESK_BATCH_START")).height;
  Native()->SetClientSize({width + 2 * pad, at.y + buttonHeight + pad});
}

int BatchWindow::Pad() {
  return System().Scaled(12);
}

CZNStatic* BatchWindow::AddLine(toolkit::Point& at, int width, const std::string& text) {
  auto& line = Make<CZNStatic>(text);
  const int height = line.Preferred(text).height;
  line.Place({at.x, at.y, width, height});
  at.y += height + Pad() / 2;
  return &line;
}

void BatchWindow::AddButtons(toolkit::Point at) {
  using Kind = CZNButton::Kind;
  add = AddButton(at, Kind::Push, Words("DESK_BATCH_ADD"));
  add->onPress = [this] { AddPicture(); };
  clear = AddButton(at, Kind::Push, Words("DESK_BATCH_CLEAR"));
  clear->onPress = [this] { Clear(); };
  start = AddButton(at, Kind::Default, Words("DESK_BATCH_START"));
  start->onPress = [this] { Start(); };
  stop = AddButton(at, Kind::Push, Words("DESK_BATCH_STOP"));
  stop->onPress = [this] { session.StopBatch(); };
}

CZNButton* BatchWindow::AddButton(toolkit::Point& at, CZNButton::Kind kind,
                                  const std::string& text) {
  auto& button = Make<CZNButton>(text, kind);
  const toolkit::Size size = button.Preferred(text);
  const int width = std::max(size.width, System().Scaled(100));
  button.Place({at.x, at.y, width, size.height});
  at.x += width + Pad();
  return &button;
}

void BatchWindow::Clear() {
  inputs.clear();
  list->SetItems(inputs);
  ShowState();
}

void BatchWindow::OnCancel() {
  session.StopBatch();
  Hide();
}

void BatchWindow::OnFiles(const std::vector<std::filesystem::path>& files) {
  for (const auto& file : files) inputs.push_back(host::Utf8Of(file));
  if (folder->Text().empty() && !files.empty()) {
    folder->SetEditText(host::Utf8Of(files[0].parent_path() / "fxbox"));
  }
  list->SetItems(inputs);
  ShowState();
}

void BatchWindow::AddPicture() {
  const auto file = Native()->AskFile(Words("DESK_BATCH_ADD_TITLE"), false,
                                      host::PathOf(session.Name()), kPicturePatterns);
  if (file) OnFiles({*file});
}

void BatchWindow::Start() {
  session.Batch(inputs, folder->Text());
  ShowState();
}

void BatchWindow::ShowProgress(const BatchProgress& progress) {
  const char* const key = !progress.isOver      ? "DESK_BATCH_PROGRESS"
                          : progress.wasStopped ? "DESK_BATCH_STOPPED"
                                                : "DESK_BATCH_DONE";
  std::string text = Words(key, std::to_string(progress.done), std::to_string(progress.count));
  if (!progress.isOver) text += ": " + progress.current;
  if (!progress.errors.empty()) {
    text += Words("DESK_BATCH_FAILED", std::to_string(progress.errors.size()));
  }
  progressText->SetText(text);
  ShowState();
  if (progress.isOver && onOver) onOver(progress);
}

void BatchWindow::ShowState() {
  const bool isRunning = session.IsWorking();
  add->Enable(!isRunning);
  clear->Enable(!isRunning && !inputs.empty());
  start->Enable(!isRunning && !inputs.empty() && !folder->Text().empty());
  stop->Enable(isRunning);
}

}  // namespace desk
