#include "filters/colour/Exposure2Filter.h"

#include "filters/tools/ToneCurves.h"

std::span<const ParameterRow<Exposure2Parameters>> Exposure2Parameters::Rows() {
  using P = Exposure2Parameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Red", "Red=%.3d", &P::red, {.least = -100, .gloss = "darker or brighter red"}},
      {"Green", ", Green=%.3d", &P::green, {.least = -100, .gloss = "darker or brighter green"}},
      {"Blue", ", Blue=%.3d", &P::blue, {.least = -100, .gloss = "darker or brighter blue"}}};
  return kRows;
}

void CExposure2Filter::Commit() {
  ParameterFilter::Commit();
  const auto move = [](int control) {
    return kernels::BuildGreyMove(kernels::GammaExponent(control, kernels::kExposureGamma));
  };
  moves = {move(active.blue), move(active.green), move(active.red)};
}

void CExposure2Filter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::ActiveLuminanceKernels().moveFromGrey(colour, width, moves);
}
