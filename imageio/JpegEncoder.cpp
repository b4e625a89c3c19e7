// JPEG pictures through libjpeg-turbo: baseline, so that no copy of the picture is needed.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "base/Rows.h"
#include "imageio/Encoder.h"
#include "imageio/ExtendedXmp.h"
#include "imageio/Iptc.h"
#include "imageio/JpegErrors.h"

namespace imageio {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kResourceMarker = JPEG_APP0 + 13;
constexpr char kExifName[] = "Exif\0";  // with its end six bytes
constexpr char kXmpName[] = "http://ns.adobe.com/xap/1.0/";
constexpr std::size_t kLongestMarker = 65533;
constexpr std::size_t kLongestProfile = std::size_t{255} * (kLongestMarker - 14);
constexpr int kFullColourQuality = 90;  // from here on colour is stored at full resolution

class JpegWriter {
 public:
  explicit JpegWriter(Output& to) : output(&to) {
    jpeg.err = errors.Connect();
    jpeg.client_data = this;
    target.init_destination = [](j_compress_ptr compress) { Self(compress).ResetBuffer(); };
    target.empty_output_buffer = [](j_compress_ptr compress) {
      Self(compress).Flush(0);
      return boolean{TRUE};
    };
    target.term_destination = [](j_compress_ptr compress) {
      Self(compress).Flush(Self(compress).target.free_in_buffer);
    };
    try {
      errors.Try([this] { jpeg_create_compress(&jpeg); });
    } catch (...) {
      jpeg_destroy_compress(&jpeg);
      throw;
    }
  }
  ~JpegWriter() { jpeg_destroy_compress(&jpeg); }
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;

  void WriteHead(const Picture& picture, const WriteOptions& options) {
    const Metadata& metadata = options.metadata;
    const std::vector<BYTE> exif = Marker(kExifName, metadata.exif);
    const bool isLong = metadata.xmp.size() > kLongestMarker - sizeof kXmpName;
    const SplitXmp split = isLong ? SplitLongXmp(metadata.xmp) : SplitXmp{metadata.xmp, {}};
    const std::vector<BYTE> xmp = Marker(kXmpName, split.main);
    std::vector<std::vector<BYTE>> rest;
    for (const auto& data : split.markers) rest.push_back(Marker(kXmpExtensionName, data));
    const std::vector<BYTE> iptc = Marker(
        kPhotoshopName, metadata.iptc.empty() ? metadata.iptc : ResourcesOfIptc(metadata.iptc));
    const std::vector<BYTE>& profile = metadata.profile;
    errors.Try([&] {
      SetParameters(picture, std::clamp(options.jpegQuality, 1, 100));
      SetResolution(metadata.resolution.InBothDirections());
      jpeg_start_compress(&jpeg, TRUE);
      WriteMarker(kExifMarker, exif);
      WriteMarker(kExifMarker, xmp);
      for (const std::vector<BYTE>& marker : rest) WriteMarker(kExifMarker, marker);
      WriteMarker(kResourceMarker, iptc);
      if (!profile.empty() && profile.size() <= kLongestProfile) {
        jpeg_write_icc_profile(&jpeg, profile.data(), static_cast<unsigned>(profile.size()));
      }
    });
  }

  void WriteRow(const BYTE* row) {
    auto* line = const_cast<JSAMPROW>(row);  // the library only reads it
    errors.Try([&] { jpeg_write_scanlines(&jpeg, &line, 1); });
  }
  void WriteEnd() {
    errors.Try([this] { jpeg_finish_compress(&jpeg); });
  }

 private:
  // The data behind their name with its end. Empty where there are none or where they are too long
  // for a marker.
  template <std::size_t size>
  static std::vector<BYTE> Marker(const char (&name)[size], const std::vector<BYTE>& data) {
    if (data.empty() || data.size() > kLongestMarker - size) return {};
    std::vector<BYTE> marker(size + data.size());
    std::copy_n(name, size, marker.begin());
    std::copy(data.begin(), data.end(), marker.begin() + size);
    return marker;
  }

  void WriteMarker(int kind, const std::vector<BYTE>& marker) {
    if (marker.empty()) return;
    jpeg_write_marker(&jpeg, kind, marker.data(), static_cast<unsigned>(marker.size()));
  }

  void SetResolution(const Resolution& resolution) {
    const auto isWritable = [](double value) { return value >= 0.5 && value < 65535; };
    if (!isWritable(resolution.x) || !isWritable(resolution.y)) return;
    jpeg.density_unit = 1;  // an inch
    jpeg.X_density = static_cast<UINT16>(std::lround(resolution.x));
    jpeg.Y_density = static_cast<UINT16>(std::lround(resolution.y));
  }

  void SetParameters(const Picture& picture, int quality) {
    jpeg.dest = &target;
    jpeg.image_width = static_cast<JDIMENSION>(picture.Width());
    jpeg.image_height = static_cast<JDIMENSION>(picture.Height());
    jpeg.input_components = base::kBytesPerPixel;
    jpeg.in_color_space = JCS_EXT_BGR;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg.dct_method = JDCT_ISLOW;  // the same bytes on every processor
    const int sampling = quality >= kFullColourQuality ? 1 : 2;
    jpeg.comp_info[0].h_samp_factor = sampling;
    jpeg.comp_info[0].v_samp_factor = sampling;
  }

  void ResetBuffer() {
    target.next_output_byte = buffer.data();
    target.free_in_buffer = buffer.size();
  }
  void Flush(std::size_t unused) {
    if (!output->TryWrite(buffer.data(), buffer.size() - unused)) {
      JpegErrors::Leave(reinterpret_cast<j_common_ptr>(&jpeg), kCannotWrite);
    }
    ResetBuffer();
  }
  static JpegWriter& Self(j_compress_ptr compress) {
    return *static_cast<JpegWriter*>(compress->client_data);
  }

  Output* output;
  jpeg_compress_struct jpeg = {};
  JpegErrors errors;
  jpeg_destination_mgr target = {};
  std::array<JOCTET, 1 << 14> buffer;
};

// The row before white: what the mask lets through of it.
void BlendWithWhite(const BYTE* colour, const BYTE* mask, int width, BYTE* to) {
  for (int x = 0; x < width; ++x) {
    for (int c = 0; c < base::kBytesPerPixel; ++c) {
      *to++ = static_cast<BYTE>((*colour++ * (255 - mask[x]) + 255 * mask[x] + 127) / 255);
    }
  }
}

}  // namespace

bool WriteJpeg(Output& output, const Picture& picture, const WriteOptions& options,
               const Progress& progress) {
  JpegWriter writer(output);
  writer.WriteHead(picture, options);
  std::vector<BYTE> blended(picture.HasAlpha() ? base::ColourBytes(picture.Width()) : 0);
  for (int y = 0; y < picture.Height(); ++y) {
    if (picture.HasAlpha()) {
      BlendWithWhite(picture.Colour(y), picture.Mask(y), picture.Width(), blended.data());
    }
    writer.WriteRow(picture.HasAlpha() ? blended.data() : picture.Colour(y));
    if (!ReportStep(progress, y + 1, picture.Height())) return false;
  }
  writer.WriteEnd();
  return true;
}

}  // namespace imageio
