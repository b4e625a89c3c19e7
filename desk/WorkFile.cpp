#include "desk/WorkFile.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "base/CodePage.h"
#include "host/Texts.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

constexpr int kMostDesks = 16;
constexpr std::size_t kMostRecent = 12;
constexpr char kPicture[] = "picture ";
constexpr char kOn[] = "on ";
constexpr char kOff[] = "off ";

// What stands behind the beginning; nothing when the line begins in another way.
std::optional<std::string> Behind(const std::string& line, const std::string& beginning) {
  if (!line.starts_with(beginning)) return std::nullopt;
  return line.substr(beginning.size());
}

void AddItem(Work& work, const std::string& text, bool isOn) {
  const ChainItems items = ItemsOf(base::FromUtf8(text), isOn);
  work.chain.insert(work.chain.end(), items.begin(), items.end());
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

std::string TextOf(const Work& work) {
  std::string text = kPicture + work.picture + "\n";
  for (const ChainItem& item : work.chain) {
    text += (item.isOn ? kOn : kOff) + base::ToUtf8(TextOf(ChainItems{item}, true)) + "\n";
  }
  return text;
}

Work ReadWork(const std::string& text) {
  Work work;
  for (const std::string& line : LinesOf(text)) {
    if (const auto picture = Behind(line, kPicture)) work.picture = *picture;
    if (const auto item = Behind(line, kOn)) AddItem(work, *item, true);
    if (const auto item = Behind(line, kOff)) AddItem(work, *item, false);
  }
  return work;
}

std::optional<std::string> ReadTextFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::nullopt;
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  return stream.bad() ? std::nullopt : std::optional(std::move(text));
}

std::optional<std::string> WriteTextFile(const fs::path& file, const std::string& text) {
  return platform::CurrentServices().files->Replace(file, [&](const fs::path& temporary) {
    std::ofstream stream(temporary, std::ios::binary);
    stream << text;
    stream.close();
    return !stream.fail();
  });
}

// --- WorkFile

WorkFile::WorkFile(const fs::path& folder, bool takesLeft) {
  std::error_code ignored;
  fs::create_directories(folder, ignored);
  if (!takesLeft || !TakeSlot(folder, true)) TakeSlot(folder, false);
  writer = std::thread([this] { Write(); });
}

// A slot with work that was left behind, or one without.
bool WorkFile::TakeSlot(const fs::path& folder, bool wantsLeft) {
  for (int number = 1; number <= kMostDesks; ++number) {
    const std::string name = "work-" + std::to_string(number);
    const fs::path candidate = folder / name;
    std::error_code ignored;
    if (fs::exists(candidate, ignored) != wantsLeft) continue;
    auto mutex = platform::CurrentServices().mutexes->Open("fxbox-desk " + host::Utf8Of(candidate));
    using Wait = platform::NamedMutex::Wait;
    const Wait wait = mutex ? mutex->WaitFor(std::chrono::milliseconds(0)) : Wait::Failed;
    if (wait != Wait::Held && wait != Wait::Abandoned) continue;
    slot = std::move(mutex);
    file = candidate;
    if (wantsLeft) left = ReadWork(ReadTextFile(file).value_or(""));
    return true;
  }
  return false;
}

WorkFile::~WorkFile() {
  Flush();
  {
    const std::lock_guard hold(lock);
    isEnding = true;
  }
  wake.notify_all();
  writer.join();
  if (slot) slot->Release();
}

void WorkFile::Save(const Work& work) {
  {
    const std::lock_guard hold(lock);
    waiting = TextOf(work);
  }
  wake.notify_all();
}

void WorkFile::Write() {
  std::unique_lock hold(lock);
  for (;;) {
    wake.wait(hold, [this] { return waiting || isEnding; });
    if (!waiting) return;
    const std::string text = *std::exchange(waiting, std::nullopt);
    isWriting = true;
    hold.unlock();
    if (!file.empty()) WriteTextFile(file, text);
    hold.lock();
    isWriting = false;
    written.notify_all();
  }
}

void WorkFile::Flush() {
  std::unique_lock hold(lock);
  written.wait(hold, [this] { return !waiting && !isWriting; });
}

void WorkFile::Finish() {
  Flush();
  std::error_code ignored;
  if (!file.empty()) fs::remove(file, ignored);
}

// --- RecentPictures

RecentPictures::RecentPictures(fs::path listFile) : file(std::move(listFile)) {
  for (const std::string& line : LinesOf(ReadTextFile(file).value_or(""))) {
    if (!line.empty() && names.size() < kMostRecent) names.push_back(line);
  }
}

void RecentPictures::Add(const std::string& name) {
  std::erase(names, name);
  names.insert(names.begin(), name);
  if (names.size() > kMostRecent) names.resize(kMostRecent);
  std::string text;
  for (const std::string& one : names) text += one + "\n";
  WriteTextFile(file, text);
}

}  // namespace desk
