// HEIF pictures through libheif, as a module. The library turns pictures upright by itself.
#include <libheif/heif.h>

#include <algorithm>
#include <cstring>

#include "imageio/formats/FormatGlue.h"

// GCC 12 takes the end of a vector of bytes for a delete of something else.
#pragma GCC diagnostic ignored "-Wfree-nonheap-object"

namespace imageio::formats {
namespace {

void Check(const heif_error& error) {
  if (error.code == heif_error_Ok) return;
  if (error.code == heif_error_Memory_allocation_error) throw std::bad_alloc();
  const bool endsEarly = error.subcode == heif_suberror_End_of_data;
  Fail(endsEarly ? "the file ends in the middle of the picture"
                 : std::string("the picture cannot be read: ") + error.message);
}

template <class Object, void (*release)(Object*)>
struct Releaser {
  void operator()(Object* object) const { release(object); }
};
using Context = std::unique_ptr<heif_context, Releaser<heif_context, heif_context_free>>;
using Options = std::unique_ptr<heif_decoding_options,
                                Releaser<heif_decoding_options, heif_decoding_options_free>>;
using EncoderOwner = std::unique_ptr<heif_encoder, Releaser<heif_encoder, heif_encoder_release>>;
struct HandleRelease {
  void operator()(const heif_image_handle* handle) const { heif_image_handle_release(handle); }
};
using Handle = std::unique_ptr<heif_image_handle, HandleRelease>;
struct ImageRelease {
  void operator()(const heif_image* image) const { heif_image_release(image); }
};
using Image = std::unique_ptr<heif_image, ImageRelease>;

Context NewContext() {
  Context context(heif_context_alloc());
  if (!context) throw std::bad_alloc();
  return context;
}

// The colour of light that lost the share 255 - alpha.
void Unmultiply(std::uint8_t* pixel) {
  const int alpha = pixel[3];
  for (int c = 0; c < 3 && alpha > 0; ++c) {
    pixel[c] = static_cast<std::uint8_t>(std::min(255, (pixel[c] * 255 + alpha / 2) / alpha));
  }
}

class HeifFile {
 public:
  HeifFile(const std::uint8_t* bytes, std::size_t count) : context(NewContext()) {
    heif_context_set_maximum_image_size_limit(context.get(), 1 << 20);  // the caller has a limit
    Check(heif_context_read_from_memory_without_copy(context.get(), bytes, count, nullptr));
    heif_image_handle* chief = nullptr;
    Check(heif_context_get_primary_image_handle(context.get(), &chief));
    handle.reset(chief);
    profile.resize(heif_image_handle_get_raw_color_profile_size(handle.get()));
    if (!profile.empty()) heif_image_handle_get_raw_color_profile(handle.get(), profile.data());
    ReadMetadata();
  }

  FormatHead Head() const {
    FormatHead head;
    head.width = heif_image_handle_get_width(handle.get());
    head.height = heif_image_handle_get_height(handle.get());
    head.hasAlpha = HasAlpha();
    head.orientation = 1;
    head.bits = std::max(8, heif_image_handle_get_luma_bits_per_pixel(handle.get()));
    head.pictures = heif_context_get_number_of_top_level_images(context.get());
    head.exif = BlockOf(exif);
    head.profile = BlockOf(profile);
    head.xmp = BlockOf(xmp);
    return head;
  }

  bool Decode(const TakeRow& take) const {
    const Options options(heif_decoding_options_alloc());
    options->convert_hdr_to_8bit = 1;
    heif_image* decoded = nullptr;
    const heif_chroma order =
        HasAlpha() ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    Check(heif_decode_image(handle.get(), &decoded, heif_colorspace_RGB, order, options.get()));
    const Image image(decoded);
    CheckSize(*decoded);
    int stride = 0;
    std::uint8_t* const pixels = heif_image_get_plane(decoded, heif_channel_interleaved, &stride);
    if (!pixels) Fail("the picture is of a kind that cannot be read");
    if (HasAlpha() && heif_image_handle_is_premultiplied_alpha(handle.get())) {
      for (int y = 0; y < Head().height; ++y) {
        for (int x = 0; x < Head().width; ++x) Unmultiply(pixels + y * stride + x * 4);
      }
    }
    return GiveRows(pixels, Head().height, static_cast<std::size_t>(stride), take);
  }

 private:
  bool HasAlpha() const { return heif_image_handle_has_alpha_channel(handle.get()) != 0; }

  // Head and picture may contradict each other.
  void CheckSize(const heif_image& image) const {
    if (heif_image_get_width(&image, heif_channel_interleaved) != Head().width ||
        heif_image_get_height(&image, heif_channel_interleaved) != Head().height) {
      Fail("the picture is damaged");
    }
  }

  void ReadMetadata() {
    heif_item_id ids[16];
    const int count =
        heif_image_handle_get_list_of_metadata_block_IDs(handle.get(), nullptr, ids, 16);
    for (int i = 0; i < count; ++i) TakeBlock(ids[i]);
  }

  void TakeBlock(heif_item_id id) {
    const char* const type = heif_image_handle_get_metadata_type(handle.get(), id);
    const char* const content = heif_image_handle_get_metadata_content_type(handle.get(), id);
    Bytes block(heif_image_handle_get_metadata_size(handle.get(), id));
    if (block.empty()) return;
    heif_image_handle_get_metadata(handle.get(), id, block.data());
    if (type && std::strcmp(type, "Exif") == 0) {
      TakeExif(block);
    } else if (content && std::strcmp(content, "application/rdf+xml") == 0) {
      xmp = std::move(block);
    }
  }

  // The block begins with the distance of the data from there.
  void TakeExif(const Bytes& block) {
    if (block.size() < 4) return;
    const std::size_t offset = 4 + (std::size_t{block[0]} << 24 | std::size_t{block[1]} << 16 |
                                    std::size_t{block[2]} << 8 | block[3]);
    if (offset < block.size()) exif = BytesOf({block.data() + offset, block.size() - offset});
  }

  Context context;
  Handle handle;
  Bytes exif, profile, xmp;
};

Image ImageOf(const FormatPicture& from) {
  heif_image* made = nullptr;
  Check(heif_image_create(
      from.width, from.height, heif_colorspace_RGB,
      from.hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, &made));
  Image image(made);
  Check(heif_image_add_plane(made, heif_channel_interleaved, from.width, from.height, 8));
  int stride = 0;
  std::uint8_t* const to = heif_image_get_plane(made, heif_channel_interleaved, &stride);
  const std::size_t row = static_cast<std::size_t>(from.width) * (from.hasAlpha ? 4 : 3);
  for (int y = 0; y < from.height; ++y) {
    std::memcpy(to + static_cast<std::ptrdiff_t>(y) * stride,
                from.pixels + static_cast<std::size_t>(y) * row, row);
  }
  if (from.profile.count > 0) {
    Check(heif_image_set_raw_color_profile(made, "prof", from.profile.bytes, from.profile.count));
  }
  return image;
}

Bytes Written(heif_context& context) {
  Bytes file;
  heif_writer writer = {};
  writer.writer_api_version = 1;
  writer.write = [](heif_context*, const void* data, std::size_t size, void* to) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    static_cast<Bytes*>(to)->assign(bytes, bytes + size);
    return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
  };
  Check(heif_context_write(&context, &writer, &file));
  return file;
}

Bytes Encode(const FormatPicture& from) {
  const Context context = NewContext();
  heif_encoder* found = nullptr;
  Check(heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &found));
  const EncoderOwner encoder(found);
  Check(heif_encoder_set_lossy_quality(found, from.quality));
  if (from.quality >= 90) heif_encoder_set_parameter_string(found, "chroma", "444");
  const Image image = ImageOf(from);
  heif_image_handle* written = nullptr;
  Check(heif_context_encode_image(context.get(), image.get(), found, nullptr, &written));
  const Handle handle(written);
  if (from.exif.count > 0) {
    Check(heif_context_add_exif_metadata(context.get(), written, from.exif.bytes,
                                         static_cast<int>(from.exif.count)));
  }
  if (from.xmp.count > 0) {
    Check(heif_context_add_XMP_metadata(context.get(), written, from.xmp.bytes,
                                        static_cast<int>(from.xmp.count)));
  }
  return Written(*context);
}

FormatFunctions Functions() {
  heif_init(nullptr);
  FormatFunctions functions = Reading<HeifFile>();
  if (heif_have_encoder_for_format(heif_compression_HEVC)) AddWriting<Encode>(functions);
  return functions;
}

}  // namespace
}  // namespace imageio::formats

FXBOX_PICTURE_FORMAT(imageio::formats::Functions())
