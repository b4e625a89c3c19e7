#include "tests/support/TestEnds.h"

#include <objbase.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace testing_support {
void PrintTo(const RowRequest& r, std::ostream* out) {
  *out << "{" << r.destX << " " << r.destY << " " << r.srcX << " " << r.srcY << " " << r.width
       << " " << r.height << "}";
}

// --- source

HRESULT TestSource::QueryInterface(REFIID iid, void** result) {
  if (!answersEveryQuery) return ComObject::QueryInterface(iid, result);
  *result = Unknown();
  AddRef();
  return S_OK;
}

HRESULT TestSource::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                             BYTE** colourRows, BYTE** maskRows) {
  requests.push_back({destX, destY, srcX, srcY, width, height});
  if (lent) misuseOfLent += " rows asked for meanwhile";
  if (throwsInReadRows) throw std::runtime_error("source");
  const int first = std::max(0, srcX);
  const int end = static_cast<int>(
      std::min<std::int64_t>(picture.width, std::int64_t{srcX} + std::max(0, width)));
  for (int i = height > 0 ? height - 1 : -1; i >= 0; --i) {
    const std::int64_t y = std::int64_t{srcY} + i;
    if (y >= 0 && y < picture.height && first < end) {
      const int at = destX + first - srcX;
      const auto row = static_cast<int>(y);
      const auto pixels = static_cast<std::size_t>(end - first);
      if (colourRows) {
        std::memcpy(colourRows[destY + i] + 3 * at, picture.Colour(first, row), 3 * pixels);
      }
      if (maskRows) {
        std::memcpy(maskRows[destY + i] + at, picture.mask.data() + row * picture.width + first,
                    pixels);
      }
    }
    if (onRow) onRow(height - i);
  }
  if (results.empty()) return S_OK;
  const HRESULT result = results.front();
  results.pop_front();
  return result;
}

// An opaque picture has one mask row for all.
HRESULT TestSource::LendRows(int width, int height, const BYTE* const** colourRows,
                             const BYTE* const** maskRows) {
  const bool isHere = width <= picture.width && height <= picture.height;
  if (!lends || IsStopped() || !isHere) return 1;
  if (lent) throw std::logic_error("rows were lent already");
  lent = std::make_unique<GuardedRows>(picture.width, picture.height);
  for (int y = 0; y < picture.height; ++y) {
    std::copy_n(picture.Colour(0, y), 3 * picture.width, lent->ColourRows()[y]);
    std::copy_n(picture.mask.data() + y * picture.width, picture.width, lent->MaskRows()[y]);
  }
  const auto isOpaque = [](BYTE m) { return m == 0; };
  opaqueRow.assign(static_cast<std::size_t>(picture.width), 0);
  opaqueRows.assign(static_cast<std::size_t>(picture.height), opaqueRow.data());
  *colourRows = lent->ColourRows();
  *maskRows = std::all_of(picture.mask.begin(), picture.mask.end(), isOpaque) ? opaqueRows.data()
                                                                              : lent->MaskRows();
  ++loans;
  if (onLend) onLend();
  return S_OK;
}

HRESULT TestSource::ReturnRows() {
  if (!lent) throw std::logic_error("no rows were lent");
  misuseOfLent += Difference(picture, lent->Whole());
  if (std::any_of(opaqueRow.begin(), opaqueRow.end(), [](BYTE m) { return m != 0; })) {
    misuseOfLent += "the opaque row";
  }
  lent.reset();
  return S_OK;
}

bool TestSource::IsStopped() {
  const std::lock_guard lock(noting);
  return !aborts.empty() && aborts.back();
}

HRESULT TestSource::SetAbort(bool abort) {
  const std::lock_guard lock(noting);
  aborts.push_back(abort);
  return S_OK;
}

HRESULT TestSource::Prepare(bool* changed, int* consumer, bool trackRevision) {
  {
    const std::lock_guard lock(noting);
    prepares.emplace_back(*consumer, trackRevision);
  }
  if (destination) {
    if (targetWidth > 0) destination->SetTargetSize(targetWidth, targetHeight);
    destination->SetPictureSize(picture.width, picture.height);
    destination->SetExtent(extentWidth > 0 ? extentWidth : picture.width,
                           extentHeight > 0 ? extentHeight : picture.height);
    destination->SetOffset(offsetX, offsetY);
  }
  if (*consumer != revision) *changed = true;
  *consumer = revision;
  return S_OK;
}

HRESULT TestSource::AttachDestination(IUnknown* newDestination) {
  destination = platform::ComPtr<IAnimFilterSrcCallsThis>::Query(newDestination);
  return S_OK;
}

HRESULT TestSource::ReadPixel(BYTE* answer) {
  ++pixelCount;
  std::memcpy(answer, pixel, sizeof pixel);
  return S_OK;
}

HRESULT TestSource::SendToSource(std::intptr_t message) {
  messages.push_back(message);
  return S_OK;
}

// --- destination

HRESULT TestDestination::SetPictureSize(int w, int h) {
  width = w;
  height = h;
  return Record("SetPictureSize", w, h);
}

HRESULT TestDestination::SetTargetSize(int w, int h) {
  targetWidth = w;
  targetHeight = h;
  return Record("SetTargetSize", w, h);
}

HRESULT TestDestination::SetZoom(double newZoom) {
  zoom = newZoom;
  return Record("SetZoom", newZoom);
}

HRESULT TestDestination::QuerySize(int* w, int* h, double aspect) {
  askedAspect = aspect;
  *w = wantedWidth;
  *h = wantedHeight;
  return S_OK;
}

HRESULT TestDestination::Lock() {
  locks += 'L';
  return S_OK;
}

HRESULT TestDestination::Unlock() {
  locks += 'U';
  if (onUnlock) onUnlock();
  return S_OK;
}

HRESULT TestDestination::AttachSource(IUnknown* newSource) {
  source = platform::ComPtr<IAnimFilterDestCallsThis>::Query(newSource);
  return S_OK;
}

HRESULT TestDestination::ExpandText(const char* text, char** expanded) {
  const std::lock_guard lock(recording);
  calls.push_back(std::string("ExpandText ") + text);
  if (expansion.empty()) return S_FALSE;
  *expanded = static_cast<char*>(CoTaskMemAlloc(expansion.size() + 1));
  std::memcpy(*expanded, expansion.c_str(), expansion.size() + 1);
  return S_OK;
}

HRESULT TestDestination::QueryPrintScale(double* scale) {
  *scale = 2.5;
  return S_OK;
}

}  // namespace testing_support
