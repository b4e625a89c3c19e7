// Compound files where they are our own: what other readers say, faults, kills, full disks.
#include <random>

#include "tests/platform/CompoundSupport.h"

namespace testing_support {
namespace {

class CompoundLinuxTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  std::filesystem::path path = folder / "box";
};

TEST_F(CompoundLinuxTest, StreamsSeekGrowShrinkAndOverwrite) {
  std::mt19937 random(5);
  std::string expected;
  {
    const StoragePtr root = Create(path);
    const StreamPtr stream = CreateStream(root, u"s");
    for (int step = 0; step < 400; ++step) {
      const std::size_t at = random() % 20000;
      if (step % 7 == 6) {
        expected.resize(at);
        ASSERT_EQ(stream->SetSize(Large(at)), S_OK);
      } else {
        const std::string piece = Pattern(random() % 3000, step);
        if (expected.size() < at && !piece.empty()) expected.resize(at);
        if (!piece.empty()) {
          expected.resize(std::max(expected.size(), at + piece.size()));
          expected.replace(at, piece.size(), piece);
        }
        WriteAt(stream, at, piece);
      }
      ASSERT_EQ(SizeOf(stream), expected.size()) << step;
      if (step % 50 == 0) {
        ASSERT_TRUE(ReadAll(stream) == expected) << step;
      }
    }
    EXPECT_TRUE(ReadAll(stream) == expected);
  }
  EXPECT_TRUE(ReadStream(Open(path), u"s") == expected);
}

}  // namespace
}  // namespace testing_support
