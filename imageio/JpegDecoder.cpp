// JPEG pictures through libjpeg-turbo.
#include "imageio/JpegErrors.h"

#include <jerror.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "base/Rows.h"
#include "imageio/Decoder.h"
#include "imageio/Exif.h"

namespace imageio {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr char kExifName[] = "Exif\0";  // with its end six bytes

// One reading of the file from its start.
class JpegStream {
 public:
  explicit JpegStream(Source& from) : source(&from) {
    jpeg.err = errors.Connect();
    errors.emit_message = &OnMessage;
    jpeg.client_data = this;
    input.init_source = [](j_decompress_ptr) {};
    input.fill_input_buffer = &OnRead;
    input.skip_input_data = &OnSkip;
    input.resync_to_restart = &jpeg_resync_to_restart;
    input.term_source = [](j_decompress_ptr) {};
    try {
      errors.Try([this] { ReadHead(); });
    } catch (...) {
      jpeg_destroy_decompress(&jpeg);
      throw;
    }
  }
  ~JpegStream() { jpeg_destroy_decompress(&jpeg); }
  JpegStream(const JpegStream&) = delete;
  JpegStream& operator=(const JpegStream&) = delete;

  int Width() const { return static_cast<int>(jpeg.image_width); }
  int Height() const { return static_cast<int>(jpeg.image_height); }
  bool IsCmyk() const { return jpeg.out_color_space == JCS_CMYK; }
  // Some programs store how much light the inks let through.
  bool InksAreInverted() const { return jpeg.saw_Adobe_marker != 0; }

  Metadata ReadMetadata();

  // The size at eighths / 8 of the picture.
  Size ScaledSize(int eighths) {
    errors.Try([this, eighths] {
      SetScale(eighths);
      jpeg_calc_output_dimensions(&jpeg);
    });
    return {static_cast<int>(jpeg.output_width), static_cast<int>(jpeg.output_height)};
  }

  // Makes rows available. A picture in several scans is read to its end before; that needs the
  // coefficients of the whole picture in memory, as the format wants it. False when the sink
  // stopped it.
  bool Start(int eighths, RowSink& sink);

  // Three bytes a pixel, four of CMYK.
  void ReadRow(BYTE* to) {
    errors.Try([this, &to] { jpeg_read_scanlines(&jpeg, &to, 1); });
  }

 private:
  void ReadHead() {
    jpeg_create_decompress(&jpeg);
    jpeg.src = &input;
    jpeg_save_markers(&jpeg, kExifMarker, 0xFFFF);
    jpeg_save_markers(&jpeg, kProfileMarker, 0xFFFF);
    jpeg_read_header(&jpeg, TRUE);
    const bool inks = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
    jpeg.out_color_space = inks ? JCS_CMYK : JCS_EXT_BGR;
    jpeg.dct_method = JDCT_ISLOW;  // the same bytes on every processor
  }
  void SetScale(int eighths) {
    jpeg.scale_num = static_cast<unsigned>(eighths);
    jpeg.scale_denom = 8;
  }
  bool ReadScans(RowSink& sink);
  void CheckScansComplete();

  static JpegStream& Self(void* data) { return *static_cast<JpegStream*>(data); }
  static boolean OnRead(j_decompress_ptr jpeg);
  static void OnSkip(j_decompress_ptr jpeg, long count);
  static void OnMessage(j_common_ptr jpeg, int level);

  Source* source;
  jpeg_decompress_struct jpeg = {};
  JpegErrors errors;
  jpeg_source_mgr input = {};
  std::uint64_t position = 0;
  bool endReached = false;
  std::array<JOCTET, 1 << 14> buffer;
};

// Behind the end stands an end mark, for files that lack their own. Whoever needed more than that
// is told by OnMessage.
boolean JpegStream::OnRead(j_decompress_ptr jpeg) {
  JpegStream& self = Self(jpeg->client_data);
  std::size_t got = self.source->ReadAt(self.position, self.buffer.data(), self.buffer.size());
  self.position += got;
  if (got == 0) {
    self.endReached = true;
    self.buffer[0] = 0xFF;
    self.buffer[1] = JPEG_EOI;
    got = 2;
  }
  self.input.next_input_byte = self.buffer.data();
  self.input.bytes_in_buffer = got;
  return TRUE;
}

void JpegStream::OnSkip(j_decompress_ptr jpeg, long count) {
  if (count <= 0) return;
  JpegStream& self = Self(jpeg->client_data);
  const auto bytes = static_cast<std::size_t>(count);
  const std::size_t inBuffer = std::min(bytes, self.input.bytes_in_buffer);
  self.input.next_input_byte += inBuffer;
  self.input.bytes_in_buffer -= inBuffer;
  self.position += bytes - inBuffer;
}

void JpegStream::OnMessage(j_common_ptr jpeg, int level) {
  const bool lacksData = level < 0 && jpeg->err->msg_code == JWRN_HIT_MARKER;
  if (lacksData && Self(jpeg->client_data).endReached) JpegErrors::Leave(jpeg, kEndsEarly);
}

Metadata JpegStream::ReadMetadata() {
  Metadata metadata;
  for (auto* marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
    const JOCTET* data = marker->data;
    if (marker->marker == kExifMarker && marker->data_length > sizeof kExifName &&
        std::memcmp(data, kExifName, sizeof kExifName) == 0) {
      metadata.exif.assign(data + sizeof kExifName, data + marker->data_length);
      break;
    }
  }
  JOCTET* profile = nullptr;
  unsigned count = 0;
  errors.Try([&] { jpeg_read_icc_profile(&jpeg, &profile, &count); });
  if (profile == nullptr) return metadata;
  const std::unique_ptr<JOCTET, decltype(&std::free)> owner(profile, &std::free);
  metadata.profile.assign(profile, profile + count);
  return metadata;
}

bool JpegStream::Start(int eighths, RowSink& sink) {
  const bool scans = jpeg_has_multiple_scans(&jpeg) != 0;
  errors.Try([&] {
    SetScale(eighths);
    jpeg.buffered_image = scans ? TRUE : FALSE;
    jpeg_start_decompress(&jpeg);
  });
  if (!scans) return true;
  if (!ReadScans(sink)) return false;
  CheckScansComplete();
  errors.Try([&] { jpeg_start_output(&jpeg, jpeg.input_scan_number); });
  return true;
}

bool JpegStream::ReadScans(RowSink& sink) {
  constexpr int kMostScans =
      500;  // far beyond any sensible file; each costs a pass over the picture
  constexpr int kStepsToReport = 64;
  for (int step = 1; jpeg_input_complete(&jpeg) == 0; ++step) {
    errors.Try([&] { jpeg_consume_input(&jpeg); });
    if (jpeg.input_scan_number > kMostScans) throw ImageError("the picture has too many scans");
    if (step % kStepsToReport == 0 && !sink.KeepGoing()) return false;
  }
  return true;
}

// Where the file lost its end between two scans the library sees nothing amiss.
void JpegStream::CheckScansComplete() {
  if (!endReached) return;
  const auto incomplete = [](const auto& bits) {
    return std::any_of(std::begin(bits), std::end(bits), [](int left) { return left != 0; });
  };
  if (jpeg.coef_bits == nullptr ||
      std::any_of(jpeg.coef_bits, jpeg.coef_bits + jpeg.num_components, incomplete)) {
    throw ImageError(kEndsEarly);
  }
}

void StoreInks(const BYTE* inks, bool inverted, int width, BYTE* colour) {
  const int flip = inverted ? 0 : 255;
  for (int x = 0; x < width; ++x, inks += 4, colour += base::kBytesPerPixel) {
    const int light = inks[3] ^ flip;
    colour[base::kRed] = MultiplyBytes(inks[0] ^ flip, light);
    colour[base::kGreen] = MultiplyBytes(inks[1] ^ flip, light);
    colour[base::kBlue] = MultiplyBytes(inks[2] ^ flip, light);
  }
}

class JpegDecoder final : public Decoder {
 public:
  explicit JpegDecoder(Source& from) : source(&from) {
    JpegStream stream(*source);
    SetSize(stream.Width(), stream.Height());
    head.metadata = stream.ReadMetadata();
    head.orientation = ExifOrientation(head.metadata.exif);
  }

  Size Reduce(Size wanted) override {
    JpegStream stream(*source);
    for (eighths = 1; eighths < 8; ++eighths) {
      const Size size = stream.ScaledSize(eighths);
      if (size.width >= wanted.width && size.height >= wanted.height) return size;
    }
    return head.size;
  }

  bool Decode(RowSink& sink) override {
    JpegStream stream(*source);
    const Size size = stream.ScaledSize(eighths);
    if (!stream.Start(eighths, sink)) return false;
    std::vector<BYTE> inks(stream.IsCmyk() ? static_cast<std::size_t>(size.width) * 4 : 0);
    for (int y = 0; y < size.height; ++y) {
      const RowBuffer row = sink.Begin(y);
      stream.ReadRow(inks.empty() ? row.colour : inks.data());
      if (!inks.empty()) StoreInks(inks.data(), stream.InksAreInverted(), size.width, row.colour);
      if (!sink.End(y)) return false;
    }
    return true;
  }

 private:
  Source* source;
  int eighths = 8;
};

}  // namespace

std::unique_ptr<Decoder> OpenJpeg(Source& source) {
  return std::make_unique<JpegDecoder>(source);
}

}  // namespace imageio
