#include "platform/compound/Format.h"

#include <algorithm>
#include <cstring>

namespace platform::compound {
namespace {

constexpr std::uint8_t kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr std::uint16_t kByteOrder = 0xFFFE;
constexpr std::uint16_t kMiniShift = 6;

std::uint16_t Get16(const std::uint8_t* from) {
  return static_cast<std::uint16_t>(from[0] | from[1] << 8);
}
void Put16(std::uint8_t* to, std::uint16_t value) {
  to[0] = static_cast<std::uint8_t>(value);
  to[1] = static_cast<std::uint8_t>(value >> 8);
}

FILETIME GetTime(const std::uint8_t* from) {
  return {Get32(from), Get32(from + 4)};
}
void PutTime(std::uint8_t* to, FILETIME time) {
  Put32(to, time.dwLowDateTime);
  Put32(to + 4, time.dwHighDateTime);
}

CLSID GetClass(const std::uint8_t* from) {
  CLSID id = {Get32(from), Get16(from + 4), Get16(from + 6), {}};
  std::copy_n(from + 8, sizeof id.Data4, id.Data4);
  return id;
}
void PutClass(std::uint8_t* to, const CLSID& id) {
  Put32(to, id.Data1);
  Put16(to + 4, id.Data2);
  Put16(to + 6, id.Data3);
  std::copy_n(id.Data4, sizeof id.Data4, to + 8);
}

}  // namespace

std::uint32_t Get32(const std::uint8_t* from) {
  return static_cast<std::uint32_t>(Get16(from)) | static_cast<std::uint32_t>(Get16(from + 2))
                                                       << 16;
}
void Put32(std::uint8_t* to, std::uint32_t value) {
  Put16(to, static_cast<std::uint16_t>(value));
  Put16(to + 2, static_cast<std::uint16_t>(value >> 16));
}

Head::Head() {
  std::copy(std::begin(kSignature), std::end(kSignature), start.begin());
  fat.fill(kFree);
}

bool HasSignature(const std::uint8_t (&bytes)[kHeadSize]) {
  return std::equal(std::begin(kSignature), std::end(kSignature), bytes);
}

bool ReadHead(const std::uint8_t (&bytes)[kHeadSize], Head& head) {
  std::copy_n(bytes, head.start.size(), head.start.begin());
  head.minorVersion = Get16(bytes + 24);
  head.version = Get16(bytes + 26);
  head.sectorShift = Get16(bytes + 30);
  head.directorySectors = Get32(bytes + 40);
  head.fatSectors = Get32(bytes + 44);
  head.firstDirectory = Get32(bytes + 48);
  head.transaction = Get32(bytes + 52);
  head.firstMiniFat = Get32(bytes + 60);
  head.miniFatSectors = Get32(bytes + 64);
  head.firstDifat = Get32(bytes + 68);
  head.difatSectors = Get32(bytes + 72);
  for (std::size_t i = 0; i < kTablesInHead; ++i) head.fat[i] = Get32(bytes + 76 + 4 * i);
  const bool fits =
      (head.version == 3 && head.sectorShift == 9) || (head.version == 4 && head.sectorShift == 12);
  return fits && HasSignature(bytes) && Get16(bytes + 28) == kByteOrder &&
         Get16(bytes + 32) == kMiniShift && Get32(bytes + 56) == kSmallBelow;
}

void WriteHead(const Head& head, std::uint8_t (&bytes)[kHeadSize]) {
  std::memset(bytes, 0, kHeadSize);
  std::copy(head.start.begin(), head.start.end(), bytes);
  Put16(bytes + 24, head.minorVersion);
  Put16(bytes + 26, head.version);
  Put16(bytes + 28, kByteOrder);
  Put16(bytes + 30, head.sectorShift);
  Put16(bytes + 32, kMiniShift);
  Put32(bytes + 40, head.directorySectors);
  Put32(bytes + 44, head.fatSectors);
  Put32(bytes + 48, head.firstDirectory);
  Put32(bytes + 52, head.transaction);
  Put32(bytes + 56, kSmallBelow);
  Put32(bytes + 60, head.firstMiniFat);
  Put32(bytes + 64, head.miniFatSectors);
  Put32(bytes + 68, head.firstDifat);
  Put32(bytes + 72, head.difatSectors);
  for (std::size_t i = 0; i < kTablesInHead; ++i) Put32(bytes + 76 + 4 * i, head.fat[i]);
}

bool ReadEntry(const std::uint8_t* bytes, bool hasLongSizes, Entry& entry) {
  const std::size_t nameBytes = Get16(bytes + 64);
  const std::size_t units = std::min(nameBytes / 2, kLongestName + 1);
  for (std::size_t i = 0; i + 1 < units; ++i) {
    entry.name += static_cast<char16_t>(Get16(bytes + 2 * i));
  }
  entry.type = Type{bytes[66]};
  entry.isBlack = bytes[67] != 0;
  entry.left = Get32(bytes + 68);
  entry.right = Get32(bytes + 72);
  entry.child = Get32(bytes + 76);
  entry.classId = GetClass(bytes + 80);
  entry.stateBits = Get32(bytes + 96);
  entry.created = GetTime(bytes + 100);
  entry.modified = GetTime(bytes + 108);
  entry.start = Get32(bytes + 116);
  entry.size = Get32(bytes + 120);
  // Some writers of version 3 leave anything in the upper half.
  if (hasLongSizes) entry.size |= std::uint64_t{Get32(bytes + 124)} << 32;
  if (entry.type == Type::Unused) return true;
  const bool isKnown =
      entry.type == Type::Storage || entry.type == Type::Stream || entry.type == Type::Root;
  return isKnown && nameBytes % 2 == 0 && nameBytes >= 4 && nameBytes <= 2 * (kLongestName + 1);
}

void WriteEntry(const Entry& entry, std::uint8_t* bytes) {
  std::memset(bytes, 0, kEntrySize);
  for (std::size_t i = 0; i < entry.name.size(); ++i) Put16(bytes + 2 * i, entry.name[i]);
  if (!entry.name.empty()) {
    Put16(bytes + 64, static_cast<std::uint16_t>(2 * (entry.name.size() + 1)));
  }
  bytes[66] = static_cast<std::uint8_t>(entry.type);
  bytes[67] = entry.isBlack ? 1 : 0;
  Put32(bytes + 68, entry.left);
  Put32(bytes + 72, entry.right);
  Put32(bytes + 76, entry.child);
  PutClass(bytes + 80, entry.classId);
  Put32(bytes + 96, entry.stateBits);
  PutTime(bytes + 100, entry.created);
  PutTime(bytes + 108, entry.modified);
  Put32(bytes + 116, entry.start);
  Put32(bytes + 120, static_cast<std::uint32_t>(entry.size));
  Put32(bytes + 124, static_cast<std::uint32_t>(entry.size >> 32));
}

void Fail(HRESULT code) {
  throw Failure{code};
}

}  // namespace platform::compound
