#include "editing/GradationPreset.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>

#include "base/Arithmetic.h"
#include "base/NumberScan.h"

namespace {

using P = GradCurvesParameters;

// Every item stands behind its key in a fixed number of characters.
constexpr std::size_t kFlagWidth = 1;
constexpr std::size_t kNumberWidth = 3;
constexpr std::size_t kBetweenLevels = 2;  // comma and blank

constexpr char kNode[] = "(x, y)=";

struct Keys {
  const char* count;
  const char* selected;
};
constexpr Keys kFirstKeys = {"Anzahl=", "Selektierter="};
constexpr Keys kKeys = {"Count=", "Selected="};

class BadPreset : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Reader {
 public:
  explicit Reader(std::string_view whole) : text(whole) {}

  GradationPreset Read() {
    GradationPreset preset;
    preset.curves.filterOn = true;
    preset.version = Number("Gradation, Version", kNumberWidth);
    if (preset.version != 1 && preset.version != 2) {
      Fail("version " + std::to_string(preset.version) + " is unknown");
    }
    if (preset.version == 2) ReadSettings(preset);
    const Keys& keys = preset.version == 1 ? kFirstKeys : kKeys;
    for (int k = 0; k < P::kCurves; ++k) {
      ReadCurve(keys, preset.curves.curves[k], preset.selected[k]);
    }
    return preset;
  }

  // Names the line of the last number, counted from 1.
  [[noreturn]] void Fail(const std::string& what) const {
    const std::string_view before = text.substr(0, lastNumber);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    throw BadPreset("line " + std::to_string(line) + ": " + what);
  }

 private:
  void ReadSettings(GradationPreset& preset) {
    preset.curves.linear = Number("Curve=", kFlagWidth) == 0;
    preset.curves.yiqOn = Number("YIQ=", kFlagWidth) != 0;
    preset.channel = std::clamp(Number("Channel=", kFlagWidth), 0, P::kCurves - 1);
    preset.percent = Number("Percent=", kFlagWidth) != 0;
    preset.grid = Number("Grid=", kFlagWidth) != 0;
    preset.onlyActive = Number("OnlyActive=", kFlagWidth) != 0;
  }

  void ReadCurve(const Keys& keys, P::Curve& curve, std::int32_t& selected) {
    curve.count = Number(keys.count, kNumberWidth);
    if (curve.count < 2 || curve.count > P::kNodes) {
      Fail("a curve has 2 to " + std::to_string(P::kNodes) + " nodes, not " +
           std::to_string(curve.count));
    }
    selected = std::clamp(Number(keys.selected, kNumberWidth), 1, curve.count);
    for (int i = 0; i < curve.count; ++i) {
      editing::CurveNode& node = curve.nodes[i];
      if (text.find(kNode, at) > text.find(keys.count, at)) Fail("a node is missing");
      node.x = base::ClampByte(Number(kNode, kNumberWidth));
      at = std::min(at + kBetweenLevels, text.size());
      node.y = base::ClampByte(NumberHere(kNumberWidth));
    }
  }

  std::int32_t Number(std::string_view key, std::size_t width) {
    const std::size_t found = text.find(key, at);
    if (found == std::string_view::npos) Fail(std::string(key).append(" does not follow"));
    at = found + key.size();
    return NumberHere(width);
  }

  std::int32_t NumberHere(std::size_t width) {
    lastNumber = at;
    const std::string_view characters = text.substr(at, width);
    const auto number = base::ScanInt(characters);
    if (characters.size() < width) Fail("the file ends too early");
    if (!number) Fail("there is no number");
    at += width;
    return *number;
  }

  const std::string_view text;
  std::size_t at = 0;
  std::size_t lastNumber = 0;
};

// The longest line has three numbers of 32 bits.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void Append(std::string& text, const char* format, ...) {
  char line[80];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  text += line;
}

}  // namespace

std::optional<GradationPreset> ReadGradationPreset(std::string_view text, std::string& error) {
  try {
    return Reader(text).Read();
  } catch (const BadPreset& bad) {
    error = bad.what();
    return std::nullopt;
  }
}

std::string ParameterTextOf(const GradationPreset& preset) {
  return PrintParameters(preset.curves);
}

std::string PrintGradationPreset(const GradationPreset& preset) {
  std::string text = "Gradation, Version 2\n";
  Append(text, "Curve=%1d\n", preset.curves.linear ? 0 : 1);
  Append(text, "YIQ=%1d\n", preset.curves.yiqOn ? 1 : 0);
  Append(text, "Channel=%1d\n", preset.channel);
  Append(text, "Percent=%1d\n", preset.percent ? 1 : 0);
  Append(text, "Grid=%1d\n", preset.grid ? 1 : 0);
  Append(text, "OnlyActive=%1d\n", preset.onlyActive ? 1 : 0);
  for (int k = 0; k < P::kCurves; ++k) {
    const P::Curve& curve = preset.curves.curves[k];
    const int count = std::clamp(curve.count, 2, P::kNodes);
    Append(text, "Count=%3d\n", count);
    Append(text, "Selected=%3d\n", preset.selected[k]);
    for (int i = 0; i < count; ++i) {
      Append(text, "#%3d (x, y)=%3d, %3d\n", i + 1, curve.nodes[i].x, curve.nodes[i].y);
    }
  }
  return text;
}
