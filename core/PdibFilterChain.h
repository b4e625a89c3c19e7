// CPdibFilterChain: an ordered run of filters between a source and a destination.
#pragma once

#include "base/Export.h"
#include "core/AnimChain.h"
#include "core/AnimInterfaces.h"
#include "core/ChainText.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

// The chain holds no list: it is the links of the filters themselves, and the object keeps the two
// ends, the first filter and a cursor. Each further filter lives by its neighbours' references. One
// thread at a time; the destination is told Lock and Unlock around changes, so that its host stops
// pulling.
//
// The operations do what core/AnimChain.h says of them. SetDestination, RemoveByName and
// SetChainText leave the lock to the caller. What a host's filter throws is logged and passed on,
// after the unlock.
class FXBOX_API CPdibFilterChain final
    : public platform::ComObject<CPdibFilterChain, IAnimFilterChain> {
 public:
  // Empty, and without ends.
  CPdibFilterChain() = default;
  // Takes all filters out, so that what nobody else holds is freed.
  ~CPdibFilterChain();

  // Where no filter stands between them, the ends are linked to each other.
  HRESULT STDMETHODCALLTYPE SetSource(IUnknown* newSource) override;
  HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* newDestination) override;
  // Walks from the first filter on, as all look-ups do: the time grows with the length.
  HRESULT STDMETHODCALLTYPE GetCount(int* count) override;
  HRESULT STDMETHODCALLTYPE GetAt(int index, REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE FindByName(const char* name, REFIID iid, void** result) override;
  // E_INVALIDARG for a filter that stands in this chain already.
  HRESULT STDMETHODCALLTYPE Insert(IUnknown* filter) override;
  HRESULT STDMETHODCALLTYPE InsertAt(int index, IUnknown* filter) override;
  // The neighbours of what is taken out are linked to each other, the ends included.
  HRESULT STDMETHODCALLTYPE RemoveAll() override;
  HRESULT STDMETHODCALLTYPE RemoveAt(int index) override;
  HRESULT STDMETHODCALLTYPE RemoveByNameLocked(const char* name) override;
  HRESULT STDMETHODCALLTYPE RemoveByName(const char* name) override;
  HRESULT STDMETHODCALLTYPE TouchChain(std::intptr_t a, std::intptr_t b) override;
  // A filter without the parameter interface is left out.
  HRESULT STDMETHODCALLTYPE GetChainText(char* buffer, int size, const char* open,
                                         const char* close, bool active) override;
  // A source without a destination becomes both ends: its host serves them with one object. A class
  // that stands twice in the text and not yet in the chain is made once.
  HRESULT STDMETHODCALLTYPE SetChainTextLocked(const char* text, const char* open,
                                               const char* close,
                                               IAnimFilterCreator* creator) override;
  HRESULT STDMETHODCALLTYPE SetChainText(const char* text, const char* open, const char* close,
                                         IAnimFilterCreator* creator) override;
  HRESULT STDMETHODCALLTYPE UpdateChain(const char* text, const char* open, const char* close,
                                        IAnimFilterCreator* creator) override;
  HRESULT STDMETHODCALLTYPE CheckArgument(std::intptr_t argument) override;

 private:
  class Locked;
  // What an item of a chain text asks of the filter at its place.
  enum class Step { Same, Update, Drop, Create, Append };

  // Walking. The cursor is not counted; null is the end of the run.
  IAnimFilter* GoFirst();
  IAnimFilter* GoNext();
  IAnimFilter* GoPrevious();
  IAnimFilter* GoLast();
  // A negative index gives the last filter. `count` ends as the number of filters visited.
  IAnimFilter* FindAt(int index, int& count);
  // The first one; null, and no cursor, when there is none.
  IAnimFilter* FindNamed(const char* name);
  bool Holds(IUnknown* filter);

  // Whether an object can be inserted, and its filter interface.
  HRESULT Accept(IUnknown* filter, platform::ComPtr<IAnimFilter>& accepted);
  // Only where there is no filter between them.
  void LinkEnds();
  void InsertFirst(IAnimFilter* filter);
  void InsertBehindCursor(IAnimFilter* filter);
  void InsertLast(IAnimFilter* filter);
  void InsertBeforeCursor(IAnimFilter* filter);
  // Behind those of the same rank.
  void InsertByOrder(IAnimFilter* filter);
  // Takes the cursor's filter out; its successor becomes the cursor.
  IAnimFilter* RemoveCursor();
  // The filter, if any, and all behind it.
  void RemoveFrom(IAnimFilter* filter);

  Step Decide(int position, const ChainTextItem& item);
  void Apply(Step step, const ChainTextItem& item, IAnimFilterCreator* creator);
  // Gives the parameters to the filter of this name, or inserts a new one by its rank.
  HRESULT UpdateItem(const ChainTextItem& item, IAnimFilterCreator* creator);

  // Tell the destination, if there is one; the second only when the first has.
  void ChainLock();
  void ChainUnlock();

  platform::ComPtr<IAnimFilterDestCallsThis> source;
  platform::ComPtr<IAnimFilterSrcCallsThis> destination;
  platform::ComPtr<IAnimFilter> first;
  IAnimFilter* current = nullptr;
  bool locked = false;
};
