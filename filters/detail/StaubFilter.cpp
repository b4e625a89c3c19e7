#include "filters/detail/StaubFilter.h"

#include "base/Guid.h"
#include "base/RowWriter.h"
#include "base/Rows.h"
#include "filters/detail/DustKernels.h"

const FilterClass kStaubClass = {.sortKey = 22,
                                 .className = "CStaubFilter",
                                 .progId = "ZNFilter.Staub.1",
                                 .classId = base::Guid("{DB76702F-FA2B-44DF-B13C-15E488DBF492}"),
                                 .order = 5000,
                                 .iconName = "icons4_staub",
                                 .nameKey = "IDS_STAUB_NAME",
                                 .helpKey = "HLP_STAUB",
                                 .defaultText = "MaxRgnSize=005,GrayTolerance=045",
                                 .gloss = "Remove dust",
                                 .make = MakeFilter<CStaubFilter>,
                                 .describe = CStaubFilter::Describe};

std::span<const ParameterRow<StaubParameters>> StaubParameters::Rows() {
  using P = StaubParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"MaxRgnSize",
       "MaxRgnSize=%.3d",
       &P::maxRgnSize,
       {.least = 2, .greatest = 15, .gloss = "most pixels that a speck may have"}},
      {"GrayTolerance",
       ", GrayTolerance=%.3d",
       &P::grayTolerance,
       {.least = 15, .greatest = 90, .gloss = "how far brightness may differ within a speck"}}};
  return kRows;
}

HRESULT CStaubFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                               BYTE** colourRows, BYTE** maskRows) {
  return RunPull([&]() -> HRESULT {
    const auto [pictureWidth, pictureHeight] = PictureSize();
    if (!source || pictureWidth < 1 || pictureHeight < 1) return kPullStopped;
    const PullRectangle request =
        PullRectangle{destX, destY, srcX, srcY, width, height, colourRows, maskRows}.CutTo(
            pictureWidth, pictureHeight);
    if (request.width < 1 || request.height < 1) return S_OK;
    const bool isKept = isWhole && !Changed() && outputPicture &&
                        outputPicture->Width() >= request.width &&
                        outputPicture->Height() >= request.height;
    const Outcome outcome = isKept ? Outcome::Done : Rebuild(request);
    const bool isGiven = outcome != Outcome::StoppedBefore && CopyOut(request);
    if (!isGiven || outcome != Outcome::Done) {
      selfChanged = true;
      return kPullStopped;
    }
    ClearChanges();
    return S_OK;
  });
}

// Cleans in place. The greatest size is the pending one: a dialog's change has effect on the next
// rebuild, before it is committed. What the source answers does not count.
CStaubFilter::Outcome CStaubFilter::Rebuild(const PullRectangle& request) {
  isWhole = false;
  if (!EnsurePictures(0, 0, request.width, request.height)) return Outcome::StoppedBefore;
  TakePicture(request);
  if (abort) return Outcome::StoppedBefore;
  auto held = HoldState();
  const std::int32_t tolerance = active.grayTolerance;
  const std::int32_t greatest = pending.maxRgnSize;
  held.unlock();
  isWhole = kernels::RemoveDust(outputPicture->Rows(request.width, request.height), tolerance,
                                greatest, abort);
  return isWhole ? Outcome::Done : Outcome::StoppedWithin;
}

// What is beside the request stays as it was kept.
void CStaubFilter::TakePicture(PullRectangle kept) {
  kept.destX = kept.destY = 0;
  kept.colourRows = outputPicture->ColourRows();
  kept.maskRows = outputPicture->MaskRows();
  const bool isLent = BorrowWhole(kept);
  base::ForEachBand(kept.height, base::RowsPerBand(kept.width), [&](int first, int end) {
    const base::RowWriter writer(kept.width, kept.height);
    for (int y = first; y < end && !abort; ++y) {
      if (isLent) {
        kept.CopyLent(y, writer);
      } else {
        writer.Fill(kept.Colour(y), 0, base::ColourBytes(kept.width));
        writer.Fill(kept.Mask(y), base::kNothing, static_cast<std::size_t>(kept.width));
      }
    }
  });
  if (isLent) return;
  source->ReadRows(0, 0, kept.srcX, kept.srcY, kept.width, kept.height, kept.colourRows,
                   kept.maskRows);
}

std::pair<int, int> CStaubFilter::PictureSize() const {
  const auto held = HoldState();
  return {output.width, output.height};
}

// From the first row on; the row that an abort meets is still given.
bool CStaubFilter::CopyOut(const PullRectangle& request) const {
  const auto copy = [&](int i, const base::RowWriter& writer) {
    BYTE* const colour = request.Colour(i);
    BYTE* const mask = request.Mask(i);
    if (colour) {
      writer.Copy(colour, outputPicture->ColourRows()[i], base::ColourBytes(request.width));
    }
    if (mask) {
      writer.Copy(mask, outputPicture->MaskRows()[i], static_cast<std::size_t>(request.width));
    }
    return !abort;
  };
  return base::ForEachBand(request.height, base::RowsPerBand(request.width),
                           [&](int first, int end) {
                             const base::RowWriter writer(request.width, request.height);
                             while (first < end && copy(first, writer)) ++first;
                             return first == end;
                           });
}
