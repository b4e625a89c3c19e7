// The class object of one component class.
#pragma once

#include <functional>

#include "platform/component/ComObject.h"

namespace platform {

// Makes objects by a function that returns one with a single reference, or throws. Aggregation is
// refused. `Maker` is any callable without arguments whose result converts to IUnknown*.
class FXBOX_API ClassFactory final : public ComObject<ClassFactory, IClassFactory> {
 public:
  using Maker = std::function<IUnknown*()>;
  // The maker lives as long as the factory, and may run on any thread.
  explicit ClassFactory(Maker maker) : make(std::move(maker)) {}

  // *result is null on failure: CLASS_E_NOAGGREGATION with an outer object, E_OUTOFMEMORY or E_FAIL
  // when the maker throws, E_NOINTERFACE for an interface that the object lacks.
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) override;
  // Counts for the module, not for this factory.
  HRESULT STDMETHODCALLTYPE LockServer(BOOL keep) override;

 private:
  Maker make;
};

}  // namespace platform
