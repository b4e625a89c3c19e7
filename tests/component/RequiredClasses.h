// What hosts and stored chains rely on: every filter class with its ids, its places and its words,
// as classes.txt has them.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace component_test {

struct RequiredClass {
  std::string sortKey, className, progId, classId, order;
  std::string iconName, nameKey, helpKey, defaultText;  // "(none)" where the class has none
};

inline std::vector<RequiredClass> RequiredClasses() {
  std::ifstream file(FXBOX_REQUIRED_CLASSES);
  std::vector<RequiredClass> classes;
  for (std::string line; std::getline(file, line);) {
    std::vector<std::string> columns(1);
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (line[i] != ';') {
        columns.back() += line[i];
      } else {
        columns.emplace_back();
        ++i;  // and its blank
      }
    }
    EXPECT_EQ(columns.size(), 9u) << line;
    columns.resize(9);
    classes.push_back({columns[0], columns[1], columns[2], columns[3], columns[4], columns[5],
                       columns[6], columns[7], columns[8]});
  }
  EXPECT_EQ(classes.size(), 47u) << "with the heads of the columns";
  if (!classes.empty()) classes.erase(classes.begin());
  return classes;
}

}  // namespace component_test
