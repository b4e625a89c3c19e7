// Image background: a colour behind what is transparent.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct ImgBgParameters {
  std::uint8_t red = 180, green = 180, blue = 180;
  std::int32_t transparency = 0;  // of the colour, percent

  static ImgBgParameters ActiveStart() { return {255, 255, 255, 255}; }
  static constexpr int kLeastBuffer = 221;
  static std::span<const ParameterRow<ImgBgParameters>> Rows();
};

extern const FilterClass kImgBgClass;

class CImgBgFilter final : public ParameterFilter<WholePictureFilter, ImgBgParameters> {
 public:
  // A source that stopped is not told apart: what it gave is composed, and the abort flag ends the
  // rows.
  explicit CImgBgFilter(const FilterClass& row)
      : ParameterFilter(
            row, {.cache = Cache::InputPicture, .abortMarksChange = true, .takesWhatComes = true}) {
  }

  void Commit() override;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;

 private:
  void TakeParameters() override { used = active; }
  bool TakeInput() override { return TakeInputOfSize(result.width, result.height); }
  bool Rebuild() override { return TakeInput(); }
  void ChangePiece(const base::RowWay& piece, int pixels) override;

  ImgBgParameters used;  // of the picture that was taken last
};
