// Pad for printing: puts the picture on a colour, on paper of a ratio.
#pragma once

#include "core/FilterShapes.h"
#include "filters/FilterStatics.h"

struct PadParameters {
  std::int32_t aspectRatioX = 3, aspectRatioY = 2;
  bool forceRatio = false, toggle = false, landscape = false;
  std::uint32_t padColor = 0xFFFFFF;  // 0xRRGGBB
  bool bottomAlign = false;
  std::int32_t copy = 1;  // of the print; no matter of the picture

  static PadParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 0;
  static std::span<const ParameterRow<PadParameters>> Rows();
};

extern const FilterClass kPrintPadClass;

// A picture that is lent goes straight to the caller.
class CPrintPadFilter final : public ParameterFilter<WholePictureFilter, PadParameters> {
 public:
  explicit CPrintPadFilter(const FilterClass& row)
      : ParameterFilter(row, {.abortMarksChange = true}) {}

  // The active paper turns to the picture's shape and stays turned.
  void Commit() override;
  // The size of the paper, whatever the aspect.
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;

 private:
  void ReadText(const char* text) override;
  void TakeParameters() override { used = active; }
  bool Rebuild() override;
  bool ComputeRows(const base::WritableRows& to) override;
  void PadRow(BYTE* colour, BYTE* mask) const;
  // Though no rows were given out.
  bool AbortAnswersDone() const override { return true; }

  PadParameters used;  // of the picture in the cache
  Placed part = {};    // of the source's picture, on the paper
};
