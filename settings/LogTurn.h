// A process's turn at the log file.
#pragma once

#include <chrono>

#include "platform/Services.h"

namespace settings {

inline constexpr std::chrono::milliseconds kLongestWait{10'000};

// Holds the log's mutex while it lives, when it could be had in time. A process that was killed may
// have left half a line at the end of the file: it is ended here, so that the next one stands
// alone. That is looked for when the owner before is known to have died, and when the caller has
// just opened the file.
class LogTurn {
 public:
  using Wait = platform::NamedMutex::Wait;

  LogTurn(platform::NamedMutex& waited, platform::GrowingFile& file, bool justOpened)
      : mutex(waited), result(waited.WaitFor(kLongestWait)) {
    const bool mayBeTorn = result == Wait::Abandoned || (result == Wait::Held && justOpened);
    if (mayBeTorn && !file.EndsInLineFeed()) file.Append("\r\n");
  }
  ~LogTurn() {
    if (result == Wait::Held || result == Wait::Abandoned) mutex.Release();
  }
  LogTurn(const LogTurn&) = delete;
  LogTurn& operator=(const LogTurn&) = delete;

  Wait Result() const { return result; }

 private:
  platform::NamedMutex& mutex;
  const Wait result;
};

}  // namespace settings
