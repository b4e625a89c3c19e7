#include "desk/RenderService.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "base/CodePage.h"

namespace desk {
namespace {

using platform::ComPtr;

// A preview comes ahead of a screen that takes longer than this.
constexpr double kQuickEnough = 40;
// How much smaller its sides are.
constexpr int kPreviewPart = 3;

ChainItems ThoseOn(const ChainItems& items) {
  ChainItems on;
  std::copy_if(items.begin(), items.end(), std::back_inserter(on),
               [](const ChainItem& item) { return item.isOn; });
  return on;
}

bool SameClasses(const ChainItems& a, const ChainItems& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& two) {
    return one.progId == two.progId && one.id == two.id;
  });
}

double MillisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

}  // namespace

// One size of the picture with a chain of its own, which is kept from request to request so that
// its filters need not measure or build again what has not changed.
struct RenderService::Stage {
  PicturePointer before;
  host::Size target;
  ChainItems items;
  ComPtr<host::PictureSource> source;
  std::unique_ptr<host::Pipeline> pipeline;

  bool Fits(const PicturePointer& picture, host::Size full) const {
    return pipeline && before == picture && target == full;
  }

  void Build(IAnimFilterCreator& creator, const PicturePointer& picture, host::Size full) {
    pipeline.reset();
    before = picture;
    target = full;
    items.clear();
    host::SourcePicture told{{picture->Width(), picture->Height()}, full, {}};
    if (told.size != full) told.zoom = static_cast<double>(told.size.width) / full.width;
    source = ComPtr<host::PictureSource>::Attach(new host::PictureSource(told, picture));
    pipeline = std::make_unique<host::Pipeline>(creator, source);
  }

  // Gives new parameters to the filters that are there, where no filter comes or goes.
  void Set(const ChainItems& wanted) {
    if (!SameClasses(items, wanted) || pipeline->Filters().size() != wanted.size()) {
      pipeline->SetText({TextOf(wanted), "(", ")"});
    } else {
      SetParameters(wanted);
    }
    items = wanted;
  }

 private:
  void SetParameters(const ChainItems& wanted) {
    const auto filters = pipeline->Filters();
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      if (items[i].parameters == wanted[i].parameters) continue;
      const auto parameter = ComPtr<IAnimFilterParameter>::Query(filters[i].Get());
      if (parameter) parameter->SetParameter(wanted[i].parameters.c_str(), 1);
    }
  }
};

RenderService::RenderService(IAnimFilterCreator& filterCreator, Deliver deliverTo)
    : creator(filterCreator), deliver(std::move(deliverTo)) {
  for (auto& stage : stages) stage = std::make_unique<Stage>();
  thread = std::thread([this] { Work(); });
}

RenderService::~RenderService() {
  Cancel();
  {
    const std::lock_guard hold(lock);
    isEnding = true;
  }
  wake.notify_all();
  thread.join();
}

std::uint64_t RenderService::Submit(RenderRequest request) {
  std::uint64_t number = 0;
  {
    const std::lock_guard hold(lock);
    number = ++newest;
    waiting = std::move(request);
    StopPull();
  }
  wake.notify_all();
  return number;
}

void RenderService::Cancel() {
  const std::lock_guard hold(lock);
  ++newest;
  waiting.reset();
  StopPull();
}

void RenderService::StopPull() {
  if (pulled) pulled->pipeline->Tail().SetAbort(true);
}

bool RenderService::IsIdle() const {
  const std::lock_guard hold(lock);
  return !waiting && !isWorking;
}

// --- questions

RenderService::Stage* RenderService::StandingStill() const {
  return pulled ? pulled : settled;
}

std::optional<std::array<BYTE, 4>> RenderService::ReadPixel(const std::array<BYTE, 4>& before) {
  const std::lock_guard hold(lock);
  Stage* const asked = StandingStill();
  if (!asked) return std::nullopt;
  std::array<BYTE, 4> pixel = before;
  if (FAILED(asked->pipeline->Tail().ReadPixel(pixel.data()))) return std::nullopt;
  return pixel;
}

ComPtr<IAnimFilter> RenderService::FilterOf(int item) {
  const std::lock_guard hold(lock);
  const Stage* const asked = StandingStill();
  if (!asked) return {};
  const auto filters = asked->pipeline->Filters();
  for (std::size_t i = 0; i < std::min(filters.size(), asked->items.size()); ++i) {
    if (asked->items[i].id == item) return filters[i];
  }
  return {};
}

// --- the thread

void RenderService::Work() {
  for (;;) {
    RenderRequest request;
    std::uint64_t number = 0;
    {
      std::unique_lock hold(lock);
      isWorking = false;
      wake.wait(hold, [this] { return isEnding || waiting; });
      if (isEnding) return;
      request = *std::exchange(waiting, std::nullopt);
      number = newest;
      isWorking = true;
    }
    Render(request, number);
  }
}

void RenderService::Render(const RenderRequest& request, std::uint64_t number) {
  const bool wantsPreview = screenMilliseconds > kQuickEnough;
  try {
    if (wantsPreview && !RunStage(RenderStage::Preview, request, number)) return;
    if (!RunStage(RenderStage::Screen, request, number)) return;
    if (request.wantsFull) RunStage(RenderStage::Full, request, number);
  } catch (const std::exception& error) {
    {
      const std::lock_guard hold(lock);
      pulled = settled = nullptr;
      for (auto& stage : stages) stage = std::make_unique<Stage>();
    }
    RenderResult failed;
    failed.request = number;
    failed.error = dynamic_cast<const std::bad_alloc*>(&error)
                       ? "there is not enough memory for the picture"
                       : error.what();
    if (!IsOvertaken(number)) deliver(failed);
  }
}

imageio::Progress RenderService::Watch(std::uint64_t number) const {
  return [this, number](double) { return !IsOvertaken(number); };
}

// False when the request was overtaken, or there is nothing to show.
bool RenderService::RunStage(RenderStage stage, const RenderRequest& request,
                             std::uint64_t number) {
  const auto start = std::chrono::steady_clock::now();
  host::Size box = request.box;
  if (stage == RenderStage::Preview) box = {box.width / kPreviewPart, box.height / kPreviewPart};
  const PicturePointer before = stage == RenderStage::Full
                                    ? request.picture->Full()
                                    : request.picture->For(box, Watch(number));
  if (!before || IsOvertaken(number)) return false;
  Stage& chain = *stages[static_cast<std::size_t>(stage)];
  RenderResult result;
  result.request = number;
  result.stage = stage;
  result.before = before;
  const host::Size size = Prepare(chain, request, before);
  if (!Pull(chain, size, number, result)) return false;
  result.shown = Reduced(result.after, request.box, Watch(number));
  if (!result.shown || IsOvertaken(number)) return false;
  result.milliseconds = MillisecondsSince(start);
  if (stage == RenderStage::Screen) screenMilliseconds = result.milliseconds;
  deliver(result);
  return true;
}

// Nobody asks this chain while it is changed.
host::Size RenderService::Prepare(Stage& stage, const RenderRequest& request,
                                  const PicturePointer& before) {
  {
    const std::lock_guard hold(lock);
    if (settled == &stage) settled = nullptr;
  }
  const host::Size full = request.picture->FullSize();
  if (!stage.Fits(before, full) || stage.source->HasStopped()) {
    stage.Build(creator, before, full);
  }
  stage.Set(ThoseOn(request.chain));
  return stage.pipeline->Settle();
}

bool RenderService::Pull(Stage& stage, host::Size size, std::uint64_t number,
                         RenderResult& result) {
  constexpr std::int64_t kMostPixels = 500'000'000;
  if (std::int64_t{size.width} * size.height > kMostPixels) {
    throw std::runtime_error("the result would be too large to be shown");
  }
  auto picture = std::make_shared<MemoryPicture>("shown", size.width, size.height, true, true);
  if (!picture->IsValid()) throw std::bad_alloc();
  {
    const std::lock_guard hold(lock);
    if (IsOvertaken(number)) return false;
    stage.pipeline->Tail().SetAbort(false);
    pulled = &stage;
  }
  bool complete = false;
  std::exception_ptr failure;
  try {
    complete = stage.pipeline->Pull({0, 0, size.width, size.height}, 0, *picture);
  } catch (...) {
    failure = std::current_exception();
  }
  {
    const std::lock_guard hold(lock);
    pulled = nullptr;
    settled = complete ? &stage : nullptr;
  }
  if (failure) std::rethrow_exception(failure);
  if (!complete || IsOvertaken(number)) return false;
  const double zoom = static_cast<double>(stage.target.width) / stage.before->Width();
  result.fullSize = {static_cast<int>(size.width * zoom + 0.5),
                     static_cast<int>(size.height * zoom + 0.5)};
  result.after = std::move(picture);
  return true;
}

}  // namespace desk
