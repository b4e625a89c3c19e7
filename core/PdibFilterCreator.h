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
  struct Entry {
    platform::ComPtr<IClassFactory> factory;
    std::string progId;
    int order;
    int sortKey;
  };
  using EntryList = std::vector<Entry>;

  // With `ownClasses` their factories come first and need no registration; registered classes of
  // other modules follow. Without, the list is what is registered.
  explicit CPdibFilterCreator(FilterClassTable ownClasses = {});

  HRESULT STDMETHODCALLTYPE CreateFilter(const char* progId, REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE CreateFilterDialog(const char* progId, std::intptr_t host, REFIID iid,
                                               void** result) override;
  HRESULT STDMETHODCALLTYPE GetFilterCount(int* count) override;
  HRESULT STDMETHODCALLTYPE CreateFilterAt(int index, REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE CreateChain(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE GetFilterInfo(int index, char* name, int size, int* order) override;

 private:
  const Entry* EntryAt(int index) const;

  std::shared_ptr<const EntryList> entries;
  platform::ComPtr<IClassFactory> chainFactory;
};
