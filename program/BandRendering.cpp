#include "program/BandRendering.h"

#include <algorithm>
#include <exception>
#include <thread>

#include "base/Rows.h"
#include "program/BandPipe.h"

namespace program {
namespace {

// Writes the rows that a pipe brings, on a thread that is waited for.
class Writer {
 public:
  Writer(BandPipe& from, const BandWriting& writing)
      : pipe(from), thread([this, &writing] { Run(writing); }) {}
  ~Writer() { Wait(); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  // No further band comes. Whether all rows were written; throws what the writing has thrown.
  bool Finish() {
    Wait();
    if (failure) std::rethrow_exception(failure);
    return isComplete;
  }

 private:
  void Wait() {
    pipe.Close();
    if (thread.joinable()) thread.join();
  }

  void Run(const BandWriting& writing) {
    try {
      isComplete = writing.write([this](int) { return pipe.Next(); });
    } catch (const BandPipe::Closed&) {
      // Who fills the pipe has given up, and knows why.
    } catch (...) {
      failure = std::current_exception();
    }
    pipe.Leave();
  }

  BandPipe& pipe;
  bool isComplete = false;
  std::exception_ptr failure;
  std::thread thread;
};

bool AnyTransparent(BYTE* const* maskRows, int first, int count, int width) {
  return std::any_of(maskRows + first, maskRows + first + count, [width](const BYTE* row) {
    return std::any_of(row, row + width, [](BYTE mask) { return mask != base::kOpaque; });
  });
}

// Fills the pipe. Gives what became of it as far as the pulls know.
class Bands {
 public:
  Bands(Pipeline& from, const Rectangle& wanted, const BandPlan& bandPlan,
        const BandWriting& bandWriting)
      : pipeline(from), part(wanted), plan(bandPlan), writing(bandWriting) {}

  BandOutcome Fill(BandPipe& pipe) {
    for (int end = part.height; end > 0; end -= plan.rows) {
      MemoryPicture* const band = pipe.Begin();
      if (!band) return BandOutcome::Stopped;
      const int first = std::max(0, end - plan.rows);
      const int low = std::max(0, first - plan.reach);
      const int high = std::min(part.height, end + plan.reach);
      const Rectangle rows{part.x, part.y + low, part.width, high - low};
      if (!pipeline.PullRows(rows, 0, band->ColourRows(), band->MaskRows())) {
        return BandOutcome::Stopped;
      }
      NoteAlpha(*band, first - low, end - first);
      if (hasAlpha && !writing.hasAlpha) return BandOutcome::OtherAlpha;
      pipe.End(first - low, end - first);
      const double share = static_cast<double>(part.height - first) / part.height;
      if (writing.progress && !writing.progress(share)) return BandOutcome::Stopped;
    }
    const bool isAsSaid = !writing.looksAtMask || hasAlpha == writing.hasAlpha;
    return isAsSaid ? BandOutcome::Written : BandOutcome::OtherAlpha;
  }

 private:
  void NoteAlpha(const MemoryPicture& band, int first, int count) {
    if (!writing.looksAtMask || hasAlpha) return;
    hasAlpha = AnyTransparent(band.MaskRows(), first, count, part.width);
  }

  Pipeline& pipeline;
  const Rectangle part;
  const BandPlan plan;
  const BandWriting& writing;
  bool hasAlpha = false;  // so far
};

}  // namespace

std::optional<BandPlan> PlanBands(const Pipeline::RowReach& reach, int width, int height) {
  constexpr std::int64_t kCached = 2 << 20;      // a band of this size stays in the cache
  constexpr std::int64_t kMostBytes = 12 << 20;  // of a band with a reach
  constexpr int kLeastRows = 8;
  constexpr int kWorthwhile = 16;  // times the reach: an eighth of the work is done twice
  const std::int64_t rowBytes = std::int64_t{width} * (base::kBytesPerPixel + 1);
  std::int64_t rows = std::max<std::int64_t>(kCached / rowBytes, kLeastRows);
  const std::int64_t wanted = std::int64_t{reach.rows} * kWorthwhile;
  rows = std::max(rows, std::min(wanted, std::max(kMostBytes / rowBytes, wanted / 8)));
  rows = std::min<std::int64_t>(rows, height);
  const std::int64_t asked = rows + 2 * std::int64_t{reach.rows};
  const std::int64_t window = asked + rows;
  const bool isSmall = reach.rows == 0 || 3 * asked + window < height;
  if (!isSmall) return std::nullopt;
  return BandPlan{static_cast<int>(rows), reach.rows, static_cast<int>(window)};
}

BandOutcome RenderBands(Pipeline& pipeline, const Rectangle& part, const BandPlan& plan,
                        const BandWriting& writing) {
  BandPipe pipe(part.width, std::min(part.height, plan.rows + 2 * plan.reach));
  Writer writer(pipe, writing);
  const BandOutcome outcome = Bands(pipeline, part, plan, writing).Fill(pipe);
  const bool isComplete = writer.Finish();
  return outcome == BandOutcome::Written && !isComplete ? BandOutcome::Stopped : outcome;
}

}  // namespace program
