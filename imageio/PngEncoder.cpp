// PNG pictures of 24 or 32 bits through libpng.
#include <png.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "imageio/Decoder.h"
#include "imageio/Encoder.h"
#include "imageio/Iptc.h"
#include "imageio/PngTexts.h"

namespace imageio {
namespace {

// The library leaves a failed call by longjmp: each call runs within Try, in whose frame nothing
// needs a destructor.
class PngWriter {
 public:
  explicit PngWriter(Output& to) : output(&to) {
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, &OnError, &OnWarning);
    if (png != nullptr) info = png_create_info_struct(png);
    if (info != nullptr) return;
    png_destroy_write_struct(&png, nullptr);
    throw std::bad_alloc();
  }
  ~PngWriter() { png_destroy_write_struct(&png, &info); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  void WriteHead(const Picture& picture, const WriteOptions& options) {
    const Metadata& metadata = options.metadata;
    xmp.assign(metadata.xmp.begin(), metadata.xmp.end());
    if (!metadata.iptc.empty()) iptc = TextOfIptc(metadata.iptc);
    Try([&] {
      png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      png_set_write_fn(png, this, &OnWrite, &OnFlush);
      png_set_compression_level(png, std::clamp(options.pngLevel, 0, 9));
      png_set_IHDR(png, info, static_cast<png_uint_32>(picture.Width()),
                   static_cast<png_uint_32>(picture.Height()), 8,
                   picture.HasAlpha() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                   PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      SetMetadata(metadata);
      png_write_info(png, info);
      png_set_bgr(png);
    });
  }
  void WriteRow(const BYTE* row) {
    Try([=, this] { png_write_row(png, row); });
  }
  void WriteEnd() {
    Try([this] { png_write_end(png, nullptr); });
  }

 private:
  template <typename Call>
  void Try(Call call) {
    if (setjmp(png_jmpbuf(png)) == 0) {
      call();
      return;
    }
    throw ImageError(LibraryMessage(message.data()));
  }

  void SetMetadata(const Metadata& metadata) {
    const std::vector<BYTE>& exif = metadata.exif;
    const std::vector<BYTE>& profile = metadata.profile;
    if (!profile.empty()) {  // one that the library finds wrong is left out
      png_set_benign_errors(png, 1);
      png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, profile.data(),
                   static_cast<png_uint_32>(profile.size()));
    }
    if (!exif.empty()) {
      png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()),
                     const_cast<png_bytep>(exif.data()));  // the library copies it
    }
    if (!xmp.empty()) SetText(PNG_ITXT_COMPRESSION_NONE, kXmpKey, xmp);
    if (!iptc.empty()) SetText(PNG_TEXT_COMPRESSION_zTXt, kIptcKey, iptc);
    const Resolution resolution = metadata.resolution.InBothDirections();
    const double x = PixelsAMetre(resolution.x), y = PixelsAMetre(resolution.y);
    if (x >= 1 && y >= 1 && x < PNG_UINT_31_MAX && y < PNG_UINT_31_MAX) {
      png_set_pHYs(png, info, static_cast<png_uint_32>(x), static_cast<png_uint_32>(y),
                   PNG_RESOLUTION_METER);
    }
  }

  // The library copies both.
  void SetText(int compression, const char* key, const std::string& data) {
    png_text text = {};
    text.compression = compression;
    text.key = const_cast<png_charp>(key);
    text.text = const_cast<png_charp>(data.c_str());
    text.text_length = data.size();
    png_set_text(png, info, &text, 1);
  }

  static void OnError(png_structp png, png_const_charp text) {
    auto* self = static_cast<PngWriter*>(png_get_error_ptr(png));
    std::snprintf(self->message.data(), self->message.size(), "%s", text);
    png_longjmp(png, 1);
  }
  static void OnWarning(png_structp, png_const_charp) {}
  static void OnWrite(png_structp png, png_bytep from, std::size_t count) {
    auto* self = static_cast<PngWriter*>(png_get_io_ptr(png));
    if (!self->output->TryWrite(from, count)) png_error(png, kCannotWrite);
  }
  static void OnFlush(png_structp) {}

  Output* output;
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::string xmp;  // as texts
  std::string iptc;
  std::array<char, 200> message = {};
};

}  // namespace

bool WritePng(Output& output, const Picture& picture, const WriteOptions& options,
              const Progress& progress) {
  PngWriter writer(output);
  writer.WriteHead(picture, options);
  std::vector<BYTE> scratch(picture.HasAlpha() ? picture.RowBytes() : 0);
  for (int y = 0; y < picture.Height(); ++y) {
    if (picture.HasAlpha()) picture.Interleave(y, false, scratch.data());
    writer.WriteRow(picture.HasAlpha() ? scratch.data() : picture.Colour(y));
    if (!ReportStep(progress, y + 1, picture.Height())) return false;
  }
  writer.WriteEnd();
  return true;
}

}  // namespace imageio
