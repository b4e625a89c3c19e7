// The small object that stands for a filter in a host's lists.
#pragma once

#include <unknwn.h>

#include <cstdint>

#include "base/Guid.h"

class KvString;

// An object that a host takes into its page.
struct IAnimLinkable : IUnknown {
  static constexpr IID kIid = base::Guid("{5B0E1C36-7A5D-4C1E-9D0C-2C8F6A8B41E7}");

  // *status, when given, becomes 0, or -1 when the host lacks a required interface.
  virtual HRESULT STDMETHODCALLTYPE Link(IUnknown* host, int* status) = 0;
  virtual HRESULT STDMETHODCALLTYPE Unlink() = 0;

 protected:
  ~IAnimLinkable() = default;
};

struct IAnimFilterIcon : IUnknown {
  static constexpr IID kIid = base::Guid("{C2A4A3B1-0F0E-4E1B-8D8B-6C5B0C9C7E52}");

  virtual HRESULT STDMETHODCALLTYPE IconCall1(std::intptr_t a, std::intptr_t b) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLabel(char* buffer, int size) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLongLabel(char* buffer, int size) = 0;
  virtual HRESULT STDMETHODCALLTYPE IconCall4() = 0;
  // Knows "Name" and "IsActive".
  virtual HRESULT STDMETHODCALLTYPE GetAttribute(const char* name, char* buffer, int size) = 0;
  // The display name, when it is shorter than `size`.
  virtual HRESULT STDMETHODCALLTYPE GetDisplayName(char* buffer, int size) = 0;
  // Construct a string in `result`, which the caller destroys, and return it. Written in this form
  // a slot that returns a string is the same for every compiler.
  virtual KvString* STDMETHODCALLTYPE GetIconName(KvString* result) = 0;
  virtual KvString* STDMETHODCALLTYPE GetNameKey(KvString* result) = 0;
  virtual bool STDMETHODCALLTYPE IsDefaultActive() = 0;

 protected:
  ~IAnimFilterIcon() = default;
};
