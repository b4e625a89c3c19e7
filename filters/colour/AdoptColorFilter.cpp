#include "filters/colour/AdoptColorFilter.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "base/Guid.h"
#include "core/ParameterReaders.h"
#include "filters/pixels/PointKernels.h"

namespace {

std::string PrintMap(double a, double b) {
  // Two doubles of up to 309 digits before the point.
  char text[700];
  std::snprintf(text, sizeof text, ", LightA=%f, LightB=%f", a, b);
  return text;
}

}  // namespace

const FilterClass kAdoptColorClass = {
    .sortKey = 31,
    .className = "CAdoptColorFilter",
    .progId = "ZNFilter.AdoptColor.1",
    .classId = base::Guid("{C00536EA-BAF9-45B4-A5A8-C2A49AF92AF5}"),
    .order = 5000,
    .iconName = "icons4_adoptcolor",
    .nameKey = "IDS_ADOPTCOLOR_NAME",
    .helpKey = "HLP_COLORIZE",
    .defaultText = "ColorRed=000,ColorGreen=000,ColorBlue=000,Intensity=100",
    .gloss = "Adopt a colour",
    .example = "Intensity=080,ColorRed=230,ColorGreen=140,ColorBlue=040",
    .make = MakeFilter<CAdoptColorFilter>,
    .describe = CAdoptColorFilter::Describe};

std::span<const ParameterRow<AdoptColorParameters>> AdoptColorParameters::Rows() {
  using P = AdoptColorParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Intensity", "Intensity=%.3d", &P::intensity, {.gloss = "share of the coloured picture"}},
      {"ColorRed", ", ColorRed=%.3d", &P::red, {.greatest = 255, .gloss = "red of the colour"}},
      {"ColorGreen",
       ", ColorGreen=%.3d",
       &P::green,
       {.greatest = 255, .gloss = "green of the colour"}},
      {"ColorBlue",
       ", ColorBlue=%.3d",
       &P::blue,
       {.greatest = 255, .gloss = "blue of the colour"}}};
  return kRows;
}

void CAdoptColorFilter::Commit() {
  const auto held = HoldState();
  ParameterFilter::Commit();
  kernels::RgbToHls(active.red, active.green, active.blue, target.hue, target.lightness,
                    target.saturation);
}

void CAdoptColorFilter::ReadText(const char* text) {
  ParameterFilter::ReadText(text);
  ReadLiveParam(ReadParamInt, text, "ExBlit", exBlit);
  ReadLiveParam(ReadParamInt, text, "ExParam", exParam);
  ReadLiveParam(ReadParamDouble, text, "LightA", lightA);
  ReadLiveParam(ReadParamDouble, text, "LightB", lightB);
}

// The long text carries what was measured, and only the active parameters belong to that.
HRESULT CAdoptColorFilter::GetActiveParameter(char* buffer, int size) {
  if (exParam == 0) return ParameterFilter::GetActiveParameter(buffer, size);
  return platform::Guard([&] {
    const auto held = HoldState();
    CopyParameterText("ExBlit=1, " + PrintParameters(active) + PrintMap(lightA, lightB),
                      AdoptColorParameters::kLeastBuffer, buffer, size);
    return S_OK;
  });
}

void CAdoptColorFilter::TakeParameters() {
  aim = target;
}

bool CAdoptColorFilter::Rebuild() {
  if (!TakeInput() || (exBlit == 0 && !Measure())) return false;
  FillTable();
  return true;
}

bool CAdoptColorFilter::Measure() {
  const auto addLightness = kernels::Choose<kernels::LightnessKernels>().addLightness;
  kernels::LightnessStatistics statistics;
  for (int y = 0; y < result.height; ++y) {
    if (abort) return false;
    addLightness(given.colour[y], given.mask[y], result.width, statistics);
  }
  const kernels::LightnessMap map = kernels::FitLightness(statistics, aim.lightness);
  lightA = map.factor;
  lightB = map.offset;
  return true;
}

kernels::AdoptedColour CAdoptColorFilter::Adopted() const {
  const auto held = HoldState();
  return {target.hue, target.saturation, {lightA, lightB}, active.intensity};
}

void CAdoptColorFilter::PrepareCopy(const PullRectangle&) {
  adopted = Adopted();
}

void CAdoptColorFilter::FillTable() {
  tabled.reset();
  if (std::int64_t{result.width} * result.height < kernels::DrawnTable::kWorthFrom) return;
  if (!table) table.reset(new (std::nothrow) kernels::DrawnTable);
  if (!table) return;
  tabled = Adopted();
  table->Fill(*tabled);
}

void CAdoptColorFilter::ChangePiece(const base::RowWay& piece, int pixels) {
  if (piece.toMask) {
    base::CopyBytes(piece.toMask, piece.mask, static_cast<std::size_t>(pixels));
  }
  if (!piece.toColour) return;
  if (tabled && tabled->IsSame(adopted)) {
    table->AdoptColour(piece.toColour, piece.colour, pixels);
  } else {
    kernels::AdoptColour(piece.toColour, piece.colour, pixels, adopted);
  }
}

// A single pixel knows no lightness of the picture: it is mixed with the colour.
HRESULT CAdoptColorFilter::ReadPixel(BYTE* pixel) {
  if (!pixel) return E_POINTER;
  const HRESULT status = CPdibFilter::ReadPixel(pixel);
  if (FAILED(status)) return status;
  const AdoptColorParameters now = Active();
  kernels::MixColour(pixel, 1, {now.blue, now.green, now.red}, now.intensity);
  return S_OK;
}
