#include "filters/colour/tone/ToneCurves.h"

#include <algorithm>
#include <cmath>

#include "base/Arithmetic.h"
#include "editing/NaturalSpline.h"

namespace kernels {
namespace {

constexpr int kCurvePoints = 5;
constexpr double kCurveLevels[kCurvePoints] = {0.0, 40.0, 160.0, 220.0, 255.0};

// Limited before the truncation, so that nothing is too large to be truncated.
std::uint8_t LimitToByte(double value) {
  return base::TruncateToByte(std::clamp(value, 0.0, 255.0));
}

double Cube(double value) {
  return value * value * value;
}

}  // namespace

double GammaExponent(int control, const GammaRule& rule) {
  return 1.0 - control / (control < 0 ? rule.down : rule.up);
}

ByteTable BuildGammaTable(double exponent) {
  ByteTable table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = base::TruncateToByte(255.0 * std::pow(static_cast<double>(i) / 255.0, exponent));
  }
  return table;
}

ByteTable Compose(const ByteTable& first, const ByteTable& second) {
  ByteTable table;
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = second[first[i]];
  return table;
}

ByteTable BuildContrastTable(int brightness, int contrast) {
  const double slope = std::exp(contrast / 33.0);
  // Whole numbers up to the division: at 50 the middle is 0 and at 100 all levels are white.
  const double middle = static_cast<double>(12750 - 255 * std::int64_t{brightness}) / 100.0;
  ByteTable table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = LimitToByte((static_cast<double>(i) - middle) * slope + 127.5);
  }
  return table;
}

ByteTable BuildOptimizeTable(int gamma, int lights, int shadows) {
  const int raised = shadows / (shadows > 0 ? 2 : 3);
  const int lowered = lights / (lights > 0 ? 5 : 4);
  const auto& x = kCurveLevels;
  const double y[kCurvePoints] = {x[0], x[1] + raised, x[2], x[3] - lowered, x[4]};
  double bends[kCurvePoints];
  editing::SolveNaturalSpline(x, y, bends);

  ByteTable table;
  int right = 1;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const auto level = static_cast<double>(i);
    while (x[right] < level) ++right;
    const int left = right - 1;
    const double width = x[right] - x[left];
    const double t = (level - x[left]) / width;
    const double u = 1.0 - t;
    const double bend = (Cube(u) - u) * bends[left] + (Cube(t) - t) * bends[right];
    table[i] = LimitToByte(u * y[left] + t * y[right] + bend * (width * width) / 6.0 + 0.5);
  }
  return Compose(table, BuildGammaTable(GammaExponent(gamma, kOptimizeGamma)));
}

double SaturationFactor(double percent) {
  return percent > 0.0 ? 101.0 / (101.0 - percent) : (percent + 100.0) / 100.0;
}

}  // namespace kernels
