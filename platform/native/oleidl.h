// Stand-in for the system header of the same name: what goes over clipboard and drags.
#pragma once

#include <objidl.h>

using CLIPFORMAT = WORD;

inline constexpr DWORD DVASPECT_CONTENT = 1;
inline constexpr DWORD TYMED_NULL = 0;
inline constexpr DWORD TYMED_HGLOBAL = 1;
inline constexpr DWORD TYMED_FILE = 2;
inline constexpr DWORD TYMED_ISTREAM = 4;
inline constexpr DWORD TYMED_ISTORAGE = 8;
inline constexpr DWORD DATADIR_GET = 1;
inline constexpr DWORD DATADIR_SET = 2;
inline constexpr DWORD DROPEFFECT_NONE = 0;
inline constexpr DWORD DROPEFFECT_COPY = 1;
inline constexpr DWORD DROPEFFECT_MOVE = 2;
inline constexpr DWORD MK_LBUTTON = 1;

struct DVTARGETDEVICE {
  DWORD tdSize;
};

struct FORMATETC {
  CLIPFORMAT cfFormat;
  DVTARGETDEVICE* ptd;
  DWORD dwAspect;
  LONG lindex;
  DWORD tymed;
};

struct STGMEDIUM {
  DWORD tymed;
  union {
    HGLOBAL hGlobal;
    LPOLESTR lpszFileName;
    IStream* pstm;
    IStorage* pstg;
  };
  IUnknown* pUnkForRelease;  // releases the medium when it is not null
};

struct IAdviseSink;
struct IEnumSTATDATA;

struct IEnumFORMATETC : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, FORMATETC* formats, ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumFORMATETC** result) = 0;

 protected:
  ~IEnumFORMATETC() = default;
};

struct IDataObject : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC* format, STGMEDIUM* medium) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC* in, FORMATETC* out) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink,
                                            DWORD* connection) = 0;
  virtual HRESULT STDMETHODCALLTYPE DUnadvise(DWORD connection) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA** result) = 0;

 protected:
  ~IDataObject() = default;
};

struct IDropSource : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escapePressed, DWORD keyState) = 0;
  virtual HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD effect) = 0;

 protected:
  ~IDropSource() = default;
};

inline constexpr IID IID_IEnumFORMATETC = {0x00000103, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDataObject = {0x0000010E, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDropSource = {0x00000121, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
