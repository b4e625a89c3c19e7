#include "filters/frames/SoftFrameFilter.h"

#include <algorithm>

#include "base/Guid.h"

const FilterClass kSoftFrameClass = {
    .sortKey = 37,
    .className = "CSoftFrameFilter",
    .progId = "ZNFilter.SoftFrame.1",
    .classId = base::Guid("{6AA3520F-2243-4DB3-9E0F-5A6142DD1633}"),
    .order = 5000,
    .iconName = "icons4_softframe",
    .nameKey = "IDS_SOFTFRAME_NAME",
    .helpKey = "HLP_SOFTFRAME",
    .defaultText = "SoftCorner=1,FrameWidth=0,Links=1,Oben=1,Rechts=1,Unten=1",
    .gloss = "Soft frame",
    .example = "FrameWidth=040",
    .make = MakeFilter<CSoftFrameFilter>,
    .describe = CSoftFrameFilter::Describe};

std::span<const ParameterRow<SoftFrameParameters>> SoftFrameParameters::Rows() {
  using P = SoftFrameParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"SoftCorner", "SoftCorner=%.1d", &P::softCorner, {.gloss = "corners are round"}},
      {"FrameWidth",
       ",FrameWidth=%.3d",
       &P::frameWidth,
       {.gloss = "width of the fade, percent of half the shorter side"}},
      {"Links", ",Links=%.1d", &P::left, {.gloss = "the left edge fades"}},
      {"Oben", ",Oben=%.1d", &P::top, {.gloss = "the top edge fades"}},
      {"Rechts", ",Rechts=%.1d", &P::right, {.gloss = "the right edge fades"}},
      {"Unten", ",Unten=%.1d", &P::bottom, {.gloss = "the bottom edge fades"}}};
  return kRows;
}

void CSoftFrameFilter::Commit() {
  const SoftFrameParameters now = CommitParameters();
  const int percent = std::clamp(now.frameWidth, 0, 100);
  const double reach = static_cast<double>(percent) * std::min(input.width, input.height) / 200.0;
  published.Set(std::make_shared<kernels::EdgeFade>(
      input.width, input.height, reach,
      kernels::FadedEdges{now.left, now.top, now.right, now.bottom}, now.softCorner));
}

bool CSoftFrameFilter::ChangeRectangle(const PullRectangle& rectangle) {
  const auto fade = published.Get();
  if (!fade || !rectangle.maskRows) return true;
  PullRectangle inside = rectangle.CutTo(fade->Width(), fade->Height());
  inside.colourRows = nullptr;  // which would be fetched for nothing
  return inside.ChangeRows(abort, [&](BYTE*, BYTE* mask, int i) {
    if (i > 0) inside.AnnounceMask(i - 1);
    fade->FadeRow(mask, inside.srcX, inside.srcY + i, inside.width);
  });
}
