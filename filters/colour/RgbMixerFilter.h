// Channel mixer: each channel, or one grey for all, is a weighted sum of red, green and blue.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/colour/MixerKernels.h"

struct RgbMixerParameters {
  bool greyOn = false, redOn = false, greenOn = false, blueOn = false;
  bool bypass = false;
  // For grey, red, green and blue: whether the weights count as shares of their sum, and whether
  // the constant counts.
  bool sharesGrey = false, constantOnGrey = true;
  bool sharesRed = false, constantOnRed = false;
  bool sharesGreen = false, constantOnGreen = false;
  bool sharesBlue = false, constantOnBlue = false;
  // Percent of red, green and blue.
  std::int32_t greyOfRed = 30, greyOfGreen = 59, greyOfBlue = 11;
  std::int32_t redOfRed = 100, redOfGreen = 0, redOfBlue = 0;
  std::int32_t greenOfRed = 0, greenOfGreen = 100, greenOfBlue = 0;
  std::int32_t blueOfRed = 0, blueOfGreen = 0, blueOfBlue = 100;
  // Percent of the full level.
  std::int32_t greyConstant = 0, redConstant = 0, greenConstant = 0, blueConstant = 0;

  static RgbMixerParameters ActiveStart();
  static constexpr int kLeastBuffer = 0;
  static std::span<const ParameterRow<RgbMixerParameters>> Rows();
};

extern const FilterClass kRgbMixerClass;

class CRgbMixerFilter final : public ParameterFilter<RowFilter, RgbMixerParameters> {
 public:
  explicit CRgbMixerFilter(const FilterClass& row)
      : ParameterFilter(row, {.abortMarksChange = true}) {}

  void Commit() override;

 private:
  kernels::Mixture ActiveMixture() const;
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::Mixture mixture;
};
