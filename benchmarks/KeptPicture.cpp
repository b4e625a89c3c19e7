#include "benchmarks/KeptPicture.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "base/Arithmetic.h"
#include "base/Rows.h"

namespace benchmarks {
namespace {

template <class Work>
void ForRows(const MemoryPicture& picture, Planes planes, Work work) {
  for (int y = 0; y < picture.Height(); ++y) {
    if (planes != Planes::Mask) {
      work(picture.ColourRows()[y], true, y, base::ColourBytes(picture.Width()));
    }
    if (planes != Planes::Colour) {
      work(picture.MaskRows()[y], false, y, static_cast<std::size_t>(picture.Width()));
    }
  }
}

// Slopes with a little noise, as in a photograph.
void FillColour(BYTE* row, int width, int y, std::minstd_rand& random) {
  for (int x = 0; x < width; ++x) {
    const int noise = static_cast<int>(random() % 16);
    BYTE* const pixel = row + base::ColourOffset(x);
    pixel[base::kBlue] = base::LowByte(x / 11 + noise);
    pixel[base::kGreen] = base::LowByte(y / 7 + noise);
    pixel[base::kRed] = base::LowByte((x + y) / 17 + 2 * noise);
  }
}

// Stripes: opaque, half there, nothing there, and all between.
void FillMask(BYTE* row, int width, int y, bool isOpaque) {
  for (int x = 0; x < width; ++x) {
    const int stripe = (x + y) / 64 % 4;
    row[x] = isOpaque ? base::kOpaque : base::LowByte(stripe == 3 ? x : stripe * 255 / 2);
  }
}

}  // namespace

void Copy(const MemoryPicture& from, MemoryPicture& to, Planes planes) {
  ForRows(from, planes, [&to](const BYTE* row, bool isColour, int y, std::size_t bytes) {
    std::memcpy((isColour ? to.ColourRows() : to.MaskRows())[y], row, bytes);
  });
}

void Invert(MemoryPicture& picture, Planes planes) {
  ForRows(picture, planes, [](BYTE* row, bool, int, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) row[i] = static_cast<BYTE>(~row[i]);
  });
}

KeptPicture::KeptPicture(int width, int height, bool isOpaque)
    : picture("source", width, height, true, true) {
  std::minstd_rand random(1);
  for (int y = 0; y < picture.Height(); ++y) {
    FillColour(picture.ColourRows()[y], width, y, random);
    FillMask(picture.MaskRows()[y], width, y, isOpaque);
  }
}

void KeptPicture::SetRowsThatHoldIt(const MemoryPicture& rows) {
  const bool same = rows.Width() == picture.Width() && rows.Height() == picture.Height();
  filledRows = same ? rows.ColourRows() : nullptr;
}

HRESULT KeptPicture::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                              BYTE** colourRows, BYTE** maskRows) {
  if (colourRows && colourRows == filledRows && destX == srcX && destY == srcY) return S_OK;
  const int left = std::max(srcX, 0);
  const int right = std::min(srcX + width, picture.Width());
  if (left >= right) return S_OK;
  for (int y = std::max(srcY, 0); y < std::min(srcY + height, picture.Height()); ++y) {
    const int toX = destX + left - srcX;
    const int toY = destY + y - srcY;
    if (colourRows) {
      std::memcpy(colourRows[toY] + base::ColourOffset(toX),
                  picture.ColourRows()[y] + base::ColourOffset(left),
                  base::ColourBytes(right - left));
    }
    if (maskRows) {
      std::memcpy(maskRows[toY] + toX, picture.MaskRows()[y] + left,
                  static_cast<std::size_t>(right - left));
    }
  }
  return S_OK;
}

HRESULT KeptPicture::LendRows(int width, int height, const BYTE* const** colourRows,
                              const BYTE* const** maskRows) {
  if (!lends || width > picture.Width() || height > picture.Height()) return 1;
  *colourRows = picture.ColourRows();
  *maskRows = picture.MaskRows();
  return S_OK;
}

HRESULT KeptPicture::Prepare(bool* changed, int* revision, bool) {
  if (destination) {
    destination->SetTargetSize(picture.Width(), picture.Height());
    destination->SetPictureSize(picture.Width(), picture.Height());
    destination->SetExtent(picture.Width(), picture.Height());
    destination->SetOffset(0, 0);
  }
  if (revision) *revision = ++lastRevision;
  if (changed) *changed = true;
  return S_OK;
}

HRESULT KeptPicture::GetInfo(int* width, int* height, int* offsetX, int* offsetY, int* extentWidth,
                             int* extentHeight) {
  *width = *extentWidth = picture.Width();
  *height = *extentHeight = picture.Height();
  *offsetX = *offsetY = 0;
  return S_OK;
}

HRESULT KeptPicture::AttachDestination(IUnknown* newDestination) {
  destination = platform::ComPtr<IAnimFilterSrcCallsThis>::Query(newDestination);
  return S_OK;
}

}  // namespace benchmarks
