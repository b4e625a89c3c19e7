#include "core/PdibFilterCreator.h"

#include <comcat.h>

#include <algorithm>
#include <mutex>

#include "core/AnimIcon.h"
#include "core/FilterObject.h"
#include "core/PdibFilterChain.h"
#include "platform/Services.h"
#include "platform/component/ClassFactory.h"
#include "platform/component/Guard.h"
#include "platform/component/OleText.h"
#include "platform/component/SystemInterfaces.h"

namespace {

using platform::ComPtr;
using platform::Guard;
using Entry = CPdibFilterCreator::Entry;
using EntryList = CPdibFilterCreator::EntryList;

// What the creators of a process share; one list with the module's own classes, one without.
struct SharedList {
  std::mutex lock;
  std::weak_ptr<const EntryList> list;
};
SharedList registeredOnly;
SharedList withOwnClasses;

ComPtr<IClassFactory> FactoryOf(REFCLSID classId) {
  ComPtr<IClassFactory> factory;
  CoGetClassObject(classId, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, factory.PutVoid());
  return factory;
}

// A class that cannot be made, has no rank, kind or name is left out.
void AppendClass(EntryList& list, ComPtr<IClassFactory> factory, std::string progId) {
  ComPtr<IAnimFilter> probe;
  Entry entry{std::move(factory), std::move(progId), 0, 0};
  if (!entry.factory || entry.progId.empty()) return;
  if (FAILED(entry.factory->CreateInstance(nullptr, IAnimFilter::kIid, probe.PutVoid()))) return;
  if (!probe || FAILED(probe->GetOrder(&entry.order)) || FAILED(probe->GetKind(&entry.sortKey))) {
    return;
  }
  list.push_back(std::move(entry));
}

void AppendOwnClasses(EntryList& list, FilterClassTable classes) {
  for (const FilterClass& row : classes) {
    auto* factory = new platform::ClassFactory(
        [&row] { return static_cast<IUnknown*>(static_cast<IAnimFilter*>(row.make(row))); });
    AppendClass(list, ComPtr<IClassFactory>::Attach(factory), row.progId);
  }
}

bool IsOwn(FilterClassTable classes, REFCLSID classId) {
  return std::any_of(classes.begin(), classes.end(),
                     [&](const FilterClass& row) { return base::SameGuid(row.classId, classId); });
}

void AppendRegisteredClasses(EntryList& list, ICatInformation& categories, FilterClassTable own) {
  ComPtr<IEnumGUID> classes;
  GUID category = kFilterCategory;
  categories.EnumClassesOfCategories(1, &category, 0, nullptr, classes.Put());
  CLSID classId;
  while (classes && classes->Next(1, &classId, nullptr) == S_OK) {
    LPOLESTR progId = nullptr;
    if (IsOwn(own, classId) || FAILED(ProgIDFromCLSID(classId, &progId))) continue;
    std::string name = platform::TakeOleText(progId);
    AppendClass(list, FactoryOf(classId), std::move(name));
  }
}

std::shared_ptr<const EntryList> ObtainList(ICatInformation* categories, FilterClassTable own) {
  SharedList& shared = own.empty() ? registeredOnly : withOwnClasses;
  const std::lock_guard lock(shared.lock);
  if (auto known = shared.list.lock()) return known;
  auto list = std::make_shared<EntryList>();
  AppendOwnClasses(*list, own);
  if (categories) AppendRegisteredClasses(*list, *categories, own);
  std::stable_sort(list->begin(), list->end(),
                   [](const Entry& a, const Entry& b) { return a.sortKey < b.sortKey; });
  if (!list->empty()) shared.list = list;
  return list;
}

// A module that is not registered makes its chains itself.
ComPtr<IClassFactory> ChainFactory(FilterClassTable own) {
  if (own.empty()) return FactoryOf(kChainClassId);
  return ComPtr<IClassFactory>::Attach(
      new platform::ClassFactory([] { return static_cast<IUnknown*>(new CPdibFilterChain); }));
}

}  // namespace

CPdibFilterCreator::CPdibFilterCreator(FilterClassTable ownClasses) {
  ComPtr<ICatInformation> categories;
  CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER,
                   platform::IidOf<ICatInformation>(), categories.PutVoid());
  if (!categories) {
    platform::CurrentServices().desktop->ShowMessage(
        "Componenten-Manager (comcat.dll) Problem, falsche Version oder nicht registriert!",
        "Fxbox4.dll");
  }
  entries = ObtainList(categories.Get(), ownClasses);
  chainFactory = ChainFactory(ownClasses);
}

const Entry* CPdibFilterCreator::EntryAt(int index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= entries->size()) return nullptr;
  return &(*entries)[static_cast<std::size_t>(index)];
}

HRESULT CPdibFilterCreator::CreateFilter(const char* progId, REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (!progId) return E_FAIL;
  const auto found = std::find_if(entries->begin(), entries->end(),
                                  [&](const Entry& entry) { return entry.progId == progId; });
  if (found == entries->end()) return E_FAIL;
  return found->factory->CreateInstance(nullptr, iid, result);
}

HRESULT CPdibFilterCreator::CreateFilterDialog(const char* progId, std::intptr_t host, REFIID iid,
                                               void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  ComPtr<IAnimFilter> filter;
  HRESULT status = CreateFilter(progId, IAnimFilter::kIid, filter.PutVoid());
  if (FAILED(status)) return status;
  ComPtr<IAnimLinkable> dialog;
  status = filter->CreateDialog(IAnimLinkable::kIid, dialog.PutVoid());
  if (FAILED(status) || !dialog) return FAILED(status) ? status : E_NOINTERFACE;
  int linked = 0;
  dialog->Link(reinterpret_cast<IUnknown*>(host), &linked);
  return dialog->QueryInterface(iid, result);
}

HRESULT CPdibFilterCreator::GetFilterCount(int* count) {
  if (!count) return E_POINTER;
  *count = static_cast<int>(entries->size());
  return S_OK;
}

HRESULT CPdibFilterCreator::CreateFilterAt(int index, REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  const Entry* entry = EntryAt(index);
  return entry ? entry->factory->CreateInstance(nullptr, iid, result) : E_FAIL;
}

HRESULT CPdibFilterCreator::CreateChain(REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return chainFactory ? chainFactory->CreateInstance(nullptr, iid, result) : E_FAIL;
}

HRESULT CPdibFilterCreator::GetFilterInfo(int index, char* name, int size, int* order) {
  const Entry* entry = EntryAt(index);
  if (!entry) return E_FAIL;
  if (order) *order = entry->order;
  CopyParameterText(entry->progId, 0, name, size);
  return S_OK;
}
