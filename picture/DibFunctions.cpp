#include "picture/DibFunctions.h"

#include <objbase.h>
#include <winbase.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "base/Dib.h"
#include "base/Rows.h"
#include "picture/PackedDib.h"
#include "platform/ModuleResource.h"
#include "platform/PathText.h"

namespace {

using picture::DibReader;
using picture::FreshDib;
using picture::LockedDib;

// Runs what may throw; gives a null or 0 when it does.
template <class Function>
auto Quietly(Function function) noexcept -> decltype(function()) {
  try {
    return function();
  } catch (...) {
    return {};
  }
}

std::vector<BYTE> TableOf(const std::uint32_t* colours, int count) {
  std::vector<BYTE> table;
  for (int i = 0; i < count; ++i) {
    for (int shift = 0; shift < 24; shift += 8) {
      table.push_back(static_cast<BYTE>(colours[i] >> shift));
    }
    table.push_back(0);
  }
  return table;
}

bool HasPalette(const DibReader& reader) {
  return reader.Layout().bits <= 8 && !reader.Layout().isPlane;
}

// Writes as many of the entries as there is room for.
void WriteTable(const LockedDib& dib, const std::vector<BYTE>& table) {
  const std::size_t room = 4 * std::size_t{dib.Reader().Layout().colours};
  std::memcpy(dib.Colours(), table.data(), std::min(table.size(), room));
}

// Palette entries by number, in the first half of the table; the rest is 0.
void WriteNumbers(const LockedDib& dib) {
  const std::uint32_t count = dib.Reader().Layout().colours;
  BYTE* const table = dib.Colours();
  std::memset(table, 0, 4 * std::size_t{count});
  for (std::uint32_t i = 0; i < count; ++i) {
    table[2 * i] = static_cast<BYTE>(i);
    table[2 * i + 1] = static_cast<BYTE>(i >> 8);
  }
}

int NearestColour(const BYTE* wanted, const std::vector<BYTE>& table) {
  int best = 0;
  int least = INT32_MAX;
  for (std::size_t i = 0; i < table.size() / 4; ++i) {
    int distance = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      const int difference = wanted[c] - table[4 * i + c];
      distance += difference * difference;
    }
    if (distance < least) {
      least = distance;
      best = static_cast<int>(i);
    }
  }
  return best;
}

using ByteMap = std::array<BYTE, 256>;

// What becomes of a byte of pixels when each of them is mapped.
ByteMap MapOfBytes(const ByteMap& pixels, int bits) {
  ByteMap bytes = {};
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned mapped = 0;
    for (int shift = 0; shift < 8; shift += bits) {
      mapped |= static_cast<unsigned>(pixels[byte >> shift & ((1u << bits) - 1)]) << shift;
    }
    bytes[byte] = static_cast<BYTE>(mapped);
  }
  return bytes;
}

void MapPixels(const LockedDib& dib, const std::vector<BYTE>& table) {
  const imageio::BmpLayout& layout = dib.Reader().Layout();
  ByteMap pixels = {};
  for (std::size_t i = 0; i < 1u << layout.bits; ++i) {
    pixels[i] = static_cast<BYTE>(NearestColour(&layout.palette[3 * i], table));
  }
  const ByteMap bytes = MapOfBytes(pixels, layout.bits);
  for (std::int64_t y = 0; y < layout.height; ++y) {
    BYTE* const row = dib.Row(y);
    for (std::int64_t i = 0; i < layout.UsedRowBytes(); ++i) row[i] = bytes[row[i]];
  }
}

DibHandle Create(int bits, int width, int height, std::vector<BYTE> table) {
  constexpr int kDepths[] = {1, 4, 8, 16, 24, 32, base::kMaskBits};
  if (std::find(std::begin(kDepths), std::end(kDepths), bits) == std::end(kDepths)) return nullptr;
  if (table.empty()) table = picture::StandardColours(bits);
  FreshDib dib(bits, width, height, table);
  if (std::abs(bits) == 8) {
    for (std::int64_t y = 0; y < std::abs(std::int64_t{height}); ++y) {
      std::memset(dib.Row(y), 255, dib.RowBytes());
    }
  }
  return dib.Release();
}

bool IsFile(const BYTE* bytes, std::size_t size) {
  return size >= 2 && bytes[0] == 'B' && bytes[1] == 'M';
}

DibHandle Read(imageio::Source& source) {
  BYTE first[2] = {};
  const std::size_t got = source.ReadAt(0, first, sizeof first);
  return picture::CopyDib(DibReader(source, IsFile(first, got)));
}

BYTE GreyOf(const BYTE* colour) {
  return static_cast<BYTE>(
      (77 * colour[base::kRed] + 151 * colour[base::kGreen] + 28 * colour[base::kBlue]) >> 8);
}

bool IsMaskOf(const DibReader& reader, std::int64_t width, std::int64_t height) {
  return reader.Layout().bits == 8 && reader.Width() == width && reader.Height() == height;
}

}  // namespace

extern "C" {

DibHandle DibCreate(int bits, int width, int height) {
  return height < 1 ? nullptr : Quietly([&] { return Create(bits, width, height, {}); });
}

DibHandle DibCreateEx(int bits, int width, int height, const uint32_t* colours, int count) {
  const int most = bits >= 1 && bits <= 8 ? 1 << bits : 0;
  if (count < 0 || count > most || (count > 0 && !colours)) return nullptr;
  return Quietly([&] { return Create(bits, width, height, TableOf(colours, count)); });
}

int DibFree(DibHandle dib) {
  return dib && !GlobalFree(dib) ? 1 : 0;
}

DibHandle DibOpenFile(const char* file) {
  if (!file) return nullptr;
  return Quietly([&] {
    imageio::FileSource source(platform::PathFromText(file));
    return Read(source);
  });
}

DibHandle DibOpenFromModule(void* module, const char* name) {
  return Quietly([&]() -> DibHandle {
    const auto bytes = platform::BitmapOfModule(module, name);
    return DibReadDib(bytes.data(), bytes.size());
  });
}

DibHandle DibReadDib(const void* bytes, size_t size) {
  if (!bytes) return nullptr;
  return Quietly([&] {
    imageio::MemorySource source(static_cast<const BYTE*>(bytes), size);
    return Read(source);
  });
}

uint32_t DIBFileSize(DibHandle handle) {
  return Quietly([&] {
    const LockedDib dib(handle);
    const std::uint64_t size =
        imageio::kBmpFileHeadBytes + dib.Reader().RowsAt() + dib.Reader().RowsBytes();
    return size <= UINT32_MAX ? static_cast<std::uint32_t>(size) : 0;
  });
}

DibHandle DibScale(DibHandle handle, int width, int height) {
  return Quietly([&] { return picture::ScaleDib(LockedDib(handle).Reader(), width, height); });
}

int DibSetUsage(DibHandle handle, const uint32_t* colours, int count, int usage) {
  return Quietly([&] {
    const LockedDib dib(handle);
    if (!HasPalette(dib.Reader()) || !dib.Colours()) return 0;
    if (usage == 1) {
      WriteNumbers(dib);
      return 1;
    }
    if (usage != 0 || !colours || count < 1) return 0;
    WriteTable(dib, TableOf(colours, std::min(count, 256)));
    return 1;
  });
}

int DibMapToPalette(DibHandle handle, const uint32_t* colours, int count) {
  return Quietly([&] {
    const LockedDib dib(handle);
    const imageio::BmpLayout& layout = dib.Reader().Layout();
    if (!HasPalette(dib.Reader()) || layout.HasRuns() || !dib.Colours()) return 0;
    if (!colours || count < 1 || static_cast<std::uint32_t>(count) > layout.colours) return 0;
    std::vector<BYTE> table = TableOf(colours, count);
    MapPixels(dib, table);
    table.resize(4 * std::size_t{layout.colours});
    WriteTable(dib, table);
    return 1;
  });
}

DibHandle Make24BitDib(DibHandle handle) {
  return Quietly([&] {
    const LockedDib dib(handle);
    FreshDib fresh(base::kColourBits, dib.Reader().Width(), dib.Reader().Height());
    const std::size_t used = base::ColourBytes(static_cast<int>(dib.Reader().Width()));
    dib.Reader().ForEachColourRow(
        [&](std::int64_t y, const BYTE* colour) { std::memcpy(fresh.Row(y), colour, used); });
    return fresh.Release();
  });
}

DibHandle GolorGray(DibHandle handle) {
  return Quietly([&] {
    const LockedDib dib(handle);
    const std::int64_t width = dib.Reader().Width();
    FreshDib fresh(8, width, dib.Reader().Height(), picture::GreyColours());
    dib.Reader().ForEachColourRow([&](std::int64_t y, const BYTE* colour) {
      BYTE* const row = fresh.Row(y);
      for (std::int64_t x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
        row[x] = GreyOf(colour);
      }
    });
    return fresh.Release();
  });
}

DibHandle ConvertMaskArrayToDib(const uint8_t* const* rows, int width, int height) {
  if (!rows || height < 1 || std::find(rows, rows + height, nullptr) != rows + height) {
    return nullptr;
  }
  return Quietly([&] {
    FreshDib fresh(8, width, height, picture::GreyColours());
    for (int y = 0; y < height; ++y) {
      std::memcpy(fresh.Row(y), rows[y], static_cast<std::size_t>(width));
    }
    return fresh.Release();
  });
}

int ConvertMaskDibToArray(DibHandle handle, uint8_t* const* rows, int width, int height) {
  if (!rows || height < 1 || std::find(rows, rows + height, nullptr) != rows + height) return 0;
  return Quietly([&] {
    const LockedDib mask(handle);
    if (!IsMaskOf(mask.Reader(), width, height)) return 0;
    std::vector<std::vector<BYTE>> read(static_cast<std::size_t>(height));
    mask.Reader().ForEachRow([&](std::int64_t y, const BYTE* packed) {
      read[static_cast<std::size_t>(y)].assign(packed, packed + width);
    });
    for (std::size_t y = 0; y < read.size(); ++y)
      std::copy(read[y].begin(), read[y].end(), rows[y]);
    return 1;
  });
}

}  // extern "C"
