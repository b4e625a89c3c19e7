#include "host/Pipeline.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

#include "base/Arithmetic.h"
#include "component/Fxbox4.h"
#include "core/AnimRowReach.h"
#include "core/ChainText.h"

namespace host {

platform::ComPtr<IAnimFilterCreator> MakeCreator() {
  platform::ComPtr<IAnimFilterCreator> creator;
  const HRESULT status = FxboxCreateCreator(IAnimFilterCreator::kIid, creator.PutVoid());
  if (FAILED(status) || !creator) throw std::runtime_error("the filter library does not start");
  return creator;
}

platform::ComPtr<PictureSource> MakeBlankSource(Size size, Size target,
                                                std::optional<double> zoom) {
  const auto nothing = [](const imageio::Rows&, const imageio::Progress&) { return true; };
  return platform::ComPtr<PictureSource>::Attach(new PictureSource({size, target, zoom}, nothing));
}

Size SizeBehind(IUnknown* filter) {
  Size size;
  int ignored = 0;
  if (const auto source = platform::ComPtr<IAnimFilterDestCallsThis>::Query(filter)) {
    source->GetInfo(&size.width, &size.height, &ignored, &ignored, &ignored, &ignored);
  }
  return size;
}

Pipeline::Pipeline(IAnimFilterCreator& filterCreator, platform::ComPtr<PictureSource> pictureSource)
    : creator(filterCreator),
      source(std::move(pictureSource)),
      destination(platform::ComPtr<PictureDestination>::Attach(new PictureDestination)) {
  creator.CreateChain(IAnimFilterChain::kIid, chain.PutVoid());
  if (!chain) throw std::runtime_error("the filter library makes no chain");
  chain->SetSource(static_cast<IAnimFilterDestCallsThis*>(source.Get()));
  chain->SetDestination(destination.Get());
}

// Source and destination hold each other through the chain's links: the circle is opened by hand.
Pipeline::~Pipeline() {
  chain.Reset();
  destination->AttachSource(nullptr);
  source->AttachDestination(nullptr);
}

void Pipeline::SetText(const ChainText& chainText) {
  chain->RemoveAll();
  int position = 0;
  for (const ChainTextItem& item :
       SplitChainText(chainText.text.c_str(), chainText.open.c_str(), chainText.close.c_str())) {
    platform::ComPtr<IAnimFilter> filter;
    creator.CreateFilter(item.name.c_str(), IAnimFilter::kIid, filter.PutVoid());
    if (!filter) continue;
    if (const auto parameter = platform::ComPtr<IAnimFilterParameter>::Query(filter.Get())) {
      parameter->SetParameter(item.parameters.c_str(), 1);
    }
    if (SUCCEEDED(chain->InsertAt(position, filter.Get()))) ++position;
  }
}

std::string Pipeline::Text(const ChainText& markers, bool active) const {
  constexpr std::size_t kLargest = std::size_t{1} << 24;
  for (std::vector<char> buffer(4096); buffer.size() <= kLargest;
       buffer.resize(buffer.size() * 2)) {
    const HRESULT status = chain->GetChainText(buffer.data(), static_cast<int>(buffer.size()),
                                               markers.open.c_str(), markers.close.c_str(), active);
    if (SUCCEEDED(status)) return buffer.data();
  }
  throw std::runtime_error("the chain hands out no text");
}

std::vector<platform::ComPtr<IAnimFilter>> Pipeline::Filters() const {
  int count = 0;
  chain->GetCount(&count);
  std::vector<platform::ComPtr<IAnimFilter>> filters(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    chain->GetAt(i, IAnimFilter::kIid, filters[static_cast<std::size_t>(i)].PutVoid());
  }
  return filters;
}

IAnimFilterDestCallsThis& Pipeline::Tail() const {
  IAnimFilterDestCallsThis* const tail = destination->Tail();
  if (!tail) throw std::runtime_error("the chain is not linked");
  return *tail;
}

Size Pipeline::Settle() {
  constexpr int kMostRounds = 100;
  using Info = std::array<int, 6>;
  Info before{};
  for (int round = 0; round < kMostRounds; ++round) {
    Info now{};
    Tail().GetInfo(&now[0], &now[1], &now[2], &now[3], &now[4], &now[5]);
    if (round == 0 || now != before) {
      before = now;
      continue;
    }
    if (now[0] < 1 || now[1] < 1) throw std::runtime_error("the result has no pixels");
    return {now[0], now[1]};
  }
  throw std::runtime_error("the filters do not agree on the result's size");
}

bool Pipeline::Pull(const Rectangle& part, int bandRows, MemoryPicture& into,
                    const imageio::Progress& progress) {
  const int band = bandRows > 0 ? std::min(bandRows, part.height) : part.height;
  for (int y = 0; y < part.height;) {
    const int rows = std::min(band, part.height - y);
    const Rectangle bandPart{part.x, part.y + y, part.width, rows};
    if (!PullRows(bandPart, y, into.ColourRows(), into.MaskRows())) return false;
    y += rows;
    if (progress && !progress(static_cast<double>(y) / part.height)) return false;
  }
  return true;
}

bool Pipeline::PullRows(const Rectangle& part, int destY, BYTE** colour, BYTE** mask) {
  const HRESULT status =
      Tail().ReadRows(0, destY, part.x, part.y, part.width, part.height, colour, mask);
  if (!source->Failure().empty()) throw std::runtime_error(source->Failure());
  return status == S_OK && !source->HasStopped();
}

std::optional<Pipeline::RowReach> Pipeline::Reach() const {
  RowReach all;
  const auto filters = Filters();
  for (auto filter = filters.rbegin(); filter != filters.rend(); ++filter) {
    const auto reach = platform::ComPtr<IAnimRowReach>::Query(filter->Get());
    int rows = 0;
    if (!reach || reach->GetRowReach(&rows, &all.readsAll) != S_OK) return std::nullopt;
    all.rows = base::LimitToInt32(std::int64_t{all.rows} + rows);
    if (all.readsAll) break;  // what lies before it is asked for all at once
  }
  return all;
}

}  // namespace host
