#include "imageio/ImageFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "base/Rows.h"
#include "imageio/Decoder.h"
#include "imageio/Encoder.h"
#include "imageio/Exif.h"
#include "imageio/ModuleFormats.h"
#include "imageio/Xmp.h"

namespace imageio {
namespace {

std::unique_ptr<Decoder> OpenDecoder(Source& source, Format format) {
  switch (format) {
    case Format::Pnm:
    case Format::Pam:
      return OpenPnm(source);
    case Format::Png:
      return OpenPng(source);
    case Format::Jpeg:
      return OpenJpeg(source);
    case Format::Tiff:
      return OpenTiff(source);
    case Format::Bmp:
      return OpenBmp(source);
    case Format::Unknown:
      break;
    default:
      return OpenModuleFormat(source, format);
  }
  throw ImageError(
      "not a picture file of a known kind (JPEG, PNG, TIFF, BMP, PNM, PAM, WebP, JPEG XL, AVIF, "
      "HEIF, camera raw)");
}

Format FormatOfSource(Source& source) {
  std::array<std::uint8_t, 16> first;
  const Format format = FormatOfBytes(first.data(), source.ReadAt(0, first.data(), first.size()));
  return format == Format::Tiff && IsRawTiff(source) ? Format::Raw : format;
}

// A picture that was never a file.
class RowsDecoder final : public Decoder {
 public:
  RowsDecoder(const Rows& from, int width, int height) : rows(from) {
    SetSize(width, height);
    head.hasMask = rows.mask != nullptr;
  }

  bool Decode(RowSink& sink) override {
    for (int y = 0; y < head.size.height; ++y) {
      const int row = head.size.height - 1 - y;
      const RowBuffer to = sink.Begin(y);
      std::memcpy(to.colour, rows.colour[row], base::ColourBytes(head.size.width));
      if (to.mask && rows.mask) {
        std::memcpy(to.mask, rows.mask[row], static_cast<std::size_t>(head.size.width));
      }
      if (!sink.End(y)) return false;
    }
    return true;
  }

 private:
  Rows rows;
};

// part * whole / of, rounded half up, at least 1.
int Proportion(std::int64_t part, std::int64_t whole, std::int64_t of) {
  return static_cast<int>(std::max<std::int64_t>(1, (part * whole + of / 2) / of));
}

// The size with the same proportions that fills the box in one direction.
Size FitInto(Size size, Size box) {
  if (size.width <= box.width && size.height <= box.height) return size;
  const bool wide = std::int64_t{box.width} * size.height <= std::int64_t{box.height} * size.width;
  if (wide) return {box.width, Proportion(size.height, box.width, size.width)};
  return {Proportion(size.width, box.height, size.height), box.height};
}

Size Swapped(Size size, bool swap) {
  return swap ? Size{size.height, size.width} : size;
}

// Rows are red, green and blue whatever the file was: a profile of greys or inks would be wrong
// beside them.
bool DescribesRgb(const std::vector<std::uint8_t>& profile) {
  constexpr std::size_t kHeadBytes = 128;
  constexpr std::size_t kColourSpaceAt = 16;
  return profile.size() > kHeadBytes &&
         std::memcmp(profile.data() + kColourSpaceAt, "RGB ", 4) == 0;
}

bool Encode(Output& output, Format format, const Picture& picture, const WriteOptions& options,
            const Progress& progress) {
  switch (format) {
    case Format::Pnm:
      return WritePnm(output, picture, progress);
    case Format::Pam:
      return WritePam(output, picture, progress);
    case Format::Png:
      return WritePng(output, picture, options, progress);
    case Format::Jpeg:
      return WriteJpeg(output, picture, options, progress);
    case Format::Tiff:
      return WriteTiff(output, picture, options, progress);
    case Format::Bmp:
      return WriteBmp(output, picture, options, progress);
    case Format::Unknown:
      return false;
    default:
      return WriteModuleFormat(output, format, picture, options, progress);
  }
}

// Every failure of the work is an ImageError.
template <typename Work>
auto Guarded(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    throw ImageError("there is not enough memory for the picture");
  }
}

}  // namespace

struct ImageReader::State {
  explicit State(std::unique_ptr<Source> from) : source(std::move(from)) {
    info.format = FormatOfSource(*source);
    decoder = OpenDecoder(*source, info.format);
    TakeHead();
  }
  explicit State(std::unique_ptr<Decoder> opened) : decoder(std::move(opened)) { TakeHead(); }

  void TakeHead() {
    const Head& head = decoder->GetHead();
    info.hasMask = head.hasMask;
    info.metadata = head.metadata;
    info.notes = head.notes;
    if (!info.metadata.profile.empty() && !DescribesRgb(info.metadata.profile)) {
      info.metadata.profile.clear();
      info.notes.emplace_back("its colour profile is not of red, green and blue and is left out");
    }
    ResetExifOrientation(info.metadata.exif);
    ResetXmpOrientation(info.metadata.xmp);
    Resolution& resolution = info.metadata.resolution;
    resolution = resolution.InBothDirections();
    if (resolution.x <= 0) resolution = ExifResolution(info.metadata.exif).InBothDirections();
    SetResult(head.size);
    info.fullWidth = info.width;
    info.fullHeight = info.height;
  }

  bool Read(const Rows& rows, const Progress& progress);
  bool Decode(RowSink& sink, const Progress& progress);
  bool Turned() const { return decoder->GetHead().orientation > 4; }

  // `size` as stored, before it is turned.
  void SetResult(Size size) {
    result = size;
    const Size shown = Swapped(size, Turned());
    info.width = shown.width;
    info.height = shown.height;
  }

  std::unique_ptr<Source> source;
  std::unique_ptr<Decoder> decoder;
  ImageInfo info;
  Size result;
};

ImageReader::ImageReader(const std::filesystem::path& file)
    : state(Guarded([&] { return std::make_unique<State>(std::make_unique<FileSource>(file)); })) {}

ImageReader::ImageReader(const std::uint8_t* bytes, std::size_t size)
    : state(Guarded(
          [&] { return std::make_unique<State>(std::make_unique<MemorySource>(bytes, size)); })) {}

ImageReader::ImageReader(const Rows& rows, int width, int height)
    : state(Guarded([&] {
        return std::make_unique<State>(std::make_unique<RowsDecoder>(rows, width, height));
      })) {}

ImageReader::~ImageReader() = default;
ImageReader::ImageReader(ImageReader&&) noexcept = default;

const ImageInfo& ImageReader::Info() const {
  return state->info;
}

void ImageReader::LimitWork(const WorkLimit& limit) {
  state->decoder->LimitWork(limit);
}

void ImageReader::ReduceToFit(int width, int height) {
  const Size full{state->info.fullWidth, state->info.fullHeight};
  const Size shown = FitInto(full, {std::max(width, 1), std::max(height, 1)});
  state->SetResult(Swapped(shown, state->Turned()));
}

bool ImageReader::Read(const Rows& rows, const Progress& progress) {
  return Guarded([&] { return state->Read(rows, progress); });
}

bool ImageReader::GivesRowsInOrder() const {
  return state->decoder->GetHead().orientation == 1 && state->decoder->BeginsAtTop();
}

bool ImageReader::ReadRows(RowSink& sink) {
  return Guarded([&] { return state->Decode(sink, {}); });
}

bool ImageReader::State::Read(const Rows& rows, const Progress& progress) {
  const Head& head = decoder->GetHead();
  OrientedRows oriented(rows, result.width, result.height, head.orientation, head.hasMask);
  return Decode(oriented, progress);
}

// To the size of the result.
bool ImageReader::State::Decode(RowSink& sink, const Progress& progress) {
  const Size decoded = decoder->Reduce(result);
  std::optional<AreaMean> mean;
  if (decoded != result) {
    mean.emplace(sink, decoded.width, decoded.height, result.width, result.height,
                 decoder->GetHead().hasMask);
  }
  RowSink& first = mean ? static_cast<RowSink&>(*mean) : sink;
  ReportedRows reported(first, decoded.height, progress);
  return decoder->Decode(reported);
}

namespace {

void CheckWritable(Format format, int width, int height) {
  if (width < 1 || height < 1) throw ImageError("the picture has no size");
  if (format == Format::Unknown || format == Format::Raw)
    throw ImageError("pictures of this kind cannot be written");
}

bool WriteFile(const std::filesystem::path& file, Format format, const Picture& picture,
               const WriteOptions& options, const Progress& progress) {
  Output output(file);
  try {
    const bool complete = Encode(output, format, picture, options, progress);
    output.Close();
    return complete;
  } catch (const ImageError&) {
    // What a library says of it is only that it failed.
    if (output.HasFailed()) throw ImageError(output.Failure());
    throw;
  }
}

}  // namespace

bool WriteImage(const std::filesystem::path& file, Format format, int width, int height,
                const Rows& rows, const WriteOptions& options, const Progress& progress) {
  CheckWritable(format, width, height);
  return Guarded(
      [&] { return WriteFile(file, format, Picture(width, height, rows), options, progress); });
}

bool WriteImageRows(const std::filesystem::path& file, Format format, int width, int height,
                    bool hasAlpha, const RowFeed& feed, const WriteOptions& options,
                    const Progress& progress) {
  CheckWritable(format, width, height);
  if (!TakesRowsInOrder(format)) throw ImageError("pictures of this kind are written as a whole");
  return Guarded([&] {
    return WriteFile(file, format, Picture(width, height, hasAlpha, feed), options, progress);
  });
}

bool TakesRowsInOrder(Format format) {
  return format != Format::Unknown && format != Format::Bmp && !IsModuleFormat(format);
}

bool LooksAtMask(Format format) {
  return format != Format::Pnm;
}

void SetPictureSize(Metadata& metadata, int width, int height) {
  SetExifSize(metadata.exif, width, height);
  SetXmpSize(metadata.xmp, width, height);
}

std::vector<std::uint8_t> EncodeImage(Format format, int width, int height, const Rows& rows,
                                      const WriteOptions& options) {
  CheckWritable(format, width, height);
  return Guarded([&] {
    const Picture picture(width, height, rows);
    Output output;
    Encode(output, format, picture, options, {});
    output.Close();
    return output.TakeBytes();
  });
}

Format FormatOfName(const std::filesystem::path& file) {
  constexpr std::pair<const char*, Format> kExtensions[] = {
      {".pnm", Format::Pnm},    {".pbm", Format::Pnm},   {".pgm", Format::Pnm},
      {".ppm", Format::Pnm},    {".pam", Format::Pam},   {".png", Format::Png},
      {".jpg", Format::Jpeg},   {".jpeg", Format::Jpeg}, {".jpe", Format::Jpeg},
      {".jfif", Format::Jpeg},  {".tif", Format::Tiff},  {".tiff", Format::Tiff},
      {".bmp", Format::Bmp},    {".dib", Format::Bmp},   {".webp", Format::WebP},
      {".jxl", Format::JpegXl}, {".avif", Format::Avif}, {".heic", Format::Heif},
      {".heif", Format::Heif}};
  const std::filesystem::path extension = file.extension();
  const auto same = [](auto unit, char letter) {
    return (unit >= 'A' && unit <= 'Z' ? unit - 'A' + 'a' : unit) == letter;
  };
  for (const auto& [name, format] : kExtensions) {
    const auto& given = extension.native();
    if (std::equal(given.begin(), given.end(), name, name + std::strlen(name), same)) return format;
  }
  return Format::Unknown;
}

namespace {

// By the brand of a file in boxes.
Format FormatOfBrand(std::string_view brand) {
  constexpr std::string_view kBrands[] = {"heic", "heix", "heim", "heis", "hevc",
                                          "hevx", "hevm", "hevs", "mif1", "msf1"};
  if (brand == "avif" || brand == "avis") return Format::Avif;
  if (brand == "crx ") return Format::Raw;
  return std::find(std::begin(kBrands), std::end(kBrands), brand) == std::end(kBrands)
             ? Format::Unknown
             : Format::Heif;
}

}  // namespace

Format FormatOfBytes(const std::uint8_t* bytes, std::size_t size) {
  const auto starts = [&](std::string_view text) {
    return size >= text.size() && std::memcmp(bytes, text.data(), text.size()) == 0;
  };
  using namespace std::string_view_literals;
  const auto has = [&](std::size_t at, std::string_view text) {
    return size >= at + text.size() && std::memcmp(bytes + at, text.data(), text.size()) == 0;
  };
  if (starts("\x89PNG\r\n\x1A\n"sv)) return Format::Png;
  if (starts("\xFF\xD8\xFF"sv)) return Format::Jpeg;
  if (has(8, "CR\2"sv) || has(6, "HEAPCCDR"sv)) return Format::Raw;
  if (starts("II*\0"sv) || starts("MM\0*"sv)) return Format::Tiff;
  if (starts("II+\0"sv) || starts("MM\0+"sv)) return Format::Tiff;
  if (starts("RIFF"sv) && has(8, "WEBP"sv)) return Format::WebP;
  if (starts("\xFF\x0A"sv) || starts("\0\0\0\x0CJXL \r\n"sv)) return Format::JpegXl;
  if (has(4, "ftyp"sv) && size >= 12) {
    return FormatOfBrand({reinterpret_cast<const char*>(bytes) + 8, 4});
  }
  for (const std::string_view raw :
       {"FUJIFILMCCD-RAW"sv, "\0MRM"sv, "FOVb"sv, "IIRO"sv, "IIRS"sv, "MMOR"sv, "IIU\0"sv}) {
    if (starts(raw)) return Format::Raw;
  }
  if (starts("BM"sv)) return Format::Bmp;
  if (starts("P7\n"sv)) return Format::Pam;
  if (size < 3 || bytes[0] != 'P' || bytes[1] < '1' || bytes[1] > '6') return Format::Unknown;
  const bool spaced = bytes[2] == ' ' || (bytes[2] >= '\t' && bytes[2] <= '\r') || bytes[2] == '#';
  return spaced ? Format::Pnm : Format::Unknown;
}

}  // namespace imageio
