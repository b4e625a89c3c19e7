// Lines on their way through a thread of their own to the log file.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "platform/Services.h"

namespace settings {

// The caller of Put only queues. The thread takes its turns at the file and ends with End, or at
// once when the file cannot be opened. The object lives until both sides have let go of it.
class Journal : public std::enable_shared_from_this<Journal> {
 public:
  // Starts the thread; throws what the system throws when it cannot.
  static std::shared_ptr<Journal> Start(const std::string& logPath,
                                        std::shared_ptr<platform::NamedMutex> logMutex);

  // The line without its end. False when the thread has ended and nothing is written any more.
  bool Put(std::string line);
  // Lets the thread write what waits, and waits at most three seconds for its end.
  void End();

  Journal(std::string logPath, std::shared_ptr<platform::NamedMutex> logMutex);

 private:
  void Run();
  void WriteWaiting(platform::GrowingFile& file);

  const std::string path;
  const std::shared_ptr<platform::NamedMutex> turns;
  bool justOpened = true;  // the thread's own

  std::mutex lock;  // guards what follows, never held while the file is written
  std::condition_variable wake;
  std::condition_variable done;
  std::deque<std::string> waiting;
  bool stop = false;
  bool ended = false;
};

}  // namespace settings
