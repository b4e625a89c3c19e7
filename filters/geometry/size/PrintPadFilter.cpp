#include "filters/geometry/size/PrintPadFilter.h"

#include <algorithm>
#include <limits>

#include "base/Arithmetic.h"
#include "base/Guid.h"
#include "filters/pixels/PointKernelTable.h"

namespace {

// What does not fit is too large for any picture, and refused when one is made.
int Truncated(double length) {
  constexpr double kLargest = std::numeric_limits<int>::max();
  return base::TruncateToInt32(std::min(length, kLargest));
}

kernels::Colour ColourOf(std::uint32_t rgb) {
  return {base::LowByte(rgb), base::LowByte(rgb >> 8), base::LowByte(rgb >> 16)};
}

// The part of an axis that picture and paper share, and where it lies in both.
struct Overlap {
  int source, paper, length;

  Overlap(int pictureLength, int paperLength, int shift)
      : source(std::max(0, -shift)),
        paper(source + shift),
        length(std::min(pictureLength - source, paperLength - paper)) {}
};

}  // namespace

const FilterClass kPrintPadClass = {.sortKey = 3,
                                    .className = "CPrintPadFilter",
                                    .progId = "ZNFilter.PrintPad.1",
                                    .classId = base::Guid("{CE586604-A175-44F7-8DAC-4B3108110081}"),
                                    .order = 5000,
                                    .iconName = "icons_passpartout",
                                    .nameKey = "PrintPad",
                                    .gloss = "Pad to a paper ratio",
                                    .example = "AspectRatioX=1,AspectRatioY=1,ForceRatio=1",
                                    .make = MakeFilter<CPrintPadFilter>,
                                    .describe = CPrintPadFilter::Describe};

std::span<const ParameterRow<PadParameters>> PadParameters::Rows() {
  using R = PadParameters;
  constexpr ParameterDescription kCopy = {.least = 1,
                                          .greatest = 1000,
                                          .gloss = "number of prints",
                                          .range = ParameterRange::Forced,
                                          .isCompared = false};
  static constexpr ParameterRow<R> kRows[] = {
      {"AspectRatioX", "AspectRatioX=%d", &R::aspectRatioX,
       Forced(1, 1000000, "one side of the paper")},
      {"AspectRatioY", ", AspectRatioY=%d", &R::aspectRatioY, Forced(1, 1000000, "the other side")},
      {"ForceRatio", ", ForceRatio=%d", &R::forceRatio, {.gloss = "pad to the ratio"}},
      {"Toggle", ", Toggle=%d", &R::toggle, {.gloss = "turn the paper"}},
      {"Landscape", ", Landscape=%d", &R::landscape, {.gloss = "the wide side lies"}},
      {"PadColor", ", PadColor=%.6x", &R::padColor,
       Forced(0, 0xFFFFFF, "colour of the pad, red, green, blue")},
      {"BottomAlign",
       ", BottomAlign=%d",
       &R::bottomAlign,
       {.gloss = "the picture stands at the bottom"}},
      {"Copy", ", Copy=%d", &R::copy, kCopy,
       [](const R& r) { return r.copy >= 2 && r.copy <= 10000; }}};
  return kRows;
}

void CPrintPadFilter::ReadText(const char* text) {
  pending = ReadRecord<PadParameters>(text);
}

void CPrintPadFilter::Commit() {
  const auto held = HoldState();
  ParameterFilter::Commit();
  const double w = input.width;
  const double h = input.height;
  if (!active.forceRatio || w < 1 || h < 1) return;
  if (w != h) active.landscape = h < w;
  const auto [smaller, larger] = std::minmax(active.aspectRatioX, active.aspectRatioY);
  const bool isWide = active.landscape != active.toggle;
  const double ratio =
      isWide ? static_cast<double>(larger) / smaller : static_cast<double>(smaller) / larger;
  if (w / h <= ratio) {
    output.width = Truncated(ratio * h);
  } else {
    output.height = Truncated(w / ratio);
  }
  output.extentWidth = output.width;
  output.extentHeight = output.height;
  output.offsetX = output.offsetY = 0;
}

HRESULT CPrintPadFilter::QuerySize(int* width, int* height, double) {
  if (!width || !height) return E_POINTER;
  *width = output.width;
  *height = output.height;
  return S_OK;
}

// Asking the source for its information walks the chain a second time, as changes of the first walk
// may have moved sizes. What the source answers to the pull is not looked at.
bool CPrintPadFilter::Rebuild() {
  int w = 0;
  int h = 0;
  int offset[2];
  int extent[2];
  source->GetInfo(&w, &h, &offset[0], &offset[1], &extent[0], &extent[1]);
  const Overlap x(pulled.width, result.width, (result.width - pulled.width) / 2);
  const Overlap y(pulled.height, result.height,
                  used.bottomAlign ? 0 : (result.height - pulled.height) / 2);
  part = {x.paper, y.paper, x.source, y.source, x.length, y.length};
  if (OpenLent()) return !abort;
  return PullPart(part) && ForRows(0, result.height, [&](int row) {
           PadRow(outputPicture->ColourRows()[row], outputPicture->MaskRows()[row]);
         });
}

bool CPrintPadFilter::ComputeRows(const base::WritableRows& to) {
  return ForRows(0, result.height, [&](int y) {
    const base::RowWriter writer(0);  // what is padded stays in the cache
    PlaceGiven(part, y, to.colour[y], to.mask[y], writer);
    PadRow(to.colour[y], to.mask[y]);
  });
}

void CPrintPadFilter::PadRow(BYTE* colour, BYTE* mask) const {
  kernels::Choose<kernels::PointKernelTable>().putBackground(
      {colour, mask}, {colour, mask}, result.width, ColourOf(used.padColor), 0);
}
