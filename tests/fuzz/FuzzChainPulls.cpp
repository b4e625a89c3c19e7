// Chains of any filters with any parameters, and what a host may do with one in any order: small
// rectangles are pulled with masks, previews and aborts, parameters change, the picture changes. No
// byte outside a pulled rectangle may change.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/PdibFilterChain.h"
#include "core/PdibFilterCreator.h"
#include "filters/FilterClasses.h"
#include "tests/support/GuardedRows.h"
#include "tests/support/TestEnds.h"

namespace {

using namespace testing_support;
using platform::ComPtr;

constexpr int kLargestSide = 24;     // of the picture
constexpr int kLargestResult = 300;  // beyond it nothing is pulled: it would only take time
constexpr int kMostItems = 4;
constexpr int kMostSteps = 12;

Picture AnyPicture(FuzzedDataProvider& data) {
  const int width = data.ConsumeIntegralInRange(1, kLargestSide);
  const int height = data.ConsumeIntegralInRange(1, kLargestSide);
  constexpr Masks kMasks[] = {Masks::Opaque, Masks::Nothing, Masks::Noise, Masks::Edges,
                              Masks::Steps};
  return Noise(width, height, data.PickValueInArray(kMasks), data.ConsumeIntegral<std::uint8_t>());
}

std::string AnyNumber(FuzzedDataProvider& data) {
  const int kind = data.ConsumeIntegralInRange(0, 4);
  if (kind == 0) return std::to_string(data.ConsumeIntegral<std::int32_t>());
  if (kind == 1) return std::to_string(data.ConsumeIntegralInRange(-1000, 1000) / 100.0);
  return std::to_string(data.ConsumeIntegralInRange(-5, 260));
}

// Texts of the class's own keys; now and then any bytes.
std::string AnyParameters(FuzzedDataProvider& data, const FilterClass& row) {
  const auto keys = row.describe ? row.describe() : std::vector<ParameterDescription>();
  if (keys.empty() || data.ConsumeIntegralInRange(0, 15) == 0) {
    return data.ConsumeRandomLengthString(40);
  }
  std::string text;
  for (int i = data.ConsumeIntegralInRange(0, 5); i > 0; --i) {
    const std::size_t at = data.ConsumeIntegralInRange<std::size_t>(0, keys.size() - 1);
    text.append(text.empty() ? "" : ",").append(keys[at].key).append("=").append(AnyNumber(data));
  }
  return text;
}

const FilterClass& AnyClass(FuzzedDataProvider& data) {
  const FilterClassTable table = FilterClasses();
  return table[data.ConsumeIntegralInRange<std::size_t>(0, table.size() - 1)];
}

std::string AnyChain(FuzzedDataProvider& data) {
  std::string text;
  for (int i = data.ConsumeIntegralInRange(1, kMostItems); i > 0; --i) {
    const FilterClass& row = AnyClass(data);
    text.append(row.progId).append("(").append(AnyParameters(data, row)).append(")");
  }
  return text;
}

class Host {
 public:
  explicit Host(FuzzedDataProvider& provider)
      : data(provider),
        source(ComPtr<TestSource>::Attach(new TestSource(AnyPicture(data)))),
        destination(ComPtr<TestDestination>::Attach(new TestDestination)),
        chain(ComPtr<IAnimFilterChain>::Attach(new CPdibFilterChain)) {
    chain->SetSource(static_cast<IAnimFilterDestCallsThis*>(source.Get()));
    chain->SetDestination(static_cast<IAnimFilterSrcCallsThis*>(destination.Get()));
    SetChain();
  }
  // Source and destination hold each other through the links.
  ~Host() {
    chain.Reset();
    destination->AttachSource(nullptr);
    source->AttachDestination(nullptr);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  void Step() {
    constexpr void (Host::*kSteps[])() = {&Host::SetChain,      &Host::ChangeParameters,
                                          &Host::ChangePicture, &Host::TellSizes,
                                          &Host::SetAbort,      &Host::ReadPixel};
    const std::size_t step = data.ConsumeIntegralInRange<std::size_t>(0, 9);
    step < std::size(kSteps) ? (this->*kSteps[step])() : PullRectangle();
  }

 private:
  IAnimFilterDestCallsThis* Tail() const { return destination->source.Get(); }

  void SetChain() {
    static const auto creator =
        ComPtr<IAnimFilterCreator>::Attach(new CPdibFilterCreator(FilterClasses()));
    chain->SetChainText(AnyChain(data).c_str(), "(", ")", creator.Get());
  }

  ComPtr<IAnimFilterParameter> AnyFilter() {
    ComPtr<IAnimFilterParameter> filter;
    int count = 0;
    chain->GetCount(&count);
    chain->GetAt(data.ConsumeIntegralInRange(0, std::max(count - 1, 0)), IAnimFilterParameter::kIid,
                 filter.PutVoid());
    return filter;
  }

  void ChangeParameters() {
    const auto filter = AnyFilter();
    if (filter) filter->SetParameter(AnyParameters(data, AnyClass(data)).c_str(), 1);
  }

  void ChangePicture() {
    source->picture = AnyPicture(data);
    ++source->revision;
  }

  // As a preview of a larger picture does.
  void TellSizes() {
    constexpr double kZooms[] = {1, 0.5, 0.1, 3, 0.001};
    source->targetWidth = data.ConsumeIntegralInRange(0, 4 * kLargestSide);
    source->targetHeight = data.ConsumeIntegralInRange(0, 4 * kLargestSide);
    if (source->destination) source->destination->SetZoom(data.PickValueInArray(kZooms));
    ++source->revision;
  }

  void SetAbort() { Tail()->SetAbort(data.ConsumeBool()); }

  void ReadPixel() {
    BYTE pixel[4] = {1, 2, 3, 4};
    Tail()->ReadPixel(pixel);
  }

  static std::array<int, 2> SizeOf(IAnimFilterDestCallsThis& filter) {
    int width = 0, height = 0, ignored = 0;
    filter.GetInfo(&width, &height, &ignored, &ignored, &ignored, &ignored);
    return {width, height};
  }

  // Whether every picture on the way is small. The first question of all settles the sizes.
  bool IsSmall() {
    int count = 0;
    chain->GetCount(&count);
    for (int round = 0; round < 2; ++round) SizeOf(*Tail());
    for (int i = 0; i < count; ++i) {
      ComPtr<IAnimFilterDestCallsThis> filter;
      chain->GetAt(i, IAnimFilterDestCallsThis::kIid, filter.PutVoid());
      const auto [width, height] = SizeOf(*filter.Get());
      if (width > kLargestResult || height > kLargestResult) return false;
    }
    return true;
  }

  void PullRectangle() {
    const bool isEarly = data.ConsumeIntegralInRange(0, 7) == 0;  // without a question ahead
    if (!IsSmall() && !isEarly) return;
    const auto [width, height] = SizeOf(*Tail());
    if (width > kLargestResult || height > kLargestResult || !IsSmall()) return;
    RowRequest request;
    request.width = data.ConsumeIntegralInRange(1, std::max(width, 1));
    request.height = data.ConsumeIntegralInRange(1, std::max(height, 1));
    request.srcX = data.ConsumeIntegralInRange(0, std::max(width - request.width, 0));
    request.srcY = data.ConsumeIntegralInRange(0, std::max(height - request.height, 0));
    const int farthest = ChangesFirstRows() ? 0 : 3;
    request.destX = data.ConsumeIntegralInRange(0, farthest);
    request.destY = data.ConsumeIntegralInRange(0, farthest);
    Pull(request);
  }

  void Pull(const RowRequest& request) {
    GuardedRows rows(request.destX + request.width + 2, request.destY + request.height + 2);
    const int abortAt = data.ConsumeIntegralInRange(0, 40);
    source->onRow = [&](int done) {
      if (done == abortAt) Tail()->SetAbort(true);
    };
    const bool hasMask = data.ConsumeIntegralInRange(0, 7) != 0;
    Tail()->ReadRows(request.destX, request.destY, request.srcX, request.srcY, request.width,
                     request.height, rows.ColourRows(), hasMask ? rows.MaskRows() : nullptr);
    source->onRow = nullptr;
    const std::string written =
        rows.WrittenOutside(request.destX, request.destY, request.width, request.height);
    if (written.empty()) return;
    std::fprintf(stderr, "written outside the rectangle by %s: %s\n", ChainText().c_str(),
                 written.c_str());
    std::abort();
  }

  std::string ChainText() const {
    std::vector<char> text(1 << 16);
    chain->GetChainText(text.data(), static_cast<int>(text.size()), "(", ")", true);
    return text.data();
  }

  // Filters on Gaussian blurs work from row 0 and column 0 on, wherever they were asked for.
  bool ChangesFirstRows() const {
    const std::string text = ChainText();
    return text.find("Blur") != text.npos || text.find("UnsharpMask") != text.npos;
  }

  FuzzedDataProvider& data;
  ComPtr<TestSource> source;
  ComPtr<TestDestination> destination;
  ComPtr<IAnimFilterChain> chain;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  Host host(data);
  for (int i = 0; i < kMostSteps && data.remaining_bytes() > 0; ++i) host.Step();
  return 0;
}
