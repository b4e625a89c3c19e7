// Sharing out rows among the threads that a host has lent.
#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <type_traits>

#include "base/AnimWorkers.h"
#include "base/Export.h"

namespace base {

// From now on jobs run on these; null: on the caller's thread alone. Takes a reference, which the
// jobs that run keep until they are done. Any thread.
FXBOX_API void SetWorkers(IAnimWorkers* workers);

// As many rows of `width` pixels as are worth to be handed to another thread. `pixels` says how
// many that are: by default of a filter that does hundreds of millions in a second; a slower one
// says fewer.
constexpr int RowsPerBand(int width, int pixels = 65536) {
  return std::max(1, pixels / std::max(1, width));
}

// A call for the rows `first` to `end` - 1, with type and result erased. False ends the job.
using BandCall = bool (*)(void* band, int first, int end);
FXBOX_API bool RunBands(int rows, int least, BandCall call, void* band);

// Calls band(first, end) for bands of at least `least` rows that together are rows 0 to rows - 1,
// each row once: on the workers' threads, several at once and in any order, or all rows in one call
// on this thread. How rows are cut into bands must not show in the result. `band` gives nothing or
// false to stop: bands that have not begun are then left out, and so is the rest of the job. Gives
// false when it was stopped. Throws what a band throws, when all that had begun are done. A band
// that calls this again does its part alone.
template <class Band>
bool ForEachBand(int rows, int least, Band&& band) {
  using Called = std::remove_reference_t<Band>;
  const BandCall call = [](void* erased, int first, int end) {
    auto& called = *static_cast<Called*>(erased);
    if constexpr (std::is_void_v<decltype(called(first, end))>) {
      called(first, end);
      return true;
    } else {
      return called(first, end);
    }
  };
  return RunBands(rows, least, call,
                  const_cast<void*>(static_cast<const void*>(std::addressof(band))));
}

// How many bands that would be now: 1 where all rows go in one call. For work that has to prepare
// itself for more.
FXBOX_API int BandsOf(int rows, int least);

// Counts over rows: add(part, first, end), which gives false to stop, adds a band's rows to counts
// of its own, and `total` gets them all, by +=, in any order. So they must not depend on one. Gives
// false when it was stopped.
template <class Counts, class Add>
bool CountInBands(int rows, int least, Counts& total, const Add& add) {
  std::mutex adding;
  return ForEachBand(rows, least, [&](int first, int end) {
    Counts part = {};
    const bool isComplete = add(part, first, end);
    const std::lock_guard guard(adding);
    total += part;
    return isComplete;
  });
}

}  // namespace base
