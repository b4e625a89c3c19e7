// Threads that use one filter at the same time.
#include "core/FilterLocks.h"

#include <gtest/gtest.h>

#include <future>

#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

// Whoever holds the lock for long lets others in between, and has it again afterwards.
TEST(StateLock, GivesWayToWhoWaits) {
  StateLock lock;
  int turns = 0;
  lock.lock();
  std::thread other([&] {
    const std::lock_guard held(lock);
    const std::lock_guard again(lock);
    ++turns;
  });
  while (turns == 0) lock.GiveWay();
  lock.unlock();
  other.join();
  EXPECT_EQ(turns, 1);
}

// A pull on a thread of its own that stands still in the source, until it may go on.
class StandingPull {
 public:
  explicit StandingPull(Rig& pulled) : rig(pulled), rows(8, 6) {
    rig.source->onRow = [this](int row) {
      if (row != 2 || std::exchange(stood, true)) return;
      stands.set_value();
      mayGoOn.get_future().wait();
    };
    answer = std::async(std::launch::async, [this] { return rig.Pull(rows, {0, 0, 0, 0, 8, 6}); });
    stands.get_future().wait();
  }
  ~StandingPull() { rig.source->onRow = nullptr; }
  HRESULT Finish() {
    mayGoOn.set_value();
    return answer.get();
  }

 private:
  Rig& rig;
  GuardedRows rows;
  bool stood = false;
  std::promise<void> stands, mayGoOn;
  std::future<HRESULT> answer;
};

std::future<HRESULT> PullBeside(Rig& rig, GuardedRows& rows) {
  return std::async(std::launch::async, [&] { return rig.Pull(rows, {0, 0, 0, 0, 8, 6}); });
}

bool Waits(const std::future<HRESULT>& pull) {
  return pull.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
}

struct LockedRig : Rig {
  LockedRig()
      : Rig(Gradient(8, 6, Masks::Opaque), {Make(TestClass("Test.A.1")), Make(TestClass("B.1"))}) {
    Prepare();
  }
};

TEST(FilterThreads, PullsOfAFilterWaitForEachOther) {
  LockedRig rig;
  StandingPull first(rig);
  GuardedRows rows(8, 6);
  auto second = PullBeside(rig, rows);
  EXPECT_TRUE(Waits(second));
  EXPECT_EQ(rig.source->requests.size(), 1u);
  EXPECT_EQ(first.Finish(), S_OK);
  EXPECT_EQ(second.get(), S_OK);
  EXPECT_EQ(Difference(rig.source->picture, rows.Whole()), "");
}

// Nothing that a dialog does waits for a pull that waits for its source; nor does another chain.
TEST(FilterThreads, ASourceThatTakesItsTimeHoldsUpNobodyElse) {
  LockedRig rig;
  StandingPull pull(rig);
  rig.Filter().SetParameter("new", 1);
  rig.Filter().SetNamedValue("key", "value");
  rig.Filter().SetZoom(0.5);
  EXPECT_TRUE(rig.Prepare());
  EXPECT_EQ(ActiveText(rig.Filter()), "new");
  LockedRig other;
  GuardedRows rows(8, 6);
  EXPECT_EQ(other.Pull(rows, {0, 0, 0, 0, 8, 6}), S_OK);
  EXPECT_EQ(pull.Finish(), S_OK);
  // What was committed meanwhile is still to be pulled.
  EXPECT_TRUE(rig.Prepare());
  EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 8, 6}), S_OK);
  EXPECT_FALSE(rig.Prepare());
}

TEST(FilterThreads, AnAbortEndsAWaitingPull) {
  for (const bool isTakenBack : {false, true}) {
    LockedRig rig;
    StandingPull first(rig);
    GuardedRows rows(8, 6);
    auto second = PullBeside(rig, rows);
    EXPECT_TRUE(Waits(second));
    rig.Tail().SetAbort(true);
    if (isTakenBack) rig.Tail().SetAbort(false);
    EXPECT_EQ(second.get(), kPullStopped);
    EXPECT_EQ(rows.WrittenOutside(0, 0, 0, 0), "");
    rig.Tail().SetAbort(false);
    EXPECT_EQ(first.Finish(), S_OK) << "filters that pass rows on know no abort of their own";
  }
}

// A source that pulls its own filter would wait for itself.
TEST(FilterThreads, APullFromWithinItselfIsRefused) {
  LockedRig rig;
  GuardedRows inner(8, 6);
  HRESULT within = S_OK;
  rig.source->onRow = [&](int row) {
    if (row == 2) within = rig.Pull(inner, {0, 0, 0, 0, 8, 6});
  };
  GuardedRows rows(8, 6);
  EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 8, 6}), S_OK);
  EXPECT_EQ(within, kPullStopped);
  EXPECT_EQ(inner.WrittenOutside(0, 0, 0, 0), "");
}

}  // namespace
}  // namespace testing_support
