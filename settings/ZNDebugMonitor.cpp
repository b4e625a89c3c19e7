#include "settings/ZNDebugMonitor.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include "platform/Services.h"
#include "settings/LogLines.h"
#include "settings/TraceLogStd.h"

namespace {

constexpr char kTopicFile[] = "ZNDebug.txt";
constexpr std::size_t kMostTopics = 499;
constexpr std::size_t kLongestText = 4095;
constexpr int kLoaded = 1234;
constexpr int kUnloaded = -1;

struct Monitor {
  std::recursive_mutex lock;  // what is shown may come back here
  // Loaded with no topics is the usual state, and read without the lock.
  std::atomic<int> state{0};
  std::atomic<bool> empty{false};
  bool ended = false;
  std::vector<std::string> topics;
};

// Never destroyed: calls may come until the very end of the process.
Monitor& TheMonitor() {
  static Monitor& monitor = *new Monitor;
  return monitor;
}

std::vector<std::string> Topics(const std::string& text) {
  constexpr char kBlanks[] = " \t\n\v\f\r";
  std::vector<std::string> topics;
  std::size_t at = 0;
  while (topics.size() < kMostTopics) {
    at = text.find_first_not_of(kBlanks, at);
    if (at == std::string::npos) break;
    const std::size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
    if (text[at] == '#') {
      at = std::min(text.find('\n', end), text.size());
    } else {
      topics.push_back(text.substr(at, end - at));
      at = end;
    }
  }
  return topics;
}

void Load(Monitor& monitor) {
  if (monitor.state == kLoaded) return;
  const std::filesystem::path program = platform::CurrentServices().process->Program();
  std::ifstream file(program.parent_path() / kTopicFile, std::ios::binary);
  if (!file) file.open(kTopicFile, std::ios::binary);
  std::string text;
  if (file) text.assign(std::istreambuf_iterator<char>(file), {});
  monitor.topics = Topics(text);
  monitor.empty = monitor.topics.empty();
  monitor.state = kLoaded;
}

void Unload(Monitor& monitor) {
  monitor.topics.clear();
  monitor.empty = false;
  monitor.state = kUnloaded;
}

void Show(const char* topic, const char* format, va_list arguments) {
  platform::Desktop& desktop = *platform::CurrentServices().desktop;
  desktop.WriteDebugOutput(std::string(topic) + " [ZNDeMon]: ");
  std::string text;
  settings::FormatLimited(kLongestText, "ZNDebugMonitor - Buffer Overflow\n", format, arguments,
                          text);
  TraceLog(0).Format(0, "%s: %s", topic, text.c_str());
  desktop.WriteDebugOutput(text + '\n');
}

void ShowFault(const char* topic, int line) noexcept {
  try {
    KvString text;
    text.Format("logging Exception in %s : %s(%d)", topic, "Sources/ZNDebugMonitor", line);
    platform::CurrentServices().desktop->WriteDebugOutput(text.ToStdString());
  } catch (...) {
  }
}

}  // namespace

int ZNDebugMonitor(const char* topic, const char* format, ...) {
  if (!topic) return 0;
  try {
    Monitor& monitor = TheMonitor();
    if (monitor.state == kLoaded && monitor.empty) return 0;
    const std::lock_guard guard(monitor.lock);
    Load(monitor);
    if (std::find(monitor.topics.begin(), monitor.topics.end(), topic) != monitor.topics.end()) {
      va_list arguments;
      va_start(arguments, format);
      Show(topic, format, arguments);
      va_end(arguments);
    }
    if (monitor.ended) Unload(monitor);
  } catch (...) {
    ShowFault(topic, __LINE__);
  }
  return 0;
}

void EndDebugMonitor() {
  Monitor& monitor = TheMonitor();
  const std::lock_guard guard(monitor.lock);
  monitor.ended = true;
  Unload(monitor);
}
