// Looks for what keeps a compound file from being written to: chains without an end, sectors that
// two of them have, tables and trees that are not whole.
#pragma once

#include <vector>

#include "platform/compound/Directory.h"
#include "platform/compound/MiniStream.h"

namespace platform::compound {

struct Fault {
  Id stream;         // kNone: the file as a whole
  Id other = kNone;  // the stream that has the same sectors
  const char* words;
};

// What a file consists of.
struct FileParts {
  bool isFaulty;  // something was wrong when it was opened
  SectorTable& table;
  const std::vector<Sector>& directoryChain;
  Directory& directory;
  MiniStream& small;
};

class FaultSearch {
 public:
  explicit FaultSearch(const FileParts& searched);

  // At most so many; every sector is looked at once.
  std::vector<Fault> Find(std::size_t most);
  // After Find: the sectors that lie in a chain, by number.
  std::vector<bool> UsedSectors() const;

 private:
  // Who has a sector: a stream, kRoot for the one that holds the small streams, or kTables.
  using Owners = std::vector<Id>;

  void CheckTables();
  void CheckOwn(const std::vector<Sector>& own, Id owner);
  template <class Table>
  void CheckStream(Id id, Table& chains, std::size_t sectorSize, Owners& owners);
  void Tell(const Fault& fault);

  FileParts file;
  Owners sectors;
  Owners pieces;
  std::size_t room = 0;
  std::vector<Fault> faults;
};

}  // namespace platform::compound
