// Passepartout: a coloured mat around the picture, with round corners.
#pragma once

#include <span>
#include <vector>

#include "core/FilterShapes.h"
#include "filters/frames/MatKernels.h"
#include "filters/frames/MatLayout.h"
#include "filters/frames/MatParameters.h"

// Widths, sizes, shifts and the radius are pixels: of the unscaled picture when pending, of the
// picture at hand when active.
struct PasspartoutParameters {
  bool bordersizeOn = true;  // else total size
  std::int32_t borderhori = 1, borderverti = 1;
  std::int32_t totalHori = 150, totalVerti = 150;
  std::int32_t radius = 5;
  std::uint8_t red = 0, green = 0, blue = 105;
  std::int32_t poscorhori = 0, poscorverti = 0;
  std::int32_t transparency = 0;  // of the mat, percent

  static PasspartoutParameters ActiveStart() {
    return {false, 0, 0, 0, 0, 0, 255, 255, 255, 0, 0, 255};
  }
  static constexpr int kLeastBuffer = 221;
  static constexpr MatWords kWords = {
      .leastSize = -50,
      .greatestSize = 1000,
      .leastShift = -1000,
      .greatestShift = 1000,
      .mode = "1: border widths, 0: total size",
      .borderhori = "mat left and right; below 0 over the picture",
      .borderverti = "mat above and below; below 0 over the picture",
      .totalHori = "width of the result",
      .totalVerti = "height of the result",
      .radius = "of the corners",
      .shiftHori = "of the picture, to the right",
      .shiftVerti = "of the picture, upward",
      .transparency = "of the mat"};
  static std::span<const ParameterRow<PasspartoutParameters>> Rows();
};

extern const FilterClass kPasspartoutClass;

// A picture that is lent goes straight to the caller, mat and all. Otherwise the result is finished
// row by row as it is asked for, while the row is in the cache.
class CPasspartoutFilter final : public ParameterFilter<WholePictureFilter, PasspartoutParameters> {
 public:
  explicit CPasspartoutFilter(const FilterClass& row)
      : ParameterFilter(row, {.abortMarksChange = true}) {}

  bool IsDirty() override;
  void Commit() override;
  void MapSize(int w, int h, int* inW, int* inH) override;
  HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) override;
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;

 private:
  // How a part of the mat is painted.
  enum class Paint { Solid, Glaze };
  struct Layout {
    kernels::MatAxis x, y;
  };

  static Layout LayOut(const PasspartoutParameters& parameters, const PictureInfo& picture);
  void TakeParameters() override;
  bool Rebuild() override;
  Placed Part() const;
  bool ComputeRows(const base::WritableRows& to) override;
  void FinishRow(int y) override;
  void PaintRow(int y);
  void PaintPart(Paint paint, int y, int from, int to);
  void PaintBottomBand(int y);
  void PaintTopBand(int y);
  void PaintBetween(int y);
  Paint PaintAlong(int border) const;

  // Of the picture in the cache: Commit may come in the middle of a pull.
  PasspartoutParameters painted;
  Layout layout;
  kernels::ChannelTables glaze;
  base::WritableRows canvas;   // what is painted on: the output picture, or the rows of a caller
  bool isPaintedLate = false;  // as rows are finished
};
