// The rows of a caller, with guard bytes around each, to see every byte that a pull writes.
#pragma once

#include <wtypes.h>

#include <string>
#include <vector>

#include "tests/support/Pictures.h"

namespace testing_support {

// Row arrays of both planes. Before the first pull all bytes hold a seeded pattern, and each row
// has guard bytes ahead of it and behind it. The rows lie at uneven distances and in no order, as a
// caller's may; the arrays have guard pointers at both ends, which are null.
class GuardedRows {
 public:
  GuardedRows(int rowWidth, int rowCount, std::uint32_t seed = 1);
  GuardedRows(const GuardedRows&) = delete;
  GuardedRows& operator=(const GuardedRows&) = delete;

  BYTE** ColourRows() { return colour.rows.data() + 1; }
  BYTE** MaskRows() { return mask.rows.data() + 1; }
  int Width() const { return width; }
  int Height() const { return height; }

  // What the rectangle holds now.
  Picture Part(int x, int y, int partWidth, int partHeight) const;
  Picture Whole() const { return Part(0, 0, width, height); }
  // Puts the pattern back.
  void Reset();

  // Empty when nothing outside the rectangle has changed since the pattern was written, guard bytes
  // and pointers included; else what has. The rectangle may reach over the rows' ends.
  std::string WrittenOutside(int x, int y, int partWidth, int partHeight) const;

 private:
  struct Plane {
    void Lay(int rowBytes, int rowCount, std::mt19937& random);
    std::string WrittenOutside(int firstByte, int endByte, int firstRow, int endRow) const;

    int bytes = 0;
    std::vector<std::size_t> starts;
    std::vector<BYTE> store, pattern;
    std::vector<BYTE*> rows, pointers;
  };

  int width, height;
  Plane colour, mask;
};

}  // namespace testing_support
