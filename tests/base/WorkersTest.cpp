#include "base/Workers.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

constexpr int kRows = 1000;

// Does with a job what a test says. Lent as long as it lives.
struct TestWorkers final : IAnimWorkers {
  using Behaviour = std::function<HRESULT(int count, AnimTask task, void* context)>;
  explicit TestWorkers(Behaviour run) : behaviour(std::move(run)) { base::SetWorkers(this); }
  ~TestWorkers() { base::SetWorkers(nullptr); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE Run(int count, AnimTask task, void* context) override {
    counts.push_back(count);
    return behaviour(count, task, context);
  }

  Behaviour behaviour;
  std::atomic<ULONG> references{0};
  std::vector<int> counts;
};

HRESULT RunThreads(int count, AnimTask task, void* context) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(task, context, i);
  for (std::thread& thread : threads) thread.join();
  return S_OK;
}

// How often each row came.
std::vector<int> CountRows(int rows, int least) {
  std::vector<std::atomic<int>> came(static_cast<std::size_t>(rows));
  EXPECT_TRUE(base::ForEachBand(rows, least, [&](int first, int end) {
    EXPECT_GE(end - first, std::min(rows, least));
    for (int i = first; i < end; ++i) ++came[static_cast<std::size_t>(i)];
  }));
  return {came.begin(), came.end()};
}

TEST(Workers, GetEveryRowOnceAndFewEnoughBands) {
  const std::vector<int> once(kRows, 1);
  EXPECT_EQ(CountRows(kRows, 1), once) << "without workers";
  TestWorkers workers(RunThreads);
  EXPECT_EQ(CountRows(kRows, 1), once);
  EXPECT_EQ(CountRows(kRows, 300), once);
  EXPECT_EQ(CountRows(kRows, 500), once);
  EXPECT_THAT(workers.counts, testing::ElementsAre(64, 3, 2));
  EXPECT_EQ(CountRows(kRows, 501), once);
  EXPECT_EQ(CountRows(1, 1), std::vector(1, 1));
  EXPECT_EQ(CountRows(0, 0), std::vector<int>());
  EXPECT_EQ(workers.counts.size(), 3u) << "too little to be shared";
}

TEST(Workers, ThatLeaveTasksOutOrRepeatThemDoNoHarm) {
  const std::vector<TestWorkers::Behaviour> strange = {[](int, AnimTask, void*) { return E_FAIL; },
                                                       [](int, AnimTask task, void* context) {
                                                         task(context, 7);
                                                         return S_OK;
                                                       },
                                                       [](int count, AnimTask task, void* context) {
                                                         for (int i = -1; i < 2 * count; ++i)
                                                           task(context, i % 3);
                                                         return S_OK;
                                                       }};
  for (const auto& behaviour : strange) {
    TestWorkers workers(behaviour);
    EXPECT_EQ(CountRows(kRows, 100), std::vector<int>(kRows, 1));
  }
}

TEST(Workers, StopWithTheFirstBandThatSaysSo) {
  for (const bool throws : {false, true}) {
    TestWorkers workers([](int count, AnimTask task, void* context) {
      for (int i = 0; i < count; ++i) task(context, i);
      return S_OK;
    });
    int calls = 0;
    const auto run = [&] {
      return base::ForEachBand(kRows, 100, [&](int, int) -> bool {
        if (++calls == 3 && throws) throw std::runtime_error("third");
        return calls < 3;
      });
    };
    if (throws) {
      EXPECT_THROW(run(), std::runtime_error);
    } else {
      EXPECT_FALSE(run());
    }
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(CountRows(kRows, 100), std::vector<int>(kRows, 1))
        << "the next job is none the worse";
  }
}

TEST(Workers, AreNotAskedFromWithinABand) {
  TestWorkers workers(RunThreads);
  std::atomic<int> inner{0};
  base::ForEachBand(10, 1, [&](int, int) {
    base::ForEachBand(10, 1, [&](int first, int end) { inner += 100 + end - first; });
  });
  EXPECT_EQ(inner, 10 * 110) << "ten rows at once, ten times";
  EXPECT_EQ(workers.counts.size(), 1u);
}

TEST(Workers, AreHeldWhileTheyAreLentOrAtWork) {
  TestWorkers first([](int count, AnimTask task, void* context) {
    base::SetWorkers(nullptr);
    for (int i = 0; i < count; ++i) task(context, i);
    return S_OK;
  });
  EXPECT_EQ(first.references, 1u);
  std::vector<ULONG> seen;
  base::ForEachBand(4, 2, [&](int, int) { seen.push_back(first.references); });
  EXPECT_THAT(seen, testing::ElementsAre(1u, 1u)) << "taken back, but at work";
  EXPECT_EQ(first.references, 0u);
}

}  // namespace
