#include "filters/NullFilter.h"

#include "platform/component/Guard.h"

HRESULT CNullFilter::SetParameter(const char*, int) {
  return S_OK;
}

HRESULT CNullFilter::GetParameter(char* buffer, int size) {
  return platform::Guard([&] {
    CopyParameterText("Generic Filter Parameter", 31, buffer, size);
    return S_OK;
  });
}

HRESULT CNullFilter::GetActiveParameter(char* buffer, int size) {
  return GetParameter(buffer, size);
}
