// Wide texts that a caller of the component runtime frees.
#pragma once

#include <objbase.h>

#include <algorithm>
#include <string_view>

#include "base/CodePage.h"

namespace platform {

// Stores a copy in wide characters that the caller frees with CoTaskMemFree.
inline HRESULT GiveWideText(std::string_view text, LPOLESTR* result) {
  const std::u16string wide = base::ToWide(text);
  auto* copy = static_cast<LPOLESTR>(CoTaskMemAlloc((wide.size() + 1) * sizeof(OLECHAR)));
  if (!copy) return E_OUTOFMEMORY;
  std::copy_n(wide.c_str(), wide.size() + 1, copy);
  *result = copy;
  return S_OK;
}

}  // namespace platform
