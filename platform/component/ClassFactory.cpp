#include "platform/component/ClassFactory.h"

#include "platform/component/Guard.h"

namespace platform {

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (outer) return CLASS_E_NOAGGREGATION;
  return Guard([&] {
    IUnknown* object = make();
    const HRESULT status = object->QueryInterface(iid, result);
    object->Release();
    return status;
  });
}

HRESULT ClassFactory::LockServer(BOOL keep) {
  keep ? ModuleLock::Add() : ModuleLock::Remove();
  return S_OK;
}

}  // namespace platform
