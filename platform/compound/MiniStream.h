// Small streams: they share the sectors of one stream of the root, in pieces of 64 bytes with a
// table of their own.
#pragma once

#include <vector>

#include "platform/compound/SectorTable.h"

namespace platform::compound {

class MiniStream {
 public:
  explicit MiniStream(SectorTable& sectors) : table(sectors) {}
  // Reads the table; `stream` is where the root says that the pieces lie.
  void Load(Sector firstTable, Sector stream);

  // Up to `size` bytes of a small stream, fewer when its chain is not whole.
  Bytes Read(Sector first, std::size_t size);
  // Writes a new small stream and gives its first piece.
  Sector Add(const Bytes& content);
  void Remove(Sector first);

  // Whether the sectors of table and stream could all be found.
  bool IsWhole() const { return isWhole; }
  const std::vector<Sector>& TableChain() const { return tableChain; }
  const std::vector<Sector>& StreamChain() const { return streamChain; }
  std::size_t Count() const { return next.size(); }
  // As that of the sectors, over the pieces.
  bool Walk(Sector first, const VisitSector& visit) const;

  // Writes the changed parts of the table to sectors that the disk does not use.
  void WriteTable();
  void Committed() { changed.assign(tableChain.size(), false); }

  Sector FirstTable() const { return tableChain.empty() ? kEndOfChain : tableChain.front(); }
  std::uint32_t TableSectors() const { return static_cast<std::uint32_t>(tableChain.size()); }
  Sector FirstOfStream() const { return streamChain.empty() ? kEndOfChain : streamChain.front(); }
  std::uint64_t StreamSize() const { return next.size() * kMiniSize; }

 private:
  Sector Allocate();
  void Set(Sector piece, Sector value);
  void Write(Sector piece, const std::uint8_t* bytes, std::size_t count);
  std::size_t PerSector() const { return table.SectorSize() / kMiniSize; }
  std::size_t NumbersPerSector() const { return table.SectorSize() / sizeof(Sector); }

  SectorTable& table;
  bool isWhole = true;
  std::vector<Sector> next;  // as long as the stream has pieces
  std::vector<Sector> tableChain;
  std::vector<Sector> streamChain;
  std::vector<bool> changed;  // sectors of the table
  std::size_t search = 0;     // no piece below is free
};

}  // namespace platform::compound
