// Named blocks of shared memory, by the service of the system that runs the test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "platform/SystemServices.h"

namespace platform {
namespace {

class SharedMemoryTest : public testing::Test {
 protected:
  static bool IsZero(SharedBlock& block, std::size_t bytes) {
    const auto* first = static_cast<const unsigned char*>(block.Memory());
    return std::all_of(first, first + bytes, [](unsigned char byte) { return byte == 0; });
  }
  std::unique_ptr<SharedBlock> Map(std::size_t bytes, const std::string& suffix = "") {
    return SystemSharedMemory().Map(name + suffix, bytes);
  }

  // Long names that differ at their ends alone are different names.
  const std::string name =
      "Fxbox/Test " + std::string(150, 'n') + std::to_string(std::random_device()());
};

TEST_F(SharedMemoryTest, TheFirstViewMakesTheBlockTheOthersSeeIt) {
  const auto first = Map(5000);
  const auto second = Map(4);
  const auto other = Map(4, "x");
  ASSERT_TRUE(first && second && other);
  EXPECT_GE(first->Size(), 5000u);
  EXPECT_EQ(second->Size(), first->Size()) << "a block that is there keeps its size";
  EXPECT_TRUE(IsZero(*first, 5000));
  std::memset(first->Memory(), 7, 5000);
  EXPECT_EQ(static_cast<char*>(second->Memory())[4999], 7);
  EXPECT_TRUE(IsZero(*other, 4));
}

TEST_F(SharedMemoryTest, ABlockGoesWithItsLastView) {
  auto first = Map(100);
  auto second = Map(100);
  ASSERT_TRUE(first && second);
  std::memset(first->Memory(), 7, 100);
  first.reset();
  EXPECT_EQ(static_cast<char*>(second->Memory())[99], 7);
  second.reset();
  const auto fresh = Map(200);
  ASSERT_TRUE(fresh);
  EXPECT_GE(fresh->Size(), 200u);
  EXPECT_TRUE(IsZero(*fresh, 200));
}

TEST_F(SharedMemoryTest, RefusesWhatCannotBe) {
  EXPECT_FALSE(Map(0));
  EXPECT_FALSE(Map(std::size_t{1} << 60));
  const auto after = Map(10);
  EXPECT_TRUE(after) << "a refused block leaves nothing behind";
}

}  // namespace
}  // namespace platform
