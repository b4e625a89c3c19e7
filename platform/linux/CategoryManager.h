// The standard manager of component categories.
#pragma once

#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"

namespace platform {

// Keeps no state: it reads the class table and the registry at every call, so that any number of
// them may be used from any thread. Registering writes to the registry only, never to announced
// classes.
class CategoryManager final : public ComObject<CategoryManager, ICatInformation, ICatRegister> {
 public:
  HRESULT STDMETHODCALLTYPE EnumCategories(LCID lcid, IEnumCATEGORYINFO** result) override;
  // Takes the description of another language where there is none of this one. Freed by the caller
  // with CoTaskMemFree.
  HRESULT STDMETHODCALLTYPE GetCategoryDesc(REFCATID category, LCID lcid,
                                            LPOLESTR* description) override;
  // A count of -1 stands for all categories.
  HRESULT STDMETHODCALLTYPE EnumClassesOfCategories(ULONG implementedCount,
                                                    const CATID* implemented, ULONG requiredCount,
                                                    const CATID* required,
                                                    IEnumCLSID** result) override;
  HRESULT STDMETHODCALLTYPE IsClassOfCategories(REFCLSID classId, ULONG implementedCount,
                                                const CATID* implemented, ULONG requiredCount,
                                                const CATID* required) override;
  HRESULT STDMETHODCALLTYPE EnumImplCategoriesOfClass(REFCLSID classId,
                                                      IEnumCATID** result) override;
  HRESULT STDMETHODCALLTYPE EnumReqCategoriesOfClass(REFCLSID classId,
                                                     IEnumCATID** result) override;

  HRESULT STDMETHODCALLTYPE RegisterCategories(ULONG count, CATEGORYINFO* infos) override;
  HRESULT STDMETHODCALLTYPE UnRegisterCategories(ULONG count, CATID* categories) override;
  HRESULT STDMETHODCALLTYPE RegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                        CATID* categories) override;
  HRESULT STDMETHODCALLTYPE UnRegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                          CATID* categories) override;
  HRESULT STDMETHODCALLTYPE RegisterClassReqCategories(REFCLSID classId, ULONG count,
                                                       CATID* categories) override;
  HRESULT STDMETHODCALLTYPE UnRegisterClassReqCategories(REFCLSID classId, ULONG count,
                                                         CATID* categories) override;
};

}  // namespace platform
