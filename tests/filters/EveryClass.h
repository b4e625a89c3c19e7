// For tests of all filter classes alike.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "base/Workers.h"
#include "filters/FilterClasses.h"
#include "platform/WorkerPool.h"
#include "platform/component/ComPtr.h"

namespace testing_support {

inline std::vector<const FilterClass*> EveryClass() {
  std::vector<const FilterClass*> all;
  for (const FilterClass& row : FilterClasses()) all.push_back(&row);
  return all;
}

// A number for each key, as a person would set them: sizes stay within reason.
inline std::string TextWithSmallNumbers(const FilterClass& row, std::mt19937& random) {
  std::string text;
  for (const ParameterDescription& key : row.describe()) {
    text += std::string(key.key) + "=" + std::to_string(random() % 20) + ",";
  }
  return text;
}

// Lends threads as long as it lives.
class LentWorkers {
 public:
  explicit LentWorkers(int threads) {
    using Pool = platform::ComPtr<platform::WorkerPool>;
    base::SetWorkers(Pool::Attach(new platform::WorkerPool(threads)).Get());
  }
  ~LentWorkers() { base::SetWorkers(nullptr); }
  LentWorkers(const LentWorkers&) = delete;
  LentWorkers& operator=(const LentWorkers&) = delete;
};

}  // namespace testing_support
