#include "program/ProgressBar.h"

#include <algorithm>
#include <string>

namespace program {

ProgressBar::ProgressBar(std::ostream& stream, int lineWidth, std::size_t fileCount,
                         std::chrono::milliseconds delay)
    : to(stream),
      width(lineWidth),
      files(std::max<std::size_t>(fileCount, 1)),
      next(Clock::now() + delay) {}

void ProgressBar::Show(std::size_t done, double share) {
  constexpr std::chrono::milliseconds kPause(50);
  constexpr int kLongestBar = 40;
  const Clock::time_point now = Clock::now();
  if (width <= 0 || now < next) return;
  next = now + kPause;

  const double part =
      std::clamp((static_cast<double>(done) + share) / static_cast<double>(files), 0.0, 1.0);
  std::string numbers = " ";
  numbers.append(std::to_string(static_cast<int>(part * 100))).append(" %");
  if (files > 1) {
    numbers.append("  ").append(std::to_string(std::min(done + 1, files)));
    numbers.append("/").append(std::to_string(files));
  }
  // A terminal wraps a line that fills its last column; two columns are the brackets'.
  const int room = std::min(width - 3 - static_cast<int>(numbers.size()), kLongestBar);
  std::string bar;
  if (room > 0) {
    const auto filled = static_cast<std::size_t>(part * room);
    bar.append("[").append(filled, '#');
    bar.append(static_cast<std::size_t>(room) - filled, '-').append("]");
  }
  to << "\r" << bar << numbers << "\x1B[K" << std::flush;
  visible = true;
}

void ProgressBar::Hide() {
  if (visible) to << "\r\x1B[K" << std::flush;
  visible = false;
}

}  // namespace program
