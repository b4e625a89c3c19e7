// CPdibFilterCreator: which filters exist, and how they are made.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/Export.h"
#include "core/AnimChain.h"
#include "core/FilterClass.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

// Lists every class that is registered in the category of filters, sorted by GetKind, and keeps a
// class factory of each. The category is enumerated once a process: creators share the list, and
// the last one frees it.
class FXBOX_API CPdibFilterCreator final
    : public platform::ComObject<CPdibFilterCreator, IAnimFilterCreator> {
 public:
  // What is known of a class from one object that was made of it and given back.
  struct Entry {
    platform::ComPtr<IClassFactory> factory;
    std::string progId;  // versioned
    int order;           // GetOrder
    int sortKey;         // GetKind
  };
  using EntryList = std::vector<Entry>;

  // With `ownClasses` their factories come first and need no registration; registered classes of
  // other modules follow. Without, the list is what is registered. Where the system's list of
  // categories cannot be had, a message tells the user, and the list is what is left.
  explicit CPdibFilterCreator(FilterClassTable ownClasses = {});

  HRESULT STDMETHODCALLTYPE CreateFilter(const char* progId, REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE CreateFilterDialog(const char* progId, std::intptr_t host, REFIID iid,
                                               void** result) override;
  HRESULT STDMETHODCALLTYPE GetFilterCount(int* count) override;
  HRESULT STDMETHODCALLTYPE CreateFilterAt(int index, REFIID iid, void** result) override;
  // By the registered class without own classes, else of this module.
  HRESULT STDMETHODCALLTYPE CreateChain(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE GetFilterInfo(int index, char* name, int size, int* order) override;

 private:
  // Null out of range.
  const Entry* EntryAt(int index) const;

  std::shared_ptr<const EntryList> entries;
  platform::ComPtr<IClassFactory> chainFactory;
};
