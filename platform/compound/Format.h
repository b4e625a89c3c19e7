// The layout of compound files: head, directory entries, and the numbers with a meaning.
#pragma once

#include <objidl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace platform::compound {

// Number of a sector. Behind the head the file is a row of them; the allocation table holds the
// next one of its chain for each.
using Sector = std::uint32_t;
inline constexpr Sector kMostSectors = 0xFFFFFFFA;
inline constexpr Sector kDifatSector = 0xFFFFFFFC;  // is one of the list of table sectors
inline constexpr Sector kFatSector = 0xFFFFFFFD;    // is one of the table
inline constexpr Sector kEndOfChain = 0xFFFFFFFE;
inline constexpr Sector kFree = 0xFFFFFFFF;

// Number of a directory entry.
using Id = std::uint32_t;
inline constexpr Id kRoot = 0;
inline constexpr Id kNone = 0xFFFFFFFF;

inline constexpr std::size_t kHeadSize = 512;
inline constexpr std::size_t kEntrySize = 128;
inline constexpr std::size_t kMiniSize = 64;        // of the sectors that small streams have
inline constexpr std::uint32_t kSmallBelow = 4096;  // bytes; such a stream lies in mini sectors
inline constexpr std::size_t kTablesInHead = 109;
inline constexpr std::size_t kLongestName = 31;

using Bytes = std::vector<std::uint8_t>;

std::uint32_t Get32(const std::uint8_t* from);
void Put32(std::uint8_t* to, std::uint32_t value);

struct Head {
  std::array<std::uint8_t, 24> start = {};  // signature and class id, kept as they are
  std::uint16_t minorVersion = 0x3E;
  std::uint16_t version = 3;
  std::uint16_t sectorShift = 9;
  std::uint32_t directorySectors = 0;  // in version 4 alone
  std::uint32_t fatSectors = 0;
  Sector firstDirectory = kEndOfChain;
  std::uint32_t transaction = 0;
  Sector firstMiniFat = kEndOfChain;
  std::uint32_t miniFatSectors = 0;
  Sector firstDifat = kEndOfChain;
  std::uint32_t difatSectors = 0;
  std::array<Sector, kTablesInHead> fat;

  Head();
  std::size_t SectorSize() const { return std::size_t{1} << sectorShift; }
};

bool HasSignature(const std::uint8_t (&bytes)[kHeadSize]);
// False when a field has a value that no version allows.
bool ReadHead(const std::uint8_t (&bytes)[kHeadSize], Head& head);
void WriteHead(const Head& head, std::uint8_t (&bytes)[kHeadSize]);

enum class Type : std::uint8_t { Unused = 0, Storage = 1, Stream = 2, Root = 5 };

// A directory entry. The elements of a storage form a binary tree over `left` and `right`, whose
// top is the storage's `child`.
struct Entry {
  std::u16string name;
  Type type = Type::Unused;
  bool isBlack = false;
  Id left = kNone;
  Id right = kNone;
  Id child = kNone;
  CLSID classId = {};
  std::uint32_t stateBits = 0;
  FILETIME created = {};
  FILETIME modified = {};
  Sector start = 0;
  std::uint64_t size = 0;
};

// False when the name or the type cannot be; what can be read is read all the same.
bool ReadEntry(const std::uint8_t* bytes, bool hasLongSizes, Entry& entry);
void WriteEntry(const Entry& entry, std::uint8_t* bytes);

// Unwinds to the entry point, which answers the code.
struct Failure {
  HRESULT code;
};
[[noreturn]] void Fail(HRESULT code);

}  // namespace platform::compound
