#include "desk/Session.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <string_view>
#include <utility>

#include "base/CodePage.h"
#include "desk/ChainFile.h"
#include "desk/Words.h"
#include "host/ChainCheck.h"
#include "host/ComponentRuntime.h"
#include "host/FilterFacts.h"
#include "host/Texts.h"
#include "program/ApplyRun.h"
#include "program/Messages.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

// Changes that come faster one after the other are one movement of the hand.
constexpr std::chrono::milliseconds kGesture(900);

constexpr char kChainExtension[] = ".chain";

// As the system tells the type of a file whose name says nothing.
bool BeginsAsChain(const fs::path& file) {
  char head[25];
  std::ifstream stream(file, std::ios::binary);
  stream.read(head, sizeof head);
  const std::string_view text(head, static_cast<std::size_t>(stream.gcount()));
  return text.find("ZNFilter.") != text.npos;
}

// From the least faithful to the best.
constexpr const char* kFaithfulness[] = {"100 %", "measured", "scaled", "exact"};

std::size_t RankOf(const std::string& preview) {
  const auto found = std::find(std::begin(kFaithfulness), std::end(kFaithfulness), preview);
  return static_cast<std::size_t>(found - std::begin(kFaithfulness));
}

std::array<BYTE, 4> PixelOf(const MemoryPicture& picture, int x, int y) {
  const BYTE* const colour = picture.ColourRows()[y] + 3 * static_cast<std::ptrdiff_t>(x);
  return {colour[0], colour[1], colour[2], picture.MaskRows()[y][x]};
}

}  // namespace

Session::Session(Post postTo, const fs::path& state, bool takesLeft)
    : post(std::move(postTo)),
      creator(host::MakeCreator()),
      renderCreator(host::MakeCreator()),
      catalog(*creator.Get()),
      work(state, takesLeft),
      recent(state / "recent"),
      bench(*creator.Get(), [this](int item) { return renderer->FilterOf(item); }),
      renderer(std::make_unique<RenderService>(*renderCreator.Get(), [this](const auto& result) {
        post(WhileAlive([this, result] { TakeResult(result); }));
      })) {
  document.onItems = [this] { TakeItems(); };
  document.onSelection = [this] {
    if (onSelection) onSelection();
    Render();
  };
  bench.onChange = [this](const auto& changes) { document.SetParameters(changes, Gesture()); };
  bench.onDelete = [this](const std::vector<int>& ids) {
    document.Remove({ids.begin(), ids.end()});
  };
}

// The threads make tasks that look at `alive`, so it goes behind them.
Session::~Session() {
  worker.End();
  loader.End();
  bench.Close();
  renderer.reset();
  alive.reset();
}

// A task that does nothing when the session is gone by then.
std::function<void()> Session::WhileAlive(std::function<void()> task) {
  return [task = std::move(task), still = std::weak_ptr<int>(alive)] {
    if (still.lock()) task();
  };
}

void Session::Tell(const std::string& message) {
  messages.push_back(message);
  if (onMessage) onMessage(message);
}

// --- pictures

void Session::Open(const std::string& wanted, std::optional<ChainItems> chain) {
  const std::uint64_t opening = ++openings;
  chainToTake = std::move(chain);
  const auto fail = [=, this](const std::string& what) {
    Tell(what);
    if (opening == openings) TakeChain();
  };
  const auto later = [this](std::function<void()> task) { post(WhileAlive(std::move(task))); };
  loader.Begin([=, this, box = screen](const Background::Stop& stop) {
    const auto take = [&](const std::shared_ptr<LoadedPicture>& loaded) {
      later([this, wanted, loaded, opening] { TakePicture(wanted, loaded, opening); });
    };
    try {
      PictureLoader::Load(host::PathOf(wanted), box, take, take, [&](double) { return !*stop; });
    } catch (const program::FileError& error) {
      later([fail, what = std::string(error.what())] { fail(what); });
    } catch (const std::exception& error) {
      later([fail, what = wanted + ": " + error.what()] { fail(what); });
    }
  });
}

void Session::TakeChain() {
  if (const auto items = std::exchange(chainToTake, std::nullopt)) document.Replace(*items);
}

// Comes twice for a picture of which there was a first look.
void Session::TakePicture(const std::string& opened, const std::shared_ptr<LoadedPicture>& loaded,
                          std::uint64_t opening) {
  if (opening != openings) return;
  const bool isNew = picture != loaded;
  picture = loaded;
  if (!isNew) return Render();
  // What was made ahead of the first picture stays.
  const bool isFirst = name.empty() && !isRecovering;
  if (isFirst && !chainToTake && !document.Items().empty()) chainToTake = document.Items();
  name = opened;
  shown = {};
  recent.Add(name);
  if (std::exchange(isRecovering, false)) {
    savedText = OwnChainText().value_or("");
  } else {
    LoadOwnChain();
  }
  TakeChain();
  work.Save({name, document.Items()});
  if (onPicture) onPicture();
  Render();
}

std::optional<std::string> Session::OwnChainText() {
  std::error_code ignored;
  try {
    if (IsInBox(name)) return ReadBoxChain(name);
    return fs::exists(ChainFile(), ignored) ? ReadTextFile(ChainFile()) : std::nullopt;
  } catch (const std::exception& error) {
    Tell(error.what());
    return std::nullopt;
  }
}

// The chain that was saved with the picture; another picture's chain goes.
void Session::LoadOwnChain() {
  savedText.clear();
  ChainItems items;
  const std::string where = IsInBox(name) ? name : host::Utf8Of(ChainFile());
  if (const auto text = OwnChainText()) items = CheckedItems(*text, where).value_or(ChainItems());
  bench.Close();
  document.Reset(items);
  savedText = ChainFileText(document.Items());
}

bool Session::IsPictureFile(const std::string& file, std::string& why) const {
  try {
    const imageio::ImageReader reader(host::PathOf(file));
    return true;
  } catch (const std::exception& error) {
    why = error.what();
    return false;
  }
}

bool Session::IsChainFile(const std::string& file) {
  if (IsInBox(file)) return false;
  const fs::path path = host::PathOf(file);
  return path.extension() == kChainExtension || path.extension() == ".txt" || BeginsAsChain(path);
}

void Session::OpenAll(const std::vector<std::string>& names) {
  std::string first, chain;
  for (const std::string& one : names) {
    std::string why;
    if (IsChainFile(one)) {
      chain = one;
    } else if (!IsInBox(one) && !IsPictureFile(one, why)) {
      Tell(one + ": " + why);
    } else if (first.empty()) {
      first = one;
    } else {
      recent.Add(one);
    }
  }
  if (first.empty()) {
    if (!chain.empty()) LoadChain(chain);
  } else {
    Open(first, chain.empty() ? std::nullopt : ReadChain(chain));
  }
}

bool Session::Recover() {
  if (!work.Left()) return false;
  document.Reset(work.Left()->chain);
  isRecovering = true;
  if (!work.Left()->picture.empty()) Open(work.Left()->picture);
  return true;
}

// --- the chain

void Session::TakeItems() {
  work.Save({name, document.Items()});
  bench.Follow(document);
  if (onItems) onItems();
  Render();
}

void Session::AddFilter(const std::string& progId, std::optional<int> place) {
  const CatalogEntry* const entry = catalog.Find(progId);
  if (!entry) return;
  const auto rank = [&](const ChainItem& item) {
    const CatalogEntry* const known = catalog.Find(item.progId);
    return known ? known->order : 0;
  };
  const ChainItems& items = document.Items();
  const auto behind = std::find_if(
      items.begin(), items.end(), [&](const ChainItem& item) { return rank(item) > entry->order; });
  document.Add(progId, entry->start, place.value_or(static_cast<int>(behind - items.begin())));
}

std::string Session::CopyText() const {
  return TextOf(document.Selected(), true);
}

bool Session::Paste(const std::string& chainText, int place) {
  ChainItems items = ItemsOf(chainText);
  std::erase_if(items, [&](const ChainItem& item) { return !catalog.Find(item.progId); });
  document.Insert(items, place);
  return !items.empty();
}

fs::path Session::ChainFile() const {
  if (!HasPicture() && !chainAlone.empty()) return host::PathOf(chainAlone);
  fs::path file = host::PathOf(name);
  if (IsInBox(name)) {
    std::string flat = name;
    flat.replace(flat.rfind("::"), 2, "-");
    file = host::PathOf(flat);
  }
  return file.replace_extension(kChainExtension);
}

ChainItems Session::GoodItems(const std::string& chainText) const {
  const host::ChainText given{host::ChainTextOf(chainText), "(", ")"};
  const auto filters = host::ListFilters(*creator.Get());
  return ItemsOf(host::CheckChainText(given, filters, *creator.Get()));
}

// Nothing, and a message, for a text that is no chain.
std::optional<ChainItems> Session::CheckedItems(const std::string& text, const std::string& where) {
  try {
    return ItemsOfChainFile(text, [this](const std::string& part) { return GoodItems(part); });
  } catch (const std::exception& error) {
    Tell(where + ": " + error.what());
    return std::nullopt;
  }
}

std::optional<ChainItems> Session::ReadChain(const std::string& file) {
  const auto text = ReadTextFile(host::PathOf(file));
  if (!text) Tell(Words("DESK_UNREADABLE", file));
  return text ? CheckedItems(*text, file) : std::nullopt;
}

bool Session::LoadChain(const std::string& file) {
  const auto items = ReadChain(file);
  if (!items) return false;
  if (!HasPicture()) {
    chainAlone = file;
    savedText = ChainFileText(*items);
  }
  document.Replace(*items);
  return true;
}

bool Session::SaveChain(const std::string& file) {
  const std::string text = ChainFileText(document.Items());
  const auto failure = WriteTextFile(host::PathOf(file), text);
  if (failure) {
    Tell(file + ": " + *failure);
    return false;
  }
  savedText = text;
  if (onDone) onDone(Words("DESK_SAVED", file));
  return true;
}

bool Session::SaveOwnChain() {
  if (!IsInBox(name)) return SaveChain(host::Utf8Of(ChainFile()));
  const std::string text = ChainFileText(document.Items());
  try {
    WriteBoxChain(name, text);
  } catch (const std::exception& error) {
    Tell(error.what());
    return false;
  }
  savedText = text;
  if (onDone) onDone(Words("DESK_SAVED_IN_BOX", name));
  return true;
}

bool Session::IsModified() const {
  return ChainFileText(document.Items()) != savedText;
}

bool Session::EditSelection(void* ownerWindow) {
  const ChainItems chosen = document.Selected();
  const bool isOneClass = std::all_of(chosen.begin(), chosen.end(), [&](const ChainItem& item) {
    return item.progId == chosen[0].progId;
  });
  return !chosen.empty() && isOneClass && bench.Open(chosen, ownerWindow);
}

// Changes that follow each other quickly are one movement of the hand.
std::uint64_t Session::Gesture() {
  const auto now = std::chrono::steady_clock::now();
  if (now - lastChange > kGesture) ++gesture;
  lastChange = now;
  return gesture;
}

// --- work in the picture

const ChainItem* Session::ToolItem() const {
  if (document.Selection().size() != 1) return nullptr;
  const ChainItem* const item = document.Find(*document.Selection().begin());
  return item && item->isOn && ToolOf(item->progId) != PictureTool::None ? item : nullptr;
}

PictureTool Session::Tool() const {
  const ChainItem* const item = ToolItem();
  return item ? ToolOf(item->progId) : PictureTool::None;
}

std::optional<CropFrame> Session::Crop() const {
  if (Tool() != PictureTool::Crop) return std::nullopt;
  return CropOf(ToolItem()->parameters);
}

void Session::SetToolText(const std::string& parameters) {
  if (!parameters.empty()) document.SetParameters({{ToolItem()->id, parameters}}, Gesture());
}

void Session::SetCrop(const CropFrame& frame) {
  if (Tool() == PictureTool::Crop) SetToolText(WithCrop(*creator.Get(), *ToolItem(), frame));
}

void Session::ClickEye(double x, double y) {
  constexpr double kReach = 0.02;
  if (Tool() != PictureTool::RedEye) return;
  SetToolText(WithClick(*creator.Get(), *ToolItem(), x, y, kReach));
}

ChainItems Session::ShownItems() const {
  const ChainItem* const item = ToolItem();
  return item ? ShownWith(document.Items(), item->id) : document.Items();
}

// --- what is shown

void Session::SetBox(host::Size box, bool wantsFull) {
  box = {std::max(box.width, 16), std::max(box.height, 16)};
  if (box == screen && wantsFull == fullIsWanted) return;
  screen = box;
  fullIsWanted = wantsFull;
  Render();
}

void Session::Render() {
  if (!picture) return;
  const ChainItems items = ShownItems();
  const PicturePointer full = picture->Full();
  const bool isNew = items != renderedItems || screen != renderedScreen ||
                     picture != renderedPicture || full != renderedFull;
  if (!isNew) return;
  renderedItems = items;
  renderedScreen = screen;
  renderedPicture = picture;
  renderedFull = full;
  requested = renderer->Submit({picture, items, screen, fullIsWanted});
}

void Session::TakeResult(const RenderResult& result) {
  if (result.request != requested) return;
  if (!result.error.empty()) return Tell(result.error);
  shown = result;
  if (onShown) onShown();
}

std::string Session::Exactness() const {
  if (!shown.after) return "";
  if (Tool() == PictureTool::Crop) return Words("DESK_TOOL_CROP");
  if (Tool() == PictureTool::RedEye) return Words("DESK_TOOL_RED_EYE");
  if (shown.stage == RenderStage::Full) return Words("DESK_AS_EXPORTED");
  std::size_t worst = RankOf("exact");
  for (const ChainItem& item : document.Items()) {
    const CatalogEntry* const entry = catalog.Find(item.progId);
    if (item.isOn && entry) worst = std::min(worst, RankOf(entry->preview));
  }
  constexpr const char* kKeys[] = {"PREVIEW_full", "PREVIEW_measured", "PREVIEW_scaled",
                                   "PREVIEW_exact"};
  const bool isRough = shown.stage == RenderStage::Preview;
  return Words(isRough ? "DESK_ROUGH" : "DESK_PREVIEW", Words(kKeys[worst]));
}

// Where the chain keeps the size, the pixel is taken through its filters alone; else the pixels of
// both pictures at the same share of their sides are told.
std::optional<PixelPair> Session::PixelAt(int x, int y) {
  if (!shown.after || !shown.before) return std::nullopt;
  const auto at = [&](const MemoryPicture& one) {
    const auto share = [](int place, int of, int count) {
      return std::clamp(static_cast<int>((place + 0.5) * count / of), 0, count - 1);
    };
    return PixelOf(one, share(x, shown.shown->Width(), one.Width()),
                   share(y, shown.shown->Height(), one.Height()));
  };
  PixelPair pair{at(*shown.before), at(*shown.after)};
  const bool keepsSize = shown.before->Width() == shown.after->Width() &&
                         shown.before->Height() == shown.after->Height();
  if (!keepsSize) return pair;
  if (const auto after = renderer->ReadPixel(pair.before)) pair.after = *after;
  return pair;
}

// --- results

void Session::Export(const std::string& file) {
  if (name.empty()) return;
  RunFiles({name}, file, true);
}

void Session::Batch(const std::vector<std::string>& inputs, const std::string& folder) {
  RunFiles(inputs, folder + "/", false);
}

void Session::RunFiles(const std::vector<std::string>& inputs, const std::string& out,
                       bool isExport) {
  program::ApplyRequest request;
  request.chain.text = TextOf(document.Items());
  worker.Begin([=, this](const Background::Stop& stop) {
    BatchProgress progress;
    progress.count = static_cast<int>(inputs.size());
    const auto tell = [&] {
      post(WhileAlive([this, progress, isExport, out] {
        if (onBatch && !isExport) onBatch(progress);
        if (!progress.isOver) return;
        for (const std::string& error : progress.errors) Tell(error);
        if (onDone && isExport && progress.errors.empty()) onDone(Words("DESK_EXPORTED", out));
      }));
    };
    try {
      const auto own = host::MakeCreator();
      program::OutputOptions options;
      options.out = out;
      const auto plan = isExport ? program::PlanOutputs(inputs, options)
                                 : program::PlanListOutputs(inputs, options);
      program::ApplyRequest stoppable = request;
      stoppable.stop = stop.get();
      program::ApplyRun run(stoppable, *own.Get(), [](double) {});
      for (const program::PlannedFile& file : plan) {
        progress.current = host::Utf8Of(file.input);
        progress.wasStopped = *stop;
        if (progress.wasStopped) break;
        tell();
        const program::FileResult result = run.Do(file);
        progress.wasStopped = *stop && !result.isWritten;
        if (progress.wasStopped) break;
        if (!result.error.empty()) progress.errors.push_back(result.error);
        ++progress.done;
      }
    } catch (const std::exception& error) {
      progress.errors.push_back(error.what());
    }
    progress.isOver = true;
    tell();
  });
}

}  // namespace desk
