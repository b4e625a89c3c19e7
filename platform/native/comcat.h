// Stand-in for the system header of the same name: component categories.
#pragma once

#include <objbase.h>

struct CATEGORYINFO {
  CATID catid;
  LCID lcid;
  OLECHAR szDescription[128];
};

struct IEnumGUID : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, GUID* ids, ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumGUID** result) = 0;

 protected:
  ~IEnumGUID() = default;
};
using IEnumCLSID = IEnumGUID;
using IEnumCATID = IEnumGUID;

struct IEnumCATEGORYINFO : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, CATEGORYINFO* infos, ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumCATEGORYINFO** result) = 0;

 protected:
  ~IEnumCATEGORYINFO() = default;
};

struct ICatInformation : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE EnumCategories(LCID lcid, IEnumCATEGORYINFO** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCategoryDesc(REFCATID category, LCID lcid,
                                                    LPOLESTR* description) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumClassesOfCategories(ULONG implementedCount,
                                                            const CATID* implemented,
                                                            ULONG requiredCount,
                                                            const CATID* required,
                                                            IEnumCLSID** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsClassOfCategories(REFCLSID classId, ULONG implementedCount,
                                                        const CATID* implemented,
                                                        ULONG requiredCount,
                                                        const CATID* required) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumImplCategoriesOfClass(REFCLSID classId,
                                                              IEnumCATID** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumReqCategoriesOfClass(REFCLSID classId,
                                                             IEnumCATID** result) = 0;

 protected:
  ~ICatInformation() = default;
};

struct ICatRegister : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE RegisterCategories(ULONG count, CATEGORYINFO* infos) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnRegisterCategories(ULONG count, CATID* categories) = 0;
  virtual HRESULT STDMETHODCALLTYPE RegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                                CATID* categories) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnRegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                                  CATID* categories) = 0;
  virtual HRESULT STDMETHODCALLTYPE RegisterClassReqCategories(REFCLSID classId, ULONG count,
                                                               CATID* categories) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnRegisterClassReqCategories(REFCLSID classId, ULONG count,
                                                                 CATID* categories) = 0;

 protected:
  ~ICatRegister() = default;
};

inline constexpr CLSID CLSID_StdComponentCategoriesMgr = {
    0x0002E005, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumGUID = {0x0002E000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumCATEGORYINFO = {0x0002E011, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_ICatRegister = {0x0002E012, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_ICatInformation = {0x0002E013, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
