// Bands of rows on their way from who renders them to who writes them, on two threads.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "imageio/ImageFile.h"
#include "picture/MemoryPicture.h"

namespace program {

// One thread fills bands, from the top of the picture down, another takes their rows out one after
// the other. There is room for three bands: one that is filled, one that waits, one that is
// written.
class BandPipe {
 public:
  // Room of so many rows in each band. A std::bad_alloc without memory.
  BandPipe(int width, int rows);

  // --- who fills

  // An empty band, cleared as new pictures are; waits for one. Null when nobody takes any more.
  MemoryPicture* Begin();
  // The rows `first` to `first` + `count` - 1 of that band go on, the last of them first.
  void End(int first, int count);
  // No further band comes: the rows that were asked for in vain throw Closed.
  void Close();

  // --- who takes

  struct Closed {};
  // The next row, until the next call.
  imageio::PictureRow Next();
  // Nothing will be taken any more.
  void Leave();

 private:
  struct Band {
    std::unique_ptr<MemoryPicture> picture;
    int first = 0;
    int left = 0;  // rows that are not taken yet
  };
  static constexpr int kBands = 3;

  std::vector<Band> bands;
  std::mutex lock;  // of what follows
  std::condition_variable changed;
  int filled = 0;  // bands so far
  int taken = 0;   // bands that are empty again
  bool closed = false;
  bool hasLeft = false;
};

}  // namespace program
