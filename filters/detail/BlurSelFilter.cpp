#include "filters/detail/BlurSelFilter.h"

#include "base/Guid.h"
#include "filters/detail/GaussRectangleFilter.h"

const FilterClass kBlurSelClass = {.sortKey = 27,
                                   .className = "CBlurSelFilter",
                                   .progId = "ZNFilter.BlurSel.1",
                                   .classId = base::Guid("{BB46594D-32AF-41F6-95BF-1D41A89F8550}"),
                                   .order = 5000,
                                   .iconName = "icons4_selweichz",
                                   .nameKey = "IDS_BLURSEL_NAME",
                                   .helpKey = "HLP_BLURSEL",
                                   .defaultText = "Percent=100,Threshold=1.0,Radius=2.7",
                                   .gloss = "Selective blur",
                                   .make = MakeFilter<CBlurSelFilter>,
                                   .describe = CBlurSelFilter::Describe};

std::span<const ParameterRow<BlurSelParameters>> BlurSelParameters::Rows() {
  using P = BlurSelParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Percent",
       "Percent=%d",
       &P::percent,
       {.least = 1, .greatest = 500, .gloss = "width of the bell within its window"}},
      {"Threshold",
       ",Threshold=%.1f",
       &P::threshold,
       {.least = 0.1, .gloss = "three times the difference that still counts as like"}},
      {"Radius",
       ",Radius=%f",
       &P::radius,
       {.least = 0.1, .greatest = 50, .gloss = "radius in pixels"}}};
  return kRows;
}

kernels::GaussTaps CBlurSelFilter::Taps(const BlurSelParameters& now) const {
  const double radius = kernels::UsedGaussRadius(now.radius);
  return kernels::MakeGaussTaps(kernels::ZoomedGaussRadius(radius, zoom),
                                kernels::WidenedGaussSigma(radius, now.percent));
}

bool CBlurSelFilter::ChangeRectangle(const PullRectangle& rectangle) {
  constexpr float kLeastThreshold = 0.1f;
  const BlurSelParameters now = Active();
  const auto third = static_cast<float>(static_cast<float>(now.threshold) / 3.0);
  return ChangeRectangleByGauss(rectangle,
                                {.method = kernels::GaussMethod::SelectiveBlur,
                                 .taps = Taps(now),
                                 .threshold = third < kLeastThreshold ? kLeastThreshold : third},
                                abort);
}
