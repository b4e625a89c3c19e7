// Tone value (Tonwert): stretches the range between a black and a white limit, found in the
// histogram or given by hand, and bends the midtones.
#pragma once

#include <atomic>
#include <span>

#include "core/FilterShapes.h"
#include "filters/pixels/Histogram.h"

struct TonwertParameters {
  bool autoContrast = true;                       // limits from the histogram, else by hand
  bool autoContrastRgb = false;                   // a curve for each channel, else one for all
  bool autoTone = false;                          // midtones from the picture's mean, else by hand
  std::int32_t hi = 0, med = 0, lo = 0;           // by hand
  std::int32_t addHi = 0, addMed = 0, addLo = 0;  // corrections of what is found

  static TonwertParameters ActiveStart() { return {false, true, true, -1, -1, -1, -1, -1, -1}; }
  static constexpr int kLeastBuffer = 101;
  static std::span<const ParameterRow<TonwertParameters>> Rows();
};

extern const FilterClass kTonwertClass;

// Keeps the picture as the source gives it, and its histograms. What is measured depends on the
// request as well: the first pull after a change sets how many pixels the limits leave out, and
// every pull has a midtone of its own.
//
// A text with `ExBlit` carries what another object has measured, on a preview say, and saves the
// measurement; with `ExParam` the filter prints such texts. These items have no pending copy: they
// take effect at once.
class CTonwertFilter final : public ParameterFilter<WholePictureFilter, TonwertParameters> {
 public:
  explicit CTonwertFilter(const FilterClass& row)
      : ParameterFilter(row, {Cache::InputPicture, ChangeFlags::ClearedAtStart, true}) {}

 private:
  // The limits of one histogram, from the picture or from a text.
  struct MeasuredLimits {
    std::atomic<std::uint8_t> low{0};
    std::atomic<std::uint8_t> high{255};

    void Set(const kernels::Limits& limits);
  };

  void ReadText(const char* text) override;
  void PrintText(const TonwertParameters& parameters, char* buffer, int size) override;
  std::string PrintMeasured() const;
  bool Rebuild() override;
  bool Count();
  // What it measures is shared out by the size of the request.
  std::optional<RowReach> Reach() override { return std::nullopt; }
  void PrepareCopy(const PullRectangle& request) override;
  void FindLimits(const PullRectangle& request);
  kernels::Limits LimitsOf(const MeasuredLimits& measured) const;
  int Midtone(const PullRectangle& request);
  void ChangePiece(const base::RowWay& piece, int pixels) override;

  kernels::Histogram luminanceCounts = {}, redCounts = {}, greenCounts = {}, blueCounts = {};
  bool limitsAreOpen = false;  // counted, but not yet by which request
  MeasuredLimits luminance, red, green, blue;
  std::atomic<std::int32_t> measuredMidtone{0};
  std::atomic<std::int32_t> exBlit{0};
  std::atomic<std::int32_t> exParam{0};

  // Of one pull.
  TonwertParameters now;
  bool channelsApart = false;
  kernels::ByteTable table = {};
  kernels::ChannelTables channelTables = {};
};
