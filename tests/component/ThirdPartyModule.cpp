// A filter of a third party, as it would be written outside this project: against the public
// headers and the library alone. It swaps red and blue.
#include <comcat.h>
#include <objbase.h>

#include <atomic>
#include <string>
#include <utility>

#include "base/CodePage.h"
#include "core/AnimChain.h"
#include "core/FilterShapes.h"
#include "platform/Services.h"
#include "platform/component/ClassFactory.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"
#include "platform/component/SystemInterfaces.h"

#ifdef _WIN32
#include <olectl.h>
#define MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#define MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

using platform::ComPtr;
using platform::Hive;
using platform::RegistryResult;

constexpr char kClassIdText[] = "{B4D7C0AA-9C5E-4D7B-9C0E-5B1B3E0D9A11}";
constexpr CLSID kClassId = base::Guid(kClassIdText);
constexpr char kProgId[] = "ThirdParty.Swap.1";
constexpr char kDescription[] = "Third party - Swap";

// Keeps this module loaded while one lives; the library counts for itself.
std::atomic<int> inUse{0};
struct InUse {
  InUse() { ++inUse; }
  InUse(const InUse&) { ++inUse; }
  ~InUse() { --inUse; }
};

class SwapFilter final : public RowFilter {
 public:
  explicit SwapFilter(const FilterClass& row) : RowFilter(row, {}) {}

  bool IsDirty() override { return !committed; }
  void Commit() override { committed = true; }

  HRESULT STDMETHODCALLTYPE SetParameter(const char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override {
    if (buffer && size > 0) *buffer = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override {
    return GetParameter(buffer, size);
  }

 private:
  void ChangeRow(BYTE* colour, BYTE*, int width) override {
    for (int x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
      std::swap(colour[base::kBlue], colour[base::kRed]);
    }
  }

  bool committed = false;
  InUse use;
};

// Any address within this module. That of an exported function could be another module's, where
// names are looked up in the whole process.
const char kHere = 0;

// Sorts behind the library's class 13 and before its class 15.
const FilterClass kRow = {
    .sortKey = 14,
    .className = "SwapFilter",
    .progId = kProgId,
    .classId = kClassId,
    .order = 5000,
    .iconName = nullptr,
    .nameKey = nullptr,
    .helpKey = nullptr,
    .defaultText = nullptr,
    .gloss = "Swap red and blue",
    .make = [](const FilterClass& row) -> FilterObject* { return new SwapFilter(row); },
    .describe = nullptr,
};

HRESULT ChangeCategory(bool enter) {
  ComPtr<ICatRegister> manager;
  CATID category = kFilterCategory;
  const HRESULT status =
      CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER,
                       platform::IidOf<ICatRegister>(), manager.PutVoid());
  if (FAILED(status)) return status;
  return enter ? manager->RegisterClassImplCategories(kClassId, 1, &category)
               : manager->UnRegisterClassImplCategories(kClassId, 1, &category);
}

bool WriteKey(const std::string& key, const std::string& value) {
  return platform::CurrentServices().registry->Write(Hive::ClassesRoot, key, value) ==
         RegistryResult::Done;
}

}  // namespace

MODULE_EXPORT HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID classId, REFIID iid,
                                                       void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (!base::SameGuid(classId, kClassId)) return CLASS_E_CLASSNOTAVAILABLE;
  return platform::Guard([&] {
    const auto make = [use = InUse()] { return static_cast<IAnimFilter*>(kRow.make(kRow)); };
    const auto factory = ComPtr<platform::ClassFactory>::Attach(new platform::ClassFactory(make));
    return factory->QueryInterface(iid, result);
  });
}

MODULE_EXPORT HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  return inUse > 0 ? S_FALSE : S_OK;
}

MODULE_EXPORT HRESULT STDAPICALLTYPE DllRegisterServer() {
  return platform::Guard([] {
    const std::string path =
        base::FromWide(platform::CurrentServices().files->ModuleOf(&kHere).u16string());
    const std::string classKey = std::string("CLSID\\") + kClassIdText;
    const bool written =
        WriteKey(classKey, kDescription) && WriteKey(classKey + "\\InProcServer32", path) &&
        WriteKey(classKey + "\\ProgID", kProgId) && WriteKey(kProgId, kDescription) &&
        WriteKey(std::string(kProgId) + "\\CLSID", kClassIdText);
    return written ? ChangeCategory(true) : SELFREG_E_CLASS;
  });
}

MODULE_EXPORT HRESULT STDAPICALLTYPE DllUnregisterServer() {
  return platform::Guard([] {
    ChangeCategory(false);
    for (const std::string& key : {std::string("CLSID\\") + kClassIdText, std::string(kProgId)}) {
      platform::CurrentServices().registry->DeleteTree(Hive::ClassesRoot, key);
    }
    return S_OK;
  });
}
