// PNG pictures through libpng.
#include <png.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <span>
#include <string_view>

#include "base/Rows.h"
#include "imageio/Decoder.h"
#include "imageio/Exif.h"
#include "imageio/Iptc.h"
#include "imageio/PngTexts.h"

namespace imageio {
namespace {

// Each name with its end.
constexpr char kWantedChunks[] = "eXIf\0iCCP\0iTXt\0zTXt\0pHYs";

// One reading of the file from its start. The library leaves a failed call by longjmp: each call
// runs within Try, in whose frame nothing needs a destructor.
class PngStream {
 public:
  explicit PngStream(Source& from) : source(&from) {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, &OnError, &OnWarning);
    if (png != nullptr) info = png_create_info_struct(png);
    if (info == nullptr) {
      png_destroy_read_struct(&png, nullptr, nullptr);
      throw std::bad_alloc();
    }
    try {
      Try([this] { ReadInfo(); });
    } catch (...) {
      png_destroy_read_struct(&png, &info, nullptr);
      throw;
    }
  }
  ~PngStream() { png_destroy_read_struct(&png, &info, nullptr); }
  PngStream(const PngStream&) = delete;
  PngStream& operator=(const PngStream&) = delete;

  std::uint32_t Width() const { return png_get_image_width(png, info); }
  std::uint32_t Height() const { return png_get_image_height(png, info); }
  bool HasAlpha() const { return png_get_channels(png, info) == 4; }
  int StoredBits() const { return storedBits; }
  bool Interlaced() const { return png_get_interlace_type(png, info) != PNG_INTERLACE_NONE; }

  // Blue, green, red and, where HasAlpha, alpha. Of an interlaced picture the next row of the next
  // pass that has rows. Null skips the row.
  void ReadRow(BYTE* to) {
    Try([this, to] { png_read_row(png, to, nullptr); });
  }

  Metadata ReadMetadata() {
    Metadata metadata;
    png_bytep bytes = nullptr;
    png_uint_32 count = 0;
    if (png_get_eXIf_1(png, info, &count, &bytes) != 0) metadata.exif.assign(bytes, bytes + count);
    png_charp name = nullptr;
    int compression = 0;
    if (png_get_iCCP(png, info, &name, &compression, &bytes, &count) != 0) {
      metadata.profile.assign(bytes, bytes + count);
    }
    ReadTexts(metadata);
    metadata.resolution = ReadResolution();
    return metadata;
  }

 private:
  template <typename Call>
  void Try(Call call) {
    if (setjmp(png_jmpbuf(png)) == 0) {
      call();
      return;
    }
    throw ImageError(endReached ? kEndsEarly : LibraryMessage(message.data()));
  }

  void ReadTexts(Metadata& metadata) {
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(png, info, &texts, &count);
    for (const png_text& text : std::span(texts, static_cast<std::size_t>(count))) {
      const bool isLong = text.compression >= PNG_ITXT_COMPRESSION_NONE;
      const std::string_view data(text.text, isLong ? text.itxt_length : text.text_length);
      if (std::string_view(text.key) == kXmpKey) metadata.xmp.assign(data.begin(), data.end());
      if (std::string_view(text.key) == kIptcKey) metadata.iptc = IptcOfText(data);
    }
  }

  Resolution ReadResolution() const {
    png_uint_32 x = 0, y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    png_get_pHYs(png, info, &x, &y, &unit);
    if (unit != PNG_RESOLUTION_METER) return {};
    return {PixelsAnInch(x), PixelsAnInch(y)};
  }

  void ReadInfo() {
    constexpr png_alloc_size_t kLongestText = png_alloc_size_t{1} << 24;
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_AS_DEFAULT,
                                reinterpret_cast<png_const_bytep>(kWantedChunks),
                                sizeof kWantedChunks / 5);
    png_set_chunk_malloc_max(png, kLongestText);
    png_set_chunk_cache_max(png, 100);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // SetSize has the say
    png_set_read_fn(png, this, &OnRead);
    png_read_info(png, info);
    storedBits = png_get_bit_depth(png, info);
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    png_set_bgr(png);
    png_read_update_info(png, info);
  }

  static void OnError(png_structp png, png_const_charp text) {
    auto* self = static_cast<PngStream*>(png_get_error_ptr(png));
    std::snprintf(self->message.data(), self->message.size(), "%s", text);
    png_longjmp(png, 1);
  }
  static void OnWarning(png_structp, png_const_charp) {}
  static void OnRead(png_structp png, png_bytep to, std::size_t count) {
    auto* self = static_cast<PngStream*>(png_get_io_ptr(png));
    const std::size_t got = self->source->ReadAt(self->position, to, count);
    self->position += got;
    if (got == count) return;
    self->endReached = true;
    png_error(png, kEndsEarly);
  }

  Source* source;
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::uint64_t position = 0;
  int storedBits = 8;
  bool endReached = false;
  std::array<char, 200> message = {};
};

// Stores pixels with alpha `step` pixels apart, from column `start` on.
void StoreSparse(const BYTE* pixels, int channels, int start, int step, int width,
                 const RowBuffer& row) {
  for (int x = start; x < width; x += step, pixels += channels) {
    std::memcpy(row.colour + base::ColourOffset(x), pixels, base::kBytesPerPixel);
    if (row.mask != nullptr) row.mask[x] = static_cast<BYTE>(255 - pixels[3]);
  }
}

// Gives the rows of an interlaced picture in order without a copy of the picture: every pass has a
// reading of its own that skipped the passes before. They end within the first half, quarter and so
// on of the file, so that this unpacks about twice as much as one reading would.
class InterlacedRows {
 public:
  InterlacedRows(Source& source, Size pictureSize) : size(pictureSize) {
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
      const auto at = static_cast<std::size_t>(pass);
      if (Columns(pass) == 0 || RowsOf(pass) == 0) continue;
      passes[at].emplace(source);
      for (int before = 0; before < pass; ++before) {
        const int rows = Columns(before) > 0 ? RowsOf(before) : 0;
        for (int y = 0; y < rows; ++y) passes[at]->ReadRow(nullptr);
      }
    }
  }

  void ReadRow(int y, int channels, BYTE* scratch, const RowBuffer& row) {
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
      std::optional<PngStream>& stream = passes[static_cast<std::size_t>(pass)];
      if (!stream || !PNG_ROW_IN_INTERLACE_PASS(static_cast<unsigned>(y), pass)) continue;
      stream->ReadRow(scratch);
      StoreSparse(scratch, channels, PNG_PASS_START_COL(pass), PNG_PASS_COL_OFFSET(pass),
                  size.width, row);
    }
  }

 private:
  int Columns(int pass) const { return PNG_PASS_COLS(size.width, pass); }
  int RowsOf(int pass) const { return PNG_PASS_ROWS(size.height, pass); }

  Size size;
  std::array<std::optional<PngStream>, PNG_INTERLACE_ADAM7_PASSES> passes;
};

class PngDecoder final : public Decoder {
 public:
  explicit PngDecoder(Source& from) : source(&from) {
    PngStream stream(*source);
    SetSize(stream.Width(), stream.Height());
    head.hasMask = stream.HasAlpha();
    interlaced = stream.Interlaced();
    head.metadata = stream.ReadMetadata();
    head.orientation = ExifOrientation(head.metadata.exif);
    if (stream.StoredBits() > 8) NoteBits(stream.StoredBits());
  }

  bool Decode(RowSink& sink) override { return interlaced ? DecodePasses(sink) : DecodeRows(sink); }

 private:
  int Channels() const { return head.hasMask ? 4 : 3; }
  std::vector<BYTE> ScratchRow() const {
    return std::vector<BYTE>(static_cast<std::size_t>(head.size.width) *
                             static_cast<std::size_t>(Channels()));
  }

  bool DecodeRows(RowSink& sink) {
    PngStream stream(*source);
    std::vector<BYTE> scratch = head.hasMask ? ScratchRow() : std::vector<BYTE>();
    for (int y = 0; y < head.size.height; ++y) {
      const RowBuffer row = sink.Begin(y);
      stream.ReadRow(head.hasMask ? scratch.data() : row.colour);
      if (head.hasMask) StoreSparse(scratch.data(), 4, 0, 1, head.size.width, row);
      if (!sink.End(y)) return false;
    }
    return true;
  }

  bool DecodePasses(RowSink& sink) {
    InterlacedRows rows(*source, head.size);
    std::vector<BYTE> scratch = ScratchRow();
    for (int y = 0; y < head.size.height; ++y) {
      rows.ReadRow(y, Channels(), scratch.data(), sink.Begin(y));
      if (!sink.End(y)) return false;
    }
    return true;
  }

  Source* source;
  bool interlaced = false;
};

}  // namespace

std::unique_ptr<Decoder> OpenPng(Source& source) {
  return std::make_unique<PngDecoder>(source);
}

}  // namespace imageio
