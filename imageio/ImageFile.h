// Picture files as the pipeline wants them: rows of blue, green, red with a mask, bottom row first.
#pragma once

#include <wtypes.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Export.h"

namespace imageio {

// Those behind Bmp need a module, which is loaded with the first picture of its kind. Raw is what
// cameras write; it is only read.
enum class Format { Unknown, Pnm, Pam, Png, Jpeg, Tiff, Bmp, WebP, JpegXl, Avif, Heif, Raw };

// What went wrong with a file, in words for the user, without the file's name: "not a picture file
// of a known kind", "the file ends in the middle of the picture".
class FXBOX_API ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Pixels an inch; 0 where nobody knows. Readers never give one without the other.
struct Resolution {
  double x = 0;
  double y = 0;

  // Told for one direction alone it holds for both, because pixels are mostly square.
  Resolution InBothDirections() const { return {x > 0 ? x : y, y > 0 ? y : x}; }
};

// Data that travels beside the pixels. Raw blocks, empty when the file has none.
struct Metadata {
  std::vector<std::uint8_t> exif;  // a TIFF structure ("II*\0..."), without the "Exif\0\0" of JPEG;
                                   // its orientation tag says 1, because the rows stand upright
  std::vector<std::uint8_t> profile;  // an ICC profile of a colour space with red, green and blue;
                                      // others would not fit the rows and are not handed out
  std::vector<std::uint8_t> xmp;      // an XMP packet: XML text, upright as well
  std::vector<std::uint8_t> iptc;     // IPTC records, each from its byte 1C on
  Resolution resolution;
};

struct ImageInfo {
  Format format = Format::Unknown;
  int width = 0;  // in pixels, after orientation and reduction
  int height = 0;
  int fullWidth = 0;  // after orientation, before reduction
  int fullHeight = 0;
  bool hasMask = false;  // the file has an alpha channel or transparent colour
  Metadata metadata;
  // What the rows will lack of the file, each in words for the user: further pages, a sample's
  // lower bits, a profile that does not fit them.
  std::vector<std::string> notes;
};

// How much decoding a picture may need, in pixels that are gone through. A few kinds of file can
// ask for many times their own pixels.
struct WorkLimit {
  double pixels = 1e10;
  std::string hint;  // said behind the message, such as how to raise the limit
};

// Row arrays that the caller owns; row 0 is the bottom row. `mask` may be null.
struct Rows {
  BYTE* const* colour = nullptr;
  BYTE* const* mask = nullptr;
};

// Called now and then during long work with the share done, 0 to 1. False stops the work.
using Progress = std::function<bool(double share)>;

class RowSink;  // imageio/RowSink.h

// Reads one picture file. The constructor reads the head only; Read decodes straight into the
// caller's rows, as often as it is called. One thread at a time. Every failure is an ImageError.
class FXBOX_API ImageReader {
 public:
  explicit ImageReader(const std::filesystem::path& file);
  // Reads from a block in memory, which must live as long as the reader.
  ImageReader(const std::uint8_t* bytes, std::size_t size);
  // Reads a picture that lies in memory as rows, which must live as long; of no format.
  ImageReader(const Rows& rows, int width, int height);
  ~ImageReader();
  ImageReader(ImageReader&&) noexcept;
  ImageReader(const ImageReader&) = delete;
  ImageReader& operator=(const ImageReader&) = delete;

  const ImageInfo& Info() const;

  // Read gives up with an ImageError when it would go beyond.
  void LimitWork(const WorkLimit& limit);

  // From now on gives the picture reduced so that it fits into this box with its proportions kept,
  // each side at least 1; a picture that fits already stays as it is. JPEG files decode at reduced
  // size, the rest of the way (and other formats) is the mean of the covered area, colour weighted
  // by opacity.
  void ReduceToFit(int width, int height);

  // Decodes the whole picture into rows of Info().width by Info().height. A picture without alpha
  // gives mask 0. False when `progress` stopped it.
  // Beside the rows this needs less than a MiB, save where the file demands more: the coefficients
  // of a progressive JPEG, one strip or one row of tiles of a TIFF.
  bool Read(const Rows& rows, const Progress& progress = {});

  // Whether the rows come as they are shown, from the top to the bottom: the picture stands upright
  // in the file and begins with its top row. Then ReadRows hands them out one by one, in the size
  // of Info(), so that nobody needs room for all. `sink` gives room for the mask where the file has
  // one (Info().hasMask) and may end the reading, which gives false.
  bool GivesRowsInOrder() const;
  bool ReadRows(RowSink& sink);

 private:
  struct State;
  std::unique_ptr<State> state;
};

// All without loss. None is the fastest by far; the bytes of Deflate depend on the version of its
// library, those of the others do not.
enum class TiffCompression { None, PackBits, Lzw, Deflate };

struct WriteOptions {
  int jpegQuality = 92;  // 1 to 100
  Metadata metadata;  // written where the format holds it: JPEG, PNG and TIFF; BMP has a resolution
  TiffCompression tiffCompression = TiffCompression::None;
  // 0 to 9, the latter the smallest. 4 takes a third of the time of 6 for a photograph, and makes
  // the file a twelfth larger.
  int pngLevel = 4;
};

// Writes a picture in the format that the file's extension names. Formats with alpha (PNG, PAM,
// TIFF, BMP) get it when a mask byte is not 0: alpha is 255 - mask and colour under alpha 0 is
// kept. PNM keeps colour and drops the mask; JPEG shows white through it. The file is written in
// place: writing to a temporary name and moving it is the caller's (platform::Files::Replace),
// which is why the format is an argument of its own. False when `progress` stopped it; failure is
// an ImageError.
FXBOX_API bool WriteImage(const std::filesystem::path& file, Format format, int width, int height,
                          const Rows& rows, const WriteOptions& options = {},
                          const Progress& progress = {});

// One row from left to right; `mask` may be null in a picture without alpha.
struct PictureRow {
  const BYTE* colour = nullptr;
  const BYTE* mask = nullptr;
};
// Gives row `y`, counted from the top. Each is asked for once, from the top to the bottom, and is
// used until the next one is asked for. What it throws ends the writing and comes out of it.
using RowFeed = std::function<PictureRow(int y)>;

// The same for a picture that is made while it is written. Whether it has alpha must be known
// beforehand: with `hasAlpha` the file gets alpha even if all masks are 0, without it no mask is
// looked at. Gives the same bytes as WriteImage where `hasAlpha` is right.
FXBOX_API bool WriteImageRows(const std::filesystem::path& file, Format format, int width,
                              int height, bool hasAlpha, const RowFeed& feed,
                              const WriteOptions& options = {}, const Progress& progress = {});
// Whether files of this format begin with the top row; WriteImageRows writes no others.
FXBOX_API bool TakesRowsInOrder(Format format);
// Whether a mask makes a difference to the file.
FXBOX_API bool LooksAtMask(Format format);

// The same as a file in memory.
FXBOX_API std::vector<std::uint8_t> EncodeImage(Format format, int width, int height,
                                                const Rows& rows, const WriteOptions& options = {});

// Takes the small preview picture out of an EXIF block, for who changes the picture. Whatever else
// the block holds stays; a block that cannot be understood stays as it is.
FXBOX_API void DropThumbnail(std::vector<std::uint8_t>& exif);

// Sets the picture's size wherever the EXIF and XMP data name it.
FXBOX_API void SetPictureSize(Metadata& metadata, int width, int height);

// The format by a name's extension, without regard to case; Unknown for any other.
FXBOX_API Format FormatOfName(const std::filesystem::path& file);
// The format by the first bytes of a file (16 are enough).
FXBOX_API Format FormatOfBytes(const std::uint8_t* bytes, std::size_t size);

}  // namespace imageio
