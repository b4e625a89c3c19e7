#include "program/InputList.h"

#include <gmock/gmock.h>

#include <vector>

#include "program/Messages.h"
#include "tests/platform/Support.h"

namespace program {
namespace {

using Names = std::vector<std::string>;

Names ReadAll(std::string_view content, InputList::Separator separator) {
  const testing_support::TemporaryFolder folder;
  testing_support::WriteFile(folder / "list", std::string(content));
  InputList list(Utf8Of(folder / "list"), separator);
  Names names;
  while (const auto name = list.Next()) names.push_back(*name);
  EXPECT_EQ(list.Next(), std::nullopt) << "the end stays the end";
  return names;
}

TEST(InputList, TakesANameALine) {
  const auto lines = [](std::string_view text) {
    return ReadAll(text, InputList::Separator::LineEnd);
  };
  EXPECT_EQ(lines("a.jpg\nb c.jpg\r\n\n  \n d.jpg"), (Names{"a.jpg", "b c.jpg", " d.jpg"}));
  EXPECT_EQ(lines("\xEF\xBB\xBFGr\xC3\xBCn.jpg\n"), Names{"Gr\xC3\xBCn.jpg"});
  EXPECT_EQ(lines(""), Names{});
  EXPECT_EQ(lines("\xEF\xBB"), Names{"\xEF\xBB"}) << "shorter than a byte order mark";
  const std::string longName(10000, 'x');
  EXPECT_EQ(lines(longName + "\n" + longName), (Names{longName, longName}));
}

TEST(InputList, TakesNamesUpToZeroBytes) {
  using namespace std::string_view_literals;
  EXPECT_EQ(ReadAll("a\nb\0c\r\0\0d"sv, InputList::Separator::ZeroByte),
            (Names{"a\nb", "c\r", "d"}));
}

TEST(InputList, AMissingListIsAnError) {
  EXPECT_THROW(InputList("not there", InputList::Separator::LineEnd), FileError);
}

}  // namespace
}  // namespace program
