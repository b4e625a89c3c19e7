#include "filters/colour/tone/WhiteBlackGreyFilter.h"

#include "base/Guid.h"

namespace {

using kernels::ChannelLimits;
using kernels::GreyPoint;
using kernels::GreyTables;
using kernels::LevelCounter;
using kernels::Limits;

enum Mode { kLinear = 0, kCurves = 1, kCurvesAutoContrast = 2, kCurvesAutoTone = 3 };

// Of the histogram that `count` adds up from the rectangle's rows. After an abort it is whatever
// was counted until then.
template <class Count>
Limits MeasureLimits(const PullRectangle& r, const std::atomic<bool>& abort, Count count) {
  LevelCounter counter;
  base::CountInBands(r.height, base::RowsPerBand(r.width), counter,
                     [&](LevelCounter& part, int first, int end) {
                       for (int i = first; i < end && !abort; ++i) {
                         if (r.width > 0 && r.colourRows) count(part, r.GivenColour(i));
                       }
                       return !abort;
                     });
  return kernels::FindLimits(counter.Total(), kernels::LimitThreshold(r.width, r.height));
}

Limits LuminanceLimits(const PullRectangle& r, const std::atomic<bool>& abort) {
  return MeasureLimits(r, abort, [&r](LevelCounter& counter, const BYTE* colour) {
    counter.AddLuminance(colour, r.width);
  });
}

Limits LimitsOfChannel(const PullRectangle& r, const std::atomic<bool>& abort, int channel) {
  return MeasureLimits(r, abort, [&r, channel](LevelCounter& counter, const BYTE* colour) {
    counter.AddChannel(colour, r.width, channel);
  });
}

GreyTables BuildTables(const GreyPoint& grey, int mode, const PullRectangle& r,
                       const std::atomic<bool>& abort) {
  switch (mode) {
    case kLinear:
      return kernels::BuildLinearGrey(grey);
    case kCurves:
      return kernels::BuildCurvedGrey(grey);
    case kCurvesAutoContrast: {
      const Limits limits = LuminanceLimits(r, abort);
      return kernels::BuildCurvedGrey(grey, {limits, limits, limits});
    }
    case kCurvesAutoTone:
      return kernels::BuildCurvedGrey(
          grey, {LimitsOfChannel(r, abort, base::kBlue), LimitsOfChannel(r, abort, base::kGreen),
                 LimitsOfChannel(r, abort, base::kRed)});
    default:
      // A white grey point bends nothing.
      return kernels::BuildLinearGrey({});
  }
}

}  // namespace

const FilterClass kWhiteBlackGreyClass = {
    .sortKey = 10,
    .className = "CWhiteBlackGreyFilter",
    .progId = "ZNFilter.WhiteBlackGrey.1",
    .classId = base::Guid("{FFBA87D3-8E37-47C2-9604-B65930999C86}"),
    .order = 5000,
    .iconName = "icons4_whitebalance",
    .nameKey = "IDS_WHITEBLACKGREY_NAME",
    .helpKey = "HLP_WHITEBLACKGREY",
    .defaultText = "RedG=255, GreenG=255, BlueG=255, Mode=%d, Opacity=100, FilterOn=1",
    .gloss = "White, black and grey point",
    .make = MakeFilter<CWhiteBlackGreyFilter>,
    .describe = CWhiteBlackGreyFilter::Describe};

std::span<const ParameterRow<WhiteBlackGreyParameters>> WhiteBlackGreyParameters::Rows() {
  using P = WhiteBlackGreyParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"RedG", "RedG=%.3d", &P::redG, {.greatest = 255, .gloss = "red of the grey point"}},
      {"GreenG",
       ", GreenG=%.3d",
       &P::greenG,
       {.greatest = 255, .gloss = "green of the grey point"}},
      {"BlueG", ", BlueG=%.3d", &P::blueG, {.greatest = 255, .gloss = "blue of the grey point"}},
      {"Mode",
       ", Mode=%d",
       &P::mode,
       {.greatest = 3,
        .gloss = "0 linear, 1 curves, 2 with automatic contrast, 3 with automatic tone",
        .absent = AbsentKey::CountsAsZero}},
      {"Opacity", ", Opacity=%.3d", &P::opacity, {.gloss = "share of the changed picture"}},
      {"FilterOn", ", FilterOn=%.1d", &P::filterOn, {.gloss = "0 leaves the picture alone"}}};
  return kRows;
}

bool CWhiteBlackGreyFilter::ChangeRectangle(const PullRectangle& r) {
  const WhiteBlackGreyParameters now = Pending();
  if (!now.filterOn || now.opacity < 1) return r.BringLent(abort);
  const GreyTables grey = BuildTables({now.blueG, now.greenG, now.redG}, now.mode, r, abort);
  const kernels::ChannelTables tables = {MixWithLevels(grey.blue, now.opacity),
                                         MixWithLevels(grey.green, now.opacity),
                                         MixWithLevels(grey.red, now.opacity)};
  return r.ChangePixels(abort, [&](BYTE* colour, BYTE*, int pixels) {
    if (colour)
      kernels::Choose<kernels::ByteTableKernels>().mapChannels(colour, colour, pixels, tables);
  });
}
