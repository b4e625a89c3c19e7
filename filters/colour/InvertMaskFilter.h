// Invert mask: fills what is transparent with a colour and makes what is opaque transparent.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct InvertMaskParameters {
  std::uint8_t red = 255, green = 255, blue = 255;
  std::int32_t transparency = 0;  // percent

  static InvertMaskParameters ActiveStart() { return {0, 0, 0, 255}; }
  static constexpr int kLeastBuffer = 221;
  static std::span<const ParameterRow<InvertMaskParameters>> Rows();
};

extern const FilterClass kInvertMaskClass;

class CInvertMaskFilter final : public ParameterFilter<WholePictureFilter, InvertMaskParameters> {
 public:
  explicit CInvertMaskFilter(const FilterClass& row)
      : ParameterFilter(row, {Cache::InputPicture, ChangeFlags::ClearedAtStart}) {}

  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;

 private:
  void TakeParameters() override { used = active; }
  bool Rebuild() override { return TakeInput(); }
  void ChangePiece(const base::RowWay& piece, int pixels) override;

  InvertMaskParameters used;  // of the picture that was taken last
};
