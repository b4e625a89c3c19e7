// A counted reference to a component interface.
#pragma once

#include <unknwn.h>

#include <cstddef>
#include <utility>

#include "platform/component/InterfaceId.h"

namespace platform {

// Holds one reference, or none, and gives it back in the destructor. One thread at a time; the
// object that it points to counts safely.
template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)
  // Takes a reference of its own beside the caller's.
  explicit ComPtr(Interface* shared) : object(shared) {
    if (object) object->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.object) {}
  ComPtr(ComPtr&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
  ~ComPtr() { Reset(); }
  // Stores the new pointer before it lets go of the old one, which may call back.
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object, other.object);
    return *this;
  }

  // Takes over a reference that the caller already owns. A new object comes with one.
  static ComPtr Attach(Interface* owned) {
    ComPtr result;
    result.object = owned;
    return result;
  }
  // Asks `unknown`, which may be null, for this interface. Null where it has none.
  static ComPtr Query(IUnknown* unknown) {
    ComPtr result;
    if (unknown) unknown->QueryInterface(IidOf<Interface>(), result.PutVoid());
    return result;
  }

  // Gives the reference back now.
  void Reset() {
    if (Interface* old = std::exchange(object, nullptr)) old->Release();
  }
  // Hands the reference to the caller and holds none from then on.
  Interface* Detach() { return std::exchange(object, nullptr); }
  // Without a reference: good for as long as this one holds it.
  Interface* Get() const { return object; }
  Interface* operator->() const { return object; }
  explicit operator bool() const { return object != nullptr; }
  // The same interface pointer. Whether two interfaces are of one object, only IUnknown tells.
  bool operator==(const Interface* other) const { return object == other; }

  // For functions that write an owned reference through a pointer. What was held goes back first.
  Interface** Put() {
    Reset();
    return &object;
  }
  void** PutVoid() { return reinterpret_cast<void**>(Put()); }

 private:
  Interface* object = nullptr;
};

}  // namespace platform
