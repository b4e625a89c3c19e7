// Renders a result in bands, from its top row down, while the rows before are written and the rows
// behind are decoded: no stage holds the picture.
#pragma once

#include <functional>
#include <optional>

#include "program/Host.h"

namespace program {

// How a chain is pulled in bands.
struct BandPlan {
  int rows = 0;    // of a band
  int reach = 0;   // rows more above and below
  int window = 0;  // rows that the source keeps
};

// Nothing where bands would need as much memory as the picture itself, which is `height` rows high.
std::optional<BandPlan> PlanBands(const Pipeline::RowReach& reach, int width, int height);

struct BandWriting {
  // Takes all rows of the part out of the feed; false when it was stopped. Runs on a thread of its
  // own.
  std::function<bool(const imageio::RowFeed& feed)> write;
  bool looksAtMask = true;
  bool hasAlpha = false;  // what it is written as, when it looks
  std::function<bool(double share)> progress = {};
};

enum class BandOutcome {
  Written,
  Stopped,
  OtherAlpha  // the masks are not as `hasAlpha` says: what was written is of no use
};

// Pulls a part of the result, as Settle has left the chain. Throws what the pulls or the writing
// throw.
BandOutcome RenderBands(Pipeline& pipeline, const Rectangle& part, const BandPlan& plan,
                        const BandWriting& writing);

}  // namespace program
