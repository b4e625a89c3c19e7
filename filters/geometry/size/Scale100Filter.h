// Scale by percent: scales the picture by a percentage along each axis.
#pragma once

#include "filters/FilterStatics.h"
#include "filters/geometry/size/ResamplingFilter.h"

// A new filter may enlarge, where a record that is read without the key may not.
struct Scale100Parameters : PercentRecord {
  Scale100Parameters() : PercentRecord{.allowEnlarge = true} {}

  static Scale100Parameters ActiveStart();
  static constexpr int kLeastBuffer = 101;
};

extern const FilterClass kScale100Class;

// At 100 percent the picture is resampled, too, and becomes a little softer.
class CScale100Filter final : public ParameterFilter<ResamplingFilter, Scale100Parameters> {
 public:
  explicit CScale100Filter(const FilterClass& row) : ParameterFilter(row) {}

  void Commit() override;
  HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) override;
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;
};
