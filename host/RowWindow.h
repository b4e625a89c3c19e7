// The rows of a picture that is decoded while it is pulled: a window that moves from the top row of
// the picture down to its bottom row.
#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "host/Sizes.h"
#include "imageio/RowSink.h"

namespace host {

// Decoding runs ahead on a thread of its own, as far as there is room. Everything but the decoding
// is one thread's.
class FXBOX_API RowWindow final : private imageio::RowSink {
 public:
  // Hands all rows of the picture to the sink, from the top to the bottom; false when it was
  // stopped. May throw.
  using Decode = std::function<bool(imageio::RowSink& sink)>;

  // Keeps `rows` rows at a time. Without `hasMask` all masks are 0.
  RowWindow(Size picture, bool hasMask, int rows, Decode decodeRows);
  // Stops the decoding and waits for it.
  ~RowWindow();
  RowWindow(const RowWindow&) = delete;
  RowWindow& operator=(const RowWindow&) = delete;

  enum class Answer {
    Here,
    Stopped,  // by `abort`, or the decoding has ended before
    Gone      // the window is too small, or has moved on already
  };
  // Waits for the rows from `y` on, where 0 is the bottom row; those above them may go. Throws what
  // the decoding has thrown.
  Answer Bring(int y, int count, const std::atomic<bool>& abort);

  // Rows that were brought, until the next call of Bring.
  const BYTE* Colour(int y) const { return colour.data() + Slot(FromTop(y)) * colourBytes; }
  const BYTE* Mask(int y) const { return mask.data() + Slot(FromTop(y)) * maskBytes; }

 private:
  imageio::RowBuffer Begin(int y) override;
  bool End(int y) override;
  bool KeepGoing() override { return !closing; }

  void Run();
  // Rows counted from the top, as the decoder does.
  int FromTop(int y) const { return picture.height - 1 - y; }
  std::size_t Slot(int fromTop) const {
    return static_cast<std::size_t>(fromTop) % static_cast<std::size_t>(capacity);
  }

  const Size picture;
  const bool hasMask;
  const int capacity;
  const std::size_t colourBytes, maskBytes;  // of a row
  const Decode decode;
  std::vector<BYTE> colour, mask;

  std::mutex lock;  // of what follows
  std::condition_variable arrived, left;
  int first = 0;     // the first row that may not be overwritten
  int produced = 0;  // rows that are there or were
  int awaited = 0;   // so many rows are waited for
  bool ended = false;
  std::exception_ptr failure;

  std::atomic<bool> closing{false};
  std::thread decoder;
};

}  // namespace host
