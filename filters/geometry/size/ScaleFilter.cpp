#include "filters/geometry/size/ScaleFilter.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "base/Arithmetic.h"
#include "base/Guid.h"
#include "core/Diagnostics.h"
#include "core/ParameterReaders.h"

namespace {

// A side that follows from the other one.
int Following(double length) {
  return std::max(1, base::TruncateToInt32(length + 0.5));
}

// False, so that it can stand for the result.
bool LogException(int line) {
  try {
    core::LogLine(-1, "Exception occoured in %s (%d)", "ScaleFilter", line);
  } catch (...) {
    core::LogLine(-1, "Exception in logging %d,%s", line, "ScaleFilter");
  }
  return false;
}

}  // namespace

const FilterClass kScaleClass = {
    .sortKey = 6,
    .className = "CScaleFilter",
    .progId = "ZNFilter.Scale.1",
    .classId = base::Guid("{500A3A0A-7073-4CB4-8493-D3603D40B9A5}"),
    .order = 500,
    .iconName = "icons4_scale",
    .nameKey = "IDS_SCALE_NAME",
    .helpKey = "HLP_SCALE",
    .defaultText =
        "MaximumHorizontalSize=100,MaximumVerticalSize=100,KeepProportions=1,AllowEnlarge=0",
    .gloss = "Scale to a size in pixels",
    .example = "MaximumHorizontalSize=120,MaximumVerticalSize=120",
    .make = MakeFilter<CScaleFilter>,
    .describe = CScaleFilter::Describe};

// A text that does not name the proportions keeps them, but takes back the turning of the box.
void CScaleFilter::ReadText(const char* text) {
  scaleThrough = false;
  const bool kept = pending.keepProportions != 0;
  bool ignored = false;
  std::int32_t number = -1;
  const bool isNamed = ReadParamInt(text, "KeepProportions", number, ignored);
  ParameterFilter::ReadText(text);
  pending.keepProportions = number == 2 ? 2 : (isNamed ? number >= 1 : kept) ? 1 : 0;
  bool through = false;
  ReadParamBool(text, "ScaleThrough", through, ignored);
  scaleThrough = through;
}

void CScaleFilter::PrintText(const ScaleParameters& parameters, char* buffer, int size) {
  std::string text = PrintParameters<ScaleRecord>(parameters);
  if (scaleThrough && &parameters != &active) text.append(",ScaleThrough=1");
  CopyParameterText(text, ScaleParameters::kLeastBuffer, buffer, size);
}

CScaleFilter::Ratios CScaleFilter::RatiosTo(double width, double height) const {
  return {active.maximumHorizontalSize / width, active.maximumVerticalSize / height};
}

void CScaleFilter::Commit() {
  const auto held = HoldState();
  ParameterFilter::Commit();
  std::int32_t& boxW = active.maximumHorizontalSize;
  std::int32_t& boxH = active.maximumVerticalSize;
  const bool disagrees =
      (boxH < boxW && input.width < input.height) || (boxW < boxH && input.height < input.width);
  if (active.keepProportions == 2 && disagrees) std::swap(boxW, boxH);

  Ratios ratios = RatiosTo(input.width, input.height);
  if (!active.allowEnlarge) {
    // A full-resolution picture that fills the box allows its reduction to grow.
    if (input.targetWidth < boxW) ratios.x = std::min(ratios.x, 1.0);
    if (input.targetHeight < boxH) ratios.y = std::min(ratios.y, 1.0);
  }
  if (active.keepProportions != 0) ratios.x = ratios.y = std::min(ratios.x, ratios.y);
  SetOutput(ratios, std::floor(input.width * ratios.x + 0.5),
            std::floor(input.height * ratios.y + 0.5));
}

HRESULT CScaleFilter::SetTargetSize(int width, int height) {
  auto held = HoldState();
  Ratios ratios = RatiosTo(width, height);
  if (!active.allowEnlarge) {
    ratios.x = std::min(ratios.x, 1.0);
    ratios.y = std::min(ratios.y, 1.0);
  }
  if (active.keepProportions != 0) ratios.x = ratios.y = std::min(ratios.x, ratios.y);
  held.unlock();
  return PassTargetSize(width, height, base::TruncateToInt32(std::floor(width * ratios.x + 0.5)),
                        base::TruncateToInt32(std::floor(height * ratios.y + 0.5)));
}

HRESULT CScaleFilter::QuerySize(int* width, int* height, double aspect) {
  if (!width || !height) return E_POINTER;
  const ScaleParameters now = Active();
  const double boxW = now.maximumHorizontalSize;
  const double boxH = now.maximumVerticalSize;
  *width = now.maximumHorizontalSize;
  *height = now.maximumVerticalSize;
  if (now.keepProportions == 0) return S_OK;
  if (boxW >= boxH * aspect) {
    *width = Following(boxH * aspect);
  } else {
    *height = Following(boxW / aspect);
  }
  return S_OK;
}

HRESULT CScaleFilter::SetZoom(double newZoom) {
  return ParameterFilter::SetZoom(scaleThrough ? newZoom : 1.0);
}

bool CScaleFilter::PassesThrough() {
  return output.width == input.width && output.height == input.height;
}

bool CScaleFilter::Rebuild() {
  try {
    return ParameterFilter::Rebuild();
  } catch (...) {
    return LogException(__LINE__);
  }
}
