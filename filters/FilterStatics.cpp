#include "filters/FilterStatics.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <numbers>
#include <numeric>

#include "core/Diagnostics.h"

namespace {

constexpr double kTolerance = 0.0001;

bool IsNear(double a, double b) {
  return a == b || std::fabs(a - b) <= kTolerance;
}

// --- decimal points

// A line that cannot be logged must not cost the text.
template <class Log>
void LogSafely(int line, Log log) {
  try {
    log();
  } catch (...) {
    try {
      core::LogLine(-1, "Exception in logging %d,%s", line, "Sources/FilterStatics");
    } catch (...) {
    }
  }
}

void EnsureDecimalPoint(double number) {
  char test[512];
  const auto printsComma = [&] {
    std::snprintf(test, sizeof test, "Test=%2.4lf", number);
    return std::strchr(test, ',') != nullptr;
  };
  if (!printsComma()) return;
  LogSafely(__LINE__, [] {
    core::LogLine(-1,
                  "CropStatics::SchreibeParameter(1): CURRENT LOCALE 'LC_NUMERIC' IS '%s' -> SET "
                  "TO 'C'",
                  std::setlocale(LC_NUMERIC, nullptr));
  });
  std::setlocale(LC_NUMERIC, "C");
  if (!printsComma()) return;
  LogSafely(__LINE__, [&] {
    core::LogLine(-1,
                  "CropStatics::SchreibeParameter(4): CURRENT LOCALE 'LC_NUMERIC' IS '%s' -> no "
                  "success '%s'",
                  std::setlocale(LC_NUMERIC, nullptr), test);
  });
}

// --- equality

bool AreEqualRatios(double a, double b) {
  const bool none = a == CropRecord::kNoRatio;
  if (none || b == CropRecord::kNoRatio) return a == b;
  return std::fabs(a - b) < kTolerance;
}

// From 0 to a full turn.
double WithinATurn(double radians) {
  constexpr double kTurn = 2 * std::numbers::pi;
  const double rest = std::fmod(radians, kTurn);
  return rest < 0 ? rest + kTurn : rest;
}

}  // namespace

// --- crop

std::span<const ParameterRow<CropRecord>> CropRecord::Rows() {
  using R = CropRecord;
  constexpr auto kIsLocked = [](const R& r) { return r.fixRatioOn; };
  constexpr auto kHasSize = [](const R& r) { return r.dlgSizeX != 0 && r.dlgSizeY != 0; };
  static constexpr ParameterRow<R> kRows[] = {
      {"LeftMargin", "LeftMargin=%2.4lf", &R::leftMargin,
       Forced(0, 1, "left edge of what is kept, as a share of the width")},
      {"RightMargin", ", RightMargin=%2.4lf", &R::rightMargin, Forced(0, 1, "right edge")},
      {"BottomMargin", ", BottomMargin=%2.4lf", &R::bottomMargin,
       Forced(0, 1, "bottom edge, as a share of the height")},
      {"TopMargin", ", TopMargin=%2.4lf", &R::topMargin, Forced(0, 1, "top edge")},
      {"ShrinkAlpha", ", ShrinkAlpha=%.1d", &R::shrinkAlpha, {.gloss = "asks for all pixels"}},
      {"FixRatioOn", ", FixRatioOn=%.1d", &R::fixRatioOn, {.gloss = "lock the ratio of the sides"}},
      {"FixRatio", ", FixRatio=%2.4lf", &R::fixRatio,
       Forced(0.0001, 10000, "width over height; -1 is none"), kIsLocked},
      {"Landscape", ", Landscape=%.1d", &R::landscape, {.gloss = "the wide side lies"}, kIsLocked},
      {"AdjustOri",
       ", AdjustOri=%d",
       &R::adjustOri,
       {.least = -1, .gloss = "turn the ratio with the picture; -1 is unset"},
       [](const R& r) { return r.adjustOri >= 0; }},
      {"DlgSizeX", ", DlgSizeX=%d", &R::dlgSizeX, Forced(0, 100000, "width of the ratio"),
       kHasSize},
      {"DlgSizeY", ", DlgSizeY=%d", &R::dlgSizeY, Forced(0, 100000, "height of the ratio"),
       kHasSize}};
  return kRows;
}

std::string PrintCrop(const CropRecord& record) {
  EnsureDecimalPoint(record.leftMargin);
  return PrintParameters(record);
}

bool AreEqual(const CropRecord& a, const CropRecord& b) {
  return IsNear(a.leftMargin, b.leftMargin) && IsNear(a.rightMargin, b.rightMargin) &&
         IsNear(a.bottomMargin, b.bottomMargin) && IsNear(a.topMargin, b.topMargin) &&
         a.shrinkAlpha == b.shrinkAlpha && a.fixRatioOn == b.fixRatioOn &&
         (!a.fixRatioOn || AreEqualRatios(a.fixRatio, b.fixRatio));
}

// --- rotated crop

std::span<const ParameterRow<RotCropRecord>> RotCropRecord::Rows() {
  using R = RotCropRecord;
  // Not all blanks are there.
  static constexpr ParameterRow<R> kRows[] = {
      {"Mirrored", ", Mirrored=%.1d", &R::mirrored, {.gloss = "left to right"}},
      {"Angle",
       ", Angle=%4.4lf",
       &R::angle,
       {.least = -7, .greatest = 7, .gloss = "turn, in radians"}},
      {"Rot1X", ",Rot1X=%1.5lf", &R::rot1X, Forced(0, 1, "first point of the level line")},
      {"Rot1Y", ",Rot1Y=%1.5lf", &R::rot1Y, Forced(0, 1, "its height")},
      {"Rot2X", ", Rot2X=%1.5lf", &R::rot2X, Forced(0, 1, "second point of the level line")},
      {"Rot2Y", ", Rot2Y=%1.5lf", &R::rot2Y, Forced(0, 1, "its height")}};
  return kRows;
}

RotCropRecord ReadRotCrop(const char* text) {
  RotCropRecord record = ReadRecord<RotCropRecord>(text);
  record.crop = ReadRecord<CropRecord>(text);
  return record;
}

std::string PrintRotCrop(const RotCropRecord& record) {
  return PrintCrop(record.crop) + PrintParameters(record);
}

std::vector<ParameterDescription> DescribeRotCrop() {
  std::vector<ParameterDescription> rows = DescribeParameters<CropRecord>();
  for (const auto& row : RotCropRecord::Rows()) rows.push_back(row);
  return rows;
}

bool AreEqual(const RotCropRecord& a, const RotCropRecord& b) {
  return AreEqual(a.crop, b.crop) && a.mirrored == b.mirrored &&
         (a.angle == b.angle || IsNear(WithinATurn(a.angle), WithinATurn(b.angle))) &&
         IsNear(a.rot1X, b.rot1X) && IsNear(a.rot1Y, b.rot1Y) && IsNear(a.rot2X, b.rot2X) &&
         IsNear(a.rot2Y, b.rot2Y);
}

// --- rotation, scale, percent

std::span<const ParameterRow<RotationRecord>> RotationRecord::Rows() {
  using R = RotationRecord;
  static constexpr ParameterRow<R> kRows[] = {
      {"MirrorOn",
       "MirrorOn=%.1d",
       &R::mirrorOn,
       {.gloss = "mirror left to right before the turn"}},
      {"Angle",
       ", Angle=%3.3f",
       &R::angle,
       {.least = -360, .greatest = 360, .gloss = "turn, in degrees"}},
      {"CenterX",
       ", CenterX=%d",
       &R::centerX,
       {.least = -1000, .greatest = 1000, .gloss = "centre of the turn, pixels from the middle"}},
      {"CenterY",
       ", CenterY=%d",
       &R::centerY,
       {.least = -1000, .greatest = 1000, .gloss = "the same upwards"}},
      {"AlignLeftBottom",
       ", AlignLeftBottom=%.1d",
       &R::alignLeftBottom,
       {.gloss = "the corner keeps its place, not the centre"}}};
  return kRows;
}

std::span<const ParameterRow<ScaleRecord>> ScaleRecord::Rows() {
  using R = ScaleRecord;
  static constexpr ParameterRow<R> kRows[] = {
      {"KeepProportions",
       "KeepProportions=%.1d",
       &R::keepProportions,
       {.greatest = 2, .gloss = "one ratio for both axes; 2 turns the box to the picture's shape"}},
      {"AllowEnlarge", ", AllowEnlarge=%.1d", &R::allowEnlarge, {.gloss = "the picture may grow"}},
      {"MaximumHorizontalSize", ", MaximumHorizontalSize=%.3d", &R::maximumHorizontalSize,
       Forced(1, 100000, "width of the box in pixels")},
      // A mark that no reader looks at closes the text.
      {"MaximumVerticalSize", ", MaximumVerticalSize=%.3d, ExtraParam=|SCALE|",
       &R::maximumVerticalSize, Forced(1, 100000, "height of the box in pixels")}};
  return kRows;
}

ScaleRecord ReadScale(const char* text, ScaleRecord record) {
  const std::int32_t before = record.keepProportions;
  record = ReadRecord<ScaleRecord>(text, {.keepProportions = before});
  if (record.keepProportions < 0 || record.keepProportions > 2) record.keepProportions = before;
  return record;
}

std::span<const ParameterRow<PercentRecord>> PercentRecord::Rows() {
  using R = PercentRecord;
  static constexpr ParameterRow<R> kRows[] = {
      {"KeepProportions",
       "KeepProportions=%.1d",
       &R::keepProportions,
       {.gloss = "one ratio for both axes"}},
      {"AllowEnlarge", ", AllowEnlarge=%.1d", &R::allowEnlarge, {.gloss = "the picture may grow"}},
      {"HorizontalProz",
       ", HorizontalProz=%.3d",
       &R::horizontalProz,
       {.least = 1, .greatest = 1000, .gloss = "width in percent"}},
      {"VerticalProz",
       ", VerticalProz=%.3d, ExtraParam=|SCALE100|",
       &R::verticalProz,
       {.least = 1, .greatest = 1000, .gloss = "height in percent"}}};
  return kRows;
}

int GreatestCommonDivisor(int a, int b) {
  return std::min(a, b) < 2 ? 1 : std::gcd(a, b);
}
