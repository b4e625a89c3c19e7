#include "filters/detail/BlurGaussFilter.h"

#include "filters/detail/GaussRectangle.h"

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

bool CBlurGaussFilter::ChangeRectangle(const PullRectangle& rectangle) {
  // The window follows the zoom, the bell does not.
  const double radius = kernels::UsedGaussRadius(active.radius);
  kernels::GaussChange change = {
      kernels::GaussMethod::Blur,
      kernels::MakeGaussTaps(kernels::ZoomedGaussRadius(radius, zoom),
                             kernels::WidenedGaussSigma(radius, active.percent))};
  kernels::NormalizeGaussTaps(change.taps);
  return ChangeRectangleByGauss(rectangle, change, abort);
}
