// The six sectors of the hue circle, and the tables of filters that change colours by sector.
#pragma once

#include <array>
#include <cstdint>

#include "filters/colour/BalanceKernels.h"
#include "filters/pixels/HlsKernels.h"

namespace kernels {

inline constexpr int kHueSectors = 6;

// One number for each sector: red, yellow, green, cyan, blue, magenta.
using SectorValues = std::array<std::int32_t, kHueSectors>;

// How much of a sector, 0..5, lies in a hue, 0..359: percent, truncated. Neighbours overlap.
int SectorWeight(int sector, int hue);

// Degrees and percentages by sector, and what is added to each of them all round the circle.
struct HueSettings {
  std::int32_t hue = 0, saturation = 0, brightness = 0;
  SectorValues hues = {}, saturations = {}, brightnesses = {};
};
// Hues are brought into -180..180, percentages limited to -100..100. Greys take `brightness` alone.
void BuildHueChanges(const HueSettings& settings, HueChanges& changes);

// Percentages of saturation by sector, together limited to -100..100.
void BuildSaturationFactors(const SectorValues& percentages, HueFactors& factors);

// Percentages of one slider, for all colours and by sector.
struct BalanceSlider {
  std::int32_t everywhere = 0;
  SectorValues bySector = {};
};
struct BalanceSettings {
  BalanceSlider red = {}, green = {}, blue = {}, lightness = {}, saturation = {};
};
// Each slider is limited to -100..100 where its sectors meet. Greys take what counts everywhere.
void BuildBalance(const BalanceSettings& settings, Balance& balance);

}  // namespace kernels
