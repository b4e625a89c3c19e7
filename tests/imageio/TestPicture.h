// Pictures for the tests: own rows, patterns, files in a temporary folder.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "imageio/ImageFile.h"

namespace test {

using imageio::Format;
using imageio::ImageError;
using imageio::ImageReader;
using Bytes = std::vector<std::uint8_t>;

inline constexpr Format kAll[] = {Format::Pnm,  Format::Pam,  Format::Png,
                                  Format::Jpeg, Format::Tiff, Format::Bmp};

// Rows of colour and mask that lie in two blocks. Equality compares all of it.
class TestPicture {
 public:
  TestPicture(int pictureWidth, int pictureHeight, BYTE fill = 0xCD)
      : width(pictureWidth),
        height(pictureHeight),
        colour(static_cast<std::size_t>(width) * 3 * static_cast<std::size_t>(height), fill),
        mask(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), fill) {}

  // Every byte by chance, from a fixed seed; without `withMask` the mask is 0.
  static TestPicture Random(int width, int height, bool withMask, unsigned seed = 1) {
    TestPicture picture(width, height, 0);
    std::mt19937 random(seed);
    for (BYTE& byte : picture.colour) byte = static_cast<BYTE>(random());
    if (!withMask) return picture;
    for (BYTE& byte : picture.mask) byte = static_cast<BYTE>(random());
    picture.mask.front() = 255;
    return picture;
  }

  // Slow changes of colour, which JPEG keeps well; opaque. Up to 128 x 64.
  static TestPicture Smooth(int width, int height) {
    TestPicture picture(width, height, 0);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        BYTE* pixel = picture.Pixel(x, y);
        pixel[0] = static_cast<BYTE>(2 * x);
        pixel[1] = static_cast<BYTE>(4 * y);
        pixel[2] = static_cast<BYTE>(255 - x - 2 * y);
      }
    }
    return picture;
  }

  // Reads everything that the reader gives.
  static TestPicture Of(ImageReader& reader) {
    TestPicture picture(reader.Info().width, reader.Info().height);
    reader.Read(picture.Rows());
    return picture;
  }
  static TestPicture OfBytes(const Bytes& bytes) {
    ImageReader reader(bytes.data(), bytes.size());
    return Of(reader);
  }
  static TestPicture Fitted(const Bytes& bytes, int boxWidth, int boxHeight) {
    ImageReader reader(bytes.data(), bytes.size());
    reader.ReduceToFit(boxWidth, boxHeight);
    return Of(reader);
  }

  imageio::Rows Rows() {
    colourRows.clear();
    maskRows.clear();
    for (int row = 0; row < height; ++row) {
      colourRows.push_back(
          &colour[static_cast<std::size_t>(row) * 3 * static_cast<std::size_t>(width)]);
      maskRows.push_back(&mask[static_cast<std::size_t>(row) * static_cast<std::size_t>(width)]);
    }
    return {colourRows.data(), maskRows.data()};
  }

  // A pixel counted from the top left corner: blue, green, red. Mask likewise.
  BYTE* Pixel(int x, int y) {
    return &colour[static_cast<std::size_t>(((height - 1 - y) * width + x) * 3)];
  }
  BYTE& Mask(int x, int y) { return mask[static_cast<std::size_t>((height - 1 - y) * width + x)]; }

  // The mean distance of colour bytes.
  double DistanceTo(const TestPicture& other) const {
    double sum = 0;
    for (std::size_t i = 0; i < colour.size(); ++i) sum += std::abs(colour[i] - other.colour[i]);
    return sum / static_cast<double>(colour.size());
  }
  bool operator==(const TestPicture& other) const {
    return width == other.width && height == other.height && colour == other.colour &&
           mask == other.mask;
  }

  int width;
  int height;
  Bytes colour;
  Bytes mask;

 private:
  std::vector<BYTE*> colourRows;
  std::vector<BYTE*> maskRows;
};

// A file that disappears with this object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::u16string& end = {}) {
    const std::string name = "fxbox-imageio-" + std::to_string(std::random_device{}());
    path = std::filesystem::temp_directory_path() / name;
    path += std::filesystem::path(end);
  }
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  std::filesystem::path path;
};

inline Bytes ReadBytes(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(stream), {});
}

#ifdef FXBOX_TEST_DATA
// Where the tests find picture files, good and broken.
inline std::filesystem::path DataFolder() {
  const char* other = std::getenv("FXBOX_TEST_DATA");
  return other != nullptr ? other : FXBOX_TEST_DATA;
}
#endif

// The bytes of a file that WriteImage makes.
inline Bytes Written(Format format, TestPicture picture,
                     const imageio::WriteOptions& options = {}) {
  const TemporaryFile file;
  imageio::WriteImage(file.path, format, picture.width, picture.height, picture.Rows(), options);
  return ReadBytes(file.path);
}

inline Bytes WrittenAt(Format format, const TestPicture& picture, int quality,
                       const imageio::Metadata& metadata = {}) {
  imageio::WriteOptions options;
  options.jpegQuality = quality;
  options.metadata = metadata;
  return Written(format, picture, options);
}
inline Bytes WrittenWith(Format format, const TestPicture& picture,
                         const imageio::Metadata& metadata) {
  return WrittenAt(format, picture, 92, metadata);
}
inline imageio::ImageInfo InfoOf(const Bytes& bytes) {
  return ImageReader(bytes.data(), bytes.size()).Info();
}

// Bytes of a text with numbers in between: what the little formats are written with.
inline Bytes BytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

}  // namespace test
