// Soft frame: the edges of the picture fade into transparency.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "core/Published.h"
#include "filters/frames/EdgeFade.h"

struct SoftFrameParameters {
  bool softCorner = true;
  std::int32_t frameWidth = 0;  // percent of half the shorter side
  bool left = true, top = true, right = true, bottom = true;

  static SoftFrameParameters ActiveStart() { return {.frameWidth = -1}; }
  static constexpr int kLeastBuffer = 0;
  static std::span<const ParameterRow<SoftFrameParameters>> Rows();
};

extern const FilterClass kSoftFrameClass;

// Not a RowFilter: what becomes of a row depends on its place in the picture.
class CSoftFrameFilter final : public ParameterFilter<RectangleFilter, SoftFrameParameters> {
 public:
  explicit CSoftFrameFilter(const FilterClass& row) : ParameterFilter(row) {}

  void Commit() override;

 private:
  std::optional<RowReach> Reach() override { return RowReach(); }
  bool ChangeRectangle(const PullRectangle& rectangle) override;

  Published<kernels::EdgeFade> published;
};
