// TIFF pictures through libtiff. Greys, palettes, RGB and CMYK are read sample by sample, which
// keeps the colour under alpha 0; what else the library knows comes through its own conversion to
// RGBA.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "base/Rows.h"
#include "imageio/Decoder.h"
#include "imageio/Exif.h"
#include "imageio/InkProfile.h"
#include "imageio/Iptc.h"
#include "imageio/TiffHandle.h"

namespace imageio {
namespace {

constexpr std::uint64_t kLargestBand = std::uint64_t{1} << 29;  // beyond it a head is not believed

// What one pixel consists of.
struct SampleLayout {
  enum class Kind { Grey, InvertedGrey, Palette, Rgb, Inks };
  Kind kind = Kind::Grey;
  int bits = 8;
  int colours = 1;  // samples of colour; alpha, if any, follows at once
  int samples = 1;  // all samples
  bool hasAlpha = false;
  bool associated = false;  // colours are multiplied by alpha
  bool isFloating = false;  // samples from 0, dark, to 1, bright
  bool planes = false;      // each sample has rows of its own
  bool tiles = false;
  int Used() const { return colours + (hasAlpha ? 1 : 0); }
};

template <typename Value>
Value Field(TIFF* tiff, std::uint32_t tag, Value otherwise) {
  Value value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : otherwise;
}

// The kind of the colours where they can be read sample by sample.
std::optional<SampleLayout::Kind> KindOf(TIFF* tiff) {
  using Kind = SampleLayout::Kind;
  switch (Field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK)) {
    case PHOTOMETRIC_MINISBLACK:
      return Kind::Grey;
    case PHOTOMETRIC_MINISWHITE:
      return Kind::InvertedGrey;
    case PHOTOMETRIC_PALETTE:
      return Kind::Palette;
    case PHOTOMETRIC_RGB:
      return Kind::Rgb;
    case PHOTOMETRIC_SEPARATED:
      if (Field<std::uint16_t>(tiff, TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK) return Kind::Inks;
      return std::nullopt;
    case PHOTOMETRIC_YCBCR:  // the library's JPEG decoder turns it into RGB
      if (Field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) != COMPRESSION_JPEG ||
          Field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, 0) != PLANARCONFIG_CONTIG) {
        return std::nullopt;
      }
      return Kind::Rgb;
    default:
      return std::nullopt;
  }
}

// Alpha is the sample behind the colours if the file says so.
void FindAlpha(TIFF* tiff, SampleLayout& layout) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  if (TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1 || count == 0) return;
  layout.associated = kinds[0] == EXTRASAMPLE_ASSOCALPHA;
  layout.hasAlpha = layout.associated || kinds[0] == EXTRASAMPLE_UNASSALPHA;
  layout.hasAlpha = layout.hasAlpha && layout.samples > layout.colours;
}

bool CanUnpack(const SampleLayout& layout, int format) {
  const bool isPalette = layout.kind == SampleLayout::Kind::Palette;
  if (layout.isFloating) {
    return !isPalette && (layout.bits == 16 || layout.bits == 32 || layout.bits == 64);
  }
  if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID) return false;
  return layout.bits >= 1 &&
         (layout.bits <= (isPalette ? 8 : 16) || (layout.bits == 32 && !isPalette));
}

// Nothing for pictures that only the library's conversion can read.
std::optional<SampleLayout> LayoutOf(TIFF* tiff) {
  using Kind = SampleLayout::Kind;
  const std::optional<Kind> kind = KindOf(tiff);
  const auto format = Field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  if (!kind) return std::nullopt;
  SampleLayout layout;
  layout.kind = *kind;
  layout.bits = Field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  layout.isFloating = format == SAMPLEFORMAT_IEEEFP;
  if (!CanUnpack(layout, format)) return std::nullopt;
  layout.samples = Field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  layout.colours = *kind == Kind::Rgb ? 3 : *kind == Kind::Inks ? 4 : 1;
  layout.planes =
      layout.samples > 1 && Field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
                                PLANARCONFIG_SEPARATE;
  layout.tiles = TIFFIsTiled(tiff) != 0;
  if (layout.samples < layout.colours) return std::nullopt;
  FindAlpha(tiff, layout);
  return layout;
}

void CheckBand(std::uint64_t bytes) {
  if (bytes == 0 || bytes > kLargestBand) throw ImageError("the head of the picture is damaged");
}

// Gives rows of samples as the file packs them.
class SampleRows {
 public:
  SampleRows(Source& source, const SampleLayout& sampleLayout, int pictureWidth)
      : layout(sampleLayout), width(pictureWidth) {
    // Each plane is read by a handle of its own, so that all go through their strips in order.
    const int planes = layout.planes ? layout.Used() : 1;
    for (int i = 0; i < planes; ++i) handles.push_back(OpenHandle(source));
    bands.resize(handles.size());
    if (layout.tiles) {
      TIFF* tiff = handles.front()->Get();
      tileWidth = Field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
      tileHeight = Field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
      CheckBand(std::min(tileWidth, tileHeight));
    }
  }

  // Packed samples of row y, all samples of plane 0 or that one plane's. Rows come in order.
  const BYTE* Row(int y, int plane) {
    return layout.tiles ? TileRow(y, plane) : StripRow(y, plane);
  }

 private:
  static std::unique_ptr<TiffHandle> OpenHandle(Source& source) {
    auto handle = std::make_unique<TiffHandle>(source);
    if (Field<std::uint16_t>(handle->Get(), TIFFTAG_COMPRESSION, 0) == COMPRESSION_JPEG) {
      TIFFSetField(handle->Get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    }
    return handle;
  }

  const BYTE* StripRow(int y, int plane) {
    const auto at = static_cast<std::size_t>(plane);
    TIFF* tiff = handles[at]->Get();
    if (bands[at].empty()) {
      const auto bytes = static_cast<std::uint64_t>(TIFFScanlineSize64(tiff));
      CheckBand(bytes);
      bands[at].resize(static_cast<std::size_t>(bytes));
    }
    if (TIFFReadScanline(tiff, bands[at].data(), static_cast<std::uint32_t>(y),
                         static_cast<std::uint16_t>(plane)) < 0) {
      handles[at]->Fail();
    }
    return bands[at].data();
  }

  const BYTE* TileRow(int y, int plane) {
    const auto at = static_cast<std::size_t>(plane);
    const std::uint32_t row = static_cast<std::uint32_t>(y) % tileHeight;
    if (row == 0) ReadTiles(y, plane);
    return bands[at].data() + row * (bands[at].size() / tileHeight);
  }

  // One row of tiles, side by side.
  void ReadTiles(int y, int plane) {
    const auto at = static_cast<std::size_t>(plane);
    TIFF* tiff = handles[at]->Get();
    const auto rowBytes = static_cast<std::uint64_t>(TIFFTileRowSize64(tiff));
    const auto tileBytes = static_cast<std::uint64_t>(TIFFTileSize64(tiff));
    const std::uint64_t across = (static_cast<std::uint64_t>(width) + tileWidth - 1) / tileWidth;
    CheckBand(tileBytes);
    CheckBand(tileBytes * across);
    if (tileBytes != rowBytes * tileHeight) throw ImageError("the head of the picture is damaged");
    tile.resize(static_cast<std::size_t>(tileBytes));
    bands[at].resize(static_cast<std::size_t>(tileBytes * across));
    for (std::uint64_t i = 0; i < across; ++i) {
      if (TIFFReadTile(tiff, tile.data(), static_cast<std::uint32_t>(i * tileWidth),
                       static_cast<std::uint32_t>(y), 0, static_cast<std::uint16_t>(plane)) < 0) {
        handles[at]->Fail();
      }
      for (std::uint64_t row = 0; row < tileHeight; ++row) {
        std::memcpy(bands[at].data() + (row * across + i) * rowBytes, tile.data() + row * rowBytes,
                    static_cast<std::size_t>(rowBytes));
      }
    }
  }

  SampleLayout layout;
  int width;
  std::uint32_t tileWidth = 0;
  std::uint32_t tileHeight = 0;
  std::vector<std::unique_ptr<TiffHandle>> handles;
  std::vector<std::vector<BYTE>> bands;  // by plane: one row, or one row of tiles
  std::vector<BYTE> tile;
};

// A number of 16 bits: sign, 5 bits of exponent, 10 of fraction.
double HalfToDouble(std::uint16_t half) {
  const int exponent = half >> 10 & 31;
  const int fraction = half & 1023;
  if (exponent == 31) return fraction == 0 ? (half >> 15 ? -HUGE_VAL : HUGE_VAL) : 0;
  const double size =
      exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(1024 + fraction, exponent - 25);
  return half >> 15 ? -size : size;
}

template <typename Number>
Number NumberAt(const BYTE* packed, std::int64_t index) {
  Number number;
  std::memcpy(&number, packed + index * static_cast<std::int64_t>(sizeof number), sizeof number);
  return number;
}

BYTE FloatingAt(const BYTE* packed, int bits, std::int64_t index) {
  const double value = bits == 16   ? HalfToDouble(NumberAt<std::uint16_t>(packed, index))
                       : bits == 32 ? double{NumberAt<float>(packed, index)}
                                    : NumberAt<double>(packed, index);
  if (!(value > 0)) return 0;  // neither is what is no number
  return value >= 1 ? BYTE{255} : static_cast<BYTE>(value * 255 + 0.5);
}

// Samples that are no bytes follow each other without gaps, the highest bit first.
std::uint32_t BitsAt(const BYTE* packed, int bits, std::int64_t index) {
  std::uint32_t value = 0;
  const std::int64_t first = index * bits;
  for (std::int64_t bit = first; bit < first + bits;) {
    const int inByte = static_cast<int>(bit % 8);
    const int taken = static_cast<int>(std::min<std::int64_t>(8 - inByte, first + bits - bit));
    const unsigned part = packed[bit / 8] >> (8 - inByte - taken) & ((1u << taken) - 1);
    value = value << taken | part;
    bit += taken;
  }
  return value;
}

// One sample as a byte: scaled, or as it is for an index.
BYTE SampleAt(const BYTE* packed, const SampleLayout& layout, std::int64_t index) {
  if (layout.isFloating) return FloatingAt(packed, layout.bits, index);
  if (layout.bits == 8) return packed[index];
  if (layout.bits == 16) return ScaleToByte(NumberAt<std::uint16_t>(packed, index), 0xFFFF);
  if (layout.bits == 32) return ScaleToByte(NumberAt<std::uint32_t>(packed, index), 0xFFFFFFFF);
  const std::uint32_t value = BitsAt(packed, layout.bits, index);
  if (layout.kind == SampleLayout::Kind::Palette) return static_cast<BYTE>(value);
  return ScaleToByte(value, (1u << layout.bits) - 1);
}

// Every `step`th of the packed samples from `first` on.
void UnpackSamples(const BYTE* packed, const SampleLayout& layout, int first, int step, int count,
                   int toStep, BYTE* to) {
  std::int64_t at = first;
  for (int i = 0; i < count; ++i, at += step, to += toStep) *to = SampleAt(packed, layout, at);
}

// The colour of light that lost the share 255 - alpha; without light it stays.
BYTE Unmultiply(int colour, int alpha) {
  return alpha == 0 ? static_cast<BYTE>(colour)
                    : static_cast<BYTE>(std::min(255, (colour * 255 + alpha / 2) / alpha));
}

void UnmultiplyRow(BYTE* samples, int width, int colours) {
  for (int x = 0; x < width; ++x, samples += colours + 1) {
    for (int c = 0; c < colours; ++c) samples[c] = Unmultiply(samples[c], samples[colours]);
  }
}

class TiffDecoder final : public Decoder {
 public:
  explicit TiffDecoder(Source& from) : source(&from) {
    const TiffHandle handle(*source);
    TIFF* tiff = handle.Get();
    SetSize(Field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0),
            Field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0));
    const int turn = Field<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    head.orientation = turn >= 1 && turn <= 8 ? turn : 1;
    layout = LayoutOf(tiff);
    head.hasMask = layout ? layout->hasAlpha : ConversionOf(handle).alpha != 0;
    if (layout && layout->kind == SampleLayout::Kind::Palette) ReadPalette(handle);
    ReadMetadata(tiff);
    if (layout && layout->kind == SampleLayout::Kind::Inks) {
      profile = InkProfile::Take(head.metadata, {.others = layout->Used() - layout->colours});
    }
    NoteLosses(tiff);
  }

  bool Decode(RowSink& sink) override { return layout ? DecodeSamples(sink) : Convert(sink); }

 private:
  // The library's own conversion to RGBA, ended by its destructor.
  struct Conversion : TIFFRGBAImage {
    Conversion() : TIFFRGBAImage() {}
    ~Conversion() { TIFFRGBAImageEnd(this); }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
  };
  struct ConversionFlags {
    int alpha;
  };
  static void Begin(const TiffHandle& handle, Conversion& conversion);
  static ConversionFlags ConversionOf(const TiffHandle& handle) {
    Conversion conversion;
    Begin(handle, conversion);
    return {conversion.alpha};
  }

  void ReadPalette(const TiffHandle& handle);
  void ReadMetadata(TIFF* tiff);
  void NoteLosses(TIFF* tiff);
  // Bytes that need no more than another order.
  bool IsPlain() const {
    using Kind = SampleLayout::Kind;
    return layout->bits == 8 && !layout->planes && !layout->associated &&
           (layout->kind == Kind::Grey || layout->kind == Kind::Rgb);
  }
  bool DecodeSamples(RowSink& sink);
  void StoreRow(BYTE* samples, const RowBuffer& row) const;
  void StoreColours(const BYTE* samples, BYTE* colour) const;
  void StoreColour(const BYTE* samples, BYTE* colour) const;
  bool Convert(RowSink& sink);

  Source* source;
  std::optional<SampleLayout> layout;
  std::vector<BYTE> palette;            // red, green, blue
  std::unique_ptr<InkProfile> profile;  // of inks
};

void TiffDecoder::Begin(const TiffHandle& handle, Conversion& conversion) {
  char text[1024] = "";
  if (TIFFRGBAImageOK(handle.Get(), text) == 0 ||
      TIFFRGBAImageBegin(&conversion, handle.Get(), 1, text) == 0) {
    throw ImageError(LibraryMessage(text));
  }
  // Turning is not its business.
  conversion.orientation = conversion.req_orientation = ORIENTATION_TOPLEFT;
}

// Entries have 16 bits; some programs store 8, which is seen by no entry being higher.
void TiffDecoder::ReadPalette(const TiffHandle& handle) {
  std::uint16_t* maps[3] = {};
  if (TIFFGetField(handle.Get(), TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]) != 1) {
    throw ImageError("the picture lacks its palette");
  }
  const std::size_t count = std::size_t{1} << layout->bits;
  const bool wide = std::any_of(std::begin(maps), std::end(maps), [count](const auto* map) {
    return std::any_of(map, map + count, [](std::uint16_t value) { return value > 255; });
  });
  palette.resize(3 * count);
  for (std::size_t i = 0; i < palette.size(); ++i) {
    const std::uint16_t value = maps[i % 3][i / 3];
    palette[i] = wide ? ScaleToByte(value, 65535) : static_cast<BYTE>(value);
  }
}

std::vector<std::uint8_t> BytesField(TIFF* tiff, std::uint32_t tag) {
  std::uint32_t count = 0;
  const std::uint8_t* bytes = nullptr;
  if (TIFFGetField(tiff, tag, &count, &bytes) != 1 || bytes == nullptr) return {};
  return {bytes, bytes + count};
}

// Old files say that the records are numbers of four bytes, which the library does not take.
std::vector<std::uint8_t> IptcOf(Source& file) {
  const std::vector<std::uint8_t> records = BytesOfTiff(file, TIFFTAG_RICHTIFFIPTC);
  return records.empty() ? IptcOfResources(BytesOfTiff(file, TIFFTAG_PHOTOSHOP)) : records;
}

Resolution ResolutionOf(TIFF* tiff) {
  float x = 0, y = 0;
  TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x);
  TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y);
  const int unit = Field<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  if (unit == RESUNIT_NONE) return {};
  const double scale = unit == RESUNIT_CENTIMETER ? 2.54 : 1;
  return {double{x} * scale, double{y} * scale};
}

void TiffDecoder::ReadMetadata(TIFF* tiff) {
  head.metadata.profile = BytesField(tiff, TIFFTAG_ICCPROFILE);
  head.metadata.xmp = BytesField(tiff, TIFFTAG_XMLPACKET);
  head.metadata.iptc = IptcOf(*source);
  head.metadata.resolution = ResolutionOf(tiff);
  head.metadata.exif = ExifOfTiff(*source);
}

void TiffDecoder::NoteLosses(TIFF* tiff) {
  const int bits = Field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  if (layout && layout->isFloating) {
    head.notes.push_back("its floating samples from 0 to 1 are taken with 8 bits");
  } else if (bits > 8) {
    NoteBits(bits);
  }
  const int pages = CountTiffPages(*source);
  if (pages > 1) {
    head.notes.push_back("it has " + std::to_string(pages) + " pages, of which the first is taken");
  } else if (TIFFIsBigTIFF(tiff) != 0 && TIFFLastDirectory(tiff) == 0) {
    head.notes.push_back("it has several pages, of which the first is taken");
  }
}

bool TiffDecoder::DecodeSamples(RowSink& sink) {
  const int width = head.size.width;
  const int used = layout->Used();
  SampleRows rows(*source, *layout, width);
  std::vector<BYTE> samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(used));
  for (int y = 0; y < head.size.height; ++y) {
    const BYTE* packed = rows.Row(y, 0);
    if (IsPlain()) {
      StoreSamples(packed, width, used, layout->samples, sink.Begin(y));
      if (!sink.End(y)) return false;
      continue;
    }
    for (int i = 0; i < used; ++i) {
      if (layout->planes && i > 0) packed = rows.Row(y, i);
      UnpackSamples(packed, *layout, layout->planes ? 0 : i, layout->planes ? 1 : layout->samples,
                    width, used, samples.data() + i);
    }
    StoreRow(samples.data(), sink.Begin(y));
    if (!sink.End(y)) return false;
  }
  return true;
}

void TiffDecoder::StoreRow(BYTE* samples, const RowBuffer& row) const {
  using Kind = SampleLayout::Kind;
  const int width = head.size.width;
  const int used = layout->Used();
  if (layout->associated && layout->kind != Kind::Palette) {
    UnmultiplyRow(samples, width, layout->colours);
  }
  if (layout->kind == Kind::Grey || layout->kind == Kind::Rgb) {
    StoreSamples(samples, width, used, used, row);
    return;
  }
  if (profile) {
    profile->Convert(samples, row.colour, width);
  } else {
    StoreColours(samples, row.colour);
  }
  if (row.mask == nullptr) return;
  for (int x = 0; x < width; ++x, samples += used) {
    row.mask[x] = static_cast<BYTE>(255 - samples[layout->colours]);
  }
}

// Of a row of indices, inks or inverted greys.
void TiffDecoder::StoreColours(const BYTE* samples, BYTE* colour) const {
  for (int x = 0; x < head.size.width; ++x) {
    StoreColour(samples, colour);
    samples += layout->Used();
    colour += base::kBytesPerPixel;
  }
}

void TiffDecoder::StoreColour(const BYTE* samples, BYTE* colour) const {
  using Kind = SampleLayout::Kind;
  BYTE rgb[3];
  for (int c = 0; c < 3; ++c) {
    rgb[c] = layout->kind == Kind::InvertedGrey ? static_cast<BYTE>(255 - samples[0])
             : layout->kind == Kind::Inks       ? MultiplyBytes(255 - samples[c], 255 - samples[3])
                                          : palette[static_cast<std::size_t>(3 * samples[0] + c)];
  }
  colour[base::kRed] = rgb[0];
  colour[base::kGreen] = rgb[1];
  colour[base::kBlue] = rgb[2];
}

bool TiffDecoder::Convert(RowSink& sink) {
  const TiffHandle handle(*source);
  Conversion conversion;
  Begin(handle, conversion);
  const int width = head.size.width;
  const int height = head.size.height;
  const std::uint32_t tag =
      TIFFIsTiled(handle.Get()) != 0 ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP;
  const int bandRows = static_cast<int>(std::clamp<std::uint32_t>(
      Field<std::uint32_t>(handle.Get(), tag, 1), 1, static_cast<std::uint32_t>(height)));
  CheckBand(std::uint64_t{4} * static_cast<std::uint64_t>(bandRows) *
            static_cast<std::uint64_t>(width));
  std::vector<std::uint32_t> band(static_cast<std::size_t>(width) *
                                  static_cast<std::size_t>(bandRows));
  std::vector<BYTE> samples(static_cast<std::size_t>(width) * 4);
  for (int y = 0; y < height; ++y) {
    if (y % bandRows == 0) {
      conversion.row_offset = y;
      const int rows = std::min(bandRows, height - y);
      if (TIFFRGBAImageGet(&conversion, band.data(), static_cast<std::uint32_t>(width),
                           static_cast<std::uint32_t>(rows)) == 0) {
        handle.Fail();
      }
    }
    const std::uint32_t* pixels = band.data() + std::int64_t{y % bandRows} * width;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<BYTE>(pixels[i / 4] >> 8 * (i % 4));
    }
    if (head.hasMask) UnmultiplyRow(samples.data(), width, 3);
    StoreSamples(samples.data(), width, head.hasMask ? 4 : 3, 4, sink.Begin(y));
    if (!sink.End(y)) return false;
  }
  return true;
}

}  // namespace

std::unique_ptr<Decoder> OpenTiff(Source& source) {
  return std::make_unique<TiffDecoder>(source);
}

}  // namespace imageio
