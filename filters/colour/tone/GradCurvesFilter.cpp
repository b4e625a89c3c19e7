#include "filters/colour/tone/GradCurvesFilter.h"

#include <algorithm>

#include "base/Guid.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/pixels/ByteTableKernels.h"

namespace {

using kernels::ByteTable;
using P = GradCurvesParameters;

// The table of a curve: through so many of its nodes, the identity where there is no such curve.
ByteTable TableOf(const P::Curve& curve, int count, bool linear) {
  ByteTable table = editing::IdentityTable();
  const auto used = static_cast<std::size_t>(std::clamp(count, 2, P::kNodes));
  const std::span nodes(curve.nodes, used);
  if (linear) {
    editing::BuildLineTable(nodes, table);
  } else {
    editing::BuildSplineTable(nodes, table);
  }
  return table;
}

ByteTable Through(const ByteTable& first, const ByteTable& second) {
  ByteTable both;
  for (std::size_t i = 0; i < both.size(); ++i) both[i] = second[first[i]];
  return both;
}

}  // namespace

const FilterClass kGradCurvesClass = {
    .sortKey = 11,
    .className = "CGradCurvesFilter",
    .progId = "ZNFilter.GradCurves.1",
    .classId = base::Guid("{41DF3ABB-BC01-484D-B1E2-67F311B0BF9B}"),
    .order = 5000,
    .iconName = "icons4_gradat",
    .nameKey = "IDS_GRADCURVES_NAME",
    .helpKey = "HLP_GRADATION",
    .defaultText =
        "nL=02, nR=02, nG=02, nB=02, "
        "xL1=000, xL2=255, xL3=255, xL4=255, xL5=255, xL6=255, xL7=255, "
        "xL8=255, xL9=255, xL10=255, xL11=255, xL12=255, "
        "xR1=000, xR2=255, xR3=255, xR4=255, xR5=255, xR6=255, xR7=255, "
        "xR8=255, xR9=255, xR10=255, xR11=255, xR12=255, "
        "xG1=000, xG2=255, xG3=255, xG4=255, xG5=255, xG6=255, xG7=255, "
        "xG8=255, xG9=255, xG10=255, xG11=255, xG12=255, "
        "xB1=000, xB2=255, xB3=255, xB4=255, xB5=255, xB6=255, xB7=255, "
        "xB8=255, xB9=255, xB10=255, xB11=255, xB12=255, "
        "yL1=000, yL2=255, yL3=255, yL4=255, yL5=255, yL6=255, yL7=255, "
        "yL8=255, yL9=255, yL10=255, yL11=255, yL12=255, "
        "yR1=000, yR2=255, yR3=255, yR4=255, yR5=255, yR6=255, yR7=255, "
        "yR8=255, yR9=255, yR10=255, yR11=255, yR12=255, "
        "yG1=000, yG2=255, yG3=255, yG4=255, yG5=255, yG6=255, yG7=255, "
        "yG8=255, yG9=255, yG10=255, yG11=255, yG12=255, "
        "yB1=000, yB2=255, yB3=255, yB4=255, yB5=255, yB6=255, yB7=255, "
        "yB8=255, yB9=255, yB10=255, yB11=255, yB12=255",
    .gloss = "Gradation curves",
    .example = "nL=03,xL2=080,yL2=150",
    .make = MakeFilter<CGradCurvesFilter>,
    .describe = CGradCurvesFilter::Describe};

HRESULT CGradCurvesFilter::QueryInterface(REFIID iid, void** result) {
  if (!result || !base::SameGuid(iid, IAnimPictureSample::kIid)) {
    return CPdibFilter::QueryInterface(iid, result);
  }
  *result = static_cast<IAnimPictureSample*>(this);
  AddRef();
  return S_OK;
}

HRESULT CGradCurvesFilter::ReadSample(BYTE* pixels, int most, int* count) {
  if (!pixels || !count) return E_POINTER;
  *count = 0;
  return platform::Guard([&] {
    *count = sample.Read(pixels, most);
    return S_OK;
  });
}

bool CGradCurvesFilter::ChangeRectangle(const PullRectangle& rectangle) {
  auto held = HoldState();
  const P later = pending;
  const P now = active;
  sample.Begin(input.width, input.height);
  held.unlock();
  const int width = rectangle.width;
  const auto show = [&](BYTE* colour, BYTE* mask, int i) {
    sample.TakeRow(colour, mask, rectangle.srcX, rectangle.srcY + i, width);
  };
  if (!later.filterOn) {
    rectangle.ChangeRows(abort, show);
    return true;
  }
  const bool keepsColours = now.yiqOn;
  const auto table = [&](int k) {
    return TableOf(now.curves[k], later.curves[k].count, now.linear);
  };
  const ByteTable luminance = table(0);
  kernels::ChannelTables channels = {table(3), table(2), table(1)};
  if (!keepsColours) {
    for (ByteTable* channel : {&channels.blue, &channels.green, &channels.red}) {
      *channel = Through(luminance, *channel);
    }
  }
  return rectangle.ChangeRows(abort, [&](BYTE* colour, BYTE* mask, int i) {
    if (!colour) return;
    show(colour, mask, i);
    if (keepsColours) kernels::Choose<kernels::YiqKernels>().mapLuminance(colour, width, luminance);
    kernels::Choose<kernels::ByteTableKernels>().mapChannels(colour, colour, width, channels);
  });
}
