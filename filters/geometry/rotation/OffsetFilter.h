// Offset: moves the picture's stated place in its frame, no pixel.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct OffsetParameters {
  std::int32_t offsetX = 0, offsetY = 0;  // pixels, taken off the picture's offset

  static OffsetParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<OffsetParameters>> Rows();
};

extern const FilterClass kOffsetClass;

class COffsetFilter final : public ParameterFilter<CPdibFilter, OffsetParameters> {
 public:
  explicit COffsetFilter(const FilterClass& row) : ParameterFilter(row) {}

  // Each call moves `output` once more, until Prepare has renewed it.
  void Commit() override;

 private:
  std::optional<base::RowView> Lend(int width, int height) override {
    return LendBorrowed(width, height);
  }
};
