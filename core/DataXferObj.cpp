#include "core/DataXferObj.h"

#include <winbase.h>

#include <algorithm>
#include <cstring>

#include "platform/component/Guard.h"
#include "platform/component/ListEnumerator.h"

namespace {

using FormatList = platform::ListEnumerator<IEnumFORMATETC, FORMATETC>;

// Null when there is no memory.
HGLOBAL CopyOf(HGLOBAL block) {
  const SIZE_T size = GlobalSize(block);
  const HGLOBAL copy = GlobalAlloc(GMEM_MOVEABLE, size);
  if (!copy) return nullptr;
  std::memcpy(GlobalLock(copy), GlobalLock(block), size);
  GlobalUnlock(block);
  GlobalUnlock(copy);
  return copy;
}

}  // namespace

CDataXferObj::~CDataXferObj() {
  for (Pair& pair : pairs) ReleaseStgMedium(&pair.medium);
}

HRESULT CDataXferObj::Find(const FORMATETC* format, Pair** found) {
  if (!format) return E_POINTER;
  const auto pair = std::find_if(pairs.begin(), pairs.end(), [&](const Pair& held) {
    return held.format.cfFormat == format->cfFormat && held.format.dwAspect == format->dwAspect;
  });
  if (pair == pairs.end()) return DV_E_FORMATETC;
  if (format->lindex != pair->format.lindex) return DV_E_LINDEX;
  if (!(format->tymed & pair->format.tymed)) return DV_E_TYMED;
  if (found) *found = &*pair;
  return S_OK;
}

HRESULT CDataXferObj::GetData(FORMATETC* format, STGMEDIUM* medium) {
  if (!medium) return E_POINTER;
  *medium = {};
  Pair* pair = nullptr;
  const HRESULT status = Find(format, &pair);
  if (FAILED(status)) return status;
  medium->hGlobal = CopyOf(pair->medium.hGlobal);
  if (!medium->hGlobal) return E_OUTOFMEMORY;
  medium->tymed = TYMED_HGLOBAL;
  return S_OK;
}

HRESULT CDataXferObj::GetDataHere(FORMATETC*, STGMEDIUM*) {
  return E_NOTIMPL;
}

HRESULT CDataXferObj::QueryGetData(FORMATETC* format) {
  return Find(format, nullptr);
}

HRESULT CDataXferObj::GetCanonicalFormatEtc(FORMATETC* in, FORMATETC* out) {
  if (!in || !out) return E_POINTER;
  *out = *in;
  out->ptd = nullptr;
  return DATA_S_SAMEFORMATETC;
}

HRESULT CDataXferObj::SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) {
  if (!format || !medium) return E_POINTER;
  if (medium->tymed != TYMED_HGLOBAL || !medium->hGlobal) return DV_E_TYMED;
  return platform::Guard([&] {
    pairs.reserve(pairs.size() + 1);
    STGMEDIUM kept = *medium;
    if (!release) {
      kept.hGlobal = CopyOf(medium->hGlobal);
      kept.pUnkForRelease = nullptr;
      if (!kept.hGlobal) return E_OUTOFMEMORY;
    }
    FORMATETC held = *format;
    held.ptd = nullptr;
    held.tymed = TYMED_HGLOBAL;
    std::erase_if(pairs, [&](Pair& pair) {
      const bool isSame =
          pair.format.cfFormat == held.cfFormat && pair.format.dwAspect == held.dwAspect;
      if (isSame) ReleaseStgMedium(&pair.medium);
      return isSame;
    });
    pairs.push_back({held, kept});
    return S_OK;
  });
}

HRESULT CDataXferObj::EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (direction != DATADIR_GET) return E_NOTIMPL;
  return platform::Guard([&] {
    std::vector<FORMATETC> formats;
    for (const Pair& pair : pairs) formats.push_back(pair.format);
    *result = new FormatList(std::move(formats), 0);
    return S_OK;
  });
}

HRESULT CDataXferObj::DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) {
  return OLE_E_ADVISENOTSUPPORTED;
}

HRESULT CDataXferObj::DUnadvise(DWORD) {
  return OLE_E_ADVISENOTSUPPORTED;
}

HRESULT CDataXferObj::EnumDAdvise(IEnumSTATDATA**) {
  return OLE_E_ADVISENOTSUPPORTED;
}
