// The HLS kernels over vectors of any width.
//
// Numbers come out as RgbToHls and HlsToRgb make them, to the last bit: every sum, product and
// quotient that rounds there rounds here, in the same order. What is computed in another way is
// exact, or rounds once to the same number.
#pragma once

#include <cstdint>

#include "filters/pixels/HlsChanges.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

template <class Vector>
[[gnu::always_inline]] inline Vector LookUp(const double* table, Vector hues) {
  std::int32_t at[kLanes<Vector>];
  StoreTruncated(at, hues);
  return LoadEach([&](int i) { return table + at[i]; });
}
template <class Vector>
[[gnu::always_inline]] inline HueChangeOf<Vector> LookUp(const HueChange* table, Vector hues) {
  std::int32_t at[kLanes<Vector>];
  StoreTruncated(at, hues);
  const auto [shift, saturation] = LoadPairs([&](int i) { return &table[at[i]].shift; });
  const auto [lightness, unused] = LoadPairs([&](int i) { return &table[at[i]].lightness; });
  return {shift, saturation, lightness};
}

// A pixel by the order of its channels. The hue is (first - second) / (high - low) + sixths.
struct Ordered {
  Plane high, low, first, second, sixths;
};

// What a colour is drawn with: each channel is high, low or between, as the sextant of the hue
// says.
struct Drawn {
  Plane high, between, low, sextant;
};

[[gnu::always_inline]] inline void Order(const Channels& c, Ordered& ordered) {
  for (int i = 0; i < kPixels; ++i) {
    const std::uint8_t b = c.blue.at[i];
    const std::uint8_t g = c.green.at[i];
    const std::uint8_t r = c.red.at[i];
    const std::uint8_t most = g > b ? g : b;
    const std::uint8_t least = g < b ? g : b;
    const std::uint8_t high = r > most ? r : most;
    ordered.high.at[i] = high;
    ordered.low.at[i] = r < least ? r : least;
    ordered.first.at[i] = r == high ? g : g == high ? b : r;
    ordered.second.at[i] = r == high ? b : g == high ? r : g;
    ordered.sixths.at[i] = r == high ? 0 : g == high ? 2 : 4;
  }
}

[[gnu::always_inline]] inline void KeepGrey(const Ordered& ordered, Drawn& drawn) {
  for (int i = 0; i < kPixels; ++i) {
    const std::uint8_t before = ordered.high.at[i];
    const bool grey = before == ordered.low.at[i];
    drawn.high.at[i] = grey ? before : drawn.high.at[i];
    drawn.between.at[i] = grey ? before : drawn.between.at[i];
    drawn.low.at[i] = grey ? before : drawn.low.at[i];
  }
}

// All bits or none.
[[gnu::always_inline]] inline std::uint8_t MaskIf(bool condition) {
  return static_cast<std::uint8_t>(-static_cast<int>(condition));
}

// Without choices, of which the compiler would make branches that no processor could foresee.
[[gnu::always_inline]] inline void Arrange(const Drawn& drawn, Channels& c) {
  for (int i = 0; i < kPixels; ++i) {
    const std::uint8_t s = drawn.sextant.at[i];
    const auto channel = [&](std::uint8_t isHigh, std::uint8_t isLow) {
      return static_cast<std::uint8_t>((isHigh & drawn.high.at[i]) | (isLow & drawn.low.at[i]) |
                                       (~(isHigh | isLow) & drawn.between.at[i]));
    };
    c.red.at[i] = channel(MaskIf(s == 0) | MaskIf(s == 5), MaskIf(s == 2) | MaskIf(s == 3));
    c.green.at[i] = channel(MaskIf(s == 1) | MaskIf(s == 2), MaskIf(s == 4) | MaskIf(s == 5));
    c.blue.at[i] = channel(MaskIf(s == 3) | MaskIf(s == 4), MaskIf(s == 0) | MaskIf(s == 1));
  }
}

// A whole number that divides by a product with its reciprocal, in two parts of which the second
// continues the first. The nearest double to the sum of both products is the nearest one to the
// quotient: that lies at least 2^-62 of itself from the middle between two doubles, for 255 and 60,
// as no product of such a middle with either is a double; the sum is 2^-105 off at most.
struct Divisor {
  double reciprocal, rest;

  explicit constexpr Divisor(int number)
      : reciprocal(1.0 / number), rest(RestOf(number, 1.0 / number)) {}

  [[gnu::always_inline]] friend Doubles operator/(Doubles value, const Divisor& divisor) {
    return MultiplyAdd(value, All<Doubles>(divisor.reciprocal), value * divisor.rest);
  }

 private:
  // 1 - number * reciprocal is a small multiple of a power of two, which the halves of the
  // reciprocal give exactly.
  static constexpr double RestOf(int number, double reciprocal) {
    const double high = static_cast<double>(static_cast<float>(reciprocal));
    const double low = reciprocal - high;
    return ((1.0 - number * high) - number * low) / number;
  }
};
constexpr Divisor kBy255(255);
constexpr Divisor kBy60(60);

[[gnu::always_inline]] inline Doubles ShareAt(const std::uint8_t* bytes) {
  return LoadDoubles(bytes) / kBy255;
}

constexpr double kAboveZero = 1.0 / 1024;  // and below the divisors of all pixels but greys

[[gnu::always_inline]] inline Doubles HueOf(const Ordered& ordered, Doubles span, int i) {
  const auto leading = ShareAt(ordered.first.at + i) - ShareAt(ordered.second.at + i);
  const auto sixths =
      leading / Max(span, All<Doubles>(kAboveZero)) + LoadDoubles(ordered.sixths.at + i);
  const auto hue = sixths * 60.0;
  return hue < 0.0 ? hue + 360.0 : hue;
}

// A grey divides 0 by a number above 0 for hue and saturation.
[[gnu::always_inline]] inline Hls<Doubles> ToHls(const Ordered& ordered, int i) {
  const auto high = ShareAt(ordered.high.at + i);
  const auto low = ShareAt(ordered.low.at + i);
  const auto sum = high + low;
  const auto span = high - low;
  return {HueOf(ordered, span, i), sum * 0.5,
          Quotient(span, Max(Min(sum, 2.0 - sum), All<Doubles>(kAboveZero)))};
}

// The numbers of a block, a vector of pixels after the other, that become bytes together.
constexpr int kVectorsOfBlock = kPixels / kLanes<Doubles>;
struct DrawnNumbers {
  Doubles high[kVectorsOfBlock], between[kVectorsOfBlock], low[kVectorsOfBlock],
      turn[kVectorsOfBlock];
};

[[gnu::always_inline]] inline void FromHls(const Hls<Doubles>& colour, DrawnNumbers& drawn, int v) {
  const auto& [hue, lightness, saturation] = colour;
  const auto coloured = lightness <= 0.5 ? lightness * (1.0 - saturation)
                                         : lightness - saturation * (1.0 - lightness);
  // A grey has no span, and all of its channels are the lightness.
  const auto low = saturation <= 0.000001 ? lightness : coloured;
  const auto high = MultiplyAdd(lightness, All<Doubles>(2), -low);
  const auto turn = hue / kBy60;
  // How far the turn is from where two channels are equal: exact.
  const auto way = Magnitude(MultiplyAdd(Nearest(turn * 0.5), All<Doubles>(-2), turn));
  drawn.high[v] = high;
  drawn.between[v] = low + (high - low) * way;
  drawn.low[v] = low;
  drawn.turn[v] = turn;
}

[[gnu::always_inline]] inline void ToBytes(const DrawnNumbers& numbers, Drawn& drawn) {
  const auto bytes =
      [](const Doubles(&shares)[kVectorsOfBlock], double scale) __attribute__((always_inline)) {
    return BytesOf([&](int i) __attribute__((always_inline)) {
      return shares[i / kLanes<Doubles>] * scale;
    });
  };
  drawn.high.Set(bytes(numbers.high, 255));
  drawn.between.Set(bytes(numbers.between, 255));
  drawn.low.Set(bytes(numbers.low, 255));
  drawn.sextant.Set(bytes(numbers.turn, 1));
}

template <class Change>
inline void ChangeColours(std::uint8_t* colour, int width, const Change& change) {
  ChangeChannels(
      colour, width, [&](Channels & channels) __attribute__((always_inline)) {
        Ordered ordered;
        Drawn drawn;
        Order(channels, ordered);
        // Step by step over the block: a processor then has many short chains of operations at hand
        // in place of a few long ones.
        Hls<Doubles> colours[kVectorsOfBlock];
        DrawnNumbers numbers;
        for (int v = 0; v < kVectorsOfBlock; ++v) {
          colours[v] = ToHls(ordered, v * kLanes<Doubles>);
        }
        for (Hls<Doubles>& each : colours) change(each);
        for (int v = 0; v < kVectorsOfBlock; ++v) FromHls(colours[v], numbers, v);
        ToBytes(numbers, drawn);
        if constexpr (Change::kKeepsGrey) KeepGrey(ordered, drawn);
        Arrange(drawn, channels);
      });
}

inline void SaturateLoop(std::uint8_t* colour, int width, double factor) {
  ChangeColours(colour, width, Saturation{factor});
}

inline void SaturateByHueLoop(std::uint8_t* colour, int width, const HueFactors& factors) {
  ChangeColours(colour, width, SaturationByHue{factors});
}

inline void ChangeByHueLoop(std::uint8_t* colour, int width, const HueChanges& changes) {
  ChangeColours(colour, width, ChangeAll{changes});
}

constexpr HlsKernelTable kHlsLoops = {SaturateLoop, SaturateByHueLoop, ChangeByHueLoop};

}  // namespace
}  // namespace kernels
