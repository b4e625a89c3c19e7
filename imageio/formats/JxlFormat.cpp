// JPEG XL pictures through libjxl, as a module.
#include <jxl/decode.h>
#include <jxl/encode.h>
#include <jxl/thread_parallel_runner.h>

#include <algorithm>
#include <cstring>

#include "imageio/formats/FormatGlue.h"

namespace imageio::formats {
namespace {

constexpr char kEndsEarly[] = "the file ends in the middle of the picture";

struct Runner {
  Runner()
      : runner(JxlThreadParallelRunnerCreate(nullptr,
                                             JxlThreadParallelRunnerDefaultNumWorkerThreads()),
               &JxlThreadParallelRunnerDestroy) {
    if (!runner) throw std::bad_alloc();
  }
  std::unique_ptr<void, decltype(&JxlThreadParallelRunnerDestroy)> runner;
};

class JxlFile {
 public:
  JxlFile(const std::uint8_t* bytes, std::size_t count) : file{bytes, count} {
    const Decoder decoder = NewDecoder(JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING | JXL_DEC_BOX);
    for (;;) {
      const JxlDecoderStatus status = JxlDecoderProcessInput(decoder.get());
      if (status == JXL_DEC_SUCCESS) break;
      if (status == JXL_DEC_NEED_MORE_INPUT && isKnown) break;  // decoding will tell
      TakeEvent(*decoder, status);
    }
    EndBox(*decoder);
    if (!isKnown) Fail(kEndsEarly);
    DropLength();
  }

  FormatHead Head() const {
    FormatHead head;
    head.width = static_cast<int>(info.xsize);
    head.height = static_cast<int>(info.ysize);
    head.hasAlpha = info.alpha_bits > 0;
    head.orientation = static_cast<int>(info.orientation);
    head.bits = static_cast<int>(info.bits_per_sample);
    head.pictures = info.have_animation ? 2 : 1;
    head.exif = BlockOf(exif);
    head.profile = BlockOf(profile);
    head.xmp = BlockOf(xmp);
    return head;
  }

  bool Decode(const TakeRow& take) const {
    const JxlPixelFormat format = {info.alpha_bits > 0 ? 4U : 3U, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN,
                                   0};
    const std::size_t stride = std::size_t{info.xsize} * format.num_channels;
    Bytes pixels(stride * info.ysize);
    const Runner threads;
    const Decoder decoder = NewDecoder(JXL_DEC_FULL_IMAGE);
    JxlDecoderSetParallelRunner(decoder.get(), JxlThreadParallelRunner, threads.runner.get());
    for (;;) {
      switch (JxlDecoderProcessInput(decoder.get())) {
        case JXL_DEC_NEED_IMAGE_OUT_BUFFER:
          if (JxlDecoderSetImageOutBuffer(decoder.get(), &format, pixels.data(), pixels.size()) !=
              JXL_DEC_SUCCESS) {
            Fail("the picture is of a kind that cannot be read");
          }
          break;
        case JXL_DEC_FULL_IMAGE:
          return GiveRows(pixels.data(), static_cast<int>(info.ysize), stride, take);
        case JXL_DEC_NEED_MORE_INPUT:
          Fail(kEndsEarly);
        default:
          Fail("the picture is damaged");
      }
    }
  }

 private:
  using Decoder = std::unique_ptr<JxlDecoder, decltype(&JxlDecoderDestroy)>;

  Decoder NewDecoder(int events) const {
    Decoder decoder(JxlDecoderCreate(nullptr), &JxlDecoderDestroy);
    if (!decoder) throw std::bad_alloc();
    JxlDecoderSubscribeEvents(decoder.get(), events);
    JxlDecoderSetKeepOrientation(decoder.get(), JXL_TRUE);
    JxlDecoderSetUnpremultiplyAlpha(decoder.get(), JXL_TRUE);
    JxlDecoderSetDecompressBoxes(decoder.get(), JXL_TRUE);
    JxlDecoderSetInput(decoder.get(), file.bytes, file.count);
    JxlDecoderCloseInput(decoder.get());
    return decoder;
  }

  void TakeEvent(JxlDecoder& decoder, JxlDecoderStatus status) {
    if (status == JXL_DEC_BASIC_INFO) {
      if (JxlDecoderGetBasicInfo(&decoder, &info) != JXL_DEC_SUCCESS)
        Fail("the picture is damaged");
      isKnown = true;
    } else if (status == JXL_DEC_COLOR_ENCODING) {
      TakeProfile(decoder);
    } else if (status == JXL_DEC_BOX) {
      EndBox(decoder);
      BeginBox(decoder);
    } else if (status == JXL_DEC_BOX_NEED_MORE_OUTPUT) {
      GrowBox(decoder);
    } else {
      Fail(status == JXL_DEC_NEED_MORE_INPUT ? kEndsEarly : "the picture is damaged");
    }
  }

  // The profile of the rows, when the file has one of its own.
  void TakeProfile(JxlDecoder& decoder) {
    JxlColorEncoding named;
    constexpr JxlColorProfileTarget kData = JXL_COLOR_PROFILE_TARGET_DATA;
    if (JxlDecoderGetColorAsEncodedProfile(&decoder, nullptr, kData, &named) == JXL_DEC_SUCCESS &&
        named.primaries == JXL_PRIMARIES_SRGB &&
        named.transfer_function == JXL_TRANSFER_FUNCTION_SRGB) {
      return;
    }
    std::size_t size = 0;
    if (JxlDecoderGetICCProfileSize(&decoder, nullptr, kData, &size) != JXL_DEC_SUCCESS) return;
    profile.resize(size);
    JxlDecoderGetColorAsICCProfile(&decoder, nullptr, kData, profile.data(), size);
  }

  void BeginBox(JxlDecoder& decoder) {
    JxlBoxType type;
    if (JxlDecoderGetBoxType(&decoder, type, JXL_TRUE) != JXL_DEC_SUCCESS) return;
    box = std::memcmp(type, "Exif", 4) == 0   ? &exif
          : std::memcmp(type, "xml ", 4) == 0 ? &xmp
                                              : nullptr;
    if (!box) return;
    box->clear();
    filled = 0;
    GrowBox(decoder);
  }

  // The decoder goes on behind what it has filled.
  void GrowBox(JxlDecoder& decoder) {
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    constexpr std::size_t kMost = std::size_t{1} << 26;
    if (!box->empty()) filled = box->size() - JxlDecoderReleaseBoxBuffer(&decoder);
    if (filled > kMost) Fail("the metadata are too large");
    box->resize(filled + kPiece);
    JxlDecoderSetBoxBuffer(&decoder, box->data() + filled, box->size() - filled);
  }

  void EndBox(JxlDecoder& decoder) {
    if (!box) return;
    box->resize(box->size() - JxlDecoderReleaseBoxBuffer(&decoder));
    box = nullptr;
  }

  // The box begins with the distance of the data from there.
  void DropLength() {
    if (exif.size() < 4) return exif.clear();
    const std::size_t offset = 4 + (std::size_t{exif[0]} << 24 | std::size_t{exif[1]} << 16 |
                                    std::size_t{exif[2]} << 8 | exif[3]);
    if (offset >= exif.size()) return exif.clear();
    exif.erase(exif.begin(), exif.begin() + static_cast<std::ptrdiff_t>(offset));
  }

  const FormatBlock file;
  JxlBasicInfo info = {};
  bool isKnown = false;
  Bytes exif, profile, xmp;
  Bytes* box = nullptr;  // that is being read
  std::size_t filled = 0;
};

void Check(JxlEncoderStatus status) {
  if (status != JXL_ENC_SUCCESS) Fail("libjxl cannot write the picture");
}

JxlBasicInfo InfoOf(const FormatPicture& from) {
  JxlBasicInfo info;
  JxlEncoderInitBasicInfo(&info);
  info.xsize = static_cast<unsigned>(from.width);
  info.ysize = static_cast<unsigned>(from.height);
  info.bits_per_sample = 8;
  info.num_color_channels = 3;
  info.num_extra_channels = from.hasAlpha ? 1 : 0;
  info.alpha_bits = from.hasAlpha ? 8 : 0;
  // With a profile the library's own colour space would give rows of another one.
  info.uses_original_profile = from.quality >= 100 || from.profile.count > 0 ? JXL_TRUE : JXL_FALSE;
  return info;
}

// The distance that the library's own tools take for a quality. The library refuses more than 25.
float DistanceOf(int quality) {
  if (quality >= 30) return 0.1f + static_cast<float>(100 - quality) * 0.09f;
  return std::min(25.0f, 6.4f + 0.03f * static_cast<float>((30 - quality) * (30 - quality)));
}

void SetColours(JxlEncoder* encoder, const FormatPicture& from) {
  if (from.profile.count > 0 &&
      JxlEncoderSetICCProfile(encoder, from.profile.bytes, from.profile.count) == JXL_ENC_SUCCESS) {
    return;
  }
  JxlColorEncoding srgb;
  JxlColorEncodingSetToSRGB(&srgb, JXL_FALSE);
  Check(JxlEncoderSetColorEncoding(encoder, &srgb));
}

void AddBoxes(JxlEncoder* encoder, const FormatPicture& from) {
  if (from.exif.count == 0 && from.xmp.count == 0) return;
  Check(JxlEncoderUseBoxes(encoder));
  if (from.exif.count > 0) {
    Bytes box(4);  // the data follow at once
    box.insert(box.end(), from.exif.bytes, from.exif.bytes + from.exif.count);
    Check(JxlEncoderAddBox(encoder, "Exif", box.data(), box.size(), JXL_FALSE));
  }
  if (from.xmp.count > 0) {
    Check(JxlEncoderAddBox(encoder, "xml ", from.xmp.bytes, from.xmp.count, JXL_FALSE));
  }
  JxlEncoderCloseBoxes(encoder);
}

Bytes Output(JxlEncoder* encoder) {
  Bytes file(std::size_t{1} << 16);
  std::uint8_t* next = file.data();
  std::size_t room = file.size();
  for (;;) {
    const JxlEncoderStatus status = JxlEncoderProcessOutput(encoder, &next, &room);
    const auto used = static_cast<std::size_t>(next - file.data());
    if (status != JXL_ENC_NEED_MORE_OUTPUT) {
      Check(status);
      file.resize(used);
      return file;
    }
    file.resize(file.size() * 2);
    next = file.data() + used;
    room = file.size() - used;
  }
}

Bytes Encode(const FormatPicture& from) {
  const Runner threads;
  const std::unique_ptr<JxlEncoder, decltype(&JxlEncoderDestroy)> encoder(JxlEncoderCreate(nullptr),
                                                                          &JxlEncoderDestroy);
  if (!encoder) throw std::bad_alloc();
  Check(JxlEncoderSetParallelRunner(encoder.get(), JxlThreadParallelRunner, threads.runner.get()));
  AddBoxes(encoder.get(), from);
  const JxlBasicInfo info = InfoOf(from);
  Check(JxlEncoderSetBasicInfo(encoder.get(), &info));
  SetColours(encoder.get(), from);
  JxlEncoderFrameSettings* const settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
  constexpr int kEffort = 4;  // of 9: a photograph of 24 megapixels in seconds
  Check(JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, kEffort));
  if (from.quality >= 100) {
    Check(JxlEncoderSetFrameLossless(settings, JXL_TRUE));
  } else {
    Check(JxlEncoderSetFrameDistance(settings, DistanceOf(from.quality)));
  }
  const JxlPixelFormat format = {from.hasAlpha ? 4U : 3U, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
  const std::size_t count = std::size_t{info.xsize} * info.ysize * format.num_channels;
  Check(JxlEncoderAddImageFrame(settings, &format, from.pixels, count));
  JxlEncoderCloseInput(encoder.get());
  return Output(encoder.get());
}

FormatFunctions Functions() {
  FormatFunctions functions = Reading<JxlFile>();
  AddWriting<Encode>(functions);
  return functions;
}

}  // namespace
}  // namespace imageio::formats

FXBOX_PICTURE_FORMAT(imageio::formats::Functions())
