#include "filters/geometry/RotCropFilter.h"

#include <numbers>

#include "base/Guid.h"
#include "filters/geometry/rotation/DrehFilter.h"
#include "filters/geometry/rotation/OffsetFilter.h"
#include "filters/geometry/size/CropFilter.h"

namespace {

constexpr std::size_t kRotation = 0;
constexpr std::size_t kOffset = 1;
constexpr std::size_t kCrop = 2;

}  // namespace

const FilterClass kRotCropClass = {.sortKey = 0,
                                   .className = "CRotCropFilter",
                                   .progId = "ZNFilter.RotCrop.1",
                                   .classId = base::Guid("{4D2DE5D2-BA86-471B-9230-BAD74EE58516}"),
                                   .order = 200,
                                   .iconName = "icons4_bildlage",
                                   .nameKey = "IDS_ROTCROP_NAME",
                                   .gloss = "Turn, move and crop in one",
                                   .make = MakeFilter<CRotCropFilter>,
                                   .describe = CRotCropFilter::Describe};

CRotCropFilter::CRotCropFilter(const FilterClass& row)
    : ParameterFilter(row, {&kDrehClass, &kOffsetClass, &kCropClass}) {
  GiveText(Part(kOffset), "OffsetX=001, OffsetY=003");
}

bool CRotCropFilter::IsDirty() {
  return !AreEqual(Pending(), active);
}

HRESULT CRotCropFilter::Prepare(bool* changed, int* consumerRevision, bool trackRevision) {
  const HRESULT status = CompositeFilter::Prepare(changed, consumerRevision, trackRevision);
  Commit();
  return status;
}

HRESULT CRotCropFilter::GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                int* extentWidth, int* extentHeight) {
  const HRESULT status =
      CompositeFilter::GetInfo(width, height, offsetX, offsetY, extentWidth, extentHeight);
  Commit();
  return status;
}

// The crop first: it sees to the decimal points of both texts.
void CRotCropFilter::ReadText(const char* text) {
  static_cast<RotCropRecord&>(pending) = ReadRotCrop(text);
  const double degrees = pending.angle * 180 / std::numbers::pi;
  GiveText(Part(kCrop), PrintCrop(pending.crop));
  GiveText(Part(kRotation),
           PrintParameters(RotationRecord{.mirrorOn = pending.mirrored,
                                          .angle = pending.mirrored ? -degrees : degrees}));
}

void CRotCropFilter::PrintText(const RotCropParameters& parameters, char* buffer, int size) {
  CopyParameterText(PrintRotCrop(parameters), RotCropParameters::kLeastBuffer, buffer, size);
}
