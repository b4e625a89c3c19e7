// A compound file as a whole: open, look into, change, write out.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/compound/FaultSearch.h"

namespace platform::compound {

// What is open of a file: a stream or a storage. Belongs to the file until it is told to leave.
class OpenElement {
 public:
  virtual ~OpenElement() = default;
  // The element, or the storage above it, is gone. `keeps` says that what was written counts.
  virtual void Leave(bool keeps) = 0;
  // What was written becomes part of what the next commit brings to the disk.
  virtual void Flush() {}
};

enum class Change {
  Adds,      // something new; all that the file holds stays where it is
  Replaces,  // anything else
};

class CompoundFile {
 public:
  enum class Access { Read, Write };

  // A new file with nothing in it. It is on the disk with the first commit.
  static std::shared_ptr<CompoundFile> Create(std::unique_ptr<ByteStore> store, Access access,
                                              const Head& head = Head());
  // Throws STG_E_FILEALREADYEXISTS for bytes of another kind, STG_E_INVALIDHEADER and
  // STG_E_DOCFILECORRUPT for those without a directory.
  static std::shared_ptr<CompoundFile> Open(std::unique_ptr<ByteStore> store, Access access);
  CompoundFile(const CompoundFile&) = delete;
  CompoundFile& operator=(const CompoundFile&) = delete;

  Directory& Elements() { return directory; }
  SectorTable& Sectors() { return table; }
  MiniStream& Small();

  // Comes before every change. The first time it looks at the whole file and throws
  // STG_E_DOCFILECORRUPT when there is a fault anywhere; where something is added to a large file,
  // at as much of it as the change touches.
  void Prepare(Change change);
  // What such a look finds, at most so many faults.
  std::vector<Fault> Faults(std::size_t most);
  // Gives the space of a stream back.
  void DropContent(Id stream);
  // Destroys the element with all below it; what is open of it leaves.
  void Destroy(Id id);
  void DestroyAllBelow(Id storage);
  void FlushOpen();
  // Brings everything to the disk: the file holds the old state until the last step.
  void Commit();
  // The file is done with: free space at its end goes.
  void Close();

  void Enter(Id id, OpenElement* element) { opened[id] = element; }
  void Forget(Id id) { opened.erase(id); }
  bool IsOpen(Id id) const { return opened.count(id) > 0; }
  // Everything that is open below the storage leaves.
  void LeaveBelow(Id storage, bool keeps);

 private:
  CompoundFile(std::unique_ptr<ByteStore> bytes, const Head& start, Access wanted, bool isNew);

  FaultSearch SearchFaults();
  bool CanAppend();
  void StartReplacing();
  void PlaceDirectory();
  void WriteNewHead();

  std::unique_ptr<ByteStore> store;
  const Access access;
  Head head;
  SectorTable table;
  std::vector<Sector> directoryChain;
  Directory directory;
  MiniStream small;
  bool isSmallLoaded;
  bool isAppending = false;  // prepared for what is new
  bool isPrepared;           // for everything
  bool isFaulty = false;
  std::map<Id, OpenElement*> opened;
};

}  // namespace platform::compound
