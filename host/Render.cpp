#include "host/Render.h"

#include <stdexcept>
#include <string>

#include "base/CodePage.h"

namespace host {

// --- stopping

void Stopper::Stop() {
  const std::lock_guard hold(lock);
  stopped = true;
  for (IAnimFilterDestCallsThis* tail : pulled) tail->SetAbort(true);
}

bool Stopper::IsStopped() const {
  const std::lock_guard hold(lock);
  return stopped;
}

StoppablePull::StoppablePull(Stopper* given, IAnimFilterDestCallsThis& pulled)
    : stopper(given), tail(pulled) {
  if (!stopper) return;
  const std::lock_guard hold(stopper->lock);
  stopper->pulled.push_back(&tail);
  if (stopper->stopped) tail.SetAbort(true);
}

StoppablePull::~StoppablePull() {
  if (!stopper) return;
  const std::lock_guard hold(stopper->lock);
  std::erase(stopper->pulled, &tail);
}

// --- rendering

namespace {

void CheckSize(const std::string& what, Size size, std::int64_t mostPixels) {
  if (std::int64_t{size.width} * size.height <= mostPixels) return;
  throw TooLarge(what + " of " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                 " has more pixels than the " + std::to_string(mostPixels) + " that are allowed");
}

Rectangle PartOf(Size result, const std::optional<Rectangle>& wanted) {
  const Rectangle whole{0, 0, result.width, result.height};
  const Rectangle cut = CutTo(wanted.value_or(whole), result);
  if (cut.width > 0) return {cut.x, result.height - cut.y - cut.height, cut.width, cut.height};
  throw std::invalid_argument("the part lies outside the result, which is " +
                              std::to_string(result.width) + "x" + std::to_string(result.height));
}

// The host's progress, which remembers that the host wanted no more.
struct Watch {
  const RenderRequest& request;
  bool stopped = false;

  bool GoesOn(double share) {
    stopped = stopped || (request.progress && !request.progress(share));
    return !IsStopped();
  }
  bool IsStopped() const { return stopped || (request.stopper && request.stopper->IsStopped()); }
};

}  // namespace

Size SettleWithin(Pipeline& pipeline, std::int64_t mostPixels) {
  const Size result = pipeline.Settle();
  for (const auto& filter : pipeline.Filters()) {
    char name[256] = "";
    filter->GetName(name, sizeof name);
    CheckSize("the picture behind " + base::ToUtf8(name), SizeBehind(filter.Get()), mostPixels);
  }
  CheckSize("the result", result, mostPixels);
  return result;
}

std::unique_ptr<MemoryPicture> Render(IAnimFilterCreator& creator, const RenderRequest& request) {
  CheckSize("the picture", request.picture.size, request.mostPixels);
  Watch watch{request};
  Pipeline pipeline(creator, platform::ComPtr<PictureSource>::Attach(new PictureSource(
                                 request.picture, request.fill,
                                 [&watch](double share) { return watch.GoesOn(share); })));
  pipeline.SetText(request.chain);
  const Rectangle part = PartOf(SettleWithin(pipeline, request.mostPixels), request.part);
  auto picture = std::make_unique<MemoryPicture>("result", part.width, part.height, true, true);
  if (!picture->IsValid()) throw std::bad_alloc();
  const StoppablePull stoppable(request.stopper, pipeline.Tail());
  const bool complete = pipeline.Pull(part, 0, *picture);
  if (watch.IsStopped()) return nullptr;
  if (!complete) throw std::runtime_error("a filter stopped before the picture was complete");
  return picture;
}

}  // namespace host
