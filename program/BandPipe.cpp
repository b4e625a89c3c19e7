#include "program/BandPipe.h"

#include <new>

namespace program {

BandPipe::BandPipe(int width, int rows) : bands(kBands) {
  for (Band& band : bands) {
    band.picture = std::make_unique<MemoryPicture>("band", width, rows, true, true);
    if (!band.picture->IsValid()) throw std::bad_alloc();
  }
}

MemoryPicture* BandPipe::Begin() {
  std::unique_lock hold(lock);
  changed.wait(hold, [this] { return hasLeft || filled - taken < kBands; });
  if (hasLeft) return nullptr;
  MemoryPicture* const picture = bands[static_cast<std::size_t>(filled % kBands)].picture.get();
  hold.unlock();
  picture->Clear();
  return picture;
}

void BandPipe::End(int first, int count) {
  {
    const std::lock_guard hold(lock);
    Band& band = bands[static_cast<std::size_t>(filled++ % kBands)];
    band.first = first;
    band.left = count;
  }
  changed.notify_one();
}

void BandPipe::Close() {
  {
    const std::lock_guard hold(lock);
    closed = true;
  }
  changed.notify_one();
}

// The band of the last row is given back with the next call.
imageio::PictureRow BandPipe::Next() {
  std::unique_lock hold(lock);
  for (;;) {
    Band& band = bands[static_cast<std::size_t>(taken % kBands)];
    if (taken < filled && band.left > 0) {
      const int row = band.first + --band.left;
      return {band.picture->ColourRows()[row], band.picture->MaskRows()[row]};
    }
    if (taken < filled) {
      ++taken;
      changed.notify_one();
    } else {
      changed.wait(hold, [this] { return closed || taken < filled; });
      if (taken == filled) throw Closed();
    }
  }
}

void BandPipe::Leave() {
  {
    const std::lock_guard hold(lock);
    hasLeft = true;
  }
  changed.notify_one();
}

}  // namespace program
