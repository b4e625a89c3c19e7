// The changes of the HLS kernels, written once for one colour and for a vector of colours.
//
// A `Number` is a double or a vector of them. A `kKeepsGrey` leaves the bytes of a pixel without
// saturation alone; the others change such a pixel as well, where hue and saturation are 0 and stay
// without effect.
#pragma once

#include "filters/pixels/HlsKernels.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

template <class Number>
struct Hls {
  Number hue, lightness, saturation;
};

template <class Number>
struct HueChangeOf {
  Number shift, saturation, lightness;
};

// The entries of the hues.
inline double LookUp(const double* table, double hue) {
  return table[static_cast<int>(hue)];
}
inline HueChangeOf<double> LookUp(const HueChange* table, double hue) {
  const HueChange& change = table[static_cast<int>(hue)];
  return {change.shift, change.saturation, change.lightness};
}
// Of vectors: HlsKernelLoops.h.
template <class Vector>
Vector LookUp(const double* table, Vector hues);
template <class Vector>
HueChangeOf<Vector> LookUp(const HueChange* table, Vector hues);

template <class Number>
[[gnu::always_inline]] inline Number LimitShare(Number share) {
  return Min(Max(share, All<Number>(0)), All<Number>(1));
}

struct Saturation {
  static constexpr bool kKeepsGrey = true;
  double factor;

  template <class Number>
  [[gnu::always_inline]] void operator()(Hls<Number>& colour) const {
    colour.saturation = LimitShare(colour.saturation * factor);
  }
};

struct SaturationByHue {
  static constexpr bool kKeepsGrey = true;
  const HueFactors& factors;

  template <class Number>
  [[gnu::always_inline]] void operator()(Hls<Number>& colour) const {
    const auto factor = LookUp(factors.byHue, colour.hue);
    colour.saturation = LimitShare(colour.saturation * factor);
  }
};

struct ChangeAll {
  static constexpr bool kKeepsGrey = false;
  const HueChanges& changes;

  template <class Number>
  [[gnu::always_inline]] void operator()(Hls<Number>& colour) const {
    const HueChangeOf<Number> change = LookUp(changes.byHue, colour.hue);
    const Number grey = All<Number>(changes.greyLightness);
    colour.lightness =
        LimitShare(colour.lightness + (colour.saturation == 0.0 ? grey : change.lightness));
    colour.saturation = LimitShare(colour.saturation * change.saturation);
    const Number shifted = colour.hue + change.shift;
    const Number notBelow = shifted < 0.0 ? shifted + 360.0 : shifted;
    colour.hue = notBelow >= 360.0 ? notBelow - 360.0 : notBelow;
  }
};

}  // namespace
}  // namespace kernels
