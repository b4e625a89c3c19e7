// Adopt colour: the picture takes over the hue and saturation of a colour, and its mean lightness.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <span>

#include "core/FilterShapes.h"
#include "filters/colour/LightnessKernels.h"

struct AdoptColorParameters {
  std::int32_t intensity = 100;  // percent
  std::uint8_t red = 0, green = 0, blue = 0;

  static AdoptColorParameters ActiveStart() { return {0, 255, 255, 255}; }
  static constexpr int kLeastBuffer = 201;
  static std::span<const ParameterRow<AdoptColorParameters>> Rows();
};

extern const FilterClass kAdoptColorClass;

// A text with `ExBlit` carries the lightness map that another object has measured, on a preview
// say, and saves the measurement. Such items have no pending copy: they take effect at once.
class CAdoptColorFilter final : public ParameterFilter<WholePictureFilter, AdoptColorParameters> {
 public:
  explicit CAdoptColorFilter(const FilterClass& row)
      : ParameterFilter(row, {Cache::InputPicture, ChangeFlags::ClearedAtStart}) {}

  void Commit() override;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;

 private:
  void ReadText(const char* text) override;
  void TakeParameters() override;
  bool Rebuild() override;
  bool Measure();
  kernels::AdoptedColour Adopted() const;
  void FillTable();
  void PrepareCopy(const PullRectangle& request) override;
  void ChangePiece(const base::RowWay& piece, int pixels) override;

  struct Hls {
    double hue = 0, lightness = 0, saturation = 0;
  };
  Hls target;  // of the active colour
  Hls aim;     // of the picture in the cache
  std::atomic<double> lightA{1.0};
  std::atomic<double> lightB{0.0};
  std::atomic<std::int32_t> exBlit{0};
  std::atomic<std::int32_t> exParam{0};

  kernels::AdoptedColour adopted = {};  // by one pull

  // Filled by Rebuild alone: a map that arrives later does without it, as does who has no memory.
  std::unique_ptr<kernels::DrawnTable> table;
  std::optional<kernels::AdoptedColour> tabled;  // what the table is filled for
};
