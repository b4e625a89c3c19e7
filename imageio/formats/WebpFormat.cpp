// WebP pictures through libwebp, as a module.
#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <cstring>

#include "imageio/formats/FormatGlue.h"

namespace imageio::formats {
namespace {

constexpr char kDamaged[] = "the picture is damaged";

using Mux = std::unique_ptr<WebPMux, decltype(&WebPMuxDelete)>;

class WebpFile {
 public:
  WebpFile(const std::uint8_t* bytes, std::size_t count) : data{bytes, count} {
    if (WebPGetFeatures(bytes, count, &features) != VP8_STATUS_OK) Fail(kDamaged);
    const Mux mux(WebPMuxCreate(&data, 0), &WebPMuxDelete);
    if (!mux) return;  // cut off, which decoding will tell
    ReadChunk(mux.get(), "EXIF", exif);
    ReadChunk(mux.get(), "ICCP", profile);
    ReadChunk(mux.get(), "XMP ", xmp);
    if (features.has_animation) WebPMuxNumChunks(mux.get(), WEBP_CHUNK_ANMF, &frames);
  }

  FormatHead Head() const {
    FormatHead head;
    head.width = features.width;
    head.height = features.height;
    head.hasAlpha = features.has_alpha;
    head.pictures = frames > 1 ? frames : 1;
    head.exif = BlockOf(exif);
    head.profile = BlockOf(profile);
    head.xmp = BlockOf(xmp);
    return head;
  }

  bool Decode(const TakeRow& take) const {
    return features.has_animation ? DecodeFirstFrame(take) : DecodePicture(take);
  }

 private:
  static void ReadChunk(WebPMux* mux, const char* name, Bytes& to) {
    WebPData chunk;
    if (WebPMuxGetChunk(mux, name, &chunk) == WEBP_MUX_OK) to = BytesOf({chunk.bytes, chunk.size});
  }

  bool DecodePicture(const TakeRow& take) const {
    const std::size_t stride =
        static_cast<std::size_t>(features.width) * (features.has_alpha ? 4 : 3);
    Bytes pixels(stride * static_cast<std::size_t>(features.height));
    const auto decode = features.has_alpha ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
    if (!decode(data.bytes, data.size, pixels.data(), pixels.size(), static_cast<int>(stride))) {
      Fail("the picture is damaged or ends early");
    }
    return GiveRows(pixels.data(), features.height, stride, take);
  }

  bool DecodeFirstFrame(const TakeRow& take) const {
    const std::unique_ptr<WebPAnimDecoder, decltype(&WebPAnimDecoderDelete)> decoder(
        WebPAnimDecoderNew(&data, nullptr), &WebPAnimDecoderDelete);
    std::uint8_t* pixels = nullptr;
    int time = 0;
    if (!decoder || !WebPAnimDecoderGetNext(decoder.get(), &pixels, &time)) Fail(kDamaged);
    const std::size_t width = static_cast<std::size_t>(features.width);
    if (features.has_alpha) return GiveRows(pixels, features.height, width * 4, take);
    Bytes row(width * 3);
    for (int y = 0; y < features.height; ++y, pixels += width * 4) {
      for (std::size_t x = 0; x < width; ++x) std::memcpy(&row[x * 3], pixels + x * 4, 3);
      if (!take(y, row.data())) return false;
    }
    return true;
  }

  WebPData data;
  WebPBitstreamFeatures features = {};
  int frames = 1;
  Bytes exif, profile, xmp;
};

// The picture of the library and what it writes, freed.
struct Encoding {
  Encoding() {
    if (!WebPPictureInit(&picture)) Fail("another version of libwebp");
    WebPMemoryWriterInit(&writer);
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
  }
  ~Encoding() {
    WebPPictureFree(&picture);
    WebPMemoryWriterClear(&writer);
  }
  Encoding(const Encoding&) = delete;
  Encoding& operator=(const Encoding&) = delete;

  WebPPicture picture;
  WebPMemoryWriter writer;
};

WebPConfig ConfigOf(int quality) {
  WebPConfig config;
  if (!WebPConfigInit(&config)) Fail("another version of libwebp");
  config.quality = static_cast<float>(quality);
  if (quality < 100) return config;
  WebPConfigLosslessPreset(&config, 4);
  config.exact = 1;  // keeps colour under alpha 0
  return config;
}

void SetChunk(WebPMux* mux, const char* name, const FormatBlock& block) {
  const WebPData data = {block.bytes, block.count};
  if (block.count > 0 && WebPMuxSetChunk(mux, name, &data, 0) != WEBP_MUX_OK) {
    Fail("the metadata cannot be written");
  }
}

// The picture alone has no room for metadata.
Bytes WithMetadata(const WebPMemoryWriter& file, const FormatPicture& from) {
  const Mux mux(WebPMuxNew(), &WebPMuxDelete);
  const WebPData picture = {file.mem, file.size};
  if (!mux || WebPMuxSetImage(mux.get(), &picture, 0) != WEBP_MUX_OK) throw std::bad_alloc();
  SetChunk(mux.get(), "ICCP", from.profile);
  SetChunk(mux.get(), "EXIF", from.exif);
  SetChunk(mux.get(), "XMP ", from.xmp);
  WebPData whole = {};
  if (WebPMuxAssemble(mux.get(), &whole) != WEBP_MUX_OK) Fail("the metadata cannot be written");
  const std::unique_ptr<WebPData, decltype(&WebPDataClear)> owner(&whole, &WebPDataClear);
  return BytesOf({whole.bytes, whole.size});
}

Bytes Encode(const FormatPicture& from) {
  if (from.width > WEBP_MAX_DIMENSION || from.height > WEBP_MAX_DIMENSION) {
    Fail("the picture is too large for this kind of file: 16383 pixels a side");
  }
  const WebPConfig config = ConfigOf(from.quality);
  Encoding encoding;
  encoding.picture.width = from.width;
  encoding.picture.height = from.height;
  encoding.picture.use_argb = config.lossless;
  const auto import = from.hasAlpha ? WebPPictureImportRGBA : WebPPictureImportRGB;
  if (!import(&encoding.picture, from.pixels, from.width * (from.hasAlpha ? 4 : 3))) {
    throw std::bad_alloc();
  }
  if (!WebPEncode(&config, &encoding.picture)) {
    if (encoding.picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
    Fail("libwebp cannot write the picture (error " + std::to_string(encoding.picture.error_code) +
         ")");
  }
  return WithMetadata(encoding.writer, from);
}

FormatFunctions Functions() {
  FormatFunctions functions = Reading<WebpFile>();
  AddWriting<Encode>(functions);
  return functions;
}

}  // namespace
}  // namespace imageio::formats

FXBOX_PICTURE_FORMAT(imageio::formats::Functions())
