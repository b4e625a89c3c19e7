// Reads arbitrary bytes as a picture file, at full size and reduced.
#include "tests/imageio/TestPicture.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) try {
  imageio::ImageReader reader(bytes, size);
  if (std::int64_t{reader.Info().fullWidth} * reader.Info().fullHeight > 1 << 20) return 0;
  std::vector<std::uint8_t> exif = reader.Info().metadata.exif;
  imageio::DropThumbnail(exif);
  test::TestPicture::Of(reader);
  reader.ReduceToFit(reader.Info().width / 3, reader.Info().height / 2);
  test::TestPicture::Of(reader);
  return 0;
} catch (const imageio::ImageError&) {
  return 0;
}
