// Picture files as the picture box knows them: packed bitmaps in, packed bitmaps out.
#pragma once

#include <wtypes.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "imageio/ImageFile.h"

namespace imageio {

using PictureBytes = std::vector<std::uint8_t>;

// The kinds of picture files, in the numbers that are stored and compared; 0 for none of them.
enum PictureType {
  kTypeNone = 0,
  kTypeJpeg = 1,
  kTypeTiff = 2,
  kTypeAap = 3,
  kTypePsd = 4,
  kTypeAcc = 5,
  kTypePpx = 6,
  kTypeBmp = 7,
  kTypeGif = 9,
  kTypePng = 10,
  kTypeZnx = 11,
  kTypeJp2 = 13,
  kTypeRas = 14,
  kTypePpm = 15,
  kTypePcd = 16,
  kTypeRaw = 17,
};

// Decodes one file, or encodes one picture. One thread at a time; failures are told by HadError,
// nothing but std::bad_alloc is thrown.
class FXBOX_API ImageLoader {
 public:
  // For a picture that is to be saved.
  ImageLoader() = default;
  // For a file in memory, which has to live as long as the object, or on disk.
  explicit ImageLoader(std::span<const std::uint8_t> file);
  explicit ImageLoader(const std::filesystem::path& file);

  // --- reading

  // Before the pictures are asked for: any reduced decode that is not smaller will do. Sizes below
  // 1 ask for the whole picture.
  void PreferedLoadingSize(int width, int height);
  // Settings of raw files, for which there is no decoder: taken and not used.
  void SetRawVersion(int) {}
  void RAW_SetWhitebalance(bool, bool, double, double, double) {}
  void RAW_SetBrightness(double, double) {}

  // Whether anything has failed so far, and what in words for the user: "no decoder" for a file of
  // a known kind that cannot be read here.
  bool HadError();
  const std::string& Error() const { return error; }
  // A PictureType.
  int Type() const { return type; }
  // The picture in 24 bits, and its mask in 8 bits where the file has one; decoded with the first
  // call. Empty when that fails or there is none. KeepDibMemory lets the caller move them away.
  PictureBytes& ImageDIB();
  PictureBytes& MaskDIB();
  void KeepDibMemory() {}
  const Metadata& FileMetadata() const { return metadata; }

  // --- writing

  // Packed bitmaps, which have to live until Save.
  void SetImage(std::span<const std::uint8_t> bitmap) { image = bitmap; }
  void SetMask(std::span<const std::uint8_t> bitmap) { mask = bitmap; }
  void PutExifData(std::span<const std::uint8_t> block);
  void PutIPTCData(std::span<const std::uint8_t> block);
  void PutMetadata(const Metadata& data) { metadata = data; }
  void SetJpegQuality(int quality) { jpegQuality = quality; }
  // The picture as a file of this type; empty when it cannot be made. A type without alpha shows
  // white through the mask.
  PictureBytes Save(int pictureType);
  PictureBytes SaveAs(Format format);

  // --- kinds

  // By the first bytes of a file; 0x8000 are enough.
  static int GetType(std::span<const std::uint8_t> file);
  // Whether the name has the extension of a picture file, that of a kind without a decoder
  // included.
  static bool IsImage(const char* name);
  // There is no faster library for large files: always false.
  static bool IsPolyViewFaster(const char* /*path*/, bool* /*viaMemory*/) { return false; }

 private:
  void Decode();
  bool TryDecode(ImageReader& reader);

  std::optional<std::span<const std::uint8_t>> bytes;
  std::optional<std::filesystem::path> path;
  int preferredWidth = 0;
  int preferredHeight = 0;
  bool isDecoded = false;
  int type = kTypeNone;
  std::string error;
  PictureBytes decodedImage;
  PictureBytes decodedMask;
  std::span<const std::uint8_t> image;
  std::span<const std::uint8_t> mask;
  Metadata metadata;
  int jpegQuality = 95;
};

}  // namespace imageio
