// Copies of elements between storages of any kind, through their interfaces alone.
#pragma once

#include <objidl.h>

#include <string>
#include <vector>

#include "platform/compound/ElementName.h"

namespace platform::compound {

// What a copy leaves out.
struct CopyFilter {
  bool withoutStorages = false;
  bool withoutStreams = false;
  std::vector<NameKey> names;  // directly below the source

  // `exclude` ends with null and may be null.
  static CopyFilter Of(DWORD excludedCount, const IID* excluded, SNB exclude);
};

// Merges the elements below `source` into `target`: streams replace those of their name. Throws
// Failure; what was copied before stays.
void CopyTree(IStorage* source, IStorage* target, const CopyFilter& filter);

// Copies one element, which takes the new name.
void CopyElement(IStorage* source, const OLECHAR* name, IStorage* target, const OLECHAR* newName);

}  // namespace platform::compound
