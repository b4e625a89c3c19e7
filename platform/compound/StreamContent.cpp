#include "platform/compound/StreamContent.h"

#include <algorithm>
#include <functional>
#include <limits>

namespace platform::compound {
namespace {

constexpr std::uint64_t kMostBytes = std::numeric_limits<std::uint32_t>::max();

}  // namespace

StreamContent::StreamContent(std::shared_ptr<CompoundFile> holder, Id element)
    : file(std::move(holder)), id(element) {
  file->Enter(id, this);
}

StreamContent::~StreamContent() {
  if (!file) return;
  const bool wasChanged = isChanged;
  file->Forget(id);
  const std::shared_ptr<CompoundFile> kept = file;
  Leave(true);
  if (!wasChanged) return;
  try {
    kept->Commit();
  } catch (...) {  // the file holds what it held; there is nobody to tell
  }
}

CompoundFile& StreamContent::File() {
  if (!file) Fail(STG_E_REVERTED);
  return *file;
}

void StreamContent::Leave(bool keeps) {
  try {
    const bool counts = keeps && failure == S_OK;
    counts ? Flush() : Discard();
  } catch (...) {
    Discard();
  }
  file.reset();
}

std::uint64_t StreamContent::Size() {
  return isLoaded ? length : File().Elements().At(id).size;
}

// A broken chain gives the bytes in front of the break.
void StreamContent::Load() {
  if (isLoaded) return;
  const auto& element = File().Elements().At(id);
  length = element.size;
  isSmall = length < kSmallBelow;
  if (isSmall) {
    small.clear();
    if (length > 0) small = file->Small().Read(element.start, static_cast<std::size_t>(length));
  } else {
    chain.next = element.start;
  }
  isLoaded = true;
}

// --- reading

std::size_t StreamContent::Read(std::uint64_t at, void* buffer, std::size_t count) {
  File();
  Load();
  if (at >= length || count == 0) return 0;
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, length - at));
  std::size_t read = 0;
  if (!isSmall) {
    read = ReadLarge(at, static_cast<std::uint8_t*>(buffer), wanted);
  } else if (at < small.size()) {
    read = std::min(wanted, small.size() - static_cast<std::size_t>(at));
    std::copy_n(small.begin() + static_cast<std::ptrdiff_t>(at), read,
                static_cast<std::uint8_t*>(buffer));
  }
  if (read == 0) Fail(STG_E_DOCFILECORRUPT);
  return read;
}

// How many sectors from this one on lie side by side in the file, to be read or written at once.
std::size_t StreamContent::RunFrom(std::size_t index, std::size_t most) const {
  std::size_t run = 1;
  while (run < most && index + run < chain.sectors.size() &&
         chain.sectors[index + run] == chain.sectors[index] + run) {
    ++run;
  }
  return run;
}

std::size_t StreamContent::ReadLarge(std::uint64_t at, std::uint8_t* buffer, std::size_t count) {
  SectorTable& table = File().Sectors();
  const std::size_t size = table.SectorSize();
  table.Follow(chain, static_cast<std::size_t>((at + count) / size + 1));
  std::size_t done = 0;
  while (done < count) {
    const auto index = static_cast<std::size_t>((at + done) / size);
    const auto offset = static_cast<std::size_t>((at + done) % size);
    if (index >= chain.sectors.size()) break;
    const std::size_t run = RunFrom(index, (offset + count - done + size - 1) / size);
    const std::size_t wanted = std::min(count - done, run * size - offset);
    const std::size_t read = table.Read(chain.sectors[index], offset, buffer + done, wanted);
    done += read;
    if (read < wanted) break;
  }
  return done;
}

// --- writing

void StreamContent::Change(const std::function<void()>& change) {
  File().Prepare(file->Elements().At(id).isListed ? compound::Change::Replaces
                                                  : compound::Change::Adds);
  if (failure != S_OK) Fail(failure);
  Load();
  file->Sectors().Follow(chain, kMostSectors);
  isChanged = true;
  try {
    change();
  } catch (const Failure& thrown) {
    failure = thrown.code;
    throw;
  } catch (...) {
    failure = STG_E_INSUFFICIENTMEMORY;
    throw;
  }
}

void StreamContent::Write(std::uint64_t at, const void* buffer, std::size_t count) {
  if (count == 0) return;
  if (at > kMostBytes || count > kMostBytes - at) Fail(STG_E_MEDIUMFULL);
  Change([&] {
    const std::uint64_t end = at + count;
    const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
    if (isSmall && end < kSmallBelow) {
      small.resize(static_cast<std::size_t>(std::max(length, end)));
      length = small.size();
      std::copy_n(bytes, count, small.begin() + static_cast<std::ptrdiff_t>(at));
      return;
    }
    MakeLarge();
    WriteZeros(length, at);
    WriteLarge(at, bytes, count);
  });
}

void StreamContent::Resize(std::uint64_t size) {
  if (size > kMostBytes) Fail(STG_E_INVALIDFUNCTION);
  Change([&] {
    if (size < kSmallBelow) {
      MakeSmall(static_cast<std::size_t>(size));
      return;
    }
    MakeLarge();
    const std::size_t sectorSize = file->Sectors().SectorSize();
    DropSectorsFrom(static_cast<std::size_t>((size + sectorSize - 1) / sectorSize));
    WriteZeros(length, size);
    length = size;
  });
}

void StreamContent::MakeLarge() {
  if (!isSmall) return;
  const Bytes content = std::move(small);
  small.clear();
  isSmall = false;
  length = 0;
  WriteLarge(0, content.data(), content.size());
}

void StreamContent::MakeSmall(std::size_t size) {
  if (!isSmall) {
    Bytes content(size);
    ReadLarge(0, content.data(), static_cast<std::size_t>(std::min<std::uint64_t>(size, length)));
    DropSectorsFrom(0);
    small = std::move(content);
    isSmall = true;
  }
  small.resize(size);
  length = size;
}

void StreamContent::WriteLarge(std::uint64_t at, const std::uint8_t* bytes, std::size_t count) {
  const std::size_t size = file->Sectors().SectorSize();
  while (count > 0) {
    const auto index = static_cast<std::size_t>(at / size);
    const auto offset = static_cast<std::size_t>(at % size);
    std::size_t done = count - count % size;
    if (offset > 0 || count < size) {
      done = std::min(count, size - offset);
      WritePart(index, offset, bytes, done);
    } else {
      WriteRun(index, bytes, done / size);
    }
    at += done;
    bytes += done;
    count -= done;
    length = std::max(length, at);
  }
}

// Nothing of what lay in a sector before comes to light when the stream grows into it.
void StreamContent::WritePart(std::size_t index, std::size_t offset, const std::uint8_t* bytes,
                              std::size_t count) {
  SectorTable& table = file->Sectors();
  Bytes sector(table.SectorSize());
  if (index < chain.sectors.size())
    table.Read(chain.sectors[index], 0, sector.data(), sector.size());
  std::copy_n(bytes, count, sector.begin() + static_cast<std::ptrdiff_t>(offset));
  OwnSector(index);
  table.Write(chain.sectors[index], sector.data(), sector.size());
}

void StreamContent::WriteRun(std::size_t index, const std::uint8_t* bytes, std::size_t count) {
  SectorTable& table = file->Sectors();
  const std::size_t size = table.SectorSize();
  for (std::size_t i = 0; i < count; ++i) OwnSector(index + i);
  for (std::size_t first = 0; first < count;) {
    const std::size_t run = RunFrom(index + first, count - first);
    table.Write(chain.sectors[index + first], bytes + first * size, run * size);
    first += run;
  }
}

void StreamContent::WriteZeros(std::uint64_t from, std::uint64_t to) {
  static constexpr std::uint8_t kZeros[65536] = {};
  while (from < to) {
    const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(to - from, sizeof kZeros));
    WriteLarge(from, kZeros, piece);
    from += piece;
  }
}

void StreamContent::OwnSector(std::size_t index) {
  SectorTable& table = file->Sectors();
  if (index == chain.sectors.size()) {
    chain.sectors.push_back(table.Allocate());
  } else if (!table.IsUnlinked(chain.sectors[index])) {
    replaced.push_back(chain.sectors[index]);
    chain.sectors[index] = table.Allocate();
  }
}

void StreamContent::DropSectorsFrom(std::size_t index) {
  SectorTable& table = file->Sectors();
  while (chain.sectors.size() > index) {
    const Sector last = chain.sectors.back();
    if (table.IsUnlinked(last)) {
      table.Drop(last);
    } else {
      replaced.push_back(last);
    }
    chain.sectors.pop_back();
  }
}

// --- the file's view

void StreamContent::Flush() {
  if (!isChanged || !file) return;
  if (failure != S_OK) Fail(failure);
  Directory& directory = file->Elements();
  SectorTable& table = file->Sectors();
  // The sectors of small streams hold others as well.
  if (isSmall && !small.empty()) file->Prepare(compound::Change::Replaces);
  const Sector first =
      isSmall ? (small.empty() ? kEndOfChain : file->Small().Add(small)) : chain.sectors.front();
  compound::Element& element = directory.At(id);
  if (element.size > 0 && element.size < kSmallBelow) file->Small().Remove(element.start);
  for (const Sector sector : replaced) table.Drop(sector);
  for (std::size_t i = 0; i < chain.sectors.size(); ++i) {
    table.Set(chain.sectors[i], i + 1 < chain.sectors.size() ? chain.sectors[i + 1] : kEndOfChain);
  }
  replaced.clear();
  element.start = first;
  element.size = length;
  directory.Touch(id);
  directory.List(id);
  isChanged = false;
}

void StreamContent::Discard() {
  if (!isChanged || !file) return;
  isChanged = false;
  SectorTable& table = file->Sectors();
  for (const Sector sector : chain.sectors) {
    if (table.IsUnlinked(sector)) table.Drop(sector);
  }
  if (!file->Elements().At(id).isListed) file->Elements().Remove(id);
}

}  // namespace platform::compound
