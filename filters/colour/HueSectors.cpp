#include "filters/colour/HueSectors.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace kernels {
namespace {

// Corner hues in degrees. A sector may run past 360, where its corners start again at 0.
struct Sector {
  int riseStarts, fullFrom, fullTo, fallEnds;
};
constexpr Sector kSectors[kHueSectors] = {{315, 345, 15, 45},   {15, 45, 75, 105},
                                          {75, 105, 135, 165},  {135, 165, 195, 225},
                                          {195, 225, 255, 285}, {255, 285, 315, 345}};
using Weights = std::array<std::array<std::uint8_t, kHues>, kHueSectors>;

// Degrees upwards from one hue to another.
constexpr int Way(int from, int to) {
  return to >= from ? to - from : to - from + 360;
}

constexpr bool IsBetween(int hue, int from, int to) {
  return Way(from, hue) <= Way(from, to);
}

constexpr int WeightAt(const Sector& sector, int hue) {
  const auto& [a, b, c, d] = sector;
  if (IsBetween(hue, c, d)) return Way(hue, d) * 100 / Way(c, d);
  if (IsBetween(hue, b, c)) return 100;
  if (IsBetween(hue, a, b)) return Way(a, hue) * 100 / Way(a, b);
  return 0;
}

constexpr Weights kWeights = [] {
  Weights weights = {};
  for (std::size_t k = 0; k < weights.size(); ++k) {
    for (int h = 0; h < kHues; ++h) {
      weights[k][static_cast<std::size_t>(h)] = static_cast<std::uint8_t>(WeightAt(kSectors[k], h));
    }
  }
  return weights;
}();

// Hundred times the sum of the sectors' shares in a hue.
std::int64_t WeightedSum(const SectorValues& values, std::size_t hue) {
  std::int64_t sum = 0;
  for (std::size_t k = 0; k < values.size(); ++k) sum += std::int64_t{kWeights[k][hue]} * values[k];
  return sum;
}

std::int64_t Mixed(std::int32_t everywhere, const SectorValues& values, std::size_t hue) {
  return (std::int64_t{everywhere} * 100 + WeightedSum(values, hue)) / 100;
}

int BringIntoHalfTurns(std::int64_t degrees) {
  const int rest = static_cast<int>(degrees % 360);
  return rest > 180 ? rest - 360 : rest < -180 ? rest + 360 : rest;
}

int LimitPercent(std::int64_t percent) {
  return static_cast<int>(std::clamp<std::int64_t>(percent, -100, 100));
}

// -100 takes all saturation away, 100 leaves hardly any colour without all of it.
double FactorOf(int percent) {
  return percent < 1 ? (percent + 100) / 100.0 : 101.0 / (101 - percent);
}

// What makes an entry out of the numbers of the five sliders.
template <class ValueOf>
BalanceEntry EntryOf(const BalanceSettings& settings, const ValueOf& valueOf) {
  const auto shift = [&](const BalanceSlider& slider) {
    return static_cast<std::int8_t>(LimitPercent(valueOf(slider)) * 127 / 100);
  };
  const int lightness = LimitPercent(valueOf(settings.lightness));
  const int saturation = LimitPercent(valueOf(settings.saturation));
  return {lightness / 100.0,
          FactorOf(saturation),
          {shift(settings.blue), shift(settings.green), shift(settings.red)},
          static_cast<std::uint8_t>(lightness != 0 || saturation != 0 ? 255 : 0)};
}

}  // namespace

int SectorWeight(int sector, int hue) {
  return kWeights[static_cast<std::size_t>(sector)][static_cast<std::size_t>(hue)];
}

void BuildHueChanges(const HueSettings& settings, HueChanges& changes) {
  for (std::size_t h = 0; h < std::size(changes.byHue); ++h) {
    const int brightness = LimitPercent(Mixed(settings.brightness, settings.brightnesses, h));
    changes.byHue[h] = {
        static_cast<double>(BringIntoHalfTurns(Mixed(settings.hue, settings.hues, h))),
        FactorOf(LimitPercent(Mixed(settings.saturation, settings.saturations, h))),
        brightness / 100.0};
  }
  changes.greyLightness = settings.brightness / 100.0;
}

void BuildBalance(const BalanceSettings& settings, Balance& balance) {
  for (std::size_t h = 0; h < kHues; ++h) {
    balance.entries[h] = EntryOf(settings, [h](const BalanceSlider& slider) {
      return Mixed(slider.everywhere, slider.bySector, h);
    });
  }
  balance.entries[kGreyEntry] =
      EntryOf(settings, [](const BalanceSlider& slider) { return slider.everywhere; });
  balance.recolours = std::any_of(std::begin(balance.entries), std::end(balance.entries),
                                  [](const BalanceEntry& entry) { return entry.recolours != 0; });
}

void BuildSaturationFactors(const SectorValues& percentages, HueFactors& factors) {
  for (std::size_t h = 0; h < std::size(factors.byHue); ++h) {
    factors.byHue[h] = FactorOf(LimitPercent(Mixed(0, percentages, h)));
  }
}

}  // namespace kernels
