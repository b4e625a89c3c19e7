// One line on the terminal that says how far the work is.
#pragma once

#include <chrono>
#include <cstddef>
#include <ostream>

namespace program {

// Draws nothing at a width of 0, that is, when the output is no terminal. The line is drawn over
// itself and is gone after Hide; whoever prints something else hides it first.
class ProgressBar {
 public:
  // Waits for `delay` before it shows anything, so that short work stays quiet.
  ProgressBar(std::ostream& stream, int lineWidth, std::size_t fileCount,
              std::chrono::milliseconds delay);
  ~ProgressBar() { Hide(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // `done` files are finished, the next one to this share, 0 to 1. Cheap to call often.
  void Show(std::size_t done, double share);
  void Hide();

 private:
  using Clock = std::chrono::steady_clock;

  std::ostream& to;
  const int width;
  const std::size_t files;
  Clock::time_point next;
  bool visible = false;
};

}  // namespace program
