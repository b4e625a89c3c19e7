// Global memory: what a handle promises on both systems.
#include <objbase.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(GlobalMemoryTest, HandlesStayWhenBlocksMove) {
  const HGLOBAL block = GlobalAlloc(GHND, 16);
  ASSERT_NE(block, nullptr);
  auto* bytes = static_cast<unsigned char*>(GlobalLock(block));
  EXPECT_NE(static_cast<void*>(bytes), block);
  EXPECT_EQ(bytes[15], 0);
  std::memset(bytes, 7, 16);
  EXPECT_EQ(GlobalHandle(bytes), block);
  EXPECT_FALSE(GlobalUnlock(block));

  const HGLOBAL grown = GlobalReAlloc(block, 1 << 20, GMEM_MOVEABLE | GMEM_ZEROINIT);
  ASSERT_EQ(grown, block);
  EXPECT_EQ(GlobalSize(block), SIZE_T{1} << 20);
  bytes = static_cast<unsigned char*>(GlobalLock(block));
  EXPECT_EQ(bytes[15], 7);
  EXPECT_EQ(bytes[16], 0);
  EXPECT_EQ(bytes[(1 << 20) - 1], 0);
  GlobalUnlock(block);
  EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemoryTest, LocksCount) {
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 1);
  void* const bytes = GlobalLock(block);
  EXPECT_EQ(GlobalLock(block), bytes);
  EXPECT_EQ(GlobalFlags(block) & 0xFF, 2u);
  EXPECT_TRUE(GlobalUnlock(block));
  EXPECT_FALSE(GlobalUnlock(block));
  EXPECT_FALSE(GlobalUnlock(block));
  GlobalFree(block);
}

TEST(GlobalMemoryTest, FixedBlocksAreTheirOwnHandles) {
  const HGLOBAL block = GlobalAlloc(GPTR, 40);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(GlobalLock(block), block);
  EXPECT_EQ(static_cast<char*>(block)[39], 0);
  EXPECT_EQ(GlobalHandle(block), block);
  EXPECT_EQ(GlobalSize(block), 40u);
  static_cast<char*>(block)[0] = 'a';
  const HGLOBAL grown = GlobalReAlloc(block, 100, GMEM_MOVEABLE);
  ASSERT_NE(grown, nullptr);
  EXPECT_EQ(GlobalSize(grown), 100u);
  EXPECT_EQ(*static_cast<char*>(GlobalLock(grown)), 'a');
  GlobalFree(grown);
}

TEST(GlobalMemoryTest, TooMuchIsNull) {
  constexpr SIZE_T kTooMuch = ~SIZE_T{0} - 15;
  EXPECT_EQ(GlobalAlloc(GMEM_MOVEABLE, kTooMuch), nullptr);
  const HGLOBAL block = GlobalAlloc(GHND, 16);
  EXPECT_EQ(GlobalReAlloc(block, kTooMuch, GMEM_MOVEABLE), nullptr);
  EXPECT_EQ(GlobalSize(block), 16u) << "it stays as it was";
  EXPECT_NE(GlobalLock(block), nullptr);
  GlobalUnlock(block);
  GlobalFree(block);
}

}  // namespace
