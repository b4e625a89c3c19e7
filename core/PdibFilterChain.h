// CPdibFilterChain: an ordered run of filters between a source and a destination.
#pragma once

#include "base/Export.h"
#include "core/AnimChain.h"
#include "core/AnimInterfaces.h"
#include "core/ChainText.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

// The chain holds no list: it is the links of the filters themselves, and the object keeps the two
// ends, the first filter and a cursor. Each further filter lives by its neighbours' references. All
// operations are the host's, on one thread at a time. The destination is told Lock and Unlock
// around changes, so that its host stops pulling; the three operations that leave this to the
// caller say so.
//
// The operations keep the promises of core/AnimChain.h. They walk from the first filter on, so that
// their time grows with the length. What a filter of a host throws out of an operation that changes
// the chain is logged and passed on, after the unlock; out of one that only looks it becomes a
// failure code.
class FXBOX_API CPdibFilterChain final
    : public platform::ComObject<CPdibFilterChain, IAnimFilterChain> {
 public:
  // Empty, and without ends.
  CPdibFilterChain() = default;
  // Takes all filters out, so that what nobody else holds is freed.
  ~CPdibFilterChain();

  // Makes an object the head, which rows come from, and links it to the first filter; null takes
  // the head away. Where no filter stands between them, the ends are linked to each other.
  // E_INVALIDARG for a filter of this chain, which would close the links to a ring.
  HRESULT STDMETHODCALLTYPE SetSource(IUnknown* newSource) override;
  // Makes an object the tail, which pulls, in the same manner. The lock is left to the caller.
  HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* newDestination) override;
  // Counts the filters. E_POINTER without a place for the number.
  HRESULT STDMETHODCALLTYPE GetCount(int* count) override;
  // Hands out the filter at a place. E_FAIL where there is none, and what QueryInterface answers
  // for an interface that it lacks.
  HRESULT STDMETHODCALLTYPE GetAt(int index, REFIID iid, void** result) override;
  // Hands out the first filter with this ProgID. 1, which is no failure, where there is none.
  HRESULT STDMETHODCALLTYPE FindByName(const char* name, REFIID iid, void** result) override;
  // Inserts a filter by its rank and holds a reference. E_FAIL for null, E_NOINTERFACE for what is
  // no filter, E_INVALIDARG for one that stands in this chain already; the chain is then as it was.
  HRESULT STDMETHODCALLTYPE Insert(IUnknown* filter) override;
  // Inserts a filter at a place, with the same failures.
  HRESULT STDMETHODCALLTYPE InsertAt(int index, IUnknown* filter) override;
  // Takes out all filters and links the ends to each other. A filter that somebody else holds lives
  // on, unlinked.
  HRESULT STDMETHODCALLTYPE RemoveAll() override;
  // Takes out the filter at a place and links its neighbours, the ends included. E_FAIL where there
  // is none.
  HRESULT STDMETHODCALLTYPE RemoveAt(int index) override;
  // Takes out all filters with this ProgID, under one lock. E_POINTER for null.
  HRESULT STDMETHODCALLTYPE RemoveByNameLocked(const char* name) override;
  // The same, with the lock left to the caller.
  HRESULT STDMETHODCALLTYPE RemoveByName(const char* name) override;
  // Tells the destination Lock and Unlock, which makes its host look again. The numbers mean
  // nothing.
  HRESULT STDMETHODCALLTYPE TouchChain(std::intptr_t a, std::intptr_t b) override;
  // Writes the chain as a text; a filter without the parameter interface is left out. E_POINTER for
  // a null text, E_FAIL where the buffer is too small, which then stays as it was.
  HRESULT STDMETHODCALLTYPE GetChainText(char* buffer, int size, const char* open,
                                         const char* close, bool active) override;
  // Makes the chain the one of a text, under one lock. What the creator cannot make is left out,
  // which is no failure.
  HRESULT STDMETHODCALLTYPE SetChainTextLocked(const char* text, const char* open,
                                               const char* close,
                                               IAnimFilterCreator* creator) override;
  // The same, with the lock left to the caller. A source without a destination becomes both ends:
  // its host serves them with one object. A class that stands twice in the text and not yet in the
  // chain is made once.
  HRESULT STDMETHODCALLTYPE SetChainText(const char* text, const char* open, const char* close,
                                         IAnimFilterCreator* creator) override;
  // Gives parameters to the filters that a text names and inserts those that are missing, with a
  // lock for each. Nothing happens where an argument is null or empty. 1 when an item failed; the
  // others are done.
  HRESULT STDMETHODCALLTYPE UpdateChain(const char* text, const char* open, const char* close,
                                        IAnimFilterCreator* creator) override;
  // Answers the argument itself as a status, cut to 32 bits.
  HRESULT STDMETHODCALLTYPE CheckArgument(std::intptr_t argument) override;

 private:
  class Locked;
  // What an item of a chain text asks of the filter at its place.
  enum class Step { Same, Update, Drop, Create, Append };

  // Each moves the cursor, which holds no reference, and gives the filter it is on; null is the end
  // of the run.
  IAnimFilter* GoFirst();
  IAnimFilter* GoNext();
  IAnimFilter* GoPrevious();
  IAnimFilter* GoLast();
  // A negative index gives the last filter. `count` ends as the number of filters visited.
  IAnimFilter* FindAt(int index, int& count);
  // The first one; null, and no cursor, when there is none.
  IAnimFilter* FindNamed(const char* name);
  // Whether this very object stands in the chain, by whichever of its interfaces. Moves the cursor.
  bool Holds(IUnknown* filter);

  // Whether an object can be inserted, and its filter interface.
  HRESULT Accept(IUnknown* filter, platform::ComPtr<IAnimFilter>& accepted);
  // Links source and destination, where no filter stands between them.
  void LinkEnds();
  // Each links a filter to its neighbours at the place that it is named after.
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

  // What an item of a text asks of the filter at its position, on which the cursor then is.
  Step Decide(int position, const ChainTextItem& item);
  // Does it.
  void Apply(Step step, const ChainTextItem& item, IAnimFilterCreator* creator);
  // Gives the parameters to the filter of this name, or inserts a new one by its rank.
  HRESULT UpdateItem(const ChainTextItem& item, IAnimFilterCreator* creator);

  // Tells the destination, if there is one.
  void ChainLock();
  // The same, only when ChainLock has told one.
  void ChainUnlock();

  platform::ComPtr<IAnimFilterDestCallsThis> source;
  platform::ComPtr<IAnimFilterSrcCallsThis> destination;
  platform::ComPtr<IAnimFilter> first;
  IAnimFilter* current = nullptr;
  bool locked = false;
};
