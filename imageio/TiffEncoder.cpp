// TIFF pictures of 24 or 32 bits, as they are or compressed without loss.
#include <cstring>
#include <vector>

#include "imageio/Exif.h"
#include "imageio/TiffHandle.h"

namespace imageio {
namespace {

constexpr std::uint32_t kBehindHead = 8;

// EXIF data stand before the pixels: the library appends everything else at the end of the file.
void WriteExif(TIFF* tiff, Output& output, const ExifInTiff& exif) {
  if (output.TrySeek(kBehindHead, SEEK_SET) < 0) throw ImageError(kCannotWrite);
  output.Write(exif.bytes.data(), exif.bytes.size());
  if (exif.exifDirectory != 0) {
    TIFFSetField(tiff, TIFFTAG_EXIFIFD, std::uint64_t{exif.exifDirectory});
  }
  if (exif.gpsDirectory != 0) {
    TIFFSetField(tiff, TIFFTAG_GPSIFD, std::uint64_t{exif.gpsDirectory});
  }
  for (const auto& [tag, text] : exif.texts) {
    TIFFSetField(tiff, static_cast<std::uint32_t>(tag), text.c_str());
  }
}

void SetCompression(TIFF* tiff, TiffCompression compression) {
  constexpr int kFastest = 1;  // a level 6 takes three times as long for a twentieth less
  switch (compression) {
    case TiffCompression::None:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
      return;
    case TiffCompression::PackBits:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
      return;
    case TiffCompression::Lzw:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
      break;
    case TiffCompression::Deflate:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
      TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kFastest);
      break;
  }
  TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

void SetFields(TIFF* tiff, const Picture& picture) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.Width()));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(picture.Height()));
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.Channels());
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  if (picture.HasAlpha()) {
    const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  }
  constexpr std::uint32_t kStripBytes = 1 << 16;
  const auto rows = static_cast<std::uint32_t>(kStripBytes / picture.RowBytes());
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows == 0 ? 1 : rows);
}

// Older versions of the library take the records for numbers of four bytes, and turn them to the
// file's order.
void SetIptc(TIFF* tiff, const std::vector<std::uint8_t>& records) {
  if (records.empty()) return;
  std::vector<std::uint32_t> numbers((records.size() + 3) / 4);
  std::memcpy(numbers.data(), records.data(), records.size());
  auto count = static_cast<std::uint32_t>(numbers.size());
  if (TIFFFieldDataType(TIFFFieldWithTag(tiff, TIFFTAG_RICHTIFFIPTC)) != TIFF_LONG) {
    count = static_cast<std::uint32_t>(records.size());
  } else if (TIFFIsByteSwapped(tiff) != 0) {
    TIFFSwabArrayOfLong(numbers.data(), count);
  }
  TIFFSetField(tiff, TIFFTAG_RICHTIFFIPTC, count, numbers.data());
}

void SetMetadata(TIFF* tiff, const Metadata& metadata) {
  const auto setBytes = [tiff](std::uint32_t tag, const std::vector<std::uint8_t>& bytes) {
    if (bytes.empty()) return;
    TIFFSetField(tiff, tag, static_cast<std::uint32_t>(bytes.size()), bytes.data());
  };
  setBytes(TIFFTAG_ICCPROFILE, metadata.profile);
  setBytes(TIFFTAG_XMLPACKET, metadata.xmp);
  SetIptc(tiff, metadata.iptc);
  const Resolution resolution = metadata.resolution.InBothDirections();
  if (resolution.x > 0) {
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, resolution.x);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, resolution.y);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  }
}

}  // namespace

bool WriteTiff(Output& output, const Picture& picture, const WriteOptions& options,
               const Progress& progress) {
  const ExifInTiff exif = LayOutExif(options.metadata.exif, kBehindHead);
  TiffHandle file(output, exif.littleEndian);
  TIFF* tiff = file.Get();
  SetFields(tiff, picture);
  SetCompression(tiff, options.tiffCompression);
  SetMetadata(tiff, options.metadata);
  WriteExif(tiff, output, exif);
  std::vector<BYTE> row(picture.RowBytes());
  for (int y = 0; y < picture.Height(); ++y) {
    picture.Interleave(y, true, row.data());
    if (TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0) < 0) file.Fail();
    if (!ReportStep(progress, y + 1, picture.Height())) return false;
  }
  file.Close();
  return true;
}

}  // namespace imageio
