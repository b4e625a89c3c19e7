// The loop of the HLS kernels over vectors of any width: every file that includes this has a copy
// of its own, compiled for the processors of that file.
//
// `Wide` is what such a file brings: how many pixels a block has, and vectors of kLanes doubles
// with Load from bytes, Store as truncated low bytes, a walk along a row by ChangePlanes, and what
// HlsChanges.h asks for. Numbers come
// out as RgbToHls and HlsToRgb make them, to the last bit: every sum, product and quotient that
// rounds there rounds here, in the same order. What is computed in another way is exact, or rounds
// once to the same number.
#pragma once

#include <cstdint>

#include "filters/pixels/HlsChanges.h"
#include "filters/pixels/simd/WideDoubles.h"

namespace kernels {
namespace {

// A pixel by the order of its channels. The hue is (first - second) / (high - low) + sixths.
template <class Wide>
struct Ordered {
  Plane<Wide> high, low, first, second, sixths;
};

// What a colour is drawn with: each channel is high, low or between, as the sextant of the hue
// says.
template <class Wide>
struct Drawn {
  Plane<Wide> high, between, low, sextant;
};

template <class Wide>
[[gnu::always_inline]] inline void Order(const Plane<Wide>& blue, const Plane<Wide>& green,
                                         const Plane<Wide>& red, Ordered<Wide>& ordered) {
  for (int i = 0; i < Wide::kPixels; ++i) {
    const std::uint8_t b = blue.bytes[i];
    const std::uint8_t g = green.bytes[i];
    const std::uint8_t r = red.bytes[i];
    const std::uint8_t most = g > b ? g : b;
    const std::uint8_t least = g < b ? g : b;
    const std::uint8_t high = r > most ? r : most;
    ordered.high.bytes[i] = high;
    ordered.low.bytes[i] = r < least ? r : least;
    ordered.first.bytes[i] = r == high ? g : g == high ? b : r;
    ordered.second.bytes[i] = r == high ? b : g == high ? r : g;
    ordered.sixths.bytes[i] = r == high ? 0 : g == high ? 2 : 4;
  }
}

template <class Wide>
[[gnu::always_inline]] inline void KeepGrey(const Ordered<Wide>& ordered, Drawn<Wide>& drawn) {
  for (int i = 0; i < Wide::kPixels; ++i) {
    const std::uint8_t before = ordered.high.bytes[i];
    const bool grey = before == ordered.low.bytes[i];
    drawn.high.bytes[i] = grey ? before : drawn.high.bytes[i];
    drawn.between.bytes[i] = grey ? before : drawn.between.bytes[i];
    drawn.low.bytes[i] = grey ? before : drawn.low.bytes[i];
  }
}

// All bits or none.
[[gnu::always_inline]] inline std::uint8_t MaskIf(bool condition) {
  return static_cast<std::uint8_t>(-static_cast<int>(condition));
}

// Without choices, of which the compiler would make branches that no processor could foresee.
template <class Wide>
[[gnu::always_inline]] inline void Arrange(const Drawn<Wide>& drawn, Plane<Wide>& blue,
                                           Plane<Wide>& green, Plane<Wide>& red) {
  for (int i = 0; i < Wide::kPixels; ++i) {
    const std::uint8_t s = drawn.sextant.bytes[i];
    const auto channel = [&](std::uint8_t isHigh, std::uint8_t isLow) {
      return static_cast<std::uint8_t>((isHigh & drawn.high.bytes[i]) |
                                       (isLow & drawn.low.bytes[i]) |
                                       (~(isHigh | isLow) & drawn.between.bytes[i]));
    };
    red.bytes[i] = channel(MaskIf(s == 0) | MaskIf(s == 5), MaskIf(s == 2) | MaskIf(s == 3));
    green.bytes[i] = channel(MaskIf(s == 1) | MaskIf(s == 2), MaskIf(s == 4) | MaskIf(s == 5));
    blue.bytes[i] = channel(MaskIf(s == 3) | MaskIf(s == 4), MaskIf(s == 0) | MaskIf(s == 1));
  }
}

// The nearest double to value / divisor, by a product with the reciprocal and the remainder that it
// leaves. `reciprocal` is the nearest double to 1 / divisor; for 255 and 60 it is so close that the
// product lies less than a unit in the last place off, and then the remainder is exact and the
// correction rounds to the nearest double.
template <class Wide>
[[gnu::always_inline]] inline typename Wide::Doubles Divide(typename Wide::Doubles value,
                                                            double divisor, double reciprocal) {
  const auto estimate = value * reciprocal;
  return Wide::MultiplyAdd(Wide::MultiplyAdd(estimate, -divisor, value), reciprocal, estimate);
}

template <class Wide>
[[gnu::always_inline]] inline typename Wide::Doubles ShareAt(const std::uint8_t* bytes) {
  return Divide<Wide>(Wide::Load(bytes), 255.0, 1.0 / 255.0);
}

// A grey divides 0 by a number above 0 for hue and saturation; the limits of the divisors lie below
// those of all other pixels.
template <class Wide>
[[gnu::always_inline]] inline Hls<Wide> ToHls(const Ordered<Wide>& ordered, int i) {
  constexpr double kAboveZero = 1.0 / 1024;
  const auto high = ShareAt<Wide>(ordered.high.bytes + i);
  const auto low = ShareAt<Wide>(ordered.low.bytes + i);
  const auto sum = high + low;
  const auto span = high - low;
  const auto leading =
      ShareAt<Wide>(ordered.first.bytes + i) - ShareAt<Wide>(ordered.second.bytes + i);
  const auto sixths = leading / Wide::Max(span, kAboveZero) + Wide::Load(ordered.sixths.bytes + i);
  const auto hue = sixths * 60.0;
  return {hue < 0.0 ? hue + 360.0 : hue, sum * 0.5,
          span / Wide::Max(Wide::Min(sum, 2.0 - sum), kAboveZero)};
}

template <class Wide>
[[gnu::always_inline]] inline void FromHls(const Hls<Wide>& colour, Drawn<Wide>& drawn, int i) {
  const auto& [hue, lightness, saturation] = colour;
  const auto coloured = lightness <= 0.5 ? lightness * (1.0 - saturation)
                                         : lightness - saturation * (1.0 - lightness);
  // A grey has no span, and all of its channels are the lightness.
  const auto low = saturation <= 0.000001 ? lightness : coloured;
  const auto high = 2.0 * lightness - low;
  const auto turn = Divide<Wide>(hue, 60.0, 1.0 / 60.0);
  // How far the turn is from where two channels are equal: exact.
  const auto way = Wide::Distance(turn, 2.0 * Wide::Nearest(turn * 0.5));
  const auto between = low + (high - low) * way;
  Wide::Store(drawn.high.bytes + i, high * 255.0);
  Wide::Store(drawn.between.bytes + i, between * 255.0);
  Wide::Store(drawn.low.bytes + i, low * 255.0);
  Wide::Store(drawn.sextant.bytes + i, turn);
}

template <class Wide, class Change>
[[gnu::always_inline]] inline void ChangeBlock(Plane<Wide>& blue, Plane<Wide>& green,
                                               Plane<Wide>& red, const Change& change) {
  Ordered<Wide> ordered;
  Drawn<Wide> drawn;
  Order(blue, green, red, ordered);
  // Step by step over the block: a processor then has many short chains of operations at hand in
  // place of a few long ones.
  Hls<Wide> colours[Wide::kPixels / Wide::kLanes];
  for (int i = 0; i < Wide::kPixels; i += Wide::kLanes) {
    colours[i / Wide::kLanes] = ToHls(ordered, i);
  }
  for (Hls<Wide>& colour : colours) change(colour);
  for (int i = 0; i < Wide::kPixels; i += Wide::kLanes) {
    FromHls(colours[i / Wide::kLanes], drawn, i);
  }
  if constexpr (Change::kKeepsGrey) KeepGrey(ordered, drawn);
  Arrange(drawn, blue, green, red);
}

template <class Wide, class Change>
inline void ChangeColours(std::uint8_t* colour, int width, const Change& change) {
  using Bytes = Plane<Wide>;
  Wide::template ChangePlanes<Wide>(
      colour, width, [&](Bytes & blue, Bytes & green, Bytes & red) __attribute__((always_inline)) {
        ChangeBlock(blue, green, red, change);
      });
}

template <class Wide>
inline void SaturateLoop(std::uint8_t* colour, int width, double factor) {
  ChangeColours<Wide>(colour, width, Saturation{factor});
}

template <class Wide>
inline void SaturateByHueLoop(std::uint8_t* colour, int width, const HueFactors& factors) {
  ChangeColours<Wide>(colour, width, SaturationByHue{factors});
}

template <class Wide>
inline void ChangeByHueLoop(std::uint8_t* colour, int width, const HueChanges& changes) {
  ChangeColours<Wide>(colour, width, ChangeAll{changes});
}

template <class Wide>
constexpr HlsKernelTable kHlsLoops = {SaturateLoop<Wide>, SaturateByHueLoop<Wide>,
                                      ChangeByHueLoop<Wide>};

}  // namespace
}  // namespace kernels
