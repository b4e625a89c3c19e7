#include "platform/compound/CompoundFile.h"

namespace platform::compound {

CompoundFile::CompoundFile(std::unique_ptr<ByteStore> bytes, const Head& start, Access wanted,
                           bool isNew)
    : store(std::move(bytes)),
      access(wanted),
      head(start),
      table(*store, head, isNew),
      small(table),
      isSmallLoaded(isNew),
      isPrepared(isNew) {}

std::shared_ptr<CompoundFile> CompoundFile::Create(std::unique_ptr<ByteStore> store, Access access,
                                                   const Head& head) {
  std::shared_ptr<CompoundFile> file(new CompoundFile(std::move(store), head, access, true));
  file->table.StartWriting({});
  return file;
}

std::shared_ptr<CompoundFile> CompoundFile::Open(std::unique_ptr<ByteStore> store, Access access) {
  std::uint8_t bytes[kHeadSize] = {};
  Head head;
  if (store->Read(0, bytes, kHeadSize) < kHeadSize || !HasSignature(bytes)) {
    Fail(STG_E_FILEALREADYEXISTS);
  }
  if (!ReadHead(bytes, head)) Fail(STG_E_INVALIDHEADER);
  std::shared_ptr<CompoundFile> file(new CompoundFile(std::move(store), head, access, false));
  Chain chain = file->table.Follow(head.firstDirectory);
  Bytes entries(chain.sectors.size() * head.SectorSize());
  std::size_t read = 0;
  for (const Sector sector : chain.sectors) {
    read += file->table.Read(sector, 0, &entries[read], head.SectorSize());
  }
  file->isFaulty = !chain.IsWhole() || read < entries.size();
  entries.resize(read - read % kEntrySize);
  file->directoryChain = std::move(chain.sectors);
  file->directory = Directory(entries, head.version > 3);
  if (!file->directory.HasRoot()) Fail(STG_E_DOCFILECORRUPT);
  return file;
}

MiniStream& CompoundFile::Small() {
  if (!isSmallLoaded) small.Load(head.firstMiniFat, directory.At(kRoot).start);
  isSmallLoaded = true;
  return small;
}

// --- changes

FaultSearch CompoundFile::SearchFaults() {
  return FaultSearch({isFaulty, table, directoryChain, directory, Small()});
}

std::vector<Fault> CompoundFile::Faults(std::size_t most) {
  return SearchFaults().Find(most);
}

bool CompoundFile::CanAppend() {
  return directory.IsWhole() && table.IsWhole() && table.StartAppending();
}

// Every chain has to be whole and no sector may lie in two of them, so that none that is written to
// can be another's.
void CompoundFile::StartReplacing() {
  FaultSearch search = SearchFaults();
  isFaulty = !search.Find(1).empty();
  if (isFaulty) Fail(STG_E_DOCFILECORRUPT);
  table.StartWriting(search.UsedSectors());
  isPrepared = true;
}

void CompoundFile::Prepare(Change change) {
  if (access == Access::Read) Fail(STG_E_ACCESSDENIED);
  if (isFaulty) Fail(STG_E_DOCFILECORRUPT);
  if (isPrepared) return;
  if (change == Change::Adds) isAppending = isAppending || CanAppend();
  if (change == Change::Replaces || !isAppending) StartReplacing();
}

void CompoundFile::DropContent(Id stream) {
  const Element& element = directory.At(stream);
  if (element.size == 0) return;
  if (element.size < kSmallBelow) {
    Small().Remove(element.start);
    return;
  }
  for (const Sector sector : table.Follow(element.start).sectors) table.Drop(sector);
}

void CompoundFile::DestroyAllBelow(Id storage) {
  LeaveBelow(storage, false);
  const std::vector<Id> below = directory.Descendants(storage);
  for (auto id = below.rbegin(); id != below.rend(); ++id) {
    if (directory.At(*id).type == Type::Stream) DropContent(*id);
    directory.Remove(*id);
  }
}

void CompoundFile::Destroy(Id id) {
  Prepare(Change::Replaces);
  DestroyAllBelow(id);
  const auto found = opened.find(id);
  if (found != opened.end()) {
    OpenElement* const element = found->second;
    opened.erase(found);
    element->Leave(false);
  }
  // A stream that was never written out has left with its element.
  if (directory.At(id).type == Type::Unused) return;
  if (directory.At(id).type == Type::Stream) DropContent(id);
  directory.Remove(id);
}

void CompoundFile::LeaveBelow(Id storage, bool keeps) {
  std::vector<Id> leaving;
  for (const auto& [id, element] : opened) {
    if (id != storage && directory.IsBelow(id, storage)) leaving.push_back(id);
  }
  for (const Id id : leaving) {
    const auto found = opened.find(id);
    if (found == opened.end()) continue;
    OpenElement* const element = found->second;
    opened.erase(found);
    element->Leave(keeps);
  }
}

void CompoundFile::PlaceDirectory() {
  const std::size_t perSector = table.SectorSize() / kEntrySize;
  for (std::size_t i = 0; i * perSector < directory.Size(); ++i) {
    const bool isNew = i == directoryChain.size();
    const auto bytes = directory.ChangedSector(i * perSector, perSector, isNew);
    if (!bytes) continue;
    if (isNew) {
      table.Append(directoryChain);
    } else {
      table.Own(directoryChain, i);
    }
    table.Write(directoryChain[i], bytes->data(), bytes->size());
  }
}

// The sync in front of it makes sure that nothing the new head leads to is missing.
void CompoundFile::WriteNewHead() {
  std::uint8_t bytes[kHeadSize];
  head.firstDirectory = directoryChain.front();
  if (head.version > 3) head.directorySectors = static_cast<std::uint32_t>(directoryChain.size());
  if (isSmallLoaded) {
    head.firstMiniFat = small.FirstTable();
    head.miniFatSectors = small.TableSectors();
  }
  WriteHead(head, bytes);
  store->Sync();
  store->Write(0, bytes, kHeadSize);
}

void CompoundFile::Commit() {
  if (!isPrepared && !isAppending) return;
  if (!directory.HasChanges() && !table.HasChanges()) return;
  if (isFaulty) Fail(STG_E_DOCFILECORRUPT);
  if (isSmallLoaded) {
    small.WriteTable();
    Element& root = directory.At(kRoot);
    if (root.start != small.FirstOfStream() || root.size != small.StreamSize()) {
      root.start = small.FirstOfStream();
      root.size = small.StreamSize();
      directory.Touch(kRoot);
    }
  }
  PlaceDirectory();
  table.WriteOut(head);
  WriteNewHead();
  table.Committed();
  directory.Committed();
  small.Committed();
}

void CompoundFile::FlushOpen() {
  for (const auto& [id, element] : opened) element->Flush();
}

void CompoundFile::Close() {
  if ((!isPrepared && !isAppending) || access == Access::Read) return;
  if (!isFaulty) Commit();
  store->Sync();
  table.Synced();
  if (store->Size() > table.UsedLength()) store->SetSize(table.UsedLength());
}

}  // namespace platform::compound
