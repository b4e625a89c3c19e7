// WorkerPool: threads to lend to the library, for a host that has none of its own.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "base/AnimWorkers.h"
#include "platform/component/ComObject.h"

namespace platform {

// A job runs on the thread that calls Run and on those of the pool that are free. Threads that call
// at once share them. Take the pool back with FxboxSetWorkers(nullptr) before the module goes: its
// threads end with its last reference, which must not be given back from one of its tasks.
class FXBOX_API WorkerPool final : public ComObject<WorkerPool, IAnimWorkers> {
 public:
  // `threads` counts the calling thread; 0 takes as many as there are processors. When the system
  // gives fewer, the pool has fewer.
  explicit WorkerPool(int threads = 0);
  ~WorkerPool();

  HRESULT STDMETHODCALLTYPE Run(int count, AnimTask task, void* context) override;

 private:
  struct Job;

  void Work();
  void TakeTask(std::unique_lock<std::mutex>& held, Job& job);

  std::mutex mutex;  // of everything below, jobs included
  std::condition_variable begun, ended;
  std::deque<Job*> open;  // with tasks that nobody has taken yet
  bool closing = false;
  std::vector<std::thread> threads;
};

}  // namespace platform
