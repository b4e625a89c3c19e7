#include "filters/frames/PasspartoutFilter.h"

#include <algorithm>
#include <cstring>

#include "base/Arithmetic.h"
#include "base/Guid.h"
#include "filters/frames/RoundCorners.h"
#include "filters/pixels/PointKernelTable.h"

namespace {

using P = PasspartoutParameters;

constexpr std::int32_t P::*kPixelValues[] = {&P::borderhori, &P::borderverti, &P::totalHori,
                                             &P::totalVerti, &P::radius,      &P::poscorhori,
                                             &P::poscorverti};

template <class Convert>
P WithPixelValues(P parameters, Convert convert) {
  for (const auto value : kPixelValues) {
    parameters.*value = base::RoundToInt32(convert(parameters.*value));
  }
  return parameters;
}

void Limit(std::int32_t& value, double least, double greatest) {
  value = std::max(base::RoundToInt32(least), std::min(base::RoundToInt32(greatest), value));
}

// What Commit makes of the text's numbers at a preview scale.
P Scaled(const P& pending, double scale) {
  P parameters = WithPixelValues(pending, [scale](double value) { return value * scale; });
  if (parameters.bordersizeOn) {
    Limit(parameters.borderhori, -50 * scale, 1000 * scale);
    Limit(parameters.borderverti, -50 * scale, 1000 * scale);
  } else {
    Limit(parameters.totalHori, scale, 10000 * scale);
    Limit(parameters.totalVerti, scale, 10000 * scale);
  }
  return parameters;
}

// The full-resolution size with the mat around it.
int TargetWithMat(bool bordersizeOn, int target, int border, int total) {
  if (!bordersizeOn) return std::max(total, target);
  const std::int64_t wide = std::int64_t{target} + 2 * std::max<std::int64_t>(border, 0);
  return base::LimitToInt32(std::max<std::int64_t>(1, wide));
}

}  // namespace

const FilterClass kPasspartoutClass = {
    .sortKey = 36,
    .className = "CPasspartoutFilter",
    .progId = "ZNFilter.Passpartout.1",
    .classId = base::Guid("{7531CA1E-E540-4164-AC45-CB7321AECA1B}"),
    .order = 5000,
    .iconName = "icons4_passpartout",
    .nameKey = "IDS_PASS_NAME",
    .helpKey = "HLP_PASSPARTOUT",
    .defaultText =
        "BordersizeOn=1,Borderhori=001,Borderverti=001,TotalHori=150,TotalVerti=150,"
        "Radius=005,Red=000,Green=000,Blue=105,Transparency=000,Poscorhori=000,"
        "Poscorverti=000",
    .gloss = "Passepartout frame",
    .example = "Borderhori=018,Borderverti=018,Radius=030,Red=244,Green=238,Blue=225",
    .make = MakeFilter<CPasspartoutFilter>,
    .describe = CPasspartoutFilter::Describe};

std::span<const ParameterRow<P>> PasspartoutParameters::Rows() {
  return kMatRows<P>;
}

// Against the limited values: a number beyond the limits is not a change for ever.
bool CPasspartoutFilter::IsDirty() {
  const auto held = HoldState();
  return ParametersDiffer(Scaled(pending, zoom), active);
}

void CPasspartoutFilter::Commit() {
  const auto held = HoldState();
  active = Scaled(pending, zoom);
  const Layout whole = LayOut(active, input);
  output.width = output.extentWidth = whole.x.size;
  output.height = output.extentHeight = whole.y.size;
  output.offsetX = output.offsetY = 0;
}

CPasspartoutFilter::Layout CPasspartoutFilter::LayOut(const P& parameters,
                                                      const PictureInfo& picture) {
  if (parameters.bordersizeOn) {
    return {kernels::LayOutBorder(picture.width, picture.extentWidth, parameters.borderhori,
                                  parameters.poscorhori),
            kernels::LayOutBorder(picture.height, picture.extentHeight, parameters.borderverti,
                                  parameters.poscorverti)};
  }
  return {kernels::LayOutTotal(picture.width, picture.extentWidth, parameters.totalHori,
                               parameters.poscorhori),
          kernels::LayOutTotal(picture.height, picture.extentHeight, parameters.totalVerti,
                               parameters.poscorverti)};
}

void CPasspartoutFilter::MapSize(int w, int h, int* inW, int* inH) {
  const P now = Active();
  const auto without = [&now](int size, int border) {
    if (!now.bordersizeOn) return size;
    return base::LimitToInt32(std::max<std::int64_t>(1, size - 2 * std::int64_t{border}));
  };
  *inW = without(w, now.borderhori);
  *inH = without(h, now.borderverti);
}

// The mat of the full resolution, which no preview scale makes smaller.
HRESULT CPasspartoutFilter::SetTargetSize(int width, int height) {
  const P full = Scaled(Pending(), 1.0);
  return PassTargetSize(
      width, height, TargetWithMat(full.bordersizeOn, width, full.borderhori, full.totalHori),
      TargetWithMat(full.bordersizeOn, height, full.borderverti, full.totalVerti));
}

// In the units of the unscaled picture, as the text came.
HRESULT CPasspartoutFilter::GetActiveParameter(char* buffer, int size) {
  return platform::Guard([&] {
    const auto held = HoldState();
    PrintText(WithPixelValues(active, [this](double value) { return value / zoom; }), buffer, size);
    return S_OK;
  });
}

HRESULT CPasspartoutFilter::ReadPixel(BYTE* pixel) {
  if (!pixel) return E_POINTER;
  const HRESULT status = CPdibFilter::ReadPixel(pixel);
  if (FAILED(status)) return status;
  const P now = Active();
  kernels::PutBackgroundPixel(pixel, pixel + base::kBytesPerPixel, {now.blue, now.green, now.red},
                              now.transparency);
  return S_OK;
}

void CPasspartoutFilter::TakeParameters() {
  painted = active;
  layout = LayOut(painted, pulled);
}

// A source that stopped is not told apart, and may have left out anything: the abort flag ends the
// rows.
bool CPasspartoutFilter::Rebuild() {
  glaze =
      kernels::BuildGlazeTables({painted.blue, painted.green, painted.red}, painted.transparency);
  isPaintedLate = !OpenLent();
  if (isPaintedLate) {
    if (!PullPart(Part())) return false;
    canvas = outputPicture->Rows();
  }
  return !abort;
}

CPasspartoutFilter::Placed CPasspartoutFilter::Part() const {
  return {layout.x.place,  layout.y.place,  layout.x.source,
          layout.y.source, layout.x.length, layout.y.length};
}

bool CPasspartoutFilter::ComputeRows(const base::WritableRows& to) {
  const Placed part = Part();
  canvas = to;
  return ForRows(0, result.height, [&](int y) {
    const base::RowWriter writer(0);  // what is painted on stays in the cache
    PlaceGiven(part, y, to.colour[y], to.mask[y], writer);
    PaintRow(y);
  });
}

void CPasspartoutFilter::FinishRow(int y) {
  if (isPaintedLate) PaintRow(y);
}

void CPasspartoutFilter::PaintRow(int y) {
  if (y < layout.y.first) PaintTopBand(y);
  if (y > layout.y.last) PaintBottomBand(y);
  if (y >= layout.y.first && y <= layout.y.last) PaintBetween(y);
  kernels::RoundCornersOfRow(canvas.mask[y], result.width, result.height, painted.radius, y);
}

// A mat that lies over the picture lets it shine through.
CPasspartoutFilter::Paint CPasspartoutFilter::PaintAlong(int border) const {
  const bool glazed = painted.bordersizeOn && border < 0 && painted.transparency != 0;
  return glazed ? Paint::Glaze : Paint::Solid;
}

void CPasspartoutFilter::PaintPart(Paint paint, int y, int from, int to) {
  if (from >= to) return;
  BYTE* const colour = canvas.colour[y] + base::ColourOffset(from);
  BYTE* const mask = canvas.mask[y] + from;
  const int width = to - from;
  if (paint == Paint::Glaze) {
    kernels::Choose<kernels::ByteTableKernels>().mapChannels(colour, colour, width, glaze);
    std::memset(mask, base::kOpaque, static_cast<std::size_t>(width));
  } else {
    kernels::FillColour(colour, width, {painted.blue, painted.green, painted.red});
    const BYTE level = base::LowByte(std::int64_t{painted.transparency} * 255 / 100);
    std::memset(mask, level, static_cast<std::size_t>(width));
  }
}

// A glaze between side strips that are not: they go on to the edge of this band alone.
void CPasspartoutFilter::PaintTopBand(int y) {
  const Paint paint = PaintAlong(painted.borderverti);
  int side = 0;
  if (paint == Paint::Glaze && painted.borderhori >= 0) {
    const std::int64_t strip = std::int64_t{painted.borderhori} + painted.poscorhori;
    side = static_cast<int>(std::clamp<std::int64_t>(strip, 0, result.width));
  }
  PaintPart(Paint::Solid, y, 0, side);
  PaintPart(paint, y, side, result.width - side);
  PaintPart(Paint::Solid, y, result.width - side, result.width);
}

void CPasspartoutFilter::PaintBottomBand(int y) {
  PaintPart(PaintAlong(painted.borderverti), y, 0, result.width);
}

void CPasspartoutFilter::PaintBetween(int y) {
  const Paint paint = PaintAlong(painted.borderhori);
  PaintPart(paint, y, 0, layout.x.first);
  PaintPart(paint, y, layout.x.last + 1, result.width);
  BYTE* const colour = canvas.colour[y] + base::ColourOffset(layout.x.first);
  BYTE* const mask = canvas.mask[y] + layout.x.first;
  kernels::Choose<kernels::PointKernelTable>().putBackground(
      {colour, mask}, {colour, mask}, layout.x.last - layout.x.first + 1,
      {painted.blue, painted.green, painted.red}, painted.transparency);
}
