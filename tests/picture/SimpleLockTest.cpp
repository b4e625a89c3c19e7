#include "picture/SimpleLock.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(CSimpleLock, CountsAndRemembersTheThread) {
  CSimpleLock lock;
  EXPECT_FALSE(lock.IsLocked());
  EXPECT_FALSE(lock.IsLockedByMe());
  lock.Enter();
  lock.Enter();
  lock.Leave();
  EXPECT_TRUE(lock.IsLocked());
  EXPECT_TRUE(lock.IsLockedByMe());
  std::thread([&] { EXPECT_FALSE(lock.IsLockedByMe()); }).join();
  lock.Leave();
  EXPECT_FALSE(lock.IsLocked());
  EXPECT_TRUE(lock.IsLockedByMe()) << "leaving does not forget";
}

TEST(CSimpleLock, ExcludesOthers) {
  constexpr int kRounds = 20000;
  CSimpleLock lock;
  int sum = 0;
  const auto add = [&] {
    for (int i = 0; i < kRounds; ++i) {
      const CStackLock hold(lock);
      const CStackLock again(lock);
      ++sum;
    }
  };
  std::thread one(add), two(add);
  one.join();
  two.join();
  EXPECT_EQ(sum, 2 * kRounds);
}

// A try counts but takes nothing, so that leaving it opens nothing either.
TEST(CSimpleLock, ATryExcludesNobody) {
  CSimpleLock lock;
  {
    const CStackLock tried(lock, true);
    EXPECT_TRUE(lock.IsLocked());
    EXPECT_TRUE(lock.IsLockedByMe());
    std::thread([&] { const CStackLock entered(lock); }).join();
  }
  EXPECT_FALSE(lock.IsLocked());

  bool inside = false;
  lock.Enter();
  { const CStackLock tried(lock, true); }
  std::thread other([&] {
    const CStackLock tried(lock, true);
    EXPECT_TRUE(lock.IsLockedByMe());
  });
  other.join();
  std::thread waiting([&] {
    const CStackLock entered(lock);
    EXPECT_TRUE(inside) << "the lock was open while its holder had only left tries";
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  inside = true;
  lock.Leave();
  waiting.join();
}

}  // namespace
