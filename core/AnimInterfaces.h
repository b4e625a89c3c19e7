// The four interfaces of a filter: two flows along a chain, parameters, and the filter itself.
#pragma once

#include <unknwn.h>

#include <cstdint>

#include "base/Guid.h"

// The system's window header turns this name, which is a slot below, into a macro.
#undef CreateDialog

// Filters form a doubly linked list: a picture source at the head, filters, a destination at the
// tail. Information (sizes, offsets, zoom) runs downstream from source to destination, requests run
// upstream. Nothing moves until the destination pulls.
//
// All operations answer a status code, 0 for success. Sizes and offsets are pixels; vertical
// coordinates grow upwards from the picture's bottom row. Texts are zero-terminated, in the
// system's code page. Pointers given in stay the caller's; interface pointers handed out carry a
// reference. The order of the operations is the order of the table slots, behind the three of
// IUnknown. No operation throws.
//
// Threads: any thread may call any operation. A host pulls rows in one thread while another sets
// parameters; linking and pulling at the same time is the host's to prevent (Lock, Unlock).

struct IAnimFilter : IUnknown {
  static constexpr IID kIid = base::Guid("{22E7124D-0B5A-449C-BC15-213E7B98324B}");

  // The ProgID, when it is shorter than `size`; an empty text otherwise.
  virtual HRESULT STDMETHODCALLTYPE GetName(char* buffer, int size) = 0;
  // A new icon object of the class. E_NOINTERFACE and a null result when the class has none.
  virtual HRESULT STDMETHODCALLTYPE CreateIcon(REFIID iid, void** result) = 0;
  // The rank by which a chain places the filter: 200 (crop) to 9500 (shadow), 5000 for most.
  virtual HRESULT STDMETHODCALLTYPE GetOrder(int* order) = 0;
  // The constant by which lists of classes are sorted.
  virtual HRESULT STDMETHODCALLTYPE GetKind(int* kind) = 0;
  // The neighbours. E_NOINTERFACE and a null result without one.
  virtual HRESULT STDMETHODCALLTYPE GetDestination(REFIID iid, void** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSource(REFIID iid, void** result) = 0;
  // Link both directions at once; null clears this side only.
  virtual HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* destination) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSource(IUnknown* source) = 0;
  // A new dialog object of the class, which knows the ProgID. E_NOINTERFACE when the class has
  // none.
  virtual HRESULT STDMETHODCALLTYPE CreateDialog(REFIID iid, void** result) = 0;
  // Stores the class id and takes the name from the class registry.
  virtual HRESULT STDMETHODCALLTYPE SetClassId(REFCLSID classId) = 0;

 protected:
  ~IAnimFilter() = default;
};

// What the source calls on the filter.
struct IAnimFilterSrcCallsThis : IUnknown {
  static constexpr IID kIid = base::Guid("{96AFC5EB-1824-4836-BA35-580C975723F3}");

  // The source's picture: its size, where its shown part lies, and how large that part is. They
  // count from the next Prepare on.
  virtual HRESULT STDMETHODCALLTYPE SetPictureSize(int width, int height) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetOffset(int x, int y) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetExtent(int width, int height) = 0;
  // The size of the same picture at full resolution.
  virtual HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) = 0;
  // At what size the picture is wanted; -1, -1 when nobody says. `aspect` is width over height.
  virtual HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) = 0;
  // Size of the picture over its full size, 1.0 being that: what counts in pixels scales by it.
  virtual HRESULT STDMETHODCALLTYPE SetZoom(double zoom) = 0;
  // A pair of numbers on its way to the destination, and one from there.
  virtual HRESULT STDMETHODCALLTYPE SetMark(int a, int b) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) = 0;
  // The chain is about to change, and has changed: the destination stops pulling meanwhile.
  virtual HRESULT STDMETHODCALLTYPE Lock() = 0;
  virtual HRESULT STDMETHODCALLTYPE Unlock() = 0;
  // Stores the source without calling it back.
  virtual HRESULT STDMETHODCALLTYPE AttachSource(IUnknown* source) = 0;
  // Asks the host at the tail to fill in the variables of a text, UTF-8 both ways. The answer
  // belongs to the caller, who frees it with CoTaskMemFree; a host that has none to give leaves
  // `expanded` alone.
  virtual HRESULT STDMETHODCALLTYPE ExpandText(const char* text, char** expanded) = 0;
  // Asks the host for the scale at which it prints.
  virtual HRESULT STDMETHODCALLTYPE QueryPrintScale(double* scale) = 0;
  // Numbers that only the host knows the meaning of.
  virtual HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t a, std::intptr_t b,
                                              std::intptr_t c) = 0;
  virtual HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t a) = 0;
  virtual HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t a) = 0;

 protected:
  ~IAnimFilterSrcCallsThis() = default;
};

// What the destination calls on the filter.
struct IAnimFilterDestCallsThis : IUnknown {
  static constexpr IID kIid = base::Guid("{4D415C7B-8861-4493-9FE9-758211924508}");

  // Fills the rectangle of `width` by `height` pixels with the corner srcX, srcY of this filter's
  // output into rows that the caller owns: picture row srcY + i lands in colourRows[destY + i] from
  // byte 3 * destX on and in maskRows[destY + i] from byte destX on. 0 when complete; another value
  // when the pull stopped, and the rows are then incomplete.
  virtual HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                             int height, BYTE** colourRows, BYTE** maskRows) = 0;
  // Stops a pull at its next row, in every stage up to the source. Stays until it is called with
  // false.
  virtual HRESULT STDMETHODCALLTYPE SetAbort(bool abort) = 0;
  // Commits pending parameters along the whole chain and tells sizes downstream. Sets *changed when
  // the picture differs from the one of *revision, and brings *revision up to date.
  virtual HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* revision, bool trackRevision) = 0;
  // Prepares, then tells the output's size, offset and extent.
  virtual HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                            int* extentWidth, int* extentHeight) = 0;
  // Stores the destination without calling it back.
  virtual HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* destination) = 0;
  // Takes one pixel (blue, green, red, mask: 4 bytes) through source and filter.
  virtual HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) = 0;
  // A message record on its way to the source.
  virtual HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t message) = 0;

 protected:
  ~IAnimFilterDestCallsThis() = default;
};

struct IAnimFilterParameter : IUnknown {
  static constexpr IID kIid = base::Guid("{663A199C-2C80-4070-8D31-B24C5F3E7305}");

  // Reads a parameter text into the pending fields; items that it lacks leave theirs alone.
  virtual HRESULT STDMETHODCALLTYPE SetParameter(const char* text, int flag) = 0;
  // Print the pending fields, and those that a pull works with. A buffer that is too small stays
  // unwritten, and the answer is 0 all the same.
  virtual HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) = 0;
  // Any text that a host wants to keep with the filter. E_FAIL when the key is absent or the value
  // is not shorter than `size`.
  virtual HRESULT STDMETHODCALLTYPE SetNamedValue(const char* key, const char* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetNamedValue(const char* key, char* buffer, int size) = 0;

 protected:
  ~IAnimFilterParameter() = default;
};
