// Reference counting and QueryInterface, written once for every component class.
#pragma once

#include <unknwn.h>

#include <atomic>

#include "platform/component/InterfaceId.h"
#include "platform/component/ModuleLock.h"

namespace platform {

// Derive as `class CThing : public ComObject<CThing, IFirst, ISecond>`. The object starts with one
// reference, which belongs to its maker, and deletes itself with the last. IUnknown is the first
// interface, so that a host that asks for IUnknown alone holds a usable table. The class declares
// no virtual function of its own: the first slots behind the interface belong to the derived class.
template <class Derived, class First, class... Others>
class ComObject : public First, public Others... {
 public:
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  // A further reference to the interface with this id; E_NOINTERFACE, and null, where the class has
  // none. The answer for an id never changes.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    if (!result) return E_POINTER;
    *result = Find(iid);
    if (!*result) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  // Both give the count that is left, for tests: other threads may have changed it already. The
  // thread that gives back the last reference destroys the object.
  ULONG STDMETHODCALLTYPE AddRef() override {
    return references.fetch_add(1, std::memory_order_relaxed) + 1;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete static_cast<Derived*>(this);
    return left;
  }

 protected:
  ComObject() = default;
  ~ComObject() = default;

 private:
  // Null where the class has no such interface.
  void* Find(REFIID iid) {
    if (base::SameGuid(iid, IID_IUnknown)) return static_cast<First*>(this);
    void* found = nullptr;
    Match<First>(iid, found);
    (Match<Others>(iid, found), ...);
    return found;
  }
  template <class Interface>
  void Match(REFIID iid, void*& found) {
    if (!found && base::SameGuid(iid, IidOf<Interface>())) found = static_cast<Interface*>(this);
  }

  std::atomic<ULONG> references{1};
  [[no_unique_address]] ModuleLock moduleLock;  // the module stays while the object lives
};

}  // namespace platform
