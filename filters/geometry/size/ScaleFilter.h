// Scale: fits the picture into a box of pixels.
#pragma once

#include <atomic>

#include "filters/FilterStatics.h"
#include "filters/geometry/size/ResamplingFilter.h"

struct ScaleParameters : ScaleRecord {
  static ScaleParameters ActiveStart() {
    return {{.maximumHorizontalSize = -1, .maximumVerticalSize = -1}};
  }
  static constexpr int kLeastBuffer = 101;
};

extern const FilterClass kScaleClass;

// Sizes are asked and told before there are rows: a source that asks gets the box itself. A zoom
// stops here, as what comes behind works on the scaled picture, unless `ScaleThrough` is set, which
// has no pending copy.
class CScaleFilter final : public ParameterFilter<ResamplingFilter, ScaleParameters> {
 public:
  explicit CScaleFilter(const FilterClass& row) : ParameterFilter(row) {}

  // The active box turns to the picture's shape and stays turned.
  void Commit() override;
  HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) override;
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;
  HRESULT STDMETHODCALLTYPE SetZoom(double newZoom) override;

 private:
  void ReadText(const char* text) override;
  void PrintText(const ScaleParameters& parameters, char* buffer, int size) override;
  bool PassesThrough() override;
  bool Rebuild() override;
  // The box over this size.
  Ratios RatiosTo(double width, double height) const;

  std::atomic<bool> scaleThrough{false};
};
