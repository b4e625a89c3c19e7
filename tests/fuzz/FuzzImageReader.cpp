// Reads arbitrary bytes as a picture file, at full size and reduced.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "imageio/ImageFile.h"

namespace {

constexpr std::int64_t kMostPixels = 1 << 20;

void ReadAll(imageio::ImageReader& reader) {
  const imageio::ImageInfo& info = reader.Info();
  const auto width = static_cast<std::size_t>(info.width);
  const auto height = static_cast<std::size_t>(info.height);
  std::vector<std::vector<BYTE>> colour(height, std::vector<BYTE>(3 * width));
  std::vector<std::vector<BYTE>> mask(height, std::vector<BYTE>(width));
  std::vector<BYTE*> colourRows, maskRows;
  for (std::size_t row = 0; row < height; ++row) {
    colourRows.push_back(colour[row].data());
    maskRows.push_back(mask[row].data());
  }
  reader.Read({colourRows.data(), maskRows.data()});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) try {
  imageio::ImageReader reader(bytes, size);
  if (std::int64_t{reader.Info().fullWidth} * reader.Info().fullHeight > kMostPixels) return 0;
  std::vector<std::uint8_t> exif = reader.Info().metadata.exif;
  imageio::DropThumbnail(exif);
  ReadAll(reader);
  reader.ReduceToFit(reader.Info().width / 3, reader.Info().height / 2);
  ReadAll(reader);
  return 0;
} catch (const imageio::ImageError&) {
  return 0;
}
