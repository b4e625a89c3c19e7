#include "filters/detail/BlurGaussFilter.h"

#include "base/Guid.h"
#include "filters/detail/GaussRectangleFilter.h"

const FilterClass kBlurGaussClass = {
    .sortKey = 26,
    .className = "CBlurGaussFilter",
    .progId = "ZNFilter.BlurGauss.1",
    .classId = base::Guid("{54E70E91-1B05-4ABA-9B96-56750B77D806}"),
    .order = 5000,
    .iconName = "icons4_gweichz",
    .nameKey = "IDS_BLURGAUSS_NAME",
    .helpKey = "HLP_BLURGAUSS",
    .defaultText = "Percent=100,Radius=2.7",
    .gloss = "Gaussian blur",
    .make = MakeFilter<CBlurGaussFilter>,
    .describe = CBlurGaussFilter::Describe};

std::span<const ParameterRow<BlurGaussParameters>> BlurGaussParameters::Rows() {
  using P = BlurGaussParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Percent",
       "Percent=%d",
       &P::percent,
       {.least = 1, .greatest = 500, .gloss = "width of the bell within its window"}},
      {"Radius",
       ",Radius=%f",
       &P::radius,
       {.least = 0.1, .greatest = 50, .gloss = "radius in pixels"}}};
  return kRows;
}

// The window follows the zoom, the bell does not.
kernels::GaussTaps CBlurGaussFilter::Taps(const BlurGaussParameters& now) const {
  const double radius = kernels::UsedGaussRadius(now.radius);
  return kernels::MakeGaussTaps(kernels::ZoomedGaussRadius(radius, zoom),
                                kernels::WidenedGaussSigma(radius, now.percent));
}

bool CBlurGaussFilter::ChangeRectangle(const PullRectangle& rectangle) {
  kernels::GaussChange change = {kernels::GaussMethod::Blur, Taps(Active())};
  kernels::NormalizeGaussTaps(change.taps);
  return ChangeRectangleByGauss(rectangle, change, abort);
}
