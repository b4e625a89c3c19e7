#include "platform/compound/SectorTable.h"

#include <algorithm>

namespace platform::compound {
namespace {

// Tables of so many pages are read as a whole before the first change: half a megabyte.
constexpr std::size_t kFewPages = 1024;
// Larger ones each time that the file has grown by this many sectors.
constexpr std::size_t kSpan = std::size_t{1} << 17;

std::size_t CountSectors(std::uint64_t size, std::size_t sectorSize) {
  const std::uint64_t behindHead = size > sectorSize ? size - sectorSize : 0;
  return static_cast<std::size_t>(
      std::min<std::uint64_t>((behindHead + sectorSize - 1) / sectorSize, kMostSectors));
}

// Cuts the chain in front of the first sector that it has had already.
void CutAtRepetition(std::vector<Sector>& chain) {
  if (chain.empty()) return;
  std::vector<bool> seen(std::size_t{*std::max_element(chain.begin(), chain.end())} + 1);
  const auto isSeen = [&seen](Sector sector) {
    if (seen[sector]) return true;
    seen[sector] = true;
    return false;
  };
  chain.erase(std::find_if(chain.begin(), chain.end(), isSeen), chain.end());
}

}  // namespace

SectorTable::SectorTable(ByteStore& bytes, const Head& head, bool isNew)
    : store(bytes),
      sectorSize(head.SectorSize()),
      perPage(sectorSize / sizeof(Sector)),
      count(isNew ? 0 : CountSectors(bytes.Size(), sectorSize)) {
  if (!isNew) ReadPlaces(head);
}

// The first places stand in the head, the others in sectors whose last number is the next of them.
void SectorTable::ReadPlaces(const Head& head) {
  std::vector<Sector> places(head.fat.begin(), head.fat.end());
  Bytes bytes(sectorSize);
  Sector at = head.firstDifat;
  while (at < count && difat.size() < count / perPage / (perPage - 1) + 2) {
    difat.push_back(at);
    const std::size_t read = Read(at, 0, bytes.data(), sectorSize);
    if (read < sectorSize) break;
    for (std::size_t i = 0; i + 1 < perPage; ++i) places.push_back(Get32(&bytes[4 * i]));
    at = Get32(&bytes[sectorSize - 4]);
  }
  isWhole = at == kEndOfChain || at == kFree;
  const auto end = std::find(places.begin(), places.end(), kFree);
  for (auto place = places.begin(); place != end; ++place) {
    isWhole = isWhole && *place < count;
    pages.push_back({*place, {}, false});
  }
  isWhole = isWhole && pages.size() == head.fatSectors;
}

std::uint64_t SectorTable::OffsetOf(Sector sector) const {
  return (std::uint64_t{sector} + 1) * sectorSize;
}

std::size_t SectorTable::Read(Sector sector, std::size_t offset, void* buffer, std::size_t bytes) {
  return store.Read(OffsetOf(sector) + offset, buffer, bytes);
}

void SectorTable::Write(Sector sector, const void* buffer, std::size_t bytes) {
  store.Write(OffsetOf(sector), buffer, bytes);
}

SectorTable::Page& SectorTable::Loaded(std::size_t index) {
  Page& page = pages[index];
  if (!page.next.empty()) return page;
  Bytes bytes(sectorSize);
  if (page.place >= count || Read(page.place, 0, bytes.data(), sectorSize) < sectorSize) {
    Fail(STG_E_DOCFILECORRUPT);
  }
  std::vector<Sector> numbers(perPage);
  for (std::size_t i = 0; i < perPage; ++i) numbers[i] = Get32(&bytes[4 * i]);
  page.next = std::move(numbers);
  return page;
}

Sector SectorTable::Next(Sector sector) {
  const std::size_t page = sector / perPage;
  return page < pages.size() ? Loaded(page).next[sector % perPage] : kFree;
}

bool SectorTable::Walk(Sector first, const VisitSector& visit) {
  Sector at = first;
  try {
    for (; at < count; at = Next(at)) {
      if (!visit(at)) return false;
    }
  } catch (const Failure& failure) {
    if (failure.code != STG_E_DOCFILECORRUPT) throw;
  }
  return at == kEndOfChain;
}

// A second walker of half the speed meets the first one when the chain runs in a circle: before
// that nothing in the first half is repeated.
void SectorTable::Follow(Chain& chain, std::size_t atLeast) {
  std::vector<Sector>& sectors = chain.sectors;
  const std::size_t wanted = 2 * std::min<std::size_t>(atLeast, kMostSectors) + 2;
  try {
    while (chain.next < count && sectors.size() < wanted) {
      sectors.push_back(chain.next);
      const bool isCircle = sectors.size() > 1 && sectors[sectors.size() / 2 - 1] == chain.next;
      chain.next = isCircle ? kFree : Next(chain.next);
      if (isCircle) CutAtRepetition(sectors);
    }
  } catch (const Failure& failure) {
    if (failure.code != STG_E_DOCFILECORRUPT) throw;
    chain.next = kFree;
  }
  if (chain.next >= count && chain.next != kEndOfChain) chain.next = kFree;
}

Chain SectorTable::Follow(Sector first) {
  Chain chain = {{}, first};
  Follow(chain, kMostSectors);
  return chain;
}

std::vector<Sector> SectorTable::OwnSectors() const {
  std::vector<Sector> own = difat;
  for (const Page& page : pages) own.push_back(page.place);
  return own;
}

bool SectorTable::IsCutOff() {
  return count > 0 && store.Size() < OffsetOf(static_cast<Sector>(count)) &&
         Next(static_cast<Sector>(count - 1)) != kFree;
}

// --- changes

bool SectorTable::StartAppending() {
  if (pages.size() < kFewPages || count % kSpan < kSpan / 16 || IsCutOff()) return false;
  for (std::size_t sector = count; sector < Covered(); ++sector) {
    if (Next(static_cast<Sector>(sector)) != kFree) return false;
  }
  taken.assign(count, true);
  fresh.assign(count, false);
  kept = search = count;
  return true;
}

void SectorTable::StartWriting(std::vector<bool> used) {
  used.resize(count);
  for (std::size_t sector = 0; sector < std::min(count, Covered()); ++sector) {
    if (Next(static_cast<Sector>(sector)) != kFree) used[sector] = true;
  }
  fresh.resize(count);
  for (const auto* const list : {&freshList, &dropped, &droppedBefore}) {
    for (const Sector sector : *list) used[sector] = used[sector] || taken[sector];
  }
  taken = std::move(used);
  kept = search = 0;
}

Sector SectorTable::Allocate() {
  while (search < taken.size() && taken[search]) ++search;
  if (search >= kMostSectors) Fail(STG_E_MEDIUMFULL);
  const auto sector = static_cast<Sector>(search);
  if (search == taken.size()) {
    taken.push_back(false);
    fresh.push_back(false);
  }
  freshList.push_back(sector);
  taken[sector] = fresh[sector] = true;
  count = std::max(count, taken.size());
  return sector;
}

void SectorTable::Set(Sector sector, Sector next) {
  Cover();
  Page& page = Loaded(sector / perPage);
  Sector& stored = page.next[sector % perPage];
  if (stored == next) return;
  stored = next;
  page.isChanged = hasChanges = true;
}

void SectorTable::Release(Sector sector) {
  fresh[sector] = false;
  if (sector < kept) return;
  taken[sector] = false;
  search = std::min<std::size_t>(search, sector);
}

void SectorTable::Drop(Sector sector) {
  if (sector / perPage < pages.size()) Set(sector, kFree);
  if (IsFresh(sector)) {
    Release(sector);
  } else {
    dropped.push_back(sector);
  }
}

void SectorTable::Own(std::vector<Sector>& chain, std::size_t index) {
  const Sector old = chain[index];
  if (IsFresh(old)) return;
  const Sector made = Allocate();
  Set(made, Next(old));
  if (index > 0) Set(chain[index - 1], made);
  Drop(old);
  chain[index] = made;
}

void SectorTable::Append(std::vector<Sector>& chain) {
  const Sector made = Allocate();
  Set(made, kEndOfChain);
  if (!chain.empty()) Set(chain.back(), made);
  chain.push_back(made);
}

// Makes pages for all sectors that there are; the pages take sectors too.
void SectorTable::Cover() {
  std::vector<Sector> made;
  while (pages.size() * perPage < taken.size()) {
    pages.push_back({kFree, std::vector<Sector>(perPage, kFree), true});
    pages.back().place = Allocate();
    made.push_back(pages.back().place);
    hasChanges = isDifatChanged = true;
  }
  for (const Sector sector : made) Set(sector, kFatSector);
}

// Gives every changed page a place that may be written to; this changes further pages. True when
// there was one to move.
bool SectorTable::PlacePages() {
  bool hasMoved = false;
  for (std::size_t i = 0; i < pages.size(); ++i) {
    if (!pages[i].isChanged || IsFresh(pages[i].place)) continue;
    const Sector old = pages[i].place;
    const Sector made = Allocate();
    Set(made, kFatSector);
    pages[i].place = made;
    Drop(old);
    hasMoved = true;
    isDifatChanged = isDifatChanged || i >= kTablesInHead;
  }
  return hasMoved;
}

// The same for the list of pages that does not fit into the head. It is a chain whose links stand
// in the sectors themselves, so that all of it moves.
bool SectorTable::PlaceDifat() {
  if (!isDifatChanged) return false;
  const std::size_t behindHead = pages.size() - std::min(pages.size(), kTablesInHead);
  const std::size_t needed = (behindHead + perPage - 2) / (perPage - 1);
  bool hasMoved = false;
  while (difat.size() > needed) {
    Drop(difat.back());
    difat.pop_back();
  }
  difat.resize(needed, kFree);
  for (Sector& place : difat) {
    if (place != kFree && IsFresh(place)) continue;
    const Sector made = Allocate();
    Set(made, kDifatSector);
    if (place != kFree) Drop(place);
    place = made;
    hasMoved = true;
  }
  return hasMoved;
}

void SectorTable::WritePage(const Page& page) {
  Bytes bytes(sectorSize);
  for (std::size_t i = 0; i < perPage; ++i) Put32(&bytes[4 * i], page.next[i]);
  Write(page.place, bytes.data(), sectorSize);
}

void SectorTable::WriteDifat() {
  std::size_t page = kTablesInHead;
  for (std::size_t i = 0; i < difat.size(); ++i) {
    Bytes bytes(sectorSize, 0xFF);
    for (std::size_t k = 0; k + 1 < perPage && page < pages.size(); ++k, ++page) {
      Put32(&bytes[4 * k], pages[page].place);
    }
    Put32(&bytes[sectorSize - 4], i + 1 < difat.size() ? difat[i + 1] : kEndOfChain);
    Write(difat[i], bytes.data(), sectorSize);
  }
}

void SectorTable::WriteOut(Head& head) {
  for (bool moves = true; moves;) {
    Cover();
    moves = PlacePages();
    moves = PlaceDifat() || moves || pages.size() * perPage < taken.size();
  }
  for (const Page& page : pages) {
    if (page.isChanged) WritePage(page);
  }
  if (isDifatChanged) WriteDifat();
  head.fat.fill(kFree);
  for (std::size_t i = 0; i < std::min(pages.size(), kTablesInHead); ++i) {
    head.fat[i] = pages[i].place;
  }
  head.fatSectors = static_cast<std::uint32_t>(pages.size());
  head.firstDifat = difat.empty() ? kEndOfChain : difat.front();
  head.difatSectors = static_cast<std::uint32_t>(difat.size());
}

// What streams have taken and not yet linked stays fresh: the file on the disk does without it.
void SectorTable::Committed() {
  std::vector<Sector> unlinked;
  for (const Sector sector : freshList) {
    if (!IsFresh(sector)) continue;
    if (IsUnlinked(sector)) {
      unlinked.push_back(sector);
    } else {
      fresh[sector] = false;
    }
  }
  freshList = std::move(unlinked);
  Synced();
  droppedBefore = std::move(dropped);
  dropped.clear();
  for (Page& page : pages) page.isChanged = false;
  hasChanges = isDifatChanged = false;
}

void SectorTable::Synced() {
  for (const Sector sector : droppedBefore) Release(sector);
  droppedBefore.clear();
}

std::uint64_t SectorTable::UsedLength() const {
  std::size_t used = taken.size();
  while (used > 0 && !taken[used - 1]) --used;
  return (std::uint64_t{used} + 1) * sectorSize;
}

}  // namespace platform::compound
