#include "desk/Background.h"

#include <utility>

#include "host/ComponentRuntime.h"

namespace desk {

void Background::Begin(Job job) {
  End();
  stopping = std::make_shared<std::atomic<bool>>(false);
  running = std::make_shared<std::atomic<bool>>(true);
  thread = std::thread([run = std::move(job), stop = stopping, state = running] {
    const host::ComponentRuntime runtime;
    run(stop);
    *state = false;
  });
}

void Background::Ask() {
  if (stopping) *stopping = true;
}

void Background::End() {
  Ask();
  if (thread.joinable()) thread.join();
}

}  // namespace desk
