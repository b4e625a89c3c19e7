#include "core/FilterObject.h"

#include <objbase.h>

#include "core/AnimDialog.h"
#include "core/FilterIcon.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"
#include "platform/component/OleText.h"

using platform::ComPtr;
using platform::Guard;

FilterObject::FilterObject(const FilterClass& row) : classRow(row) {
  SetClassId(row.classId);
}

FilterObject::~FilterObject() = default;

void FilterObject::MapSize(int w, int h, int* inW, int* inH) {
  *inW = w;
  *inH = h;
}

HRESULT FilterObject::GetName(char* buffer, int size) {
  if (!buffer || size < 1) return S_OK;
  buffer[0] = 0;
  CopyParameterText(name.View(), 0, buffer, size);
  return S_OK;
}

HRESULT FilterObject::CreateIcon(REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (!classRow.iconName) return E_NOINTERFACE;
  return Guard([&] {
    auto icon = ComPtr<IAnimFilterIcon>::Attach(new CFilterIcon(classRow));
    const HRESULT status = icon->QueryInterface(iid, result);
    return FAILED(status) ? E_NOINTERFACE : status;
  });
}

HRESULT FilterObject::GetOrder(int* result) {
  if (!result) return E_POINTER;
  *result = classRow.order;
  return S_OK;
}

HRESULT FilterObject::GetKind(int* kind) {
  if (!kind) return E_POINTER;
  *kind = classRow.sortKey;
  return S_OK;
}

bool FilterObject::IsThis(IUnknown* other) {
  return ComPtr<IUnknown>::Query(other) == static_cast<IAnimFilter*>(this);
}

HRESULT FilterObject::CreateDialog(REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return Guard([&] {
    const core::DialogMaker make = core::CurrentDialogMaker();
    const auto dialog = ComPtr<IUnknown>::Attach(make ? make(classRow.progId) : nullptr);
    return dialog ? dialog->QueryInterface(iid, result) : E_NOINTERFACE;
  });
}

HRESULT FilterObject::SetClassId(REFCLSID newClassId) {
  return Guard([&] {
    classId = newClassId;
    LPOLESTR progId = nullptr;
    if (SUCCEEDED(ProgIDFromCLSID(newClassId, &progId))) {
      name = platform::TakeOleText(progId).c_str();
    } else if (base::SameGuid(newClassId, classRow.classId)) {
      // A class of this module knows its name without being registered.
      name = classRow.progId;
    } else {
      name.Empty();
    }
    return S_OK;
  });
}

HRESULT FilterObject::SetNamedValue(const char* key, const char* value) {
  if (!key || !value) return E_POINTER;
  return Guard([&] {
    const auto held = HoldState();
    namedValues[key] = value;
    return S_OK;
  });
}

HRESULT FilterObject::GetNamedValue(const char* key, char* buffer, int size) {
  if (!key || !buffer) return E_POINTER;
  return Guard([&] {
    const auto held = HoldState();
    const auto found = namedValues.find(key);
    if (size < 1 || found == namedValues.end() || found->second.GetLength() >= size) return E_FAIL;
    CopyParameterText(found->second.View(), 0, buffer, size);
    return S_OK;
  });
}

HRESULT FilterObject::GetRowReach(int* rows, bool* readsAll) {
  constexpr HRESULT kOnePull = 1;
  if (!rows || !readsAll) return E_POINTER;
  return Guard([&] {
    const std::optional<RowReach> reach = Reach();
    if (!reach) return kOnePull;
    *rows = reach->rows;
    *readsAll = reach->readsAll;
    return S_OK;
  });
}
