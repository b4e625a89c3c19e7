// The changes of the HLS kernels, written once for one colour and for a vector of colours.
//
// `Wide` says what numbers are: Doubles, one or several, with the arithmetic operators, and on them
// Set, Max, Min and LookUp. A `kKeepsGrey` leaves the bytes of a pixel without saturation alone;
// the others change such a pixel as well, where hue and saturation are 0 and stay without effect.
#pragma once

#include "filters/pixels/HlsKernels.h"

namespace kernels {
namespace {

template <class Wide>
struct Hls {
  typename Wide::Doubles hue, lightness, saturation;
};

template <class Wide>
struct HueChangeOf {
  typename Wide::Doubles shift, saturation, lightness;
};

template <class Wide>
[[gnu::always_inline]] inline typename Wide::Doubles LimitShare(typename Wide::Doubles share) {
  return Wide::Min(Wide::Max(share, 0.0), 1.0);
}

struct Saturation {
  static constexpr bool kKeepsGrey = true;
  double factor;

  template <class Wide>
  [[gnu::always_inline]] void operator()(Hls<Wide>& colour) const {
    colour.saturation = LimitShare<Wide>(colour.saturation * factor);
  }
};

struct SaturationByHue {
  static constexpr bool kKeepsGrey = true;
  const HueFactors& factors;

  template <class Wide>
  [[gnu::always_inline]] void operator()(Hls<Wide>& colour) const {
    const auto factor = Wide::LookUp(factors.byHue, colour.hue);
    colour.saturation = LimitShare<Wide>(colour.saturation * factor);
  }
};

struct ChangeAll {
  static constexpr bool kKeepsGrey = false;
  const HueChanges& changes;

  template <class Wide>
  [[gnu::always_inline]] void operator()(Hls<Wide>& colour) const {
    using Doubles = typename Wide::Doubles;
    const HueChangeOf<Wide> change = Wide::LookUp(changes.byHue, colour.hue);
    const Doubles grey = Wide::Set(changes.greyLightness);
    colour.lightness =
        LimitShare<Wide>(colour.lightness + (colour.saturation == 0.0 ? grey : change.lightness));
    colour.saturation = LimitShare<Wide>(colour.saturation * change.saturation);
    const Doubles shifted = colour.hue + change.shift;
    const Doubles notBelow = shifted < 0.0 ? shifted + 360.0 : shifted;
    colour.hue = notBelow >= 360.0 ? notBelow - 360.0 : notBelow;
  }
};

}  // namespace
}  // namespace kernels
