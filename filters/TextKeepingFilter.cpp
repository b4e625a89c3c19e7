#include "filters/TextKeepingFilter.h"

#include "platform/component/Guard.h"

void CTextKeepingFilter::Commit() {
  active = pending;
  committed = true;
}

HRESULT CTextKeepingFilter::SetParameter(const char* text, int) {
  return platform::Guard([&] {
    if (text) pending = text;
    return S_OK;
  });
}

HRESULT CTextKeepingFilter::GetParameter(char* buffer, int size) {
  CopyParameterText(pending, 0, buffer, size);
  return S_OK;
}

HRESULT CTextKeepingFilter::GetActiveParameter(char* buffer, int size) {
  CopyParameterText(active, 0, buffer, size);
  return S_OK;
}
