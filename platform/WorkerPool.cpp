#include "platform/WorkerPool.h"

#include <algorithm>
#include <system_error>

#include "platform/component/Guard.h"

namespace platform {

struct WorkerPool::Job {
  const int count;
  const AnimTask task;
  void* const context;
  int taken = 0;
  int done = 0;
};

WorkerPool::WorkerPool(int wanted) {
  if (wanted < 1) wanted = static_cast<int>(std::thread::hardware_concurrency());
  try {
    for (int i = 1; i < wanted; ++i) threads.emplace_back([this] { Work(); });
  } catch (const std::system_error&) {
    // No more threads to be had.
  }
}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard held(mutex);
    closing = true;
  }
  begun.notify_all();
  for (std::thread& thread : threads) thread.join();
}

HRESULT WorkerPool::Run(int count, AnimTask task, void* context) {
  if (!task) return E_POINTER;
  if (count < 1) return S_OK;
  return Guard([&] {
    Job job{count, task, context};
    std::unique_lock held(mutex);
    open.push_back(&job);
    begun.notify_all();
    while (job.taken < count) TakeTask(held, job);
    ended.wait(held, [&] { return job.done == count; });
    return S_OK;
  });
}

void WorkerPool::Work() {
  std::unique_lock held(mutex);
  for (;;) {
    begun.wait(held, [&] { return closing || !open.empty(); });
    if (closing) return;
    TakeTask(held, *open.front());
  }
}

void WorkerPool::TakeTask(std::unique_lock<std::mutex>& held, Job& job) {
  const int index = job.taken++;
  if (job.taken == job.count) open.erase(std::find(open.begin(), open.end(), &job));
  held.unlock();
  job.task(job.context, index);
  held.lock();
  if (++job.done == job.count) ended.notify_all();
}

}  // namespace platform
