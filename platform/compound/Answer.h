// What the entry points of this folder have in common.
#pragma once

#include <objidl.h>

#include <new>
#include <string_view>

#include "platform/compound/Format.h"

namespace platform::compound {

// Runs `body`; what it throws becomes a status code.
template <class Body>
HRESULT Answer(Body&& body) noexcept {
  try {
    body();
    return S_OK;
  } catch (const Failure& failure) {
    return failure.code;
  } catch (const std::bad_alloc&) {
    return STG_E_INSUFFICIENTMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

// The same for one that makes an object: `*result` is what `make` gives, or null.
template <class Interface, class Make>
HRESULT Give(Interface** result, Make&& make) noexcept {
  if (!result) return STG_E_INVALIDPOINTER;
  *result = nullptr;
  return Answer([&] { *result = make(); });
}

inline constexpr DWORD kAccessBits = 3;
inline constexpr DWORD kShareBits = 0x70;

// A copy that the caller frees with CoTaskMemFree.
LPOLESTR GiveName(std::u16string_view name);
// Fills in what an element says about itself; the name unless the flags leave it out.
STATSTG StatOf(const Entry& entry, DWORD mode, DWORD flags);

}  // namespace platform::compound
