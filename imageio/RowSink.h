// The way of decoded rows to the caller: counted, reduced and turned.
#pragma once

#include <wtypes.h>

#include <cstdint>
#include <vector>

#include "imageio/ImageFile.h"

namespace imageio {

// Room for one row, pixels from left to right. `mask` is null where nobody asks for it.
struct RowBuffer {
  BYTE* colour = nullptr;
  BYTE* mask = nullptr;
};

// Takes the rows of a picture. A decoder asks for the room of row y (0 is the top row as stored),
// fills it completely and ends it before it begins the next.
class RowSink {
 public:
  virtual ~RowSink() = default;
  virtual RowBuffer Begin(int y) = 0;
  // False: no more rows are wanted.
  virtual bool End(int y) = 0;
  // For long work without rows. False: no more rows are wanted.
  virtual bool KeepGoing() { return true; }
};

// Writes rows into the caller's row arrays, turned so that the picture stands upright. Rows that
// stay rows are decoded in place; a turned row costs a copy of that row.
class OrientedRows final : public RowSink {
 public:
  // `width` and `height` are those of the rows that come. Without `hasMask` the caller's mask is
  // cleared.
  OrientedRows(const Rows& to, int width, int height, int orientation, bool hasMask);
  RowBuffer Begin(int y) override;
  bool End(int y) override;

 private:
  // The caller's row index and column of a pixel, both linear in x and y.
  struct Place {
    int row;
    int column;
  };
  Place PlaceOf(int x, int y) const;

  Rows target;
  int width;
  int height;
  int orientation;
  bool hasMask;
  std::vector<BYTE> colour;  // one row, where rows are turned
  std::vector<BYTE> mask;
};

// Reduces rows to a smaller picture: each pixel of the result is the mean of the area that it
// covers, colour weighted by opacity (unweighted where nothing is opaque). Areas are measured in
// units of which a pixel has a whole number, so all sums are exact and each quotient is rounded
// once, half up.
class AreaMean final : public RowSink {
 public:
  // Each side of the result must not be longer than that of the rows that come.
  AreaMean(RowSink& to, int fromWidth, int fromHeight, int toWidth, int toHeight, bool hasMask);
  RowBuffer Begin(int y) override;
  bool End(int y) override;

 private:
  struct Sums {
    std::uint64_t weighted[3] = {};  // colour times opacity
    std::uint64_t plain[3] = {};     // colour; with a mask only
    std::uint64_t opacity = 0;
  };
  void SumRow();
  Sums SumPixels(int first, int last, std::uint64_t left, std::uint64_t right) const;
  bool AddToResult(int row, std::uint64_t weight);
  void StoreResult(const RowBuffer& row) const;

  RowSink* target;
  std::uint64_t fromWidth, fromHeight, toWidth, toHeight;
  std::vector<BYTE> colour;  // the row that comes
  std::vector<BYTE> mask;
  std::vector<Sums> rowSums;    // that row, reduced in width
  std::vector<Sums> sums;       // the row of the result that is being filled
  std::uint64_t collected = 0;  // its height so far, fromHeight when full
  int collecting = 0;           // its index
};

// Passes rows on and tells the caller about a hundred times how far the work is.
class ReportedRows final : public RowSink {
 public:
  ReportedRows(RowSink& to, int height, const Progress& progress);
  RowBuffer Begin(int y) override { return target->Begin(y); }
  bool End(int y) override;
  bool KeepGoing() override;

 private:
  RowSink* target;
  int height;
  int done = 0;
  const Progress* progress;
};

// Calls `progress` about a hundred times in `count` steps. False when it stops the work.
bool ReportStep(const Progress& progress, int done, int count);

}  // namespace imageio
