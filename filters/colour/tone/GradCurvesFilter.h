// Gradation curves: one for the luminance and one each for red, green and blue, through up to 12
// nodes.
#pragma once

#include "core/AnimSample.h"
#include "core/FilterShapes.h"
#include "core/PictureSample.h"
#include "editing/GradCurvesParameters.h"

extern const FilterClass kGradCurvesClass;

// A pull works with the active nodes, but with the pending counts and the pending `filterOn`. The
// dialog shows what came in behind its curves.
class CGradCurvesFilter final : public ParameterFilter<RectangleFilter, GradCurvesParameters>,
                                public IAnimPictureSample {
 public:
  explicit CGradCurvesFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::StopsUnlessZero, .takesLent = true}) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return CPdibFilter::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return CPdibFilter::Release(); }

  HRESULT STDMETHODCALLTYPE ReadSample(BYTE* pixels, int most, int* count) override;

 private:
  std::optional<RowReach> Reach() override { return RowReach(); }
  bool ChangeRectangle(const PullRectangle& rectangle) override;

  PictureSample sample;
};
