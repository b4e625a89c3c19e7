// What the two scale filters share: the size of the result, and the picture that is resampled once
// a change.
#pragma once

#include "core/FilterShapes.h"
#include "filters/pixels/resampling/Resampling.h"

class ResamplingFilter : public WholePictureFilter {
 protected:
  explicit ResamplingFilter(const FilterClass& row)
      : WholePictureFilter(
            row, {.abortMarksChange = true, .givesOutFailures = true, .takesWhatComes = true}) {}

  struct Ratios {
    double x, y;  // output over input, before the size is rounded
  };
  // For Commit: sets `output` to this size, of which a side below 1 becomes 1. A picture without
  // pixels stays as it is.
  void SetOutput(Ratios newRatios, double width, double height);

  void TakeParameters() override { usedRatios = scaledBy; }
  bool Rebuild() override;

 private:
  bool IsLargerThanInput() const;
  bool ComputeRows(const base::WritableRows& to) override;

  Ratios scaledBy = {1, 1};
  Ratios usedRatios = scaledBy;  // of the picture in the cache
};
