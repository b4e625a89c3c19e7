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

// What a host's page may offer to show the pictures of icons. IAnimLinkable::Link asks the page for
// it and calls it on the same thread; a page without it goes without pictures.
struct IAnimIconPage : IUnknown {
  static constexpr IID kIid = base::Guid("{0E5B2D94-7C41-4F7B-8E0A-3B9B61D0C2A7}");

  // Packed bitmaps of the same size, which belong to the caller and live as long as the call:
  // `colour` of 24 bits, `mask` of 8, in which 0 is opaque and 255 shows the ground. `name` is that
  // of the icon, with "_foc" behind it for the picture that is shown while the icon has the focus.
  virtual HRESULT STDMETHODCALLTYPE SetIconPicture(const char* name, const void* colour,
                                                   std::uint32_t colourBytes, const void* mask,
                                                   std::uint32_t maskBytes) = 0;

 protected:
  ~IAnimIconPage() = default;
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
