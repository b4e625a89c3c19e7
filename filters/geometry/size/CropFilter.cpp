#include "filters/geometry/size/CropFilter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/Arithmetic.h"
#include "base/Guid.h"
#include "editing/RatioLock.h"

namespace {

// What is left of a length when the crop from `low` to `high` is taken.
int Kept(int length, double low, double high) {
  return base::WrapToInt32(std::int64_t{length} -
                           base::TruncateToInt32(std::floor((low + 1 - high) * length + 0.5)));
}

// A source coordinate that lies `low` of the length further on. What would overflow lies behind any
// picture.
int Moved(int at, int length, double low) {
  const std::int64_t moved = at + static_cast<std::int64_t>(std::floor(length * low + 0.5));
  return static_cast<int>(std::min<std::int64_t>(moved, std::numeric_limits<int>::max()));
}

// The length that a crop of this share makes `length`.
int Whole(int length, double low, double high) {
  return base::TruncateToInt32(std::floor(length / std::max(high - low, 0.001) + 0.5));
}

}  // namespace

const FilterClass kCropClass = {.sortKey = 5,
                                .className = "CCropFilter",
                                .progId = "ZNFilter.Crop.1",
                                .classId = base::Guid("{2D7EC5FC-A8A1-4466-814D-90A4702A3D8C}"),
                                .order = 200,
                                .iconName = "icons4_crop",
                                .nameKey = "IDS_CROP_NAME",
                                .gloss = "Crop",
                                .make = MakeFilter<CCropFilter>,
                                .describe = CCropFilter::Describe};

void CCropFilter::ReadText(const char* text) {
  static_cast<CropRecord&>(pending) = ReadRecord<CropRecord>(text);
  LockToRatio(pending);
}

void CCropFilter::PrintText(const CropParameters& parameters, char* buffer, int size) {
  CopyParameterText(PrintCrop(parameters), CropParameters::kLeastBuffer, buffer, size);
}

// The dialog's own sides go before the number, but where there is no number there is no lock.
void CCropFilter::LockToRatio(CropRecord& crop) const {
  if (!crop.fixRatioOn || told.width <= 0 || told.height <= 0) return;
  const bool hasSides =
      crop.fixRatio != CropRecord::kNoRatio && crop.dlgSizeX != 0 && crop.dlgSizeY != 0;
  const double ratio =
      hasSides ? static_cast<double>(crop.dlgSizeX) / crop.dlgSizeY : crop.fixRatio;
  editing::CropEdges edges = {crop.leftMargin, crop.rightMargin, crop.bottomMargin, crop.topMargin};
  editing::LockRatio(ratio, told.width, told.height, edges);
  crop.leftMargin = edges.left;
  crop.rightMargin = edges.right;
  crop.bottomMargin = edges.bottom;
  crop.topMargin = edges.top;
}

void CCropFilter::Commit() {
  const auto held = HoldState();
  LockToRatio(pending);
  CommitParameters();
  answer[0] = answer[1] = 0;
  if (input.width < 1 || input.height < 1) return;
  output.width = output.extentWidth =
      std::max(1, Kept(input.width, active.leftMargin, active.rightMargin));
  output.height = output.extentHeight =
      std::max(1, Kept(input.height, active.bottomMargin, active.topMargin));
  output.offsetX = output.offsetY = 0;
}

void CCropFilter::MapSize(int w, int h, int* inW, int* inH) {
  constexpr int kAllPixels = 0x7FFF;
  const CropParameters now = Active();
  *inW = now.shrinkAlpha ? kAllPixels : Whole(w, now.leftMargin, now.rightMargin);
  *inH = now.shrinkAlpha ? kAllPixels : Whole(h, now.bottomMargin, now.topMargin);
}

HRESULT CCropFilter::SetTargetSize(int width, int height) {
  const CropParameters now = Active();
  return PassTargetSize(width, height, Kept(width, now.leftMargin, now.rightMargin),
                        Kept(height, now.bottomMargin, now.topMargin));
}

HRESULT CCropFilter::QuerySize(int* width, int* height, double aspect) {
  const CropParameters now = Active();
  return ParameterFilter::QuerySize(
      width, height,
      aspect * (now.rightMargin - now.leftMargin) / (now.topMargin - now.bottomMargin));
}

HRESULT CCropFilter::GetMark(int* a, int* b) {
  if (!a || !b) return E_POINTER;
  const auto held = HoldState();
  *a = answer[0];
  *b = answer[1];
  return S_OK;
}

// What a request has outside the crop is not asked for. A crop of nothing at the picture's edge has
// a pixel that the picture has not.
PullRectangle CCropFilter::InSource(const PullRectangle& request) const {
  const auto held = HoldState();
  const bool isPrepared = input.width > 0 && input.height > 0;
  PullRectangle moved = isPrepared ? request.CutTo(output.width, output.height) : request;
  moved.srcX = Moved(moved.srcX, input.width, active.leftMargin);
  moved.srcY = Moved(moved.srcY, input.height, active.bottomMargin);
  return isPrepared ? moved.CutTo(input.width, input.height) : moved;
}

HRESULT CCropFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                              BYTE** colourRows, BYTE** maskRows) {
  return RunPull([&]() -> HRESULT {
    if (!source) return kPullStopped;
    const PullRectangle r =
        InSource({destX, destY, srcX, srcY, width, height, colourRows, maskRows});
    const HRESULT pulled =
        source->ReadRows(r.destX, r.destY, r.srcX, r.srcY, r.width, r.height, colourRows, maskRows);
    if (pulled != S_OK) return kPullStopped;
    ClearChanges();
    return S_OK;
  });
}

std::pair<int, int> CCropFilter::PictureSize() const {
  const auto held = HoldState();
  return {input.width, input.height};
}

// The source's rows, from the crop's first pixel on. Nothing for a crop that reaches beyond the
// picture.
std::optional<base::RowView> CCropFilter::Lend(int width, int height) {
  const auto [sourceWidth, sourceHeight] = PictureSize();
  const PullRectangle r = InSource({0, 0, 0, 0, width, height, nullptr, nullptr});
  const bool isAll = r.destX == 0 && r.destY == 0 && r.width == width && r.height == height;
  if (!isAll || !Borrow(sourceWidth, sourceHeight)) return std::nullopt;
  ClearChanges();
  return lentRows.Crop(borrowed.Rows(), r.srcX, r.srcY, width, height);
}
