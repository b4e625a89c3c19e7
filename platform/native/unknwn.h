// Stand-in for the system header of the same name: the two interfaces that every component knows.
#pragma once

#include <wtypes.h>

// The order of the operations is that of the system's table, so that a host that builds the tables
// by hand finds the same slots.
struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;

 protected:
  ~IUnknown() = default;
};

struct IClassFactory : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;

 protected:
  ~IClassFactory() = default;
};

inline constexpr IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory = {1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
