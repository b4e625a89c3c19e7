#include "filters/detail/UnsharpMaskFilter.h"

#include "base/Guid.h"
#include "filters/detail/GaussRectangleFilter.h"

const FilterClass kUnsharpMaskClass = {
    .sortKey = 23,
    .className = "CUnsharpMaskFilter",
    .progId = "ZNFilter.UnsharpMask.1",
    .classId = base::Guid("{66A01ADC-9547-4B85-92A8-22756D1E14DC}"),
    .order = 5000,
    .iconName = "icons4_unscharfmaskieren",
    .nameKey = "IDS_UNSHARPMASK_NAME",
    .helpKey = "HLP_UNSHARPMASK",
    .defaultText = "Percent=120,Radius=2.7,Threshold=0,LuminanceOnly=1,On=1",
    .gloss = "Unsharp mask",
    .make = MakeFilter<CUnsharpMaskFilter>,
    .describe = CUnsharpMaskFilter::Describe};

// The key `On` is found inside `OnLuminanceOnly` first, where no number follows: a text that holds
// both leaves `on` as it was.
std::span<const ParameterRow<UnsharpMaskParameters>> UnsharpMaskParameters::Rows() {
  using P = UnsharpMaskParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Percent", "Percent=%d", &P::percent, {.least = 1, .greatest = 500, .gloss = "strength"}},
      {"Radius",
       ",Radius=%lf",
       &P::radius,
       {.least = 0.1, .greatest = 50, .gloss = "radius in pixels"}},
      {"Threshold",
       ",Threshold=%d",
       &P::threshold,
       {.greatest = 255, .gloss = "least difference that is sharpened"}},
      {"OnLuminanceOnly",
       ",OnLuminanceOnly=%d",
       &P::onLuminanceOnly,
       {.greatest = 1, .gloss = "1: brightness alone, 0: all channels"}},
      {"On", ",On=%d", &P::on, {.greatest = 1, .gloss = "kept, without effect"}}};
  return kRows;
}

// Window and bell both follow the zoom here.
kernels::GaussTaps CUnsharpMaskFilter::Taps(const UnsharpMaskParameters& now) const {
  const double radius = kernels::ZoomedGaussRadius(kernels::UsedGaussRadius(now.radius), zoom);
  return kernels::MakeGaussTaps(radius, radius / 2.5);
}

bool CUnsharpMaskFilter::ChangeRectangle(const PullRectangle& rectangle) {
  const UnsharpMaskParameters now = Active();
  kernels::GaussChange change = {
      .method = kernels::GaussMethod::SharpenBrightness,
      .taps = Taps(now),
      .threshold = static_cast<float>(now.threshold),
      .amount = static_cast<float>(static_cast<float>(now.percent) / 100.0)};
  kernels::NormalizeGaussTaps(change.taps);
  if (now.onLuminanceOnly == 0) {
    change.method = kernels::GaussMethod::Sharpen;
    change.threshold = static_cast<float>(now.threshold * 3.0);  // of the three channels' sum
  }
  return ChangeRectangleByGauss(rectangle, change, abort);
}
