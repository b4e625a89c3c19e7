#include "imageio/Exif.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace imageio {
namespace {

enum Tag : std::uint16_t {
  kSubfileType = 0x00FE,
  kImageWidth = 0x0100,
  kImageLength = 0x0101,
  kDescription = 0x010E,
  kMaker = 0x010F,
  kModel = 0x0110,
  kOrientation = 0x0112,
  kXResolution = 0x011A,
  kYResolution = 0x011B,
  kResolutionUnit = 0x0128,
  kSoftware = 0x0131,
  kDateTime = 0x0132,
  kArtist = 0x013B,
  kThumbnailOffset = 0x0201,
  kThumbnailLength = 0x0202,
  kCopyright = 0x8298,
  kExifDirectory = 0x8769,
  kGpsDirectory = 0x8825,
  kPixelXDimension = 0xA002,
  kPixelYDimension = 0xA003,
  kInteropDirectory = 0xA005,
};

constexpr std::uint16_t kTexts[] = {kDescription, kMaker,  kModel,    kSoftware,
                                    kDateTime,    kArtist, kCopyright};
constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;
constexpr std::size_t kEntryBytes = 12;
constexpr std::uint32_t kLargestValue = 1 << 20;

std::uint32_t BytesOfType(std::uint16_t type) {
  constexpr std::uint32_t kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
  return type < std::size(kBytes) ? kBytes[type] : 0;
}

struct Entry {
  std::uint16_t tag = 0;
  std::uint16_t type = 0;
  std::uint32_t count = 0;
  std::uint64_t valueAt = 0;  // of the four bytes that hold the value or its position
  std::uint64_t Bytes() const { return std::uint64_t{count} * BytesOfType(type); }
};

// Numbers in the byte order of the structure.
class ByteOrder {
 public:
  bool little = true;

  std::uint32_t Load(const std::uint8_t* from, int bytes) const {
    std::uint32_t value = 0;
    for (int i = 0; i < bytes; ++i) value = value << 8 | from[little ? bytes - 1 - i : i];
    return value;
  }
  void Store(std::uint8_t* to, int bytes, std::uint32_t value) const {
    for (int i = 0; i < bytes; ++i, value >>= 8) {
      to[little ? i : bytes - 1 - i] = static_cast<std::uint8_t>(value);
    }
  }
};

// Reads the directories of a TIFF structure. What lies outside the source is not there.
class TiffReader {
 public:
  explicit TiffReader(Source& from) : source(&from) {
    std::array<std::uint8_t, 8> head;
    if (source->ReadAt(0, head.data(), head.size()) != head.size()) return;
    order.little = head[0] == 'I';
    const bool known = (head[0] == 'I' || head[0] == 'M') && head[1] == head[0];
    if (known && order.Load(&head[2], 2) == 42) first = order.Load(&head[4], 4);
  }

  const ByteOrder& Order() const { return order; }
  // Where the main directory starts; 0 for what is no TIFF structure.
  std::uint32_t First() const { return first; }

  std::vector<Entry> Entries(std::uint32_t directory) {
    std::vector<Entry> entries;
    const std::uint32_t count = directory == 0 ? 0 : Number(directory, 2).value_or(0);
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint64_t at = std::uint64_t{directory} + 2 + kEntryBytes * i;
      std::array<std::uint8_t, kEntryBytes> raw;
      if (source->ReadAt(at, raw.data(), raw.size()) != raw.size()) break;
      entries.push_back({static_cast<std::uint16_t>(order.Load(&raw[0], 2)),
                         static_cast<std::uint16_t>(order.Load(&raw[2], 2)), order.Load(&raw[4], 4),
                         at + 8});
    }
    return entries;
  }

  std::optional<Entry> Find(std::uint32_t directory, std::uint16_t tag) {
    for (const Entry& entry : Entries(directory)) {
      if (entry.tag == tag) return entry;
    }
    return std::nullopt;
  }

  // Where the position of the next directory stands.
  std::uint64_t NextAt(std::uint32_t directory) {
    return std::uint64_t{directory} + 2 + kEntryBytes * Number(directory, 2).value_or(0);
  }

  std::optional<std::uint32_t> Number(std::uint64_t at, int bytes) {
    std::array<std::uint8_t, 4> raw;
    const auto count = static_cast<std::size_t>(bytes);
    if (source->ReadAt(at, raw.data(), count) != count) return std::nullopt;
    return order.Load(raw.data(), bytes);
  }

  // The first number of an entry.
  std::uint32_t NumberOf(const Entry& entry) {
    return Number(entry.valueAt, entry.type == kShort ? 2 : 4).value_or(0);
  }

  // All bytes of a value; nothing for a damaged one.
  std::optional<std::vector<std::uint8_t>> ValueOf(const Entry& entry) {
    const std::uint64_t bytes = entry.Bytes();
    if (bytes == 0 || bytes > kLargestValue) return std::nullopt;
    const std::uint64_t at = bytes <= 4 ? entry.valueAt : Number(entry.valueAt, 4).value_or(0);
    if (at >= source->Size() || bytes > source->Size() - at) return std::nullopt;
    std::vector<std::uint8_t> value(static_cast<std::size_t>(bytes));
    if (source->ReadAt(at, value.data(), value.size()) != value.size()) return std::nullopt;
    return value;
  }

 private:
  Source* source;
  ByteOrder order;
  std::uint32_t first = 0;
};

bool IsDirectoryTag(std::uint16_t tag) {
  return tag == kExifDirectory || tag == kGpsDirectory || tag == kInteropDirectory;
}

bool TravelsFromMainDirectory(std::uint16_t tag) {
  constexpr std::uint16_t kOthers[] = {kOrientation,    kXResolution,   kYResolution,
                                       kResolutionUnit, kExifDirectory, kGpsDirectory};
  return std::find(std::begin(kTexts), std::end(kTexts), tag) != std::end(kTexts) ||
         std::find(std::begin(kOthers), std::end(kOthers), tag) != std::end(kOthers);
}

// Copies directories with their values into a new place, in which all positions are told anew.
class TiffCopier {
 public:
  // `to` stands at `base` of its structure.
  TiffCopier(TiffReader& reader, std::vector<std::uint8_t>& to, std::uint32_t base)
      : from(&reader), out(&to), position(base) {}

  // The position of the copy; 0 where nothing was to be copied.
  std::uint32_t Copy(std::uint32_t directory, bool main, int depth = 0) {
    constexpr int kDeepest = 3;
    constexpr std::size_t kMost = 1 << 22;
    std::vector<Copied> entries;
    if (depth > kDeepest) return 0;
    for (const Entry& entry : from->Entries(directory)) {
      if (main && !TravelsFromMainDirectory(entry.tag)) continue;
      const bool below = IsDirectoryTag(entry.tag);
      const auto value = below ? CopyBelow(entry, depth) : from->ValueOf(entry);
      if (value && out->size() < kMost) entries.push_back({entry, Place(*value)});
    }
    return entries.empty() ? 0 : Write(entries);
  }

 private:
  struct Copied {
    Entry entry;
    std::array<std::uint8_t, 4> value;  // or its position
  };

  std::optional<std::vector<std::uint8_t>> CopyBelow(const Entry& entry, int depth) {
    const std::uint32_t at = Copy(from->NumberOf(entry), false, depth + 1);
    if (at == 0 || entry.Bytes() != 4) return std::nullopt;
    std::vector<std::uint8_t> value(4);
    from->Order().Store(value.data(), 4, at);
    return value;
  }

  std::array<std::uint8_t, 4> Place(const std::vector<std::uint8_t>& value) {
    std::array<std::uint8_t, 4> field = {};
    if (value.size() <= field.size()) {
      std::copy(value.begin(), value.end(), field.begin());
    } else {
      from->Order().Store(field.data(), 4, Here());
      out->insert(out->end(), value.begin(), value.end());
      out->resize((out->size() + 1) / 2 * 2);
    }
    return field;
  }

  std::uint32_t Write(const std::vector<Copied>& entries) {
    const std::uint32_t at = Here();
    Append(2, static_cast<std::uint32_t>(entries.size()));
    for (const auto& [entry, value] : entries) {
      Append(2, entry.tag);
      Append(2, entry.type);
      Append(4, entry.count);
      out->insert(out->end(), value.begin(), value.end());
    }
    Append(4, 0);  // no further directory
    return at;
  }

  void Append(int bytes, std::uint32_t value) {
    out->resize(out->size() + static_cast<std::size_t>(bytes));
    from->Order().Store(out->data() + out->size() - bytes, bytes, value);
  }
  std::uint32_t Here() const { return position + static_cast<std::uint32_t>(out->size()); }

  TiffReader* from;
  std::vector<std::uint8_t>* out;
  std::uint32_t position;
};

std::optional<Entry> OrientationEntry(TiffReader& reader) {
  const auto entry = reader.Find(reader.First(), kOrientation);
  const bool sound = entry && entry->count == 1 && (entry->type == kShort || entry->type == kLong);
  return sound ? entry : std::nullopt;
}

}  // namespace

int ExifOrientation(const ExifBlock& block) {
  MemorySource source(block.data(), block.size());
  TiffReader reader(source);
  const auto entry = OrientationEntry(reader);
  const std::uint32_t value = entry ? reader.NumberOf(*entry) : 1;
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void ResetExifOrientation(ExifBlock& block) {
  MemorySource source(block.data(), block.size());
  TiffReader reader(source);
  const auto entry = OrientationEntry(reader);
  const int bytes = entry && entry->type == kShort ? 2 : 4;
  if (!entry || !reader.Number(entry->valueAt, bytes)) return;
  reader.Order().Store(block.data() + entry->valueAt, bytes, 1);
}

void DropThumbnail(std::vector<std::uint8_t>& exif) {
  MemorySource source(exif.data(), exif.size());
  TiffReader reader(source);
  if (reader.First() == 0) return;
  const std::uint64_t nextAt = reader.NextAt(reader.First());
  const std::uint32_t directory = reader.Number(nextAt, 4).value_or(0);
  if (directory == 0) return;
  reader.Order().Store(exif.data() + nextAt, 4, 0);
  const auto offset = reader.Find(directory, kThumbnailOffset);
  const auto length = reader.Find(directory, kThumbnailLength);
  if (!offset || !length) return;
  // A picture at the end of the block, where it usually lies, is cut off; elsewhere it stays
  // unnamed.
  const std::uint64_t start = reader.NumberOf(*offset);
  const std::uint64_t end = start + reader.NumberOf(*length);
  const bool last = end <= exif.size() && end + 1 >= exif.size();
  if (last && start >= reader.NextAt(directory) + 4) exif.resize(static_cast<std::size_t>(start));
}

void SetExifSize(ExifBlock& block, int width, int height) {
  MemorySource source(block.data(), block.size());
  TiffReader reader(source);
  const auto set = [&](std::uint32_t directory, std::uint16_t tag, int number) {
    const auto entry = reader.Find(directory, tag);
    const bool known =
        entry && entry->count == 1 && (entry->type == kShort || entry->type == kLong);
    if (!known) return;
    // Its last four bytes were read, so they lie in the block.
    BYTE* const value = block.data() + entry->valueAt;
    reader.Order().Store(value - 6, 2, kLong);
    reader.Order().Store(value, 4, static_cast<std::uint32_t>(number));
  };
  const std::uint32_t main = reader.First();
  set(main, kImageWidth, width);
  set(main, kImageLength, height);
  if (const auto entry = reader.Find(main, kExifDirectory)) {
    const std::uint32_t exif = reader.NumberOf(*entry);
    set(exif, kPixelXDimension, width);
    set(exif, kPixelYDimension, height);
  }
}

Resolution ExifResolution(const ExifBlock& block) {
  constexpr std::uint16_t kRational = 5;
  constexpr std::uint32_t kCentimetres = 3;
  MemorySource source(block.data(), block.size());
  TiffReader reader(source);
  const auto unit = reader.Find(reader.First(), kResolutionUnit);
  const double scale = unit && reader.NumberOf(*unit) == kCentimetres ? 2.54 : 1;
  const auto read = [&](std::uint16_t tag) {
    const auto entry = reader.Find(reader.First(), tag);
    const bool known = entry && entry->type == kRational && entry->count == 1;
    const auto value = known ? reader.ValueOf(*entry) : std::nullopt;
    const double below = value ? reader.Order().Load(&(*value)[4], 4) : 0;
    return below > 0 ? reader.Order().Load(value->data(), 4) / below * scale : 0.0;
  };
  return {read(kXResolution), read(kYResolution)};
}

int CountTiffPages(Source& file) {
  constexpr int kMostDirectories = 10000;
  constexpr std::uint32_t kReduced = 1;
  TiffReader reader(file);
  int pages = 0;
  std::uint32_t directory = reader.First();
  for (int i = 0; i < kMostDirectories && directory != 0; ++i) {
    const auto type = reader.Find(directory, kSubfileType);
    if (!type || (reader.NumberOf(*type) & kReduced) == 0) ++pages;
    directory = reader.Number(reader.NextAt(directory), 4).value_or(0);
  }
  return std::max(pages, 1);
}

std::vector<std::uint8_t> BytesOfTiff(Source& file, int tag) {
  TiffReader reader(file);
  const auto entry = reader.Find(reader.First(), static_cast<std::uint16_t>(tag));
  return entry ? reader.ValueOf(*entry).value_or(ExifBlock()) : ExifBlock();
}

ExifBlock ExifOfTiff(Source& file) {
  TiffReader reader(file);
  const bool tells = reader.Find(reader.First(), kExifDirectory).has_value() ||
                     reader.Find(reader.First(), kGpsDirectory).has_value() ||
                     reader.Find(reader.First(), kMaker).has_value();
  if (!tells) return {};
  const bool little = reader.Order().little;
  ExifBlock block(8, static_cast<std::uint8_t>(little ? 'I' : 'M'));
  reader.Order().Store(&block[2], 2, 42);
  const std::uint32_t first = TiffCopier(reader, block, 0).Copy(reader.First(), true);
  reader.Order().Store(&block[4], 4, first);
  return first == 0 ? ExifBlock() : block;
}

ExifInTiff LayOutExif(const ExifBlock& block, std::uint32_t position) {
  MemorySource source(block.data(), block.size());
  TiffReader reader(source);
  ExifInTiff result;
  result.littleEndian = reader.Order().little;
  TiffCopier copier(reader, result.bytes, position);
  if (const auto entry = reader.Find(reader.First(), kExifDirectory)) {
    result.exifDirectory = copier.Copy(reader.NumberOf(*entry), false, 1);
  }
  if (const auto entry = reader.Find(reader.First(), kGpsDirectory)) {
    result.gpsDirectory = copier.Copy(reader.NumberOf(*entry), false, 1);
  }
  for (const std::uint16_t tag : kTexts) {
    const auto entry = reader.Find(reader.First(), tag);
    const auto value = entry ? reader.ValueOf(*entry) : std::nullopt;
    if (!value) continue;
    const auto end = std::find(value->begin(), value->end(), std::uint8_t{0});
    result.texts.emplace_back(tag, std::string(value->begin(), end));
  }
  return result;
}

}  // namespace imageio
