// The parameter records that several geometry filters share: how each reads from a text, prints and
// compares.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/Export.h"
#include "core/ParameterText.h"

// A row whose range is forced upon what is read.
constexpr ParameterDescription Forced(double least, double greatest, const char* gloss) {
  return {.least = least, .greatest = greatest, .gloss = gloss, .range = ParameterRange::Forced};
}

// ReadRecord and PrintParameters of core/ParameterText.h read and print a record, but where a
// function of its own is given below. A record that is read has the default of every key that the
// text leaves out. No reader fails: a bad number gives the default, and limits hide the rest.

// The part of a picture that stays, as fractions of its width and height; the bottom edge is that
// of row 0.
struct CropRecord {
  double leftMargin = 0.0, rightMargin = 1.0, bottomMargin = 0.0, topMargin = 1.0;
  bool shrinkAlpha = false;
  bool fixRatioOn = true;
  double fixRatio = kNoRatio;  // width over height
  std::int32_t adjustOri = -1;
  bool landscape = false;
  std::int32_t dlgSizeX = 0, dlgSizeY = 0;

  static constexpr double kNoRatio = -1.0;
  FXBOX_API static std::span<const ParameterRow<CropRecord>> Rows();
};

// For texts of crops that are locked to a ratio only when they say so:
// ReadRecord(text, kFreeCrop).
inline constexpr CropRecord kFreeCrop = {.fixRatioOn = false};

// The text always has decimal points: a numeric locale that prints commas is set to "C", for the
// whole process and for good, and the log tells.
FXBOX_API std::string PrintCrop(const CropRecord& record);
// Margins and ratio with a tolerance of 0.0001; the ratio counts only where it is locked.
FXBOX_API bool AreEqual(const CropRecord& a, const CropRecord& b);

// A crop of a picture that was turned before. Two points name the line that was made level.
struct RotCropRecord {
  CropRecord crop;
  bool mirrored = false;
  double angle = 0.0;  // radians
  double rot1X = 0.25, rot1Y = 0.5, rot2X = 0.75, rot2Y = 0.5;

  // Without those of the crop.
  FXBOX_API static std::span<const ParameterRow<RotCropRecord>> Rows();
};

FXBOX_API RotCropRecord ReadRotCrop(const char* text);
FXBOX_API std::string PrintRotCrop(const RotCropRecord& record);
FXBOX_API std::vector<ParameterDescription> DescribeRotCrop();
// Angles are equal when they are within a full turn from 0.
FXBOX_API bool AreEqual(const RotCropRecord& a, const RotCropRecord& b);

struct RotationRecord {
  bool mirrorOn = false;                  // left to right, before the turn
  double angle = 0.0;                     // degrees
  std::int32_t centerX = 0, centerY = 0;  // of the turn, from the picture's middle, in pixels
  bool alignLeftBottom = false;           // the result's offset stays the input's

  static RotationRecord ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 101;
  FXBOX_API static std::span<const ParameterRow<RotationRecord>> Rows();
};

// A box in pixels that a picture is fitted into.
struct ScaleRecord {
  std::int32_t keepProportions = 1;  // 0 no, 1 yes, 2 and the box turns to the picture's shape
  bool allowEnlarge = false;
  std::int32_t maximumHorizontalSize = 100, maximumVerticalSize = 100;

  FXBOX_API static std::span<const ParameterRow<ScaleRecord>> Rows();
};

// A number for `keepProportions` that means nothing, and none at all, leave it as `record` has it.
FXBOX_API ScaleRecord ReadScale(const char* text, ScaleRecord record = {});

// A filter has `allowEnlarge` from the start; a text has to say it.
struct PercentRecord {
  bool keepProportions = true;
  bool allowEnlarge = false;
  std::int32_t horizontalProz = 100, verticalProz = 100;

  FXBOX_API static std::span<const ParameterRow<PercentRecord>> Rows();
};

// 1 where either number is below 2.
FXBOX_API int GreatestCommonDivisor(int a, int b);
