#include "filters/detail/RedEyeFilter.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "base/Guid.h"
#include "base/Rows.h"
#include "filters/detail/RedEye.h"

namespace {

HRESULT Give(const RedEyeParameters& parameters, char* buffer, int size) {
  return platform::Guard([&]() -> HRESULT {
    if (size < RedEyeParameters::kLeastBuffer) return S_OK;
    std::string text = PrintClicks(parameters);
    const auto room = static_cast<std::size_t>(size) - 1;
    const bool isWhole = text.size() <= room;
    if (!isWhole) text.resize(room);
    CopyParameterText(text, 0, buffer, size);
    return isWhole ? S_OK : E_FAIL;
  });
}

}  // namespace

const FilterClass kRedEyeClass = {.sortKey = 34,
                                  .className = "CRedEyeFilter",
                                  .progId = "ZNFilter.RedEye.1",
                                  .classId = base::Guid("{AF0C7F9D-15D2-4DF4-A5EB-F491CE0177B0}"),
                                  .order = 5000,
                                  .gloss = "Remove red eyes",
                                  .make = MakeFilter<CRedEyeFilter>,
                                  .describe = CRedEyeFilter::Describe};

HRESULT CRedEyeFilter::GetParameter(char* buffer, int size) {
  return Give(Pending(), buffer, size);
}

HRESULT CRedEyeFilter::GetActiveParameter(char* buffer, int size) {
  return Give(Active(), buffer, size);
}

// The caller's rows hold what the source gave for the request, and the mask stays so. The eyes are
// removed from a picture of our own: whatever part is asked for, a click means the same place.
bool CRedEyeFilter::ChangeRectangle(const PullRectangle& rectangle) {
  auto held = HoldState();
  const int width = output.width;
  const int height = output.height;
  const RedEyeParameters now = active;
  held.unlock();
  if (width < 1 || height < 1 || !EnsurePictures(width, height, 0, 0)) return false;
  BYTE** const rows = inputPicture->ColourRows();
  BYTE** const mask = inputPicture->MaskRows();
  const bool isClear = base::ForEachBand(height, base::RowsPerBand(width), [&](int first, int end) {
    for (int y = first; y < end && !abort; ++y) {
      std::fill_n(rows[y], base::ColourBytes(width), BYTE{0});
      std::fill_n(mask[y], width, base::kNothing);
    }
    return !abort;
  });
  source->ReadRows(0, 0, 0, 0, width, height, rows, mask);
  if (!isClear) return false;
  for (int i = 0; i < now.count; ++i) {
    if (abort) return false;
    kernels::RemoveRedEye({rows, nullptr, width, height}, zoom,
                          now.clicks[static_cast<std::size_t>(i)], abort);
  }
  const PullRectangle cut = rectangle.CutTo(width, height);
  return cut.ChangeRows(abort, [&](BYTE* colour, BYTE*, int i) {
    if (!colour) return;
    std::memcpy(colour, rows[cut.srcY + i] + base::ColourOffset(cut.srcX),
                base::ColourBytes(cut.width));
  });
}
