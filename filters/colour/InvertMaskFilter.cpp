#include "filters/colour/InvertMaskFilter.h"

#include "base/Guid.h"
#include "filters/colour/BothPlanes.h"
#include "filters/colour/MaskColourParameters.h"
#include "filters/pixels/PointKernelTable.h"

const FilterClass kInvertMaskClass = {
    .sortKey = 43,
    .className = "CInvertMaskFilter",
    .progId = "ZNFilter.InvertMask.1",
    .classId = base::Guid("{C4752771-A6F5-4D43-B16E-FE0C45AF91CB}"),
    .order = 5000,
    .iconName = "icons4_invmask",
    .nameKey = "IDS_INVERTMASK_NAME",
    .helpKey = "HLP_INVERTMASK",
    .defaultText = "Red=255,Green=255,Blue=255,Transparency=000",
    .gloss = "Invert the mask",
    .make = MakeFilter<CInvertMaskFilter>,
    .describe = CInvertMaskFilter::Describe};

namespace {

void ChangeRow(const kernels::MaskedRow& to, const kernels::GivenMaskedRow& from, int width,
               const InvertMaskParameters& p) {
  kernels::Choose<kernels::PointKernelTable>().invertMask(to, from, width, {p.blue, p.green, p.red},
                                                          p.transparency);
}

}  // namespace

std::span<const ParameterRow<InvertMaskParameters>> InvertMaskParameters::Rows() {
  return kMaskColourRows<InvertMaskParameters>;
}

void CInvertMaskFilter::ChangePiece(const base::RowWay& piece, int pixels) {
  ChangeBothPlanes(piece, [&](const kernels::MaskedRow& to, const kernels::GivenMaskedRow& from) {
    ChangeRow(to, from, pixels, used);
  });
}

HRESULT CInvertMaskFilter::ReadPixel(BYTE* pixel) {
  if (!pixel) return E_POINTER;
  const HRESULT status = CPdibFilter::ReadPixel(pixel);
  if (FAILED(status)) return status;
  BYTE* const mask = pixel + base::kBytesPerPixel;
  ChangeRow({pixel, mask}, {pixel, mask}, 1, Active());
  return S_OK;
}
