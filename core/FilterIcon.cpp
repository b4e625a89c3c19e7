#include "core/FilterIcon.h"

#include <cstring>
#include <new>

#include "platform/component/Guard.h"

HRESULT CFilterIcon::IconCall1(std::intptr_t, std::intptr_t) {
  return S_OK;
}

HRESULT CFilterIcon::GetLabel(char* buffer, int size) {
  return GetDisplayName(buffer, size);
}

HRESULT CFilterIcon::GetLongLabel(char* buffer, int size) {
  return GetDisplayName(buffer, size);
}

HRESULT CFilterIcon::IconCall4() {
  return S_OK;
}

HRESULT CFilterIcon::GetAttribute(const char* name, char* buffer, int size) {
  if (!name) return S_OK;
  if (std::strcmp(name, "Name") == 0) return GetDisplayName(buffer, size);
  if (std::strcmp(name, "IsActive") == 0) CopyParameterText(isActive ? "1" : "0", 0, buffer, size);
  return S_OK;
}

HRESULT CFilterIcon::GetDisplayName(char* buffer, int size) {
  CopyParameterText(displayName.View(), 0, buffer, size);
  return S_OK;
}

KvString* CFilterIcon::GetIconName(KvString* result) {
  return new (result) KvString(row.iconName ? row.iconName : "NullName");
}

KvString* CFilterIcon::GetNameKey(KvString* result) {
  return new (result) KvString(row.nameKey ? row.nameKey : "NullFilterName");
}

bool CFilterIcon::IsDefaultActive() {
  return true;
}

// The host's page knows the words for the name key; until it is asked, the English gloss is the
// name.
HRESULT CFilterIcon::Link(IUnknown*, int* status) {
  return platform::Guard([&] {
    displayName = row.gloss;
    isActive = IsDefaultActive();
    if (status) *status = 0;
    return S_OK;
  });
}

HRESULT CFilterIcon::Unlink() {
  return S_OK;
}
