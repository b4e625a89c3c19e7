// What comes back after a crash: the picture and the chain, kept in a file while one works.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "desk/ChainDocument.h"
#include "platform/Services.h"

namespace desk {

// Names in UTF-8.
struct Work {
  std::string picture;
  ChainItems chain;
  bool operator==(const Work&) const = default;
};

std::string TextOf(const Work& work);
// Lines that make no sense are passed over.
Work ReadWork(const std::string& text);

// Every running desk has a file of its own in the folder; one that was left behind by a desk that
// is gone is taken over by the next. The file is written on a thread of its own, and always whole.
class WorkFile {
 public:
  // `takesLeft`: take over what another desk left behind, if there is any.
  WorkFile(const std::filesystem::path& folder, bool takesLeft);
  // Whether the file stays depends on Finish.
  ~WorkFile();
  WorkFile(const WorkFile&) = delete;
  WorkFile& operator=(const WorkFile&) = delete;

  // What was left behind, when it was taken over.
  const std::optional<Work>& Left() const { return left; }
  // From now on this is what comes back. Returns at once.
  void Save(const Work& work);
  // Waits until what was saved is on the disk.
  void Flush();
  // The work has come to its end: nothing is to come back.
  void Finish();

 private:
  bool TakeSlot(const std::filesystem::path& folder, bool wantsLeft);
  void Write();

  std::unique_ptr<platform::NamedMutex> slot;
  std::filesystem::path file;  // empty without a slot
  std::optional<Work> left;

  std::mutex lock;
  std::condition_variable wake, written;
  std::optional<std::string> waiting;
  bool isWriting = false;
  bool isEnding = false;
  std::thread writer;
};

// The names of pictures that were opened, the newest first; in a text file.
class RecentPictures {
 public:
  explicit RecentPictures(std::filesystem::path listFile);
  const std::vector<std::string>& Names() const { return names; }
  void Add(const std::string& name);

 private:
  std::filesystem::path file;
  std::vector<std::string> names;
};

// The whole file, nothing when it cannot be read; and whole or not at all.
std::optional<std::string> ReadTextFile(const std::filesystem::path& file);
std::optional<std::string> WriteTextFile(const std::filesystem::path& file,
                                         const std::string& text);

}  // namespace desk
