#include "core/FilterShapes.h"

#include <algorithm>
#include <cstring>

#include "base/Arithmetic.h"

namespace {

// What a pull answers when it is not complete.
constexpr HRESULT kStopped = 1;

// Every failure inside a filter, exhausted memory included, ends the pull the way an abort does.
template <class Body>
HRESULT GuardPull(Body&& body) {
  const HRESULT status = platform::Guard(body);
  return FAILED(status) ? kStopped : status;
}

// Asks for the front of the row that comes next. Processors foresee rows that follow upwards in
// memory, and ours go down; the rest of a row they see coming by themselves.
inline void AnnounceRow(const BYTE* row, std::size_t bytes) {
  constexpr std::size_t kFront = 3072;
  constexpr std::size_t kCacheLine = 64;
  for (std::size_t at = 0; at < std::min(bytes, kFront); at += kCacheLine) {
    __builtin_prefetch(row + at, 1);
    asm volatile("");  // without it the compiler takes the loop for empty
  }
}

// Cuts a request to a picture of this size; a corner below 0 moves the destination along.
void CutAxis(int& dest, int& src, int& length, int size) {
  const std::int64_t first = std::max<std::int64_t>(0, src);
  const std::int64_t end = std::min<std::int64_t>(size, std::int64_t{src} + length);
  dest = base::WrapToInt32(dest + (first - src));
  src = static_cast<int>(first);
  length = static_cast<int>(std::max<std::int64_t>(0, end - first));
}

}  // namespace

HRESULT RowFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                            BYTE** colourRows, BYTE** maskRows) {
  return GuardPull([&]() -> HRESULT {
    if (!source) return kStopped;
    const HRESULT pulled =
        source->ReadRows(destX, destY, srcX, srcY, width, height, colourRows, maskRows);
    if (policy.stopsWithSource && pulled > 0) return kStopped;
    const PullRectangle rows{destX, destY, srcX, srcY, width, height, colourRows, maskRows};
    for (int i = std::max(height, 0) - 1; i >= 0; --i) {
      if (abort) {
        if (policy.abortMarksChange) selfChanged = true;
        return kStopped;
      }
      BYTE* const colour = rows.Colour(i);
      BYTE* const mask = rows.Mask(i);
      if (width < 1 || !(policy.worksOnMask ? mask : colour)) continue;
      if (i > 0 && !policy.worksOnMask) AnnounceRow(rows.Colour(i - 1), base::ColourBytes(width));
      ChangeRow(colour, mask, width);
    }
    ClearChanges();
    return S_OK;
  });
}

HRESULT RowFilter::ReadPixel(BYTE* pixel) {
  if (!pixel) return E_POINTER;
  const HRESULT status = CPdibFilter::ReadPixel(pixel);
  if (FAILED(status)) return status;
  ChangeRow(pixel, pixel + base::kBytesPerPixel, 1);
  return S_OK;
}

HRESULT RectangleFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                                  BYTE** colourRows, BYTE** maskRows) {
  return GuardPull([&]() -> HRESULT {
    if (!source ||
        source->ReadRows(destX, destY, srcX, srcY, width, height, colourRows, maskRows) > 0) {
      return kStopped;
    }
    if (!ChangeRectangle({destX, destY, srcX, srcY, width, height, colourRows, maskRows})) {
      selfChanged = true;
      return kStopped;
    }
    ClearChanges();
    return S_OK;
  });
}

HRESULT WholePictureFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) {
  return GuardPull([&]() -> HRESULT {
    if (!source || !BringUpToDate()) return kStopped;
    if (!CopyOut({destX, destY, srcX, srcY, width, height, colourRows, maskRows})) {
      if (policy.flags == ChangeFlags::ClearedAtEnd) selfChanged = true;
      return kStopped;
    }
    if (policy.flags == ChangeFlags::ClearedAtEnd) ClearChanges();
    return S_OK;
  });
}

bool WholePictureFilter::BringUpToDate() {
  if (Result() && !Changed()) return true;
  pulled = input;
  result = output;
  // Before the first Prepare there is no picture.
  if (result.width < 1 || result.height < 1) return false;
  const bool selfBefore = selfChanged;
  if (policy.flags == ChangeFlags::ClearedAtStart) ClearChanges();
  bool rebuilt = false;
  try {
    rebuilt = Rebuild();
  } catch (...) {
    // No memory, or a source that throws: the same as a source that failed.
  }
  if (rebuilt) return true;
  if (policy.flags == ChangeFlags::ClearedAtStart) {
    selfChanged = selfBefore;
    sourceChanged = true;
  } else {
    selfChanged = true;
  }
  return false;
}

bool WholePictureFilter::CopyOut(PullRectangle cut) {
  CutAxis(cut.destX, cut.srcX, cut.width, result.width);
  CutAxis(cut.destY, cut.srcY, cut.height, result.height);
  const MemoryPicture& from = *Result();
  for (int i = cut.height - 1; i >= 0; --i) {
    if (abort) return false;
    if (cut.width < 1) continue;
    CopyRow(from.ColourRows()[cut.srcY + i] + base::ColourOffset(cut.srcX),
            from.MaskRows()[cut.srcY + i] + cut.srcX, cut.Colour(i), cut.Mask(i), cut.width);
  }
  return true;
}

void WholePictureFilter::CopyRow(const BYTE* colour, const BYTE* mask, BYTE* toColour, BYTE* toMask,
                                 int width) {
  if (toColour) std::memcpy(toColour, colour, base::ColourBytes(width));
  if (toMask) std::memcpy(toMask, mask, static_cast<std::size_t>(width));
}

bool WholePictureFilter::PullInput(MemoryPicture& picture, int x, int y) {
  picture.Clear();
  return source->ReadRows(x, y, 0, 0, pulled.width, pulled.height, picture.ColourRows(),
                          picture.MaskRows()) == 0;
}
