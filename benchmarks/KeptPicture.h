// The head of a benchmark's chain: a picture in memory, and the passes over rows that set the
// limit.
#pragma once

#include "core/AnimInterfaces.h"
#include "core/AnimRowLender.h"
#include "picture/MemoryPicture.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

namespace benchmarks {

enum class Planes { Colour, Mask, Both };

// Row by row. Pictures of the same size.
void Copy(const MemoryPicture& from, MemoryPicture& to, Planes planes);
// Every byte of the planes in place.
void Invert(MemoryPicture& picture, Planes planes);

// A made picture with soft and noisy parts and a mask of all kinds, or opaque. Tells a change at
// each Prepare. One thread.
class KeptPicture final
    : public platform::ComObject<KeptPicture, IAnimFilterDestCallsThis, IAnimRowLender> {
 public:
  KeptPicture(int width, int height, bool isOpaque = false);

  const MemoryPicture& Picture() const { return picture; }
  // A pull into these rows, each pixel to its own place, finds the picture there already and costs
  // nothing: what is timed is the filter alone. The caller keeps them filled and alive.
  void SetRowsThatHoldIt(const MemoryPicture& rows);
  // All rows are filled from now on, whatever they hold.
  void FillAllRows() { filledRows = nullptr; }
  // Whether it lends its rows; otherwise they are copied.
  void SetLends(bool newLends) { lends = newLends; }

  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;
  HRESULT STDMETHODCALLTYPE LendRows(int width, int height, const BYTE* const** colourRows,
                                     const BYTE* const** maskRows) override;
  HRESULT STDMETHODCALLTYPE ReturnRows() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetAbort(bool) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* revision, bool trackRevision) override;
  HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                    int* extentWidth, int* extentHeight) override;
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t) override { return S_OK; }

 private:
  MemoryPicture picture;
  BYTE** filledRows = nullptr;
  bool lends = false;
  int lastRevision = 0;
  platform::ComPtr<IAnimFilterSrcCallsThis> destination;
};

}  // namespace benchmarks
