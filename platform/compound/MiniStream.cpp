#include "platform/compound/MiniStream.h"

#include <algorithm>
#include <set>

namespace platform::compound {

// The pieces are those that there are sectors for, whatever the root says about the length.
void MiniStream::Load(Sector firstTable, Sector stream) {
  const auto follow = [this](Sector first) {
    if (first == kEndOfChain || first == kFree) return std::vector<Sector>();
    Chain chain = table.Follow(first);
    isWhole = isWhole && chain.IsWhole();
    return std::move(chain.sectors);
  };
  tableChain = follow(firstTable);
  streamChain = follow(stream);
  Bytes bytes(table.SectorSize());
  for (const Sector sector : tableChain) {
    const std::size_t read = table.Read(sector, 0, bytes.data(), bytes.size());
    isWhole = isWhole && read == bytes.size();
    for (std::size_t i = 0; i + 4 <= read; i += 4) next.push_back(Get32(&bytes[i]));
  }
  next.resize(std::min(next.size(), streamChain.size() * PerSector()));
  // Pieces behind the last one in use only look as if there were more of them.
  while (!next.empty() && next.back() == kFree) next.pop_back();
  changed.assign(tableChain.size(), false);
}

bool MiniStream::Walk(Sector first, const VisitSector& visit) const {
  Sector at = first;
  for (; at < next.size(); at = next[at]) {
    if (!visit(at)) return false;
  }
  return at == kEndOfChain;
}

Bytes MiniStream::Read(Sector first, std::size_t size) {
  Bytes content;
  std::set<Sector> seen;
  Walk(first, [&](Sector at) {
    if (!seen.insert(at).second) return false;
    const std::size_t wanted = std::min(kMiniSize, size - content.size());
    const std::size_t before = content.size();
    content.resize(before + wanted);
    const std::size_t read = table.Read(streamChain[at / PerSector()], at % PerSector() * kMiniSize,
                                        &content[before], wanted);
    content.resize(before + read);
    return read == wanted && content.size() < size;
  });
  return content;
}

void MiniStream::Set(Sector piece, Sector value) {
  next[piece] = value;
  while (tableChain.size() * NumbersPerSector() < next.size()) {
    table.Append(tableChain);
    changed.push_back(true);
  }
  changed[piece / NumbersPerSector()] = true;
}

Sector MiniStream::Allocate() {
  while (search < next.size() && next[search] != kFree) ++search;
  if (search == next.size()) {
    if (streamChain.size() * PerSector() == next.size()) table.Append(streamChain);
    next.push_back(kFree);
  }
  const auto piece = static_cast<Sector>(search);
  Set(piece, kEndOfChain);
  return piece;
}

// The sector that holds the piece holds others, which move along.
void MiniStream::Write(Sector piece, const std::uint8_t* bytes, std::size_t count) {
  const std::size_t index = piece / PerSector();
  Bytes sector(table.SectorSize());
  table.Read(streamChain[index], 0, sector.data(), sector.size());
  table.Own(streamChain, index);
  const auto at = sector.begin() + static_cast<std::ptrdiff_t>(piece % PerSector() * kMiniSize);
  std::fill_n(at, kMiniSize, std::uint8_t{0});
  std::copy_n(bytes, count, at);
  table.Write(streamChain[index], sector.data(), sector.size());
}

Sector MiniStream::Add(const Bytes& content) {
  Sector first = kEndOfChain;
  Sector last = kEndOfChain;
  try {
    for (std::size_t at = 0; at < content.size(); at += kMiniSize) {
      const Sector piece = Allocate();
      if (first == kEndOfChain) first = piece;
      if (last != kEndOfChain) Set(last, piece);
      last = piece;
      Write(piece, &content[at], std::min(kMiniSize, content.size() - at));
    }
  } catch (...) {
    Remove(first);
    throw;
  }
  return first;
}

void MiniStream::Remove(Sector first) {
  std::vector<Sector> pieces;
  Walk(first, [&pieces](Sector piece) {
    pieces.push_back(piece);
    return true;
  });
  for (const Sector piece : pieces) {
    Set(piece, kFree);
    search = std::min<std::size_t>(search, piece);
  }
}

void MiniStream::WriteTable() {
  Bytes bytes(table.SectorSize());
  for (std::size_t i = 0; i < tableChain.size(); ++i) {
    if (!changed[i]) continue;
    table.Own(tableChain, i);
    for (std::size_t k = 0; k < NumbersPerSector(); ++k) {
      const std::size_t piece = i * NumbersPerSector() + k;
      Put32(&bytes[4 * k], piece < next.size() ? next[piece] : kFree);
    }
    table.Write(tableChain[i], bytes.data(), bytes.size());
  }
}

}  // namespace platform::compound
