// The filters that can be chosen, as the person sees them: names, icons, groups.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/AnimChain.h"
#include "picture/MemoryPicture.h"

namespace desk {

struct CatalogEntry {
  std::string progId;
  std::string name;   // UTF-8, as are gloss and group
  std::string gloss;  // what it does
  std::string group;
  std::string preview;                        // see host::FilterFacts
  std::string start;                          // parameters of a new one
  int order = 0;                              // its rank in a chain
  std::shared_ptr<const MemoryPicture> icon;  // null where it has none
};

// Read once. Threads may share it when it is made.
class FilterCatalog {
 public:
  explicit FilterCatalog(IAnimFilterCreator& creator);

  // Group by group.
  const std::vector<CatalogEntry>& Entries() const { return entries; }
  // Null for a class that is not there.
  const CatalogEntry* Find(const std::string& progId) const;
  // The name of a class, or its ProgID where it is not known.
  std::string NameOf(const std::string& progId) const;
  // The entries whose name, gloss or ProgID holds all words of the search, without case.
  std::vector<const CatalogEntry*> Search(const std::string& words) const;

 private:
  std::vector<CatalogEntry> entries;
};

}  // namespace desk
