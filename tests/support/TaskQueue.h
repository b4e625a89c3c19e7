// The thread of the windows, without windows: tasks that wait until it runs them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace testing_support {

class TaskQueue {
 public:
  // From any thread.
  void Post(std::function<void()> task) {
    {
      const std::lock_guard hold(lock);
      tasks.push_back(std::move(task));
    }
    wake.notify_all();
  }
  bool IsEmpty() {
    const std::lock_guard hold(lock);
    return tasks.empty();
  }
  // Runs tasks until the condition holds, which is looked at after each and every two milliseconds.
  // False where it does not hold after half a minute and no task is left.
  template <class Condition>
  bool RunUntil(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
      constexpr std::chrono::milliseconds kLook(2);
      std::unique_lock hold(lock);
      if (!wake.wait_for(hold, kLook, [this] { return !tasks.empty(); })) {
        if (std::chrono::steady_clock::now() > end) return condition();
        continue;
      }
      const auto task = std::move(tasks.front());
      tasks.pop_front();
      hold.unlock();
      task();
    }
    return true;
  }

 private:
  std::mutex lock;
  std::condition_variable wake;
  std::deque<std::function<void()>> tasks;
};

}  // namespace testing_support
