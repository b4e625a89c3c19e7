#include "core/FilterIcon.h"

#include <cstring>
#include <new>
#include <string>

#include "core/AnimHost.h"
#include "core/IconPicture.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"

namespace {

constexpr char kNoIconName[] = "NullName";

}  // namespace

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
  return new (result) KvString(row.iconName ? row.iconName : kNoIconName);
}

KvString* CFilterIcon::GetNameKey(KvString* result) {
  return new (result) KvString(row.nameKey ? row.nameKey : "NullFilterName");
}

bool CFilterIcon::IsDefaultActive() {
  return true;
}

// The words of the host's page for the name key; the English gloss where it has none.
void CFilterIcon::TakeName(IUnknown* host) {
  KvString words;
  const auto page = platform::ComPtr<IAnimHostPage>::Query(host);
  if (page && row.nameKey) page->Localize(row.nameKey, &words);
  displayName = words.IsEmpty() ? KvString(row.gloss) : words;
}

void CFilterIcon::ShowPictures(IUnknown* host) const {
  const auto page = platform::ComPtr<IAnimIconPage>::Query(host);
  if (!page) return;
  const std::string base = row.iconName ? row.iconName : kNoIconName;
  for (const std::string& name : {base, base + "_foc"}) {
    const core::IconPicture picture = core::ReadIconPicture(name);
    if (picture.colour.empty()) continue;
    page->SetIconPicture(name.c_str(), picture.colour.data(),
                         static_cast<std::uint32_t>(picture.colour.size()), picture.mask.data(),
                         static_cast<std::uint32_t>(picture.mask.size()));
  }
}

HRESULT CFilterIcon::Link(IUnknown* host, int* status) {
  return platform::Guard([&] {
    TakeName(host);
    isActive = IsDefaultActive();
    ShowPictures(host);
    if (status) *status = 0;
    return S_OK;
  });
}

HRESULT CFilterIcon::Unlink() {
  return S_OK;
}
