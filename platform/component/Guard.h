// The wall at every entry point: an exception becomes a status code.
#pragma once

#include <unknwn.h>

#include <new>

namespace platform {

// Runs `body`, which returns a status code, and gives its answer. A host may be written in a
// language without exceptions, so none may pass: exhausted memory gives E_OUTOFMEMORY, anything
// else E_FAIL. What `body` has written until then stays.
template <class Body>
HRESULT Guard(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace platform
