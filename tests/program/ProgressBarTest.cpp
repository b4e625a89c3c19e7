#include "program/ProgressBar.h"

#include <gtest/gtest.h>

#include <sstream>

namespace program {
namespace {

using std::chrono::milliseconds;

TEST(ProgressBar, DrawsOneLineThatFitsAndGoes) {
  const struct {
    int width;
    std::size_t files, done;
    double share;
    const char* line;
  } cases[] = {{30, 4, 1, 0.5, "[######-----------] 37 %  2/4"},
               {30, 4, 4, 0, "[################] 100 %  4/4"},
               {16, 1, 0, 0.5, "[####----] 50 %"},
               {10, 0, 0, 0.25, "[--] 25 %"},
               {12, 2, 1, 1, " 100 %  2/2"},
               {200, 1, 0, 0.1, "[####------------------------------------] 10 %"}};
  for (const auto& c : cases) {
    std::ostringstream terminal;
    {
      ProgressBar bar(terminal, c.width, c.files, milliseconds(0));
      bar.Show(c.done, c.share);
      bar.Show(c.done, c.share / 2);  // too soon to be drawn again
    }
    EXPECT_EQ(terminal.str(), "\r" + std::string(c.line) + "\x1B[K\r\x1B[K");
  }
}

TEST(ProgressBar, IsQuietWithoutATerminalAndForShortWork) {
  std::ostringstream terminal;
  {
    ProgressBar none(terminal, 0, 4, milliseconds(0));
    ProgressBar late(terminal, 80, 1, milliseconds(100000));
    none.Show(1, 0);
    late.Show(0, 0.5);
  }
  EXPECT_EQ(terminal.str(), "");
}

}  // namespace
}  // namespace program
