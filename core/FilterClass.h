// One row of the class table: everything that is known of a filter class without making an object.
#pragma once

#include <unknwn.h>

#include <span>
#include <vector>

#include "core/ParameterText.h"

class FilterObject;

// All texts live as long as the library; a text that the class does not have is null.
struct FilterClass {
  int sortKey = 0;                  // GetKind, and the order of lists
  const char* className = nullptr;  // "CSepiaFilter"
  const char* progId = nullptr;     // versioned
  CLSID classId = {};
  int order = 0;  // GetOrder
  const char* iconName = nullptr;
  const char* nameKey = nullptr;  // key of the display name in the host's string table
  const char* helpKey = nullptr;
  const char* defaultText = nullptr;  // what a new dialog shows
  const char* gloss = nullptr;        // what it does, in a few English words
  // Parameters that show what the class does; null where its first key alone shows that.
  const char* example = nullptr;
  // A new filter with one reference, which is the caller's.
  FilterObject* (*make)(const FilterClass& row) = nullptr;
  // The keys of the parameter text.
  std::vector<ParameterDescription> (*describe)() = nullptr;
};

// What the row of a class whose constructor takes its row makes.
template <class Filter>
FilterObject* MakeFilter(const FilterClass& row) {
  return new Filter(row);
}

// The description and the ending that all filter classes share.
inline constexpr char kFilterDescription[] = "Ostvale Works - Veltrane Picture Filter";

using FilterClassTable = std::span<const FilterClass>;
