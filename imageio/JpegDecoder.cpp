// JPEG pictures through libjpeg-turbo.
#include "imageio/JpegErrors.h"

#include <jerror.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>

#include "base/Rows.h"
#include "imageio/Decoder.h"
#include "imageio/Exif.h"
#include "imageio/ExtendedXmp.h"
#include "imageio/InkProfile.h"
#include "imageio/Iptc.h"

namespace imageio {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr int kResourceMarker = JPEG_APP0 + 13;
constexpr char kExifName[] = "Exif\0";  // with its end six bytes
constexpr char kXmpName[] = "http://ns.adobe.com/xap/1.0/";

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
  bool Start(int eighths, RowSink& sink, const WorkLimit& limit);

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
    jpeg_save_markers(&jpeg, kResourceMarker, 0xFFFF);
    jpeg_read_header(&jpeg, TRUE);
    const bool inks = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
    jpeg.out_color_space = inks ? JCS_CMYK : JCS_EXT_BGR;
    jpeg.dct_method = JDCT_ISLOW;  // the same bytes on every processor
  }
  void SetScale(int eighths) {
    jpeg.scale_num = static_cast<unsigned>(eighths);
    jpeg.scale_denom = 8;
  }
  std::vector<std::vector<std::uint8_t>> MarkersOf(int kind, std::string_view name) const;
  std::vector<std::uint8_t> DataOf(int kind, std::string_view name, bool all) const;
  Resolution ReadResolution() const;
  bool ReadScans(RowSink& sink, const WorkLimit& limit);
  void NoteScan();
  void CheckScansComplete() const;

  static JpegStream& Self(void* data) { return *static_cast<JpegStream*>(data); }
  static boolean OnRead(j_decompress_ptr jpeg);
  static void OnSkip(j_decompress_ptr jpeg, long count);
  static void OnMessage(j_common_ptr jpeg, int level);

  Source* source;
  jpeg_decompress_struct jpeg = {};
  JpegErrors errors;
  jpeg_source_mgr input = {};
  std::uint64_t position = 0;
  std::array<bool, MAX_COMPONENTS> isScanned = {};  // by component: in some scan
  std::array<JOCTET, 1 << 14> buffer;
};

// Behind the end stands an end mark, for files that lack their own. Whoever needed more than that,
// or than the file's own end mark, is told by OnMessage.
boolean JpegStream::OnRead(j_decompress_ptr jpeg) {
  JpegStream& self = Self(jpeg->client_data);
  std::size_t got = self.source->ReadAt(self.position, self.buffer.data(), self.buffer.size());
  self.position += got;
  if (got == 0) {
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

// What the library would fill with grey or with wrong blocks is an error. Bytes too many between
// two segments, which cameras write, are none.
void JpegStream::OnMessage(j_common_ptr jpeg, int level) {
  if (level >= 0) return;
  switch (jpeg->err->msg_code) {
    case JWRN_HIT_MARKER:
      JpegErrors::Leave(jpeg, kEndsEarly);
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_MUST_RESYNC:
      JpegErrors::Leave(jpeg, "the picture is damaged");
    default:
      break;
  }
}

// The data of each marker of this kind and name.
std::vector<std::vector<std::uint8_t>> JpegStream::MarkersOf(int kind,
                                                             std::string_view name) const {
  std::vector<std::vector<std::uint8_t>> found;
  for (auto* marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
    const JOCTET* data = marker->data;
    if (marker->marker != kind || marker->data_length <= name.size() ||
        std::memcmp(data, name.data(), name.size()) != 0) {
      continue;
    }
    found.emplace_back(data + name.size(), data + marker->data_length);
  }
  return found;
}

// The same of all of them together, or of the first alone.
std::vector<std::uint8_t> JpegStream::DataOf(int kind, std::string_view name, bool all) const {
  std::vector<std::uint8_t> found;
  for (const auto& marker : MarkersOf(kind, name)) {
    found.insert(found.end(), marker.begin(), marker.end());
    if (!all) break;
  }
  return found;
}

Resolution JpegStream::ReadResolution() const {
  constexpr int kPerInch = 1;
  constexpr int kPerCentimetre = 2;
  const double scale = jpeg.density_unit == kPerCentimetre ? 2.54 : 1;
  const bool known = jpeg.saw_JFIF_marker != 0 &&
                     (jpeg.density_unit == kPerInch || jpeg.density_unit == kPerCentimetre);
  return known ? Resolution{jpeg.X_density * scale, jpeg.Y_density * scale} : Resolution{};
}

Metadata JpegStream::ReadMetadata() {
  // Names end with a zero.
  const auto whole = [](const auto& name) { return std::string_view(name, sizeof name); };
  Metadata metadata;
  metadata.exif = DataOf(kExifMarker, whole(kExifName), false);
  metadata.xmp = JoinXmp(DataOf(kExifMarker, whole(kXmpName), false),
                         MarkersOf(kExifMarker, whole(kXmpExtensionName)));
  metadata.iptc = IptcOfResources(DataOf(kResourceMarker, whole(kPhotoshopName), true));
  metadata.resolution = ReadResolution();
  JOCTET* profile = nullptr;
  unsigned count = 0;
  errors.Try([&] { jpeg_read_icc_profile(&jpeg, &profile, &count); });
  if (profile == nullptr) return metadata;
  const std::unique_ptr<JOCTET, decltype(&std::free)> owner(profile, &std::free);
  metadata.profile.assign(profile, profile + count);
  return metadata;
}

bool JpegStream::Start(int eighths, RowSink& sink, const WorkLimit& limit) {
  const bool scans = jpeg_has_multiple_scans(&jpeg) != 0;
  errors.Try([&] {
    SetScale(eighths);
    jpeg.buffered_image = scans ? TRUE : FALSE;
    jpeg_start_decompress(&jpeg);
  });
  if (!scans) return true;
  if (!ReadScans(sink, limit)) return false;
  CheckScansComplete();
  errors.Try([&] { jpeg_start_output(&jpeg, jpeg.input_scan_number); });
  return true;
}

// Each scan costs a pass over the picture.
bool JpegStream::ReadScans(RowSink& sink, const WorkLimit& limit) {
  constexpr int kMostScans = 500;  // far beyond any sensible file
  const double pixels = static_cast<double>(Width()) * Height();
  constexpr int kStepsToReport = 64;
  NoteScan();
  for (int step = 1; jpeg_input_complete(&jpeg) == 0; ++step) {
    int reached = 0;
    errors.Try([&] { reached = jpeg_consume_input(&jpeg); });
    if (reached == JPEG_REACHED_SOS) NoteScan();
    const int scans = jpeg.input_scan_number;
    if (scans > kMostScans) throw ImageError("the picture has too many scans");
    if (scans * pixels > limit.pixels) {
      throw ImageError("decoding it takes more work than the limit: " + std::to_string(scans) +
                       " passes" + limit.hint);
    }
    if (step % kStepsToReport == 0 && !sink.KeepGoing()) return false;
  }
  return true;
}

void JpegStream::NoteScan() {
  for (int i = 0; i < jpeg.comps_in_scan; ++i) {
    isScanned.at(static_cast<std::size_t>(jpeg.cur_comp_info[i]->component_index)) = true;
  }
}

// Where the file lost its end between two scans the library sees nothing amiss.
void JpegStream::CheckScansComplete() const {
  const auto incomplete = [](const auto& bits) {
    return std::any_of(std::begin(bits), std::end(bits), [](int left) { return left != 0; });
  };
  const bool isComplete =
      jpeg.coef_bits == nullptr
          ? std::all_of(isScanned.begin(), isScanned.begin() + jpeg.num_components, std::identity())
          : std::none_of(jpeg.coef_bits, jpeg.coef_bits + jpeg.num_components, incomplete);
  if (!isComplete) throw ImageError(kEndsEarly);
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
    if (stream.IsCmyk()) {
      profile = InkProfile::Take(head.metadata, {.isInverted = stream.InksAreInverted()});
    }
    head.orientation = ExifOrientation(head.metadata.exif);
  }

  Size Reduce(Size wanted) override {
    JpegStream stream(*source);
    for (eighths = 1; eighths < 8; ++eighths) {
      const Size size = stream.ScaledSize(eighths);
      const bool isEnough = size.width >= wanted.width && size.height >= wanted.height;
      if (isEnough && Covers(size.width, head.size.width) &&
          Covers(size.height, head.size.height)) {
        return size;
      }
    }
    return head.size;
  }

  bool Decode(RowSink& sink) override {
    JpegStream stream(*source);
    const Size size = stream.ScaledSize(eighths);
    if (!stream.Start(eighths, sink, workLimit)) return false;
    std::vector<BYTE> inks(stream.IsCmyk() ? static_cast<std::size_t>(size.width) * 4 : 0);
    for (int y = 0; y < size.height; ++y) {
      const RowBuffer row = sink.Begin(y);
      stream.ReadRow(inks.empty() ? row.colour : inks.data());
      if (profile) {
        profile->Convert(inks.data(), row.colour, size.width);
      } else if (!inks.empty()) {
        StoreInks(inks.data(), stream.InksAreInverted(), size.width, row.colour);
      }
      if (!sink.End(y)) return false;
    }
    return true;
  }

 private:
  // A reduced side is rounded up to whole pixels, the last of which may lie outside the picture for
  // the most part. That stretches a small picture: more than a 32nd is too much.
  bool Covers(int reduced, int full) const {
    constexpr std::int64_t kLeastShare = 32;
    const std::int64_t exact = std::int64_t{full} * eighths;
    return (std::int64_t{reduced} * 8 - exact) * kLeastShare <= exact;
  }

  Source* source;
  int eighths = 8;
  std::unique_ptr<InkProfile> profile;  // of inks
};

}  // namespace

std::unique_ptr<Decoder> OpenJpeg(Source& source) {
  return std::make_unique<JpegDecoder>(source);
}

}  // namespace imageio
