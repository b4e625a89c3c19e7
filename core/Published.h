// A value that one thread makes anew while others still work with the one before.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

// For what a Commit builds and a pull reads, where it can not be overwritten in place. Any thread.
template <class Value>
class Published {
 public:
  // From now on Get gives this one. Who holds an earlier one may go on with it.
  void Set(std::shared_ptr<const Value> next) {
    const std::lock_guard guard(lock);
    value.swap(next);
  }
  // Null before the first Set.
  std::shared_ptr<const Value> Get() const {
    const std::lock_guard guard(lock);
    return value;
  }

 private:
  mutable std::mutex lock;
  std::shared_ptr<const Value> value;
};
