#include "settings/Journal.h"

#include <stdexcept>
#include <thread>
#include <utility>

#include "platform/PathText.h"
#include "settings/LogLines.h"
#include "settings/LogTurn.h"

namespace settings {

Journal::Journal(std::string logPath, std::shared_ptr<platform::NamedMutex> logMutex)
    : path(std::move(logPath)), turns(std::move(logMutex)) {
  waiting.push_back(JournalPrefix(0) + "JournalThread starting.");
}

std::shared_ptr<Journal> Journal::Start(const std::string& logPath,
                                        std::shared_ptr<platform::NamedMutex> logMutex) {
  const auto journal = std::make_shared<Journal>(logPath, std::move(logMutex));
  // Nobody joins the thread: while a module goes, the system lets no thread end. So the module does
  // not go any more.
  static const char ours = 0;
  platform::CurrentServices().modules->Keep(&ours);
  std::thread([journal] { journal->Run(); }).detach();
  return journal;
}

bool Journal::Put(std::string line) {
  {
    const std::lock_guard guard(lock);
    if (stop) return false;
    waiting.push_back(std::move(line));
  }
  wake.notify_one();
  return true;
}

void Journal::End() {
  constexpr std::chrono::seconds kLongestEnd{3};
  std::unique_lock guard(lock);
  stop = true;
  wake.notify_one();
  done.wait_until(guard, std::chrono::system_clock::now() + kLongestEnd, [this] { return ended; });
}

void Journal::Run() {
  try {
    const auto file =
        platform::CurrentServices().files->OpenGrowing(platform::PathFromText(path), false);
    bool going = file != nullptr;
    while (going) {
      {
        std::unique_lock guard(lock);
        wake.wait(guard, [this] { return stop || !waiting.empty(); });
        going = !stop;
      }
      WriteWaiting(*file);
    }
  } catch (...) {
    platform::CurrentServices().desktop->WriteDebugOutput("ERROR on writing to LogFile");
  }
  const std::lock_guard guard(lock);
  stop = true;
  ended = true;
  done.notify_all();
}

// What cannot be written now, because the turn does not come, waits for the next time.
void Journal::WriteWaiting(platform::GrowingFile& file) {
  const LogTurn turn(*turns, file, justOpened);
  if (turn.Result() == LogTurn::Wait::TimedOut) return;
  if (turn.Result() == LogTurn::Wait::Failed) throw std::runtime_error("there are no turns");
  justOpened = false;
  for (;;) {
    std::string line;
    {
      const std::lock_guard guard(lock);
      if (waiting.empty()) break;
      line = std::move(waiting.front());
      waiting.pop_front();
    }
    file.Append(line.append(kLineEnd));
  }
  file.Flush();
}

}  // namespace settings
