// A picture box on disk, opened for one command.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "storage/KvStorage.h"
#include "storage/kvPicBox.h"

namespace program {

enum class BoxAccess { Read, Change, Make };

struct CloseStorage {
  void operator()(IKvStorage* storage) const { storage->Close(); }
};
using StorageHolder = std::unique_ptr<IKvStorage, CloseStorage>;

// One picture of one generation, as it is listed.
struct BoxEntry {
  picbox::Place place = picbox::kPictures;
  std::string name;     // of the stream, in the code page
  bool native = false;  // it is a plain file
  // The name that notes and hosts know it by: a plain file's without its extension.
  std::string Title() const;
};

// All failures are FileErrors.
class BoxFile {
 public:
  // A name that ends in "/" is a folder box. With Make the box and all its storages are made.
  BoxFile(const std::string& argument, BoxAccess access);
  // What was changed and not kept is lost, as far as the system can.
  ~BoxFile();
  BoxFile(const BoxFile&) = delete;
  BoxFile& operator=(const BoxFile&) = delete;

  // Brings all changes to the disk.
  void Keep();

  const std::string& Name() const { return name; }
  bool IsFolder() const { return isFolder; }
  const std::filesystem::path& Path() const { return path; }
  kvPicBox& Pictures() { return *box; }
  IKvStorage& Root() { return *root; }
  // Of a compound file; null in a folder.
  IStorage* Element() const { return compound ? compound->Element() : nullptr; }
  // The storage of the system behind a place; null in a folder.
  IStorage* ElementOf(picbox::Place place) const;

  // Every picture, the oldest generations last; which ones are plain files is not looked at.
  std::vector<BoxEntry> Entries();
  // The pictures of this name in all generations: exactly so, else without regard to case or
  // cleaned, else plain files with this stem.
  std::vector<BoxEntry> Find(const std::string& wanted);
  // Those that a new picture of this name would stand beside.
  std::vector<BoxEntry> SameTitle(const std::string& title);
  // Where its stream lies in the box: in UTF-8, joined with "/".
  static std::string PathIn(const BoxEntry& entry);
  // The first one; a FileError when there is none.
  BoxEntry Need(const std::string& wanted);
  picbox::FoundPicture Open(const BoxEntry& entry);

  // Deletes pictures; the note goes with the last of its name.
  void Delete(const std::vector<BoxEntry>& entries, bool keepsNote);
  // Makes the stream that was written as kStaged take the place of all pictures of this title. A
  // folder's streams have taken their place already.
  void PutInPlace(picbox::Place place, const std::string& streamName,
                  const std::vector<BoxEntry>& replaced);
  // Under which name a new stream is written.
  std::string StagedName(const std::string& streamName) const;

  [[noreturn]] void Fail(const std::string& what) const;
  [[noreturn]] void FailPicture(const std::string& picture, const std::string& what) const;

 private:
  void OpenFolder(BoxAccess access);
  void OpenCompound(BoxAccess access);
  KvStorage* Opened(KvStorage* storage);
  void OpenCopy();
  void MoveCopy();
  void MarkNative(std::vector<BoxEntry>& entries);

  std::string name;
  std::filesystem::path path;
  std::filesystem::path copy;  // what is changed, where the file itself would not survive a kill
  bool isFolder = false;
  bool isNew = false;
  bool isKept = false;
  StorageHolder original;  // keeps others out while the copy is changed
  StorageHolder root;
  KvStorage* compound = nullptr;  // the root, where it is a compound file
  std::unique_ptr<kvPicBox> box;
};

// Any compound file, opened for reading beside other readers. A FileError when it cannot be.
class CompoundFile {
 public:
  explicit CompoundFile(const std::string& name);
  IStorage* Element() const { return storage->Element(); }

 private:
  struct Close {
    void operator()(KvStorage* opened) const { opened->Close(); }
  };
  std::unique_ptr<KvStorage, Close> storage;
};

// The folder of a folder box: "a/shots/" is the folder "a/shots_kv".
std::filesystem::path BoxFolder(const std::string& argument);
bool NamesFolder(const std::string& argument);

}  // namespace program
