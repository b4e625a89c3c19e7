#include "program/ProgressBar.h"

#include <gtest/gtest.h>

#include <sstream>

namespace program {
namespace {

using std::chrono::milliseconds;

TEST(ProgressBar, DrawsOneLineThatFitsAndGoes) {
  std::ostringstream terminal;
  {
    ProgressBar bar(terminal, 30, 4, milliseconds(0));
    bar.Show(1, 0.5);
    bar.Show(1, 0.6);  // too soon to be drawn again
  }
  EXPECT_EQ(terminal.str(), "\r[######-----------] 37 %  2/4\x1B[K\r\x1B[K");
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
