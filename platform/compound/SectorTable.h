// The allocation table: chains of sectors, free sectors, and how a changed table gets to new ones.
//
// A sector that the file on the disk uses is never written to. What replaces it goes to a free one,
// and the old one is free again only when a head that does without it is on the disk for certain.
#pragma once

#include <functional>
#include <vector>

#include "platform/compound/ByteStore.h"
#include "platform/compound/Format.h"

namespace platform::compound {

// A chain as far as it was followed: the part in front of a fault when it is not whole.
struct Chain {
  std::vector<Sector> sectors;
  Sector next = kEndOfChain;  // where it goes on
  bool IsWhole() const { return next == kEndOfChain; }
};

// Is told the sectors of a chain one after the other, and says whether it wants to go on.
using VisitSector = std::function<bool(Sector)>;

class SectorTable {
 public:
  // Reads where the pieces of the table are; a piece itself when it is needed. `isNew` takes none.
  SectorTable(ByteStore& bytes, const Head& head, bool isNew);

  std::size_t SectorSize() const { return sectorSize; }
  // Sectors that the file has room for; the last one may be cut off.
  std::size_t Count() const { return count; }
  // Whether the list of the table's own sectors is right.
  bool IsWhole() const { return isWhole; }
  // Sectors that the table says something about.
  std::size_t Covered() const { return pages.size() * perPage; }
  Chain Follow(Sector first);
  // The same for at least so many of the first sectors, where there are as many.
  void Follow(Chain& chain, std::size_t atLeast);
  // True when the chain has come to its end; a circle is for the visitor to see.
  bool Walk(Sector first, const VisitSector& visit);
  // Those of the table itself.
  std::vector<Sector> OwnSectors() const;
  // Whether the file ends within a sector that the table says is in use.
  bool IsCutOff();

  // Bytes within one sector. Short where the file ends.
  std::size_t Read(Sector sector, std::size_t offset, void* buffer, std::size_t bytes);
  void Write(Sector sector, const void* buffer, std::size_t bytes);
  std::uint64_t OffsetOf(Sector sector) const;

  // --- changes; one of the first two comes first

  // Only what lies behind the end of the file is written to from now on, and nothing that the file
  // has used becomes free, so that nobody has to know who uses what. False in a small file, where
  // knowing it costs little, now and then in a growing one, which would keep its gaps for ever, and
  // where the table tells of sectors behind the end.
  bool StartAppending();
  // `used` are the sectors that lie in a chain, by number; the table adds all that it says are not
  // free. May come after StartAppending.
  void StartWriting(std::vector<bool> used);

  // A free sector, the end of a chain of one once Set has said so.
  Sector Allocate();
  void Set(Sector sector, Sector next);
  void Drop(Sector sector);
  // Whether the sector is not part of what is on the disk, so that it may be written to.
  bool IsFresh(Sector sector) const { return sector < fresh.size() && fresh[sector]; }
  // Whether it was allocated and not yet set: it belongs to whoever allocated it.
  bool IsUnlinked(Sector sector) { return IsFresh(sector) && Next(sector) == kFree; }
  // Makes the sector of a chain one that may be written to, by putting a free one in its place. Its
  // content is the caller's business.
  void Own(std::vector<Sector>& chain, std::size_t index);
  void Append(std::vector<Sector>& chain);

  bool HasChanges() const { return hasChanges; }
  // Writes the changed pieces to free sectors and tells the head where they are.
  void WriteOut(Head& head);
  // The new head is written, and the one before is on the disk for certain.
  void Committed();
  // The last head that was written is on the disk for certain.
  void Synced();
  // Length of the file without the free sectors at its end.
  std::uint64_t UsedLength() const;

 private:
  struct Page {
    Sector place = kFree;
    std::vector<Sector> next;  // empty until it is needed
    bool isChanged = false;
  };

  void ReadPlaces(const Head& head);
  Page& Loaded(std::size_t page);
  Sector Next(Sector sector);
  void Release(Sector sector);
  void Cover();
  bool PlacePages();
  bool PlaceDifat();
  void WritePage(const Page& page);
  void WriteDifat();

  ByteStore& store;
  std::size_t sectorSize;
  std::size_t perPage;
  std::size_t count;
  bool isWhole = true;
  std::vector<Page> pages;
  std::vector<Sector> difat;

  bool hasChanges = false;
  bool isDifatChanged = false;
  std::size_t kept = 0;               // no sector below becomes free
  std::size_t search = 0;             // no sector below is free
  std::vector<bool> taken;            // on the disk, or since
  std::vector<bool> fresh;            // taken since
  std::vector<Sector> freshList;      // may hold what is no longer fresh
  std::vector<Sector> dropped;        // still used by the head on the disk
  std::vector<Sector> droppedBefore;  // by the head before it
};

}  // namespace platform::compound
