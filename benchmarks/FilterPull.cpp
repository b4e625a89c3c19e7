#include "benchmarks/FilterPull.h"

#include "component/Fxbox4.h"

namespace benchmarks {

using platform::ComPtr;

FilterPull::FilterPull(const std::vector<Item>& items, int sourceWidth, int sourceHeight,
                       bool isOpaque)
    : source(ComPtr<KeptPicture>::Attach(new KeptPicture(sourceWidth, sourceHeight, isOpaque))) {
  ComPtr<IAnimFilterCreator> creator;
  FxboxCreateCreator(IAnimFilterCreator::kIid, creator.PutVoid());
  if (!creator) return;
  for (const Item& item : items) {
    if (!Append(*creator.Get(), item)) return;
  }
  // A first walk hands on sizes by old values.
  for (std::size_t i = 0; i <= items.size(); ++i) {
    if (!Prepare()) return;
  }
  result = std::make_unique<MemoryPicture>("result", width, height, true, true);
  source->SetRowsThatHoldIt(*result);
}

FilterPull::~FilterPull() {
  for (auto filter = filters.rbegin(); filter != filters.rend(); ++filter) {
    (*filter)->SetSource(nullptr);
  }
  source->AttachDestination(nullptr);
}

bool FilterPull::Append(IAnimFilterCreator& creator, const Item& item) {
  ComPtr<IAnimFilter> filter;
  creator.CreateFilter(item.progId.c_str(), IAnimFilter::kIid, filter.PutVoid());
  const auto parameter = ComPtr<IAnimFilterParameter>::Query(filter.Get());
  if (!parameter) return false;
  parameter->SetParameter(item.text.c_str(), 0);
  filter->SetSource(filters.empty() ? static_cast<IAnimFilterDestCallsThis*>(source.Get())
                                    : static_cast<IUnknown*>(filters.back().Get()));
  rows = ComPtr<IAnimFilterDestCallsThis>::Query(filter.Get());
  filters.push_back(filter);
  return rows.Get() != nullptr;
}

bool FilterPull::Prepare() {
  int ignored = 0;
  return rows->GetInfo(&width, &height, &ignored, &ignored, &ignored, &ignored) == S_OK &&
         width > 0 && height > 0;
}

bool FilterPull::Run() {
  return rows->ReadRows(0, 0, 0, 0, width, height, result->ColourRows(), result->MaskRows()) ==
         S_OK;
}

}  // namespace benchmarks
