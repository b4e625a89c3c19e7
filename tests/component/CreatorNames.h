// What a creator lists.
#pragma once

#include <string>
#include <vector>

#include "core/AnimChain.h"

namespace component_test {

inline std::vector<std::string> NamesOf(IAnimFilterCreator& creator) {
  int count = 0;
  creator.GetFilterCount(&count);
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) {
    char name[200] = "";
    int order = 0;
    creator.GetFilterInfo(i, name, sizeof name, &order);
    names.emplace_back(name);
  }
  return names;
}

}  // namespace component_test
