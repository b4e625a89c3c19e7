#include "host/Render.h"

#include <stdexcept>
#include <string>

#include "base/CodePage.h"
#include "base/Rows.h"
#include "host/PackedPixels.h"

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

// False when it was stopped.
bool PullAll(IAnimFilterDestCallsThis& tail, const PictureSource& source, const Rectangle& part,
             RenderedPicture& into) {
  const HRESULT status = tail.ReadRows(0, 0, part.x, part.y, part.width, part.height,
                                       into.ColourRows(), into.MaskRows());
  if (!source.Failure().empty()) throw std::runtime_error(source.Failure());
  return status == S_OK && !source.HasStopped();
}

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

RenderedPicture::RenderedPicture(Size pictureSize) : size(pictureSize) {
  const auto width = static_cast<std::size_t>(size.width);
  const auto height = static_cast<std::size_t>(size.height);
  // What a filter leaves alone is empty, as in every new picture.
  colour.resize(width * height * base::kBytesPerPixel);
  mask.resize(width * height, base::kNothing);
  for (std::size_t y = height; y-- > 0;) {
    colourRows.push_back(colour.data() + y * width * base::kBytesPerPixel);
    maskRows.push_back(mask.data() + y * width);
  }
}

std::unique_ptr<RenderedPicture> Render(IAnimFilterCreator& creator, const RenderRequest& request) {
  CheckSize("the picture", request.picture.size, request.mostPixels);
  Watch watch{request};
  const auto source = platform::ComPtr<PictureSource>::Attach(new PictureSource(
      request.picture, request.fill, [&watch](double share) { return watch.GoesOn(share); }));
  Pipeline pipeline(creator, source);
  pipeline.SetText(request.chain);
  const Rectangle part = PartOf(SettleWithin(pipeline, request.mostPixels), request.part);
  auto picture = std::make_unique<RenderedPicture>(Size{part.width, part.height});
  const StoppablePull stoppable(request.stopper, pipeline.Tail());
  const bool complete = PullAll(pipeline.Tail(), *source.Get(), part, *picture);
  if (watch.IsStopped()) return nullptr;
  if (!complete) throw std::runtime_error("a filter stopped before the picture was complete");
  return picture;
}

int ChannelsOf(RenderedPicture& result, int channelsOfPicture, int wanted) {
  if (wanted != 0) return wanted;
  return channelsOfPicture == 4 || !IsOpaque(result.Rows(), result.size) ? 4 : 3;
}

}  // namespace host
