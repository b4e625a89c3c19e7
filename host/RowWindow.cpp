#include "host/RowWindow.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/Rows.h"

namespace host {

RowWindow::RowWindow(Size size, bool withMask, int rows, Decode decodeRows)
    : picture(size),
      hasMask(withMask),
      capacity(std::clamp(rows, 1, size.height)),
      colourBytes(base::ColourBytes(size.width)),
      maskBytes(static_cast<std::size_t>(size.width)),
      decode(std::move(decodeRows)),
      colour(colourBytes * static_cast<std::size_t>(capacity)),
      mask(maskBytes * static_cast<std::size_t>(capacity)),
      decoder([this] { Run(); }) {}

RowWindow::~RowWindow() {
  {
    const std::lock_guard hold(lock);
    closing = true;
  }
  left.notify_one();
  decoder.join();
}

void RowWindow::Run() {
  std::exception_ptr thrown;
  try {
    decode(*this);
  } catch (...) {
    thrown = std::current_exception();
  }
  {
    const std::lock_guard hold(lock);
    failure = thrown;
    ended = true;
  }
  arrived.notify_one();
}

imageio::RowBuffer RowWindow::Begin(int y) {
  std::unique_lock hold(lock);
  left.wait(hold, [&] { return closing || y - first < capacity; });
  const std::size_t slot = Slot(y);
  return {colour.data() + slot * colourBytes, hasMask ? mask.data() + slot * maskBytes : nullptr};
}

bool RowWindow::End(int y) {
  bool isAwaited = false;
  {
    const std::lock_guard hold(lock);
    produced = y + 1;
    isAwaited = produced == awaited;
  }
  if (isAwaited) arrived.notify_one();
  return !closing;
}

RowWindow::Answer RowWindow::Bring(int y, int count, const std::atomic<bool>& abort) {
  constexpr std::chrono::milliseconds kPause(20);
  const int from = FromTop(y + count - 1);
  std::unique_lock hold(lock);
  if (from < first || count > capacity) return Answer::Gone;
  first = from;
  awaited = from + count;
  left.notify_one();
  while (produced < awaited && !ended) {
    if (abort) return Answer::Stopped;
    arrived.wait_for(hold, kPause);
  }
  if (produced >= awaited) return Answer::Here;
  if (failure) std::rethrow_exception(failure);
  return Answer::Stopped;
}

}  // namespace host
