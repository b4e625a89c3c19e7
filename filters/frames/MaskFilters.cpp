#include "filters/frames/MaskFilters.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "base/Arithmetic.h"
#include "filters/frames/FrameKernels.h"
#include "filters/pixels/RowBlocks.h"

namespace kernels {
namespace {

enum class Margin { One, Shrinking };  // Shrinking: from the number of passes down to 1

// One byte of the first column at x: its left terms come from columns 0 and 1.
using FirstColumnFunction = std::uint8_t (*)(const MaskRows3& rows, int x);

// Rows here are whole ones, from column 0.
struct Pass {
  MaskRowFunction row;
  FirstColumnFunction first = nullptr;
  MaskWeights weights = {};
};

std::uint8_t FirstGrown(const MaskRows3& rows, int x) {
  const auto column = [&rows](int at) { return std::min(rows.previous[at], rows.next[at]); };
  return std::min({column(0), column(1), column(x + 1), rows.centre[x], rows.centre[x + 1]});
}

std::uint8_t FirstBlurred(const MaskRows3& rows, int x) {
  const auto column = [&rows](int at) {
    return rows.previous[at] + rows.centre[at] + rows.next[at];
  };
  return static_cast<std::uint8_t>(((column(0) + column(1) + column(x + 1)) * 4 + rows.centre[x]) /
                                   37);
}

// Passes that follow each other at a distance of one row. When a pass comes to a row, the pass
// before it has just left the next one, and the pass after it has not yet reached the previous one,
// of which the old bytes are kept aside.
//
// A group works on one block of rows and, so that these come out right, on copies of as many rows
// around it as there are passes: in each pass one more of them at either end is left behind.
class PassGroup {
 public:
  // `firstMargin` is that of the first pass; `narrows` is what each margin is less than the one
  // before.
  PassGroup(const MaskPlane& worked, RowBlocks& blocks, int block, const Pass& done, int passes,
            int firstMargin, int narrows)
      : plane(worked),
        pass(done),
        count(passes),
        margin(firstMargin),
        step(narrows),
        first(std::max(0, blocks.First(block) - passes)),
        end(std::min(plane.height, blocks.First(block + 1) + passes)),
        kept(2 * static_cast<std::size_t>(passes) * static_cast<std::size_t>(worked.width)) {
    for (int y = first; y < end; ++y) rows.push_back(blocks.Row(block, y));
  }

  bool Run(const std::atomic<bool>& abort) {
    for (int front = first + 1; front < end + count; ++front) {
      if (abort) return false;
      for (int i = 0; i < count; ++i) DoRow(i, front - i);
    }
    return true;
  }

  // Whether the first pass has changed anything.
  bool HasChanged() const { return changed; }

 private:
  std::uint8_t* Kept(int i, int y) {
    const std::size_t number = 2 * static_cast<std::size_t>(i) + static_cast<std::size_t>(y & 1);
    return kept.data() + number * static_cast<std::size_t>(plane.width);
  }

  std::uint8_t* Row(int y) const { return rows[static_cast<std::size_t>(y - first)]; }

  void DoRow(int i, int y) {
    const int edge = margin - i * step;
    const int lowest = std::max(edge, first + 1);
    if (y < lowest || y > std::min(plane.height - edge, end - 1) - 1) return;
    std::uint8_t* const row = Row(y);
    const auto bytes = static_cast<std::size_t>(plane.width);
    std::uint8_t* const centre = Kept(i, y);
    std::memcpy(centre, row, bytes);
    const MaskRows3 around = {y == lowest ? Row(y - 1) : Kept(i, y - 1), centre, Row(y + 1)};
    pass.row(row + edge, {around.previous + edge, around.centre + edge, around.next + edge},
             plane.width - 2 * edge, pass.weights);
    if (pass.first && edge > 1) row[edge] = pass.first(around, edge);
    if (i == 0 && !changed) changed = std::memcmp(centre, row, bytes) != 0;
  }

  const MaskPlane& plane;
  const Pass& pass;
  const int count, margin, step;
  const int first, end;             // of the rows, those around the block among them
  std::vector<std::uint8_t*> rows;  // from `first` on
  std::vector<std::uint8_t> kept;   // two rows a pass
  bool changed = false;
};

bool RunPasses(const MaskPlane& plane, const Pass& pass, int passes, Margin margin,
               const std::atomic<bool>& abort) {
  // Rows of a group and what is kept of them, to stay in the second cache.
  constexpr int kGroupBytes = 512 * 1024;
  // Margins that leave nothing between them are passes that do nothing.
  const int most = (std::min(plane.width, plane.height) - 1) / 2;
  int left = margin == Margin::Shrinking ? std::min(passes, most) : most < 1 ? 0 : passes;
  const int narrows = margin == Margin::Shrinking ? 1 : 0;
  while (left > 0) {
    const int together = std::clamp(kGroupBytes / (3 * plane.width), 1, left);
    // So that what is worked on twice stays a small part.
    const int least = std::max(8 * together, base::RowsPerBand(plane.width));
    RowBlocks blocks(plane.rows, 0, static_cast<std::size_t>(plane.width), plane.height, together,
                     least);
    std::atomic<bool> hasChanged{false};
    const bool isComplete = blocks.ForEach([&](int block) {
      PassGroup group(plane, blocks, block, pass, together, narrows ? left : 1, narrows);
      if (!group.Run(abort)) return false;
      if (group.HasChanged()) hasChanged = true;
      return true;
    });
    if (!isComplete) return false;
    if (narrows == 0 && !hasChanged) return true;
    left -= together;
  }
  return true;
}

}  // namespace

bool SmoothMask(const MaskPlane& plane, int passes, const std::atomic<bool>& abort) {
  return RunPasses(plane, {Choose<FrameKernels>().smooth}, passes, Margin::One, abort);
}

bool EmbossMask(const MaskPlane& plane, const ReliefKernel& kernel,
                const std::atomic<bool>& abort) {
  Pass pass = {Choose<FrameKernels>().relief};
  for (int i = 0; i < 9; ++i) {
    pass.weights.relief[i] = base::TruncateToInt32(kernel.weight[i] * 4096);
  }
  return RunPasses(plane, pass, 1, Margin::One, abort);
}

bool GrowShape(const MaskPlane& plane, int passes, const std::atomic<bool>& abort) {
  return RunPasses(plane, {Choose<FrameKernels>().grow, FirstGrown}, passes, Margin::Shrinking,
                   abort);
}

bool BlurMask(const MaskPlane& plane, int passes, const std::atomic<bool>& abort) {
  return RunPasses(plane, {Choose<FrameKernels>().blur, FirstBlurred}, passes, Margin::Shrinking,
                   abort);
}

bool FractionBlur(const MaskPlane& plane, int fifths, const std::atomic<bool>& abort) {
  struct Weights {
    std::int32_t centre, around;
  };
  constexpr Weights kWeights[] = {{216801, 5668}, {171457, 11336}, {126113, 17004}, {80769, 22672}};
  if (fifths < 1 || fifths > 4) return true;
  Pass pass = {Choose<FrameKernels>().fraction};
  pass.weights.centre = kWeights[fifths - 1].centre;
  pass.weights.around = kWeights[fifths - 1].around;
  return RunPasses(plane, pass, 1, Margin::One, abort);
}

}  // namespace kernels
