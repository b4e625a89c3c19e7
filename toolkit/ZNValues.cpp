#include "toolkit/ZNValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>

int ValueRange::Positions() const {
  return static_cast<int>(std::lround((greatest - least) / step));
}

int ValueRange::PositionOf(double value) const {
  const double steps = (std::clamp(value, least, greatest) - least) / step;
  return std::clamp(static_cast<int>(std::lround(steps)), 0, Positions());
}

// By the decimals, so that a tenth is the double next to a tenth.
double ValueRange::ValueAt(int position) const {
  const double scale = std::pow(10.0, decimals);
  return std::round((least + position * step) * scale) / scale;
}

double ValueRange::Nearest(double value) const {
  return ValueAt(PositionOf(value));
}

std::string NumberText(double value, int decimals) {
  char text[400];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
  if (end.ec != std::errc()) return "?";
  std::string result(text, end.ptr);
  const bool isNothing = result.find_first_not_of("-0.") == std::string::npos;
  return isNothing && result[0] == '-' ? result.substr(1) : result;
}

std::optional<double> NumberOf(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return std::nullopt;
  std::string number = text.substr(first, text.find_last_not_of(" \t") + 1 - first);
  std::replace(number.begin(), number.end(), ',', '.');
  if (number[0] == '+') number.erase(0, 1);
  double value = 0;
  const char* const end = number.data() + number.size();
  const auto read = std::from_chars(number.data(), end, value);
  if (read.ec != std::errc() || read.ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}
