// Named mutexes, by the service of the system that runs the test.
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "platform/SystemServices.h"

namespace platform {
namespace {

using std::chrono::milliseconds;
using Wait = NamedMutex::Wait;

class MutexTest : public testing::Test {
 protected:
  // From another thread, which keeps what it got when it ends.
  Wait WaitElsewhere(int limit) {
    Wait result = Wait::Failed;
    std::thread([&] { result = other->WaitFor(milliseconds(limit)); }).join();
    return result;
  }

  const std::string name = "Fxbox\xFC/Test" + std::to_string(std::random_device()());
  std::unique_ptr<NamedMutex> mutex = SystemMutexes().Open(name);
  std::unique_ptr<NamedMutex> other = SystemMutexes().Open(name);
};

TEST_F(MutexTest, BelongsToOneThread) {
  ASSERT_TRUE(mutex && other);
  EXPECT_EQ(mutex->WaitFor(milliseconds(0)), Wait::Held);
  EXPECT_EQ(other->WaitFor(milliseconds(0)), Wait::Held) << "its owner may wait again";
  EXPECT_EQ(WaitElsewhere(20), Wait::TimedOut);
  mutex->Release();
  EXPECT_EQ(WaitElsewhere(0), Wait::TimedOut);
  other->Release();
  EXPECT_EQ(WaitElsewhere(0), Wait::Held);
}

// An owner that takes it again at once does not keep others out.
TEST_F(MutexTest, EveryoneHasATurn) {
  std::atomic<bool> begun = false, over = false;
  int turns = 0;
  std::thread greedy([&] {
    while (!over) {
      ASSERT_EQ(other->WaitFor(milliseconds(5000)), Wait::Held);
      begun = true;
      std::this_thread::sleep_for(milliseconds(1));
      other->Release();
    }
  });
  while (!begun) std::this_thread::yield();
  for (; turns < 20 && mutex->WaitFor(milliseconds(999)) == Wait::Held; ++turns) mutex->Release();
  over = true;
  greedy.join();
  EXPECT_EQ(turns, 20);
}

TEST_F(MutexTest, AnAbandonedOneIsSeenAsAbandonedOnce) {
  EXPECT_EQ(WaitElsewhere(0), Wait::Held);
  EXPECT_EQ(mutex->WaitFor(milliseconds(1000)), Wait::Abandoned);
  mutex->Release();
  EXPECT_EQ(mutex->WaitFor(milliseconds(0)), Wait::Held);
  mutex->Release();
}

TEST_F(MutexTest, NothingIsLeftWhenAllHaveGone) {
  EXPECT_EQ(WaitElsewhere(0), Wait::Held);
  mutex.reset();
  other.reset();
  mutex = SystemMutexes().Open(name);
  ASSERT_TRUE(mutex);
  EXPECT_EQ(mutex->WaitFor(milliseconds(0)), Wait::Held);
  mutex->Release();
}

}  // namespace
}  // namespace platform
