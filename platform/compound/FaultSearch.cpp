#include "platform/compound/FaultSearch.h"

#include <algorithm>

namespace platform::compound {
namespace {

constexpr Id kTables = 0xFFFFFFFC;

}  // namespace

FaultSearch::FaultSearch(const FileParts& searched)
    : file(searched),
      sectors(std::min(file.table.Count(), file.table.Covered()), kNone),
      pieces(file.small.Count(), kNone) {}

void FaultSearch::Tell(const Fault& fault) {
  if (faults.size() < room) faults.push_back(fault);
}

std::vector<Fault> FaultSearch::Find(std::size_t most) {
  room = most;
  CheckTables();
  for (const Id id : file.directory.Descendants(kRoot)) {
    const Element& element = file.directory.At(id);
    if (faults.size() == most) break;
    if (element.type != Type::Stream || element.size == 0) continue;
    if (element.size < kSmallBelow) {
      CheckStream(id, file.small, kMiniSize, pieces);
    } else {
      CheckStream(id, file.table, file.table.SectorSize(), sectors);
    }
  }
  return faults;
}

void FaultSearch::CheckTables() {
  if (file.isFaulty || !file.directory.IsWhole()) Tell({kNone, kNone, "the directory is damaged"});
  if (!file.table.IsWhole()) Tell({kNone, kNone, "the list of allocation tables is damaged"});
  if (!file.small.IsWhole()) Tell({kNone, kNone, "the place of the small streams is damaged"});
  if (file.table.IsCutOff()) Tell({kNone, kNone, "the file is cut off"});
  CheckOwn(file.table.OwnSectors(), kTables);
  CheckOwn(file.directoryChain, kTables);
  CheckOwn(file.small.TableChain(), kTables);
  CheckOwn(file.small.StreamChain(), kRoot);
}

void FaultSearch::CheckOwn(const std::vector<Sector>& own, Id owner) {
  for (const Sector sector : own) {
    if (sector >= sectors.size() || sectors[sector] != kNone) {
      Tell({kNone, kNone, "a sector of the tables is used twice"});
      return;
    }
    sectors[sector] = owner;
  }
}

// Stops at the first sector that somebody has already, so that no file makes it walk for long.
template <class Table>
void FaultSearch::CheckStream(Id id, Table& chains, std::size_t sectorSize, Owners& owners) {
  Id other = kNone;
  std::uint64_t bytes = 0;
  const Element& element = file.directory.At(id);
  const bool isWhole = chains.Walk(element.start, [&](Sector sector) {
    if (sector >= owners.size()) return false;
    other = owners[sector];
    if (other != kNone) return false;
    owners[sector] = id;
    bytes += sectorSize;
    return true;
  });
  if (other == id) {
    Tell({id, kNone, "the stream runs in a circle"});
  } else if (other == kTables || other == kRoot) {
    Tell({id, kNone, "the stream has sectors of the file's tables"});
  } else if (other != kNone) {
    Tell({id, other, "the stream has the same sectors as"});
  } else if (!isWhole) {
    Tell({id, kNone, "the stream's chain of sectors has no end"});
  } else if (bytes < element.size) {
    Tell({id, kNone, "the stream is shorter than its size says"});
  }
}

std::vector<bool> FaultSearch::UsedSectors() const {
  std::vector<bool> used(sectors.size());
  for (std::size_t i = 0; i < sectors.size(); ++i) used[i] = sectors[i] != kNone;
  return used;
}

}  // namespace platform::compound
