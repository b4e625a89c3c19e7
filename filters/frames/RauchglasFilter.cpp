#include "filters/frames/RauchglasFilter.h"

#include <algorithm>
#include <cstdio>

#include "base/Guid.h"
#include "filters/frames/MatKernels.h"
#include "filters/frames/PaneLayout.h"
#include "filters/pixels/Convolution.h"

const FilterClass kRauchglasClass = {
    .sortKey = 44,
    .className = "CRauchglasFilter",
    .progId = "ZNFilter.Rauchglas.1",
    .classId = base::Guid("{CFA47EFF-D897-45C0-8ECA-0B2EB602082C}"),
    .order = 5000,
    .iconName = "icons4_smokedglass",
    .nameKey = "IDS_SMOKY_NAME",
    .helpKey = "HLP_SMOKEDGLASS",
    .defaultText =
        "BordersizeOn=1,Borderhori=75,Borderverti=75,TotalHori=150,TotalVerti=150,Radius=5,"
        "Red=180,Green=180,Blue=180,Transparency=000,Poscorhori=000,Poscorverti=000",
    .gloss = "Smoked glass",
    .example = "Borderhori=060,Borderverti=050,Radius=060,Transparency=065",
    .make = MakeFilter<CRauchglasFilter>,
    .describe = CRauchglasFilter::Describe};

std::span<const ParameterRow<RauchglasParameters>> RauchglasParameters::Rows() {
  return kMatRows<RauchglasParameters>;
}

// The size at the end is for the reader of the text and never read.
void CRauchglasFilter::PrintText(const RauchglasParameters& parameters, char* buffer, int size) {
  char sizes[64];
  std::snprintf(sizes, sizeof sizes, ", SrcWidth=%.4d, SrcHeight=%.4d",
                std::max(input.width, input.extentWidth),
                std::max(input.height, input.extentHeight));
  CopyParameterText(PrintParameters(parameters) + sizes, RauchglasParameters::kLeastBuffer, buffer,
                    size);
}

bool CRauchglasFilter::ChangeRectangle(const PullRectangle& rectangle) {
  if (rectangle.width < 1 || rectangle.height < 1 || !rectangle.colourRows) return true;
  const RauchglasParameters now = Active();
  const kernels::PaneSpan x = kernels::LayOutPane(rectangle.width, now.borderhori, now.poscorhori);
  const kernels::PaneSpan y =
      kernels::LayOutPane(rectangle.height, now.borderverti, now.poscorverti);
  PullRectangle pane = rectangle;
  pane.destX += x.first;
  pane.destY += y.first;
  pane.width = x.last - x.first + 1;
  pane.height = y.last - y.first + 1;
  return Blur(rectangle, pane, now.radius) && Tint(pane, now);
}

// Across the pane's edges the picture is seen as it was, beyond those of the request nothing is.
bool CRauchglasFilter::Blur(const PullRectangle& rectangle, const PullRectangle& pane, int radius) {
  const int strength = std::clamp(radius, 0, 100);
  if (strength == 0 || (pane.width < 3 && pane.height < 3)) return true;
  colours.clear();
  masks.clear();
  for (int y = 0; y < rectangle.height; ++y) {
    colours.push_back(rectangle.Colour(y));
    masks.push_back(rectangle.Mask(y));
  }
  return kernels::Convolve3x3(
      kernels::BlendKernel(kernels::kSoftenTable, strength * zoom),
      base::WritableRows{colours.data(), masks.data(), rectangle.width, rectangle.height},
      {pane.destX - rectangle.destX, pane.destY - rectangle.destY, pane.width, pane.height}, abort);
}

bool CRauchglasFilter::Tint(const PullRectangle& pane, const RauchglasParameters& p) const {
  if (p.transparency >= 100) return true;
  const kernels::ChannelTables tables =
      kernels::BuildTintTables({p.blue, p.green, p.red}, p.transparency);
  return pane.ChangePixels(abort, [&](BYTE* colour, BYTE*, int pixels) {
    kernels::Choose<kernels::ByteTableKernels>().mapChannels(colour, colour, pixels, tables);
  });
}
