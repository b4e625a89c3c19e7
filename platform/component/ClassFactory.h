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
  explicit ClassFactory(Maker maker) : make(std::move(maker)) {}

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL keep) override;

 private:
  Maker make;
};

}  // namespace platform
