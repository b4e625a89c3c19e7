// Stand-in for the system header of the same name: connection points.
#pragma once

#include <unknwn.h>

struct IConnectionPoint;

struct CONNECTDATA {
  IUnknown* pUnk;
  DWORD dwCookie;
};

struct IEnumConnections : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, CONNECTDATA* connections, ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumConnections** result) = 0;

 protected:
  ~IEnumConnections() = default;
};

struct IEnumConnectionPoints : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, IConnectionPoint** points,
                                         ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumConnectionPoints** result) = 0;

 protected:
  ~IEnumConnectionPoints() = default;
};

struct IConnectionPointContainer : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** result) = 0;

 protected:
  ~IConnectionPointContainer() = default;
};

struct IConnectionPoint : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) = 0;
  virtual HRESULT STDMETHODCALLTYPE
  GetConnectionPointContainer(IConnectionPointContainer** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** result) = 0;

 protected:
  ~IConnectionPoint() = default;
};

inline constexpr IID IID_IConnectionPointContainer = {
    0xB196B284, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
inline constexpr IID IID_IEnumConnectionPoints = {
    0xB196B285, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
inline constexpr IID IID_IConnectionPoint = {
    0xB196B286, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
inline constexpr IID IID_IEnumConnections = {
    0xB196B287, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
