// CDataXferObj: what goes on the clipboard or into a drag.
#pragma once

#include <ole2.h>

#include <vector>

#include "base/Export.h"
#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"

// A list of pairs of format and medium, in the order in which they were set. One thread at a time;
// once it is filled, any thread may read it.
class FXBOX_API CDataXferObj final : public platform::ComObject<CDataXferObj, IDataObject> {
 public:
  CDataXferObj() = default;
  ~CDataXferObj();

  // Gives a copy, which the caller frees with ReleaseStgMedium. Only global memory can be copied.
  // DV_E_FORMATETC for a format that is not held, DV_E_TYMED for one that is held in another kind
  // of medium.
  HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) override;
  HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC* format, STGMEDIUM* medium) override;
  HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) override;
  HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC* in, FORMATETC* out) override;
  // Takes global memory, in place of what was set for the same format before. With `release` the
  // medium is the object's from then on, otherwise the object copies it. A medium that is refused
  // stays the caller's.
  HRESULT STDMETHODCALLTYPE SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) override;
  HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) override;
  HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink,
                                    DWORD* connection) override;
  HRESULT STDMETHODCALLTYPE DUnadvise(DWORD connection) override;
  HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA** result) override;

 private:
  struct Pair {
    FORMATETC format;
    STGMEDIUM medium;
  };
  HRESULT Find(const FORMATETC* format, Pair** found);

  std::vector<Pair> pairs;
};
