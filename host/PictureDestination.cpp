#include "host/PictureDestination.h"

namespace host {

HRESULT PictureDestination::QuerySize(int* width, int* height, double) {
  if (!width || !height) return E_POINTER;
  *width = *height = -1;
  return S_OK;
}

HRESULT PictureDestination::AttachSource(IUnknown* newSource) {
  source = platform::ComPtr<IAnimFilterDestCallsThis>::Query(newSource);
  return S_OK;
}

}  // namespace host
