#include "imageio/ImageLoader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <string_view>

#include "base/Rows.h"
#include "imageio/StoredBitmap.h"

namespace imageio {
namespace {

using namespace std::string_view_literals;

constexpr char kNoDecoder[] = "no decoder";
constexpr char kUnknownKind[] = "not a picture file of a known kind (JPEG, PNG, TIFF, BMP, PNM)";
constexpr std::size_t kStartBytes = 0x8000;
// More would not fit the 32-bit sizes of a bitmap.
constexpr std::int64_t kMostPixels = 700'000'000;

struct Magic {
  std::size_t at;
  std::string_view bytes;
  int type;
};
constexpr Magic kMagics[] = {
    {0, "8BPS"sv, kTypePsd},
    {0, "GIF87a"sv, kTypeGif},
    {0, "GIF89a"sv, kTypeGif},
    {0, "\0\0\0\x0CjP  \r\n"sv, kTypeJp2},
    {0, "\xFF\x4F\xFF\x51"sv, kTypeJp2},
    {0, "\x59\xA6\x6A\x95"sv, kTypeRas},
    {0x800, "PCD_IPI"sv, kTypePcd},
    {0, "FOVb"sv, kTypeRaw},
    {0, "FUJIFILMCCD-RAW"sv, kTypeRaw},
    {0, "\0MRM"sv, kTypeRaw},
    {0, "IIRO"sv, kTypeRaw},
    {6, "HEAPCCDR"sv, kTypeRaw},
};

// Extensions of picture files; those of raw files last.
constexpr std::string_view kExtensions[] = {
    "bmp",  "dib", "gif", "jpe", "jpeg", "jpg", "jfif", "pcd", "png", "psd", "tif",
    "tiff", "j2k", "jp2", "jpf", "jpc",  "ras", "pnm",  "pgm", "ppm", "pbm", "pam",
    "aap",  "acc", "ppx", "znx", "bay",  "bmq", "crw",  "cs1", "dcr", "fff", "mrw",
    "nef",  "orf", "pef", "raf", "raw",  "rdc", "srf",  "x3f", "cr2", "dng"};

int TypeOf(Format format) {
  switch (format) {
    case Format::Jpeg:
      return kTypeJpeg;
    case Format::Tiff:
      return kTypeTiff;
    case Format::Bmp:
      return kTypeBmp;
    case Format::Png:
      return kTypePng;
    case Format::Pnm:
    case Format::Pam:
      return kTypePpm;
    default:
      return kTypeNone;
  }
}

Format FormatOf(int type) {
  switch (type) {
    case kTypeJpeg:
      return Format::Jpeg;
    case kTypeTiff:
      return Format::Tiff;
    case kTypeBmp:
      return Format::Bmp;
    case kTypePng:
      return Format::Png;
    case kTypePpm:
      return Format::Pnm;
    default:
      return Format::Unknown;
  }
}

std::vector<std::uint8_t> ReadStart(const std::filesystem::path& file) {
  std::vector<std::uint8_t> start(kStartBytes);
  std::ifstream stream(file, std::ios::binary);
  stream.read(reinterpret_cast<char*>(start.data()), static_cast<std::streamsize>(start.size()));
  start.resize(static_cast<std::size_t>(stream.gcount()));
  return start;
}

// Rows of any stored bitmap as the encoders want them.
struct ColourRows {
  explicit ColourRows(const StoredBitmap& bitmap)
      : bytes(base::ColourBytes(bitmap.Width()) * static_cast<std::size_t>(bitmap.Height())) {
    for (int y = 0; y < bitmap.Height(); ++y) {
      rows.push_back(bytes.data() + base::ColourBytes(bitmap.Width()) * static_cast<unsigned>(y));
      bitmap.ReadColours(y, rows.back());
    }
  }
  std::vector<std::uint8_t> bytes;
  std::vector<BYTE*> rows;
};

std::vector<BYTE*> MaskRowsOf(const StoredBitmap& mask) {
  std::vector<BYTE*> rows;
  for (int y = 0; y < mask.Height(); ++y) rows.push_back(const_cast<BYTE*>(mask.MaskRow(y)));
  return rows;
}

}  // namespace

// --- kinds

int ImageLoader::GetType(std::span<const std::uint8_t> file) {
  if (const int type = TypeOf(FormatOfBytes(file.data(), file.size()))) return type;
  for (const Magic& magic : kMagics) {
    const bool fits = file.size() >= magic.at + magic.bytes.size();
    if (fits && std::memcmp(file.data() + magic.at, magic.bytes.data(), magic.bytes.size()) == 0) {
      return magic.type;
    }
  }
  return kTypeNone;
}

bool ImageLoader::IsImage(const char* name) {
  const std::string_view text(name ? name : "");
  const std::size_t point = text.rfind('.');
  if (point == text.npos) return false;
  std::string extension(text.substr(point + 1));
  for (char& c : extension) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return std::find(std::begin(kExtensions), std::end(kExtensions), extension) !=
         std::end(kExtensions);
}

// --- reading

ImageLoader::ImageLoader(std::span<const std::uint8_t> file) : bytes(file), type(GetType(file)) {}

ImageLoader::ImageLoader(const std::filesystem::path& file)
    : path(file), type(GetType(ReadStart(file))) {}

void ImageLoader::PreferedLoadingSize(int width, int height) {
  preferredWidth = width;
  preferredHeight = height;
}

bool ImageLoader::HadError() {
  if (bytes || path) Decode();
  return !error.empty();
}

PictureBytes& ImageLoader::ImageDIB() {
  Decode();
  return decodedImage;
}

PictureBytes& ImageLoader::MaskDIB() {
  Decode();
  return decodedMask;
}

void ImageLoader::Decode() {
  if (isDecoded) return;
  isDecoded = true;
  try {
    if (type != kTypeNone && FormatOf(type) == Format::Unknown) throw ImageError(kNoDecoder);
    // What only modules read is no kind of picture here, and stays unknown.
    if (type == kTypeNone) throw ImageError(kUnknownKind);
    ImageReader reader = bytes ? ImageReader(bytes->data(), bytes->size()) : ImageReader(*path);
    if (TryDecode(reader)) return;
    error = "the picture is too large";
  } catch (const ImageError& failure) {
    error = failure.what();
  }
  decodedImage.clear();
  decodedMask.clear();
}

bool ImageLoader::TryDecode(ImageReader& reader) {
  const ImageInfo& info = reader.Info();
  metadata = info.metadata;
  if (preferredWidth > 0 && preferredHeight > 0) {
    const double share = std::max(static_cast<double>(preferredWidth) / info.fullWidth,
                                  static_cast<double>(preferredHeight) / info.fullHeight);
    if (share < 1) {
      reader.ReduceToFit(static_cast<int>(info.fullWidth * share) + 1,
                         static_cast<int>(info.fullHeight * share) + 1);
    }
  }
  if (std::int64_t{info.width} * info.height > kMostPixels) return false;
  decodedImage = BlankColourBitmap(info.width, info.height);
  if (info.hasMask) decodedMask = BlankMaskBitmap(info.width, info.height);
  if (decodedImage.empty() || (info.hasMask && decodedMask.empty())) return false;
  const std::vector<BYTE*> colour = RowsOf(decodedImage);
  const std::vector<BYTE*> alpha = RowsOf(decodedMask);
  reader.Read({colour.data(), info.hasMask ? alpha.data() : nullptr});
  return true;
}

// --- writing

void ImageLoader::PutExifData(std::span<const std::uint8_t> block) {
  constexpr std::string_view kMark = "Exif\0\0"sv;
  const bool isMarked =
      block.size() >= kMark.size() && std::memcmp(block.data(), kMark.data(), kMark.size()) == 0;
  if (isMarked) block = block.subspan(kMark.size());
  metadata.exif.assign(block.begin(), block.end());
}

void ImageLoader::PutIPTCData(std::span<const std::uint8_t> block) {
  metadata.iptc.assign(block.begin(), block.end());
}

PictureBytes ImageLoader::Save(int pictureType) {
  const bool hasMask = !mask.empty();
  return SaveAs(pictureType == kTypePpm && hasMask ? Format::Pam : FormatOf(pictureType));
}

PictureBytes ImageLoader::SaveAs(Format format) {
  const auto picture = StoredBitmap::Parse(image);
  const auto alpha = StoredBitmap::Parse(mask);
  error.clear();
  try {
    if (format == Format::Unknown) throw ImageError("no encoder");
    if (!picture) throw ImageError("the picture is damaged");
    const bool fits = alpha && alpha->IsMask() && alpha->Width() == picture->Width() &&
                      alpha->Height() == picture->Height();
    if (!mask.empty() && !fits) throw ImageError("the mask does not fit the picture");
    const ColourRows colours(*picture);
    const std::vector<BYTE*> maskRows = fits ? MaskRowsOf(*alpha) : std::vector<BYTE*>();
    return EncodeImage(format, picture->Width(), picture->Height(),
                       {colours.rows.data(), fits ? maskRows.data() : nullptr},
                       {jpegQuality, metadata, TiffCompression::Lzw});
  } catch (const ImageError& failure) {
    error = failure.what();
    return {};
  }
}

}  // namespace imageio
