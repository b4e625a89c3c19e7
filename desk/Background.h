// Work on a thread of its own, one job at a time.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace desk {

// A job that is begun while another runs stops that one and waits for its end, which is near when
// the job looks at its flag. One thread calls.
class Background {
 public:
  using Stop = std::shared_ptr<const std::atomic<bool>>;
  using Job = std::function<void(const Stop& stop)>;

  ~Background() { End(); }

  void Begin(Job job);
  void End();
  // Asks the job to stop and does not wait.
  void Ask();
  bool IsRunning() const { return running && *running; }

 private:
  std::shared_ptr<std::atomic<bool>> stopping, running;
  std::thread thread;
};

}  // namespace desk
