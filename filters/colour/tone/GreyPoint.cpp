#include "filters/colour/tone/GreyPoint.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Arithmetic.h"

namespace kernels {
namespace {

// Makes a whole number of what is a hair below it, such as the grey that the gamma is built for.
constexpr double kHair = 1e-9;

int Median(const GreyPoint& grey) {
  return std::max(std::min(grey.blue, grey.green),
                  std::min(std::max(grey.blue, grey.green), grey.red));
}

// Entries from a function of the level.
template <class Entry>
GreyTable Fill(Entry entry) {
  GreyTable table;
  for (int i = 0; i < 256; ++i) table.entries[static_cast<std::size_t>(i)] = entry(i);
  return table;
}

GreyTable Bend(std::int64_t level, std::int64_t target) {
  return Fill([&](std::int64_t i) {
    if (i < level || level == 255) return base::WrapToInt32(i * target / level);
    return base::WrapToInt32((i - 255) * (255 - target) / (255 - level) + 255);
  });
}

struct Gammas {
  double blue, green, red;
};

// The gamma of black is 0, of white infinite: nothing guards them.
Gammas GammasOf(const GreyPoint& grey) {
  const double scale = 128.0 / std::max(Median(grey), 1);
  const auto gamma = [scale](int level) {
    const std::int32_t scaled = base::TruncateToInt32(scale * level + 0.5);
    if (scaled == 128) return 1.0;
    return std::log10(255.0 / 128.0) / std::log10(255.0 / scaled);
  };
  return {gamma(grey.blue), gamma(grey.green), gamma(grey.red)};
}

std::int32_t Curved(double share, double gamma) {
  return base::TruncateToInt32(255.0 * std::pow(share, gamma) + kHair);
}

Limits Widen(Limits limits) {
  limits.low = std::clamp(limits.low, 0, 240);
  limits.high = std::clamp(limits.high, 15, 255);
  if (limits.high < limits.low) std::swap(limits.low, limits.high);
  if (limits.high - limits.low >= 10) return limits;
  if (limits.high < 129) return {limits.low, limits.low + 10};
  return {limits.high - 10, limits.high};
}

GreyTable Curve(const Limits& found, double gamma) {
  const Limits limits = Widen(found);
  return Fill([&](int i) {
    if (i < limits.low) return 0;
    if (i >= limits.high) return 255;
    return Curved(static_cast<double>(i - limits.low) / (limits.high - limits.low), gamma);
  });
}

int OnRamp(const Limits& limits, int level) {
  return BuildRamp(limits.low, limits.high)[static_cast<std::size_t>(std::clamp(level, 0, 255))];
}

}  // namespace

GreyTables BuildLinearGrey(const GreyPoint& grey) {
  const int median = Median(grey);
  return {Bend(grey.blue, median), Bend(grey.green, median), Bend(grey.red, median)};
}

GreyTables BuildCurvedGrey(const GreyPoint& grey) {
  const auto curve = [](double gamma) {
    return Fill([gamma](int i) { return Curved(i / 255.0, gamma); });
  };
  const Gammas gammas = GammasOf(grey);
  return {curve(gammas.blue), curve(gammas.green), curve(gammas.red)};
}

GreyTables BuildCurvedGrey(const GreyPoint& grey, const ChannelLimits& limits) {
  const Gammas gammas = GammasOf({OnRamp(limits.blue, grey.blue), OnRamp(limits.green, grey.green),
                                  OnRamp(limits.red, grey.red)});
  return {Curve(limits.blue, gammas.blue), Curve(limits.green, gammas.green),
          Curve(limits.red, gammas.red)};
}

ByteTable MixWithLevels(const GreyTable& table, int percent) {
  const std::int64_t share = percent;
  ByteTable bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::int64_t kept = (100 - share) * static_cast<std::int64_t>(i);
    bytes[i] = base::LowByte((table.entries[i] * share + kept) / 100);
  }
  return bytes;
}

}  // namespace kernels
