// AVIF pictures through libavif, as a module.
#include <avif/avif.h>

#include <thread>

#include "imageio/formats/FormatGlue.h"

namespace imageio::formats {
namespace {

void Check(avifResult result) {
  if (result == AVIF_RESULT_OK) return;
  if (result == AVIF_RESULT_OUT_OF_MEMORY) throw std::bad_alloc();
  if (result == AVIF_RESULT_TRUNCATED_DATA) Fail("the file ends in the middle of the picture");
  Fail(std::string("the picture is damaged: ") + avifResultToString(result));
}

int Threads() {
  const unsigned count = std::thread::hardware_concurrency();
  return count > 0 ? static_cast<int>(count) : 1;
}

// The library turns nothing by itself: a quarter turn against the clock, so often, and then a
// mirror. The numbers are those of EXIF.
int OrientationOf(const avifImage& image) {
  const bool turned = (image.transformFlags & AVIF_TRANSFORM_IROT) != 0;
  const bool mirrored = (image.transformFlags & AVIF_TRANSFORM_IMIR) != 0;
  constexpr int kTurned[4] = {1, 8, 3, 6};
  constexpr int kMirrored[2][4] = {{4, 5, 2, 7}, {2, 7, 4, 5}};  // upside down; left for right
  const int turns = turned ? image.irot.angle & 3 : 0;
  return mirrored ? kMirrored[image.imir.mode & 1][turns] : kTurned[turns];
}

struct Rgb : avifRGBImage {
  Rgb(const avifImage& image, bool hasAlpha) : avifRGBImage() {
    avifRGBImageSetDefaults(this, &image);
    depth = 8;
    format = hasAlpha ? AVIF_RGB_FORMAT_RGBA : AVIF_RGB_FORMAT_RGB;
  }
};

class AvifFile {
 public:
  AvifFile(const std::uint8_t* bytes, std::size_t count)
      : decoder(avifDecoderCreate(), &avifDecoderDestroy) {
    if (!decoder) throw std::bad_alloc();
    decoder->maxThreads = Threads();
    decoder->imageDimensionLimit = 0;  // the caller has a limit of its own
    decoder->strictFlags = AVIF_STRICT_DISABLED;
    Check(avifDecoderSetIOMemory(decoder.get(), bytes, count));
    Check(avifDecoderParse(decoder.get()));
  }

  FormatHead Head() const {
    const avifImage& image = *decoder->image;
    FormatHead head;
    head.width = static_cast<int>(image.width);
    head.height = static_cast<int>(image.height);
    head.hasAlpha = decoder->alphaPresent;
    head.orientation = OrientationOf(image);
    head.bits = static_cast<int>(image.depth);
    head.pictures = decoder->imageCount;
    head.exif = {image.exif.data, image.exif.size};
    head.profile = {image.icc.data, image.icc.size};
    head.xmp = {image.xmp.data, image.xmp.size};
    return head;
  }

  bool Decode(const TakeRow& take) {
    Check(avifDecoderNthImage(decoder.get(), 0));
    const bool hasAlpha = decoder->alphaPresent != AVIF_FALSE;
    Rgb rgb(*decoder->image, hasAlpha);
    rgb.rowBytes = rgb.width * (hasAlpha ? 4 : 3);
    Bytes pixels(std::size_t{rgb.rowBytes} * rgb.height);
    rgb.pixels = pixels.data();
    Check(avifImageYUVToRGB(decoder->image, &rgb));
    return GiveRows(pixels.data(), static_cast<int>(rgb.height), rgb.rowBytes, take);
  }

 private:
  std::unique_ptr<avifDecoder, decltype(&avifDecoderDestroy)> decoder;
};

void SetColours(avifImage& image, bool lossless) {
  image.colorPrimaries = AVIF_COLOR_PRIMARIES_BT709;
  image.transferCharacteristics = AVIF_TRANSFER_CHARACTERISTICS_SRGB;
  image.matrixCoefficients =
      lossless ? AVIF_MATRIX_COEFFICIENTS_IDENTITY : AVIF_MATRIX_COEFFICIENTS_BT601;
  image.yuvRange = AVIF_RANGE_FULL;
}

Bytes Encode(const FormatPicture& from) {
  const bool lossless = from.quality >= 100;
  const bool isFull = from.quality >= 90;  // colour at full resolution, as JPEG files have it
  const std::unique_ptr<avifImage, decltype(&avifImageDestroy)> image(
      avifImageCreate(static_cast<unsigned>(from.width), static_cast<unsigned>(from.height), 8,
                      isFull ? AVIF_PIXEL_FORMAT_YUV444 : AVIF_PIXEL_FORMAT_YUV420),
      &avifImageDestroy);
  if (!image) throw std::bad_alloc();
  SetColours(*image, lossless);
  if (from.profile.count > 0) {
    avifImageSetProfileICC(image.get(), from.profile.bytes, from.profile.count);
  }
  if (from.exif.count > 0) {  // sets turn and mirror by its orientation, too
    avifImageSetMetadataExif(image.get(), from.exif.bytes, from.exif.count);
  }
  if (from.xmp.count > 0) avifImageSetMetadataXMP(image.get(), from.xmp.bytes, from.xmp.count);
  Rgb rgb(*image, from.hasAlpha != 0);
  rgb.pixels = const_cast<std::uint8_t*>(from.pixels);  // is only read
  rgb.rowBytes = rgb.width * (from.hasAlpha ? 4 : 3);
  Check(avifImageRGBToYUV(image.get(), &rgb));

  const std::unique_ptr<avifEncoder, decltype(&avifEncoderDestroy)> encoder(avifEncoderCreate(),
                                                                            &avifEncoderDestroy);
  if (!encoder) throw std::bad_alloc();
  encoder->maxThreads = Threads();
  encoder->speed = 8;  // of 10: a photograph of 24 megapixels in seconds, not minutes
  const int quantizer = (100 - from.quality) * AVIF_QUANTIZER_WORST_QUALITY / 100;
  encoder->minQuantizer = encoder->maxQuantizer = quantizer;
  encoder->minQuantizerAlpha = encoder->maxQuantizerAlpha = AVIF_QUANTIZER_LOSSLESS;
  avifRWData file = AVIF_DATA_EMPTY;
  const std::unique_ptr<avifRWData, decltype(&avifRWDataFree)> owner(&file, &avifRWDataFree);
  Check(avifEncoderWrite(encoder.get(), image.get(), &file));
  return BytesOf({file.data, file.size});
}

FormatFunctions Functions() {
  FormatFunctions functions = Reading<AvifFile>();
  AddWriting<Encode>(functions);
  return functions;
}

}  // namespace
}  // namespace imageio::formats

FXBOX_PICTURE_FORMAT(imageio::formats::Functions())
