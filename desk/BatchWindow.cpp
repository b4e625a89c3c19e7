#include "desk/BatchWindow.h"

#include <algorithm>

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
  const auto unit = [this](int units) { return System().Scaled(units); };
  const int pad = unit(12), width = unit(560), listHeight = unit(220);
  int y = pad;
  const auto label = [&](const std::string& text) {
    auto& made = Make<CZNStatic>(text);
    const int height = made.Preferred(text).height;
    made.Place({pad, y, width, height});
    y += height + pad / 2;
    return &made;
  };
  label(Words("DESK_BATCH_PICTURES"));
  list = &Make<CZNListBox>(Words("DESK_BATCH_PICTURES_NAME"), std::vector<std::string>());
  list->Place({pad, y, width, listHeight});
  y += listHeight + pad;
  label(Words("DESK_BATCH_FOLDER"));
  folder = &Make<CZNEdit>(Words("DESK_BATCH_FOLDER_NAME"));
  const int editHeight = folder->Preferred("folder").height;
  folder->Place({pad, y, width, editHeight});
  folder->onChange = [this] { ShowState(); };
  y += editHeight + pad;
  progressText = label(" ");
  y += pad / 2;
  int x = pad;
  const auto button = [&](const std::string& text, std::function<void()> action, bool isDefault) {
    auto& made =
        Make<CZNButton>(text, isDefault ? CZNButton::Kind::Default : CZNButton::Kind::Push);
    const toolkit::Size size = made.Preferred(text);
    const int wide = std::max(size.width, unit(100));
    made.Place({x, y, wide, size.height});
    made.onPress = std::move(action);
    x += wide + pad;
    return &made;
  };
  add = button(
      Words("DESK_BATCH_ADD"), [this] { AddPicture(); }, false);
  clear = button(
      Words("DESK_BATCH_CLEAR"),
      [this] {
        inputs.clear();
        list->SetItems(inputs);
        ShowState();
      },
      false);
  start = button(
      Words("DESK_BATCH_START"), [this] { Start(); }, true);
  stop = button(
      Words("DESK_BATCH_STOP"), [this] { session.StopBatch(); }, false);
  y += start->Preferred(Words("DESK_BATCH_START")).height + pad;
  Native()->SetClientSize({width + 2 * pad, y});
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
  const auto file =
      Native()->AskFile(Words("DESK_BATCH_ADD_TITLE"), false, host::PathOf(session.Name()),
                        {"*.jpg", "*.jpeg", "*.png", "*.tif", "*.bmp", "*.ppm"});
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
