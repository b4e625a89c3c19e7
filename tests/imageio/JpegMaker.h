// JPEG files for the tests, of samples as they are, at full colour resolution.
#pragma once

#include <cstdio>  // jpeglib.h needs it before

#include <jpeglib.h>

#include "tests/imageio/TestPicture.h"

namespace test {

struct JpegKind {
  J_COLOR_SPACE colours;
  int samples;
  int quality = 95;
  bool progressive = false;
  Bytes profile = {};
};

inline Bytes MakeJpeg(int width, int height, const JpegKind& kind, const Bytes& data) {
  jpeg_compress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
  jpeg_mem_dest(&jpeg, &bytes, &count);
  jpeg.image_width = static_cast<JDIMENSION>(width);
  jpeg.image_height = static_cast<JDIMENSION>(height);
  jpeg.input_components = kind.samples;
  jpeg.in_color_space = kind.colours;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, kind.quality, TRUE);
  if (kind.progressive) jpeg_simple_progression(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  if (!kind.profile.empty()) {
    jpeg_write_icc_profile(&jpeg, kind.profile.data(), static_cast<unsigned>(kind.profile.size()));
  }
  for (int y = 0; y < height; ++y) {
    auto* row = const_cast<JSAMPROW>(&data[static_cast<std::size_t>(y * width * kind.samples)]);
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  const Bytes file(bytes, bytes + count);
  std::free(bytes);
  return file;
}

}  // namespace test
