// Crop: keeps a part of the picture, given as shares of its sides.
#pragma once

#include <utility>

#include "core/CroppedRows.h"
#include "core/FilterShapes.h"
#include "filters/FilterStatics.h"

struct CropParameters : CropRecord {
  static CropParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 0;
};

extern const FilterClass kCropClass;

// Moves no pixel: a request goes to the source with other coordinates, cut to the crop.
class CCropFilter final : public ParameterFilter<CPdibFilter, CropParameters> {
 public:
  explicit CCropFilter(const FilterClass& row) : ParameterFilter(row) {}

  // Locks the pending margins to the ratio once more, as the picture may have another size by now.
  void Commit() override;
  void MapSize(int w, int h, int* inW, int* inH) override;
  HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) override;
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;
  // The pair of this filter, which is 0, 0.
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override;
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;

 private:
  std::optional<RowReach> Reach() override { return RowReach(); }
  std::optional<base::RowView> Lend(int width, int height) override;
  void ReadText(const char* text) override;
  void PrintText(const CropParameters& parameters, char* buffer, int size) override;
  void LockToRatio(CropRecord& crop) const;
  PullRectangle InSource(const PullRectangle& request) const;
  std::pair<int, int> PictureSize() const;

  CroppedRows lentRows;
};
