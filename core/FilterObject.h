// FilterObject: what every filter object is, before it has any picture: its class, its name, its
// icon, its count.
#pragma once

#include <map>
#include <mutex>
#include <optional>

#include "base/Export.h"
#include "base/KvString.h"
#include "core/AnimInterfaces.h"
#include "core/AnimRowLender.h"
#include "core/AnimRowReach.h"
#include "core/FilterClass.h"
#include "core/FilterLocks.h"
#include "platform/component/ComObject.h"

// The base of CPdibFilter, from which a filter derives, and of filters that are made of others. A
// class row makes one with a single reference; the last Release destroys it. Any thread.
class FXBOX_API FilterObject
    : public platform::ComObject<FilterObject, IAnimFilter, IAnimFilterSrcCallsThis,
                                 IAnimFilterDestCallsThis, IAnimFilterParameter, IAnimRowReach,
                                 IAnimRowLender> {
 public:
  // These four stand behind the slots of IAnimFilter, in this order.
  //
  // True when the pending parameters differ from the active ones.
  virtual bool IsDirty() = 0;
  // Makes the pending parameters active and computes the size of the output.
  virtual void Commit() = 0;
  // The input size, in pixels, that an output of w by h needs; the same where a class does not say.
  virtual void MapSize(int w, int h, int* inW, int* inH);
  virtual ~FilterObject();

  HRESULT STDMETHODCALLTYPE GetName(char* buffer, int size) override;
  // Filled from the class row, as kind and order are. A row without `iconName` has no icon.
  HRESULT STDMETHODCALLTYPE CreateIcon(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE GetOrder(int* result) override;
  HRESULT STDMETHODCALLTYPE GetKind(int* kind) override;
  HRESULT STDMETHODCALLTYPE CreateDialog(REFIID iid, void** result) override;
  // A class that is registered nowhere has no name, but for the one of the row.
  HRESULT STDMETHODCALLTYPE SetClassId(REFCLSID newClassId) override;

  HRESULT STDMETHODCALLTYPE SetNamedValue(const char* key, const char* value) override;
  HRESULT STDMETHODCALLTYPE GetNamedValue(const char* key, char* buffer, int size) override;

  HRESULT STDMETHODCALLTYPE GetRowReach(int* rows, bool* readsAll) override;

 protected:
  // What IAnimRowReach tells of the class with its active parameters; nothing where the result
  // depends on the rectangle that is asked for.
  struct RowReach {
    int rows = 0;
    bool readsAll = false;
  };
  virtual std::optional<RowReach> Reach() { return std::nullopt; }

  // `row` lives as long as the library.
  explicit FilterObject(const FilterClass& row);

  // For everything that reads or writes fields and may run beside another thread; a class guards
  // its own with it.
  [[nodiscard]] std::unique_lock<StateLock> HoldState() const { return std::unique_lock(state); }

  // A filter linked to itself would pull itself without end.
  bool IsThis(IUnknown* other);

  const FilterClass& classRow;
  KvString name;
  CLSID classId = {};
  mutable StateLock state;

 private:
  std::map<KvString, KvString> namedValues;
};
