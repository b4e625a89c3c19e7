// Rotation ("drehen"): turns a picture by any angle, mirrored before if so wished.
#pragma once

#include <cstdint>

#include "core/FilterShapes.h"
#include "filters/FilterStatics.h"
#include "filters/geometry/rotation/RotationGeometry.h"
#include "filters/geometry/rotation/Shears.h"
#include "platform/LargeBlock.h"

extern const FilterClass kDrehClass;

// Quarter turns move pixels. Other angles are quarter turns and three shears; the result is larger
// by a margin with nothing in it.
class CDrehFilter final : public ParameterFilter<WholePictureFilter, RotationRecord> {
 public:
  explicit CDrehFilter(const FilterClass& row);

  void Commit() override;
  // Keeps the pair, and passes it to nobody.
  HRESULT STDMETHODCALLTYPE SetMark(int a, int b) override;
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override;
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;

 private:
  void ReadText(const char* text) override;
  bool PassesThrough() override { return active.angle == 0.0 && !active.mirrorOn; }
  bool PassesFailuresOver() const override { return true; }
  void DropPictures() override;
  void TakeParameters() override { used = active; }
  bool Rebuild() override;
  bool ComputeRows(const base::WritableRows& to) override;
  kernels::QuarterTurn Turned(const kernels::RotationGeometry& turn) const;
  bool Turn(const kernels::QuarterTurn& turned, const base::WritableRows& to);
  // What the first shear leaves, and the two others from that.
  bool TakeIntermediate(const kernels::QuarterTurn& turned, const kernels::RotationGeometry& turn);
  bool Shear(const kernels::RotationGeometry& turn, const base::WritableRows& to);
  kernels::Shears ShearsOf(const kernels::RotationGeometry& turn) const;
  bool EnsureIntermediate(std::int64_t width, std::int64_t height);

  RotationRecord used;  // of the picture in the cache
  // Kept between computations of the same size.
  platform::LargeArray<kernels::Quad> intermediate;
  std::int64_t intermediateWidth = 0, intermediateHeight = 0;
};
