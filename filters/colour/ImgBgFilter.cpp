#include "filters/colour/ImgBgFilter.h"

#include <algorithm>

#include "base/Guid.h"
#include "filters/colour/BothPlanes.h"
#include "filters/colour/MaskColourParameters.h"
#include "filters/pixels/PointKernelTable.h"

const FilterClass kImgBgClass = {.sortKey = 42,
                                 .className = "CImgBgFilter",
                                 .progId = "ZNFilter.ImgBg.1",
                                 .classId = base::Guid("{704D1FB5-8883-4CB4-8422-281EA17DC77B}"),
                                 .order = 5000,
                                 .iconName = "icons4_colorfiller",
                                 .nameKey = "IDS_IMGBG_NAME",
                                 .helpKey = "HLP_IMGBG",
                                 .defaultText = "Red=180,Green=180,Blue=180,Transparency=000",
                                 .gloss = "Background colour",
                                 .make = MakeFilter<CImgBgFilter>,
                                 .describe = CImgBgFilter::Describe};

std::span<const ParameterRow<ImgBgParameters>> ImgBgParameters::Rows() {
  return kMaskColourRows<ImgBgParameters>;
}

// The result covers picture and extent; what lies beyond the picture is filled too.
void CImgBgFilter::Commit() {
  ParameterFilter::Commit();
  output.width = output.extentWidth = std::max(input.width, input.extentWidth);
  output.height = output.extentHeight = std::max(input.height, input.extentHeight);
  output.offsetX = output.offsetY = 0;
}

void CImgBgFilter::ChangePiece(const base::RowWay& piece, int pixels) {
  ChangeBothPlanes(piece, [&](const kernels::MaskedRow& to, const kernels::GivenMaskedRow& from) {
    kernels::Choose<kernels::PointKernelTable>().putBackground(
        to, from, pixels, {used.blue, used.green, used.red}, used.transparency);
  });
}

HRESULT CImgBgFilter::ReadPixel(BYTE* pixel) {
  if (!pixel) return E_POINTER;
  const HRESULT status = CPdibFilter::ReadPixel(pixel);
  if (FAILED(status)) return status;
  const ImgBgParameters now = Active();
  kernels::PutBackgroundPixel(pixel, pixel + base::kBytesPerPixel, {now.blue, now.green, now.red},
                              now.transparency);
  return S_OK;
}
