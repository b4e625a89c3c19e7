// Compound files through the system's interfaces; the same on both systems.
#include <ole2.h>

#include "tests/platform/CompoundSupport.h"

namespace testing_support {
namespace {

class CompoundFileTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  std::filesystem::path path = folder / "box";
};

TEST_F(CompoundFileTest, KeepsStreamsOfEverySizeInATree) {
  const std::vector<std::size_t> sizes = {0,    1,    63,   64,    65,    511,   512,
                                          4095, 4096, 4097, 65536, 70000, 300001};
  {
    const StoragePtr root = Create(path);
    const StoragePtr inner = CreateStorage(root, u"Pictures");
    for (const std::size_t size : sizes) {
      const std::u16string name = Numbered(u"s", size);
      WriteStream(root, name, Pattern(size, 1));
      WriteStream(inner, name, Pattern(size, 2));
    }
  }
  const StoragePtr root = Open(path);
  const StoragePtr inner = OpenStorage(root, u"PICTURES");
  for (const std::size_t size : sizes) {
    EXPECT_TRUE(ReadStream(root, Numbered(u"S", size)) == Pattern(size, 1)) << size;
    EXPECT_TRUE(ReadStream(inner, Numbered(u"s", size)) == Pattern(size, 2)) << size;
  }
}

TEST_F(CompoundFileTest, ListsByLengthAndThenByUpperCaseLetters) {
  const StoragePtr root = Create(path);
  for (const char16_t* name : {u"bb", u"A", u"aaa", u"Ba", u"b", u"ab", u"C"}) {
    WriteStream(root, name, "x");
  }
  CreateStorage(root, u"aB2");
  const std::vector<std::u16string> expected = {u"A",  u"b",  u"C",   u"ab",
                                                u"Ba", u"bb", u"aaa", u"aB2"};
  EXPECT_EQ(NamesOf(root), expected);
}

}  // namespace
}  // namespace testing_support
