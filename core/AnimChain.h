// The interfaces of the chain and of the creator of filters.
#pragma once

#include <unknwn.h>

#include <cstdint>

#include "base/Guid.h"

struct IAnimFilterCreator;

inline constexpr CLSID kChainClassId = base::Guid("{6E280DD9-4FF3-4EB6-8B56-F7C45A43C51E}");
inline constexpr CLSID kCreatorClassId = base::Guid("{8E1F6E0B-53C7-4E0C-A7C8-1B5D0B2F4A96}");
// The component category of picture filters.
inline constexpr GUID kFilterCategory = base::Guid("{50988255-CF5D-4E19-85BF-9E17ED51FF1D}");
inline constexpr char kFilterCategoryDescription[] = "Ostvale Works - Filter";

// An ordered run of filters between a source and a destination. One thread at a time. A host's
// filter that throws out of a changing operation has its exception passed on after the chain is
// unlocked.
struct IAnimFilterChain : IUnknown {
  static constexpr IID kIid = base::Guid("{D3B7A9C4-3E52-4F0A-B6D1-90A5C7E81F24}");

  // The ends, which are linked to the outer filters, or to each other where there are none; null
  // takes an end away. A filter of the chain itself is refused with E_INVALIDARG.
  virtual HRESULT STDMETHODCALLTYPE SetSource(IUnknown* source) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* destination) = 0;
  // The number of filters, both ends not counted.
  virtual HRESULT STDMETHODCALLTYPE GetCount(int* count) = 0;
  // The filter at a place, from the source's side on; a negative index gives the last one. E_FAIL
  // and a null result when there is no such filter.
  virtual HRESULT STDMETHODCALLTYPE GetAt(int index, REFIID iid, void** result) = 0;
  // The first filter of this name. 1, and *result untouched, when there is none.
  virtual HRESULT STDMETHODCALLTYPE FindByName(const char* name, REFIID iid, void** result) = 0;
  // Places by GetOrder, behind filters of the same rank.
  virtual HRESULT STDMETHODCALLTYPE Insert(IUnknown* filter) = 0;
  // Places ahead of the filter that has this index, whatever the ranks; at the end where there is
  // none. E_FAIL for null.
  virtual HRESULT STDMETHODCALLTYPE InsertAt(int index, IUnknown* filter) = 0;
  virtual HRESULT STDMETHODCALLTYPE RemoveAll() = 0;
  // E_FAIL when there is no such filter.
  virtual HRESULT STDMETHODCALLTYPE RemoveAt(int index) = 0;
  // Removes all filters of a name; none is no failure. The first form locks the chain meanwhile,
  // the second leaves that to the caller.
  virtual HRESULT STDMETHODCALLTYPE RemoveByNameLocked(const char* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE RemoveByName(const char* name) = 0;
  // Locks and unlocks.
  virtual HRESULT STDMETHODCALLTYPE TouchChain(std::intptr_t a, std::intptr_t b) = 0;
  // Name, `open`, parameters, `close` of each filter in turn. E_FAIL, and nothing written, when the
  // text is not shorter than `size`. `active` prints what the pulls work with.
  virtual HRESULT STDMETHODCALLTYPE GetChainText(char* buffer, int size, const char* open,
                                                 const char* close, bool active) = 0;
  // Turns the chain into the one that the text describes, with as few changes as possible. What the
  // creator does not know is left out. The first form locks, the second does not.
  virtual HRESULT STDMETHODCALLTYPE SetChainTextLocked(const char* text, const char* open,
                                                       const char* close,
                                                       IAnimFilterCreator* creator) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetChainText(const char* text, const char* open,
                                                 const char* close,
                                                 IAnimFilterCreator* creator) = 0;
  // Sets parameters by filter name and inserts what is missing; the rest stays. 1 when an item
  // failed.
  virtual HRESULT STDMETHODCALLTYPE UpdateChain(const char* text, const char* open,
                                                const char* close, IAnimFilterCreator* creator) = 0;
  // The argument itself as a status.
  virtual HRESULT STDMETHODCALLTYPE CheckArgument(std::intptr_t argument) = 0;

 protected:
  ~IAnimFilterChain() = default;
};

// Knows which filters exist and makes them by ProgID. One thread at a time.
struct IAnimFilterCreator : IUnknown {
  static constexpr IID kIid = base::Guid("{A95D1F7E-6B0C-4D43-8A2E-5F9C3E7D1B68}");

  // By the exact versioned ProgID; E_FAIL for an unknown one.
  virtual HRESULT STDMETHODCALLTYPE CreateFilter(const char* progId, REFIID iid, void** result) = 0;
  // The dialog of a filter class, given `host` for its first operation.
  virtual HRESULT STDMETHODCALLTYPE CreateFilterDialog(const char* progId, std::intptr_t host,
                                                       REFIID iid, void** result) = 0;
  // How many classes there are; both operations below take an index under it.
  virtual HRESULT STDMETHODCALLTYPE GetFilterCount(int* count) = 0;
  // By position in the sorted list; E_FAIL out of range.
  virtual HRESULT STDMETHODCALLTYPE CreateFilterAt(int index, REFIID iid, void** result) = 0;
  // A new, empty chain.
  virtual HRESULT STDMETHODCALLTYPE CreateChain(REFIID iid, void** result) = 0;
  // The ProgID, when it is shorter than `size` (nothing is written otherwise), and the rank.
  virtual HRESULT STDMETHODCALLTYPE GetFilterInfo(int index, char* name, int size, int* order) = 0;

 protected:
  ~IAnimFilterCreator() = default;
};
