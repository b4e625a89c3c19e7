// The class of a ProgID, for tests of single classes.
#pragma once

#include <algorithm>
#include <string>

#include "filters/FilterClasses.h"

namespace testing_support {

inline const FilterClass& ClassOf(const std::string& progId) {
  const auto table = FilterClasses();
  return *std::find_if(table.begin(), table.end(),
                       [&](const FilterClass& row) { return progId == row.progId; });
}

}  // namespace testing_support
