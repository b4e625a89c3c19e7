// Turn and crop: makes a picture level, moves it back into its corner and crops it, in one.
#pragma once

#include "filters/CompositeFilter.h"
#include "filters/FilterStatics.h"

struct RotCropParameters : RotCropRecord {
  RotCropParameters() { crop.dlgSizeX = crop.dlgSizeY = 100; }
  static RotCropParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 0;
};

extern const FilterClass kRotCropClass;

// A rotation, an offset filter that takes back the margin of the rotation, and a crop.
class CRotCropFilter final : public ParameterFilter<CompositeFilter, RotCropParameters> {
 public:
  explicit CRotCropFilter(const FilterClass& row);

  bool IsDirty() override;
  // When the parts have committed what they were given, the parameters follow, which are only
  // shown.
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* consumerRevision,
                                    bool trackRevision) override;
  HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                    int* extentWidth, int* extentHeight) override;

  static std::vector<ParameterDescription> Describe() { return DescribeRotCrop(); }

 private:
  void ReadText(const char* text) override;
  void PrintText(const RotCropParameters& parameters, char* buffer, int size) override;
};
