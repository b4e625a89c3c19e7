#include "platform/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/component/ComPtr.h"

namespace {

using platform::ComPtr;
using platform::WorkerPool;

struct Calls {
  std::vector<std::atomic<int>> came;
  explicit Calls(int count) : came(static_cast<std::size_t>(count)) {}
  static void STDMETHODCALLTYPE Task(void* calls, int index) {
    ++static_cast<Calls*>(calls)->came[static_cast<std::size_t>(index)];
  }
  bool EachOnce() const {
    for (const auto& count : came) {
      if (count != 1) return false;
    }
    return true;
  }
};

TEST(WorkerPool, RunsJobsOfManyThreadsWithAnyNumberOfItsOwn) {
  for (const int threads : {1, 2, 3, 16}) {
    const auto pool = ComPtr<WorkerPool>::Attach(new WorkerPool(threads));
    std::atomic<int> whole{0};
    const auto work = [&] {
      for (int round = 0; round < 100; ++round) {
        Calls calls(round % 64 + 1);
        const HRESULT status = pool->Run(static_cast<int>(calls.came.size()), &Calls::Task, &calls);
        if (status == S_OK && calls.EachOnce()) ++whole;
      }
    };
    std::thread others[] = {std::thread(work), std::thread(work), std::thread(work)};
    work();
    for (std::thread& other : others) other.join();
    EXPECT_EQ(whole, 400) << threads << " threads";
  }
}

// The tasks wait for each other, so that too few threads would never end.
TEST(WorkerPool, RunsAsManyTasksAtOnceAsItHasThreads) {
  const auto pool = ComPtr<WorkerPool>::Attach(new WorkerPool(4));
  std::atomic<int> here{0};
  pool->Run(
      4,
      [](void* context, int) {
        auto& arrived = *static_cast<std::atomic<int>*>(context);
        ++arrived;
        while (arrived < 4) std::this_thread::yield();
      },
      &here);
  EXPECT_EQ(here, 4);
}

TEST(WorkerPool, RunsATaskThatHasAJobOfItsOwn) {
  struct Nested {
    ComPtr<WorkerPool> pool = ComPtr<WorkerPool>::Attach(new WorkerPool(3));
    std::atomic<int> whole{0};
    static void STDMETHODCALLTYPE Task(void* nested, int) {
      auto& self = *static_cast<Nested*>(nested);
      Calls calls(20);
      self.pool->Run(20, &Calls::Task, &calls);
      if (calls.EachOnce()) ++self.whole;
    }
  } nested;
  nested.pool->Run(10, &Nested::Task, &nested);
  EXPECT_EQ(nested.whole, 10);
}

TEST(WorkerPool, TakesNoWork) {
  const auto pool = ComPtr<WorkerPool>::Attach(new WorkerPool(2));
  EXPECT_EQ(pool->Run(0, &Calls::Task, nullptr), S_OK);
  EXPECT_EQ(pool->Run(-5, &Calls::Task, nullptr), S_OK);
  EXPECT_EQ(pool->Run(5, nullptr, nullptr), E_POINTER);
  EXPECT_TRUE(ComPtr<IAnimWorkers>::Query(pool.Get()));
}

}  // namespace
