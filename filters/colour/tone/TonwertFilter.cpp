#include "filters/colour/tone/TonwertFilter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "base/Guid.h"
#include "core/ParameterReaders.h"
#include "filters/colour/tone/AutoTone.h"
#include "filters/colour/tone/ToneCurves.h"

namespace {

struct LevelCounters {
  kernels::LevelCounter luminances, blues, greens, reds;

  void AddRow(const BYTE* row, int width) {
    luminances.AddLuminance(row, width);
    blues.AddChannel(row, width, base::kBlue);
    greens.AddChannel(row, width, base::kGreen);
    reds.AddChannel(row, width, base::kRed);
  }
  LevelCounters& operator+=(const LevelCounters& other) {
    luminances += other.luminances;
    blues += other.blues;
    greens += other.greens;
    reds += other.reds;
    return *this;
  }
};

}  // namespace

const FilterClass kTonwertClass = {
    .sortKey = 9,
    .className = "CTonwertFilter",
    .progId = "ZNFilter.Tonwert.1",
    .classId = base::Guid("{7FCD96EE-1506-486C-8393-4EC517F6919C}"),
    .order = 5000,
    .iconName = "icons4_tonwert",
    .nameKey = "IDS_TONWERT_NAME",
    .helpKey = "HLP_TONWERT",
    .defaultText =
        "AutoTone=0,AutoContrast=1,AutoContrastRGB=0,Hi=0,Med=0,Lo=0,Addhi=0,Addmed=0,Addlo=0",
    .gloss = "Automatic tone and contrast",
    .make = MakeFilter<CTonwertFilter>,
    .describe = CTonwertFilter::Describe};

std::span<const ParameterRow<TonwertParameters>> TonwertParameters::Rows() {
  using P = TonwertParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"AutoContrast", "AutoContrast=%.1d", &P::autoContrast, {.gloss = "limits from the picture"}},
      {"AutoContrastRGB",
       ", AutoContrastRGB=%.1d",
       &P::autoContrastRgb,
       {.gloss = "a curve for each channel"}},
      {"AutoTone", ", AutoTone=%.1d", &P::autoTone, {.gloss = "midtones from the picture"}},
      {"Hi", ", Hi=%.3d", &P::hi, {.gloss = "white limit by hand, from white down"}},
      {"Med", ", Med=%.3d", &P::med, {.least = -100, .gloss = "midtones by hand"}},
      {"Lo", ", Lo=%.3d", &P::lo, {.gloss = "black limit by hand"}},
      {"Addhi",
       ", Addhi=%.3d",
       &P::addHi,
       {.least = -100, .gloss = "lowers the white limit found"}},
      {"Addmed",
       ", Addmed=%.3d",
       &P::addMed,
       {.least = -100, .gloss = "brightens the midtones found"}},
      {"Addlo",
       ", Addlo=%.3d",
       &P::addLo,
       {.least = -100, .gloss = "raises the black limit found"}}};
  return kRows;
}

void CTonwertFilter::MeasuredLimits::Set(const kernels::Limits& limits) {
  low = static_cast<std::uint8_t>(limits.low);
  high = static_cast<std::uint8_t>(limits.high);
}

void CTonwertFilter::ReadText(const char* text) {
  ParameterFilter::ReadText(text);
  const auto readLimits = [text](const char* lowKey, const char* highKey, MeasuredLimits& limits) {
    ReadLiveParam(ReadParamByte, text, lowKey, limits.low);
    ReadLiveParam(ReadParamByte, text, highKey, limits.high);
  };
  readLimits("WL", "WH", luminance);
  readLimits("RL", "RH", red);
  readLimits("GL", "GH", green);
  readLimits("BL", "BH", blue);
  ReadLiveParam(ReadParamInt, text, "MAUTO", measuredMidtone);
  ReadLiveParam(ReadParamInt, text, "ExBlit", exBlit);
  ReadLiveParam(ReadParamInt, text, "ExParam", exParam);
  ReadVisibility(text);
}

void CTonwertFilter::PrintText(const TonwertParameters& parameters, char* buffer, int size) {
  std::string text = PrintParameters(parameters);
  if (exParam != 0) text.insert(0, "ExBlit=1, ").append(PrintMeasured());
  CopyParameterText(text + VisibilityText(), TonwertParameters::kLeastBuffer, buffer, size);
}

std::string CTonwertFilter::PrintMeasured() const {
  char text[200];
  std::snprintf(text, sizeof text,
                ", WL=%d, WH=%d, RL=%d, RH=%d, GL=%d, GH=%d, BL=%d, BH=%d, MAUTO=%d",
                luminance.low.load(), luminance.high.load(), red.low.load(), red.high.load(),
                green.low.load(), green.high.load(), blue.low.load(), blue.high.load(),
                measuredMidtone.load());
  return text;
}

bool CTonwertFilter::Rebuild() {
  return TakeInput() && (exBlit != 0 || Count());
}

bool CTonwertFilter::Count() {
  luminance.Set({});
  measuredMidtone = 0;
  LevelCounters counters;
  const auto count = [&](LevelCounters& part, int first, int end) {
    for (int y = first; y < end && !abort; ++y) part.AddRow(given.colour[y], result.width);
    return !abort;
  };
  if (!base::CountInBands(result.height, base::RowsPerBand(result.width), counters, count)) {
    return false;
  }
  luminanceCounts = counters.luminances.Total();
  blueCounts = counters.blues.Total();
  greenCounts = counters.greens.Total();
  redCounts = counters.reds.Total();
  limitsAreOpen = true;
  return true;
}

void CTonwertFilter::PrepareCopy(const PullRectangle& request) {
  {
    const auto held = HoldState();
    now = active;
    // The one choice that a pull takes from the pending parameters.
    channelsApart = pending.autoContrastRgb;
  }
  if (limitsAreOpen) FindLimits(request);
  const kernels::ByteTable midtones = kernels::BuildMidtoneTable(Midtone(request));
  const auto curve = [&](const MeasuredLimits& measured) {
    const kernels::Limits limits = LimitsOf(measured);
    return kernels::Compose(kernels::BuildRamp(limits.low, limits.high), midtones);
  };
  table = curve(luminance);
  channelTables = {curve(blue), curve(green), curve(red)};
}

void CTonwertFilter::FindLimits(const PullRectangle& request) {
  const std::uint64_t threshold = kernels::LimitThreshold(request.width, request.height);
  luminance.Set(kernels::FindLimits(luminanceCounts, threshold));
  red.Set(kernels::FindLimits(redCounts, threshold));
  green.Set(kernels::FindLimits(greenCounts, threshold));
  blue.Set(kernels::FindLimits(blueCounts, threshold));
  limitsAreOpen = false;
}

kernels::Limits CTonwertFilter::LimitsOf(const MeasuredLimits& measured) const {
  if (!now.autoContrast) return kernels::LimitsByHand(now.lo, now.hi);
  return kernels::CorrectLimits({measured.low, measured.high}, now.addLo, now.addHi);
}

int CTonwertFilter::Midtone(const PullRectangle& request) {
  if (!now.autoTone) return now.med;
  if (exBlit == 0) {
    measuredMidtone = kernels::EstimateMidtone(luminanceCounts, LimitsOf(luminance),
                                               std::int64_t{request.width} * request.height);
  }
  return static_cast<int>(
      std::clamp<std::int64_t>(std::int64_t{now.addMed} + measuredMidtone, -100, 100));
}

void CTonwertFilter::ChangePiece(const base::RowWay& piece, int pixels) {
  const kernels::ByteTableKernels& k = kernels::Choose<kernels::ByteTableKernels>();
  if (piece.toMask) {
    base::CopyBytes(piece.toMask, piece.mask, static_cast<std::size_t>(pixels));
  }
  if (!piece.toColour) return;
  if (channelsApart) {
    k.mapChannels(piece.toColour, piece.colour, pixels, channelTables);
  } else {
    k.mapBytes(piece.toColour, piece.colour, base::ColourBytes(pixels), table);
  }
}
