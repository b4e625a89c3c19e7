#include "filters/geometry/RotCropFilter.h"

#include <numbers>

namespace {

constexpr std::size_t kRotation = 0;
constexpr std::size_t kOffset = 1;
constexpr std::size_t kCrop = 2;

}  // namespace

CRotCropFilter::CRotCropFilter(const FilterClass& row)
    : ParameterFilter(row, {"ZNFilter.Rotate.1", "ZNFilter.Offset.1", "ZNFilter.Crop.1"}) {
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
