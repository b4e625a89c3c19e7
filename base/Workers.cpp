#include "base/Workers.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <utility>

namespace base {
namespace {

// Enough for sixteen threads that do not run evenly.
constexpr int kMostBands = 64;

std::mutex lentLock;
IAnimWorkers* lent = nullptr;

// Whether this thread is at a band of some job.
thread_local bool isInBand = false;

// The workers as they are now, kept for a job.
class CurrentWorkers {
 public:
  CurrentWorkers() {
    const std::lock_guard guard(lentLock);
    workers = lent;
    if (workers) workers->AddRef();
  }
  ~CurrentWorkers() {
    if (workers) workers->Release();
  }
  CurrentWorkers(const CurrentWorkers&) = delete;
  CurrentWorkers& operator=(const CurrentWorkers&) = delete;

  explicit operator bool() const { return workers != nullptr; }
  void Run(int count, AnimTask task, void* context) { workers->Run(count, task, context); }

 private:
  IAnimWorkers* workers;
};

// Each task takes the next band, whatever number it was called with: a host that calls one twice,
// or leaves one out, does no harm.
class Job {
 public:
  Job(int jobRows, int jobBands, BandCall bandCall, void* calledBand)
      : rows(jobRows), bands(jobBands), call(bandCall), band(calledBand) {}

  static void STDMETHODCALLTYPE Task(void* job, int) { static_cast<Job*>(job)->TakeBand(); }

  // What the workers have left.
  void Finish() {
    while (TakeBand()) continue;
    if (failure) std::rethrow_exception(failure);
  }
  bool IsStopped() const { return stopped; }

 private:
  bool TakeBand() {
    const int number = next++;
    if (number >= bands || stopped) return false;
    isInBand = true;
    try {
      if (!call(band, RowOf(number), RowOf(number + 1))) stopped = true;
    } catch (...) {
      if (!stopped.exchange(true)) failure = std::current_exception();
    }
    isInBand = false;
    return true;
  }

  int RowOf(int number) const { return static_cast<int>(std::int64_t{rows} * number / bands); }

  const int rows, bands;
  const BandCall call;
  void* const band;
  std::atomic<int> next{0};
  std::atomic<bool> stopped{false};
  std::exception_ptr failure;  // the first; who has set `stopped` alone writes it
};

}  // namespace

void SetWorkers(IAnimWorkers* workers) {
  if (workers) workers->AddRef();
  {
    const std::lock_guard guard(lentLock);
    std::swap(lent, workers);
  }
  if (workers) workers->Release();
}

int BandsOf(int rows, int least) {
  const int bands = isInBand ? 1 : std::clamp(rows / std::max(1, least), 1, kMostBands);
  return bands > 1 && CurrentWorkers() ? bands : 1;
}

bool RunBands(int rows, int least, BandCall call, void* band) {
  if (rows < 1) return true;
  const int bands = BandsOf(rows, least);
  CurrentWorkers workers;
  if (bands == 1 || !workers) return call(band, 0, rows);
  Job job(rows, bands, call, band);
  workers.Run(bands, &Job::Task, &job);
  job.Finish();
  return !job.IsStopped();
}

}  // namespace base
