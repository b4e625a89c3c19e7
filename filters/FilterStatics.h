// The parameter records of the geometry filters: how each reads from a text, prints and compares.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/Export.h"
#include "core/ParameterText.h"

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

struct PercentRecord {
  bool keepProportions = true;
  bool allowEnlarge = false;
  std::int32_t horizontalProz = 100, verticalProz = 100;

  FXBOX_API static std::span<const ParameterRow<PercentRecord>> Rows();
};

// A picture padded to the ratio of a paper.
struct PadRecord {
  std::int32_t aspectRatioX = 3, aspectRatioY = 2;
  bool forceRatio = false, toggle = false, landscape = false;
  std::uint32_t padColor = 0xFFFFFF;  // 0xRRGGBB
  bool bottomAlign = false;
  std::int32_t copy = 1;  // of the print; no matter of the picture

  FXBOX_API static std::span<const ParameterRow<PadRecord>> Rows();
};

struct PrintCropRecord {
  double marginL = 0.0, marginR = 1.0, marginB = 0.0, marginT = 1.0;
  double width = 15.0, height = 10.0;
  std::int32_t measur = 1;
  double ppi = 100.0;
  bool fixedPpi = false;

  FXBOX_API static std::span<const ParameterRow<PrintCropRecord>> Rows();
};

struct PrintScaleRecord {
  std::int32_t printWidth = 100, printHeight = 100;  // pixels
  std::int32_t printTurn = 0;                        // quarter turns

  FXBOX_API static std::span<const ParameterRow<PrintScaleRecord>> Rows();
};

// 1 where either number is below 2.
FXBOX_API int GreatestCommonDivisor(int a, int b);
