// The consumer at the tail of the chain: knows whom to pull, and answers what filters ask the host.
#pragma once

#include "core/AnimInterfaces.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

namespace host {

// For a host that pulls in the thread that changes the chain, so that Lock and Unlock have nothing
// to stop, and that asks for sizes when it wants them, so that what it is told is not kept.
// Questions that a picture window or a printer would answer stay open: no wanted size, no print
// scale. A host with windows brings a destination of its own.
class FXBOX_API PictureDestination final
    : public platform::ComObject<PictureDestination, IAnimFilterSrcCallsThis> {
 public:
  // The last filter, or the source itself under an empty chain; null when nothing is linked.
  IAnimFilterDestCallsThis* Tail() const { return source.Get(); }

  HRESULT STDMETHODCALLTYPE SetPictureSize(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetOffset(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetExtent(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetTargetSize(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;
  HRESULT STDMETHODCALLTYPE SetZoom(double) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetMark(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMark(int*, int*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Lock() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Unlock() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown* newSource) override;
  HRESULT STDMETHODCALLTYPE ExpandText(const char*, char**) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t, std::intptr_t, std::intptr_t) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t) override { return E_FAIL; }
  HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t) override { return S_OK; }

 private:
  platform::ComPtr<IAnimFilterDestCallsThis> source;
};

}  // namespace host
