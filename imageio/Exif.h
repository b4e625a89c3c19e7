// What the project knows of EXIF data, which is a TIFF structure, and how it moves into TIFF files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "imageio/Source.h"

namespace imageio {

// All blocks come from outside: whatever they say, nothing outside their bytes is read or written.
using ExifBlock = std::vector<std::uint8_t>;

// 1 to 8; 1 where the block tells none.
int ExifOrientation(const ExifBlock& block);

// Sets the orientation to 1 where the block has one.
void ResetExifOrientation(ExifBlock& block);

// What the block says of the picture's size, set where it says something.
void SetExifSize(ExifBlock& block, int width, int height);

// Zeros where the block tells none.
Resolution ExifResolution(const ExifBlock& block);

// How many whole pictures a TIFF file (not a BigTIFF file) holds, without reduced copies; 1 for
// anything else.
int CountTiffPages(Source& file);

// The bytes of a value in the main directory of a TIFF file (not of a BigTIFF file), whatever they
// are said to be; empty where there is none.
std::vector<std::uint8_t> BytesOfTiff(Source& file, int tag);

// The EXIF data of a TIFF file (not of a BigTIFF file) as a block of its own; empty where there is
// none. Descriptions, camera, exposure and position come along, but neither a thumbnail nor what
// describes the pixels; makers' notes come as they are and may hold positions that are no longer
// right.
ExifBlock ExifOfTiff(Source& file);

// EXIF data as it stands within a TIFF file.
struct ExifInTiff {
  bool littleEndian = true;         // the order that the file must have
  std::vector<std::uint8_t> bytes;  // to stand at the position that was asked for
  std::uint32_t exifDirectory = 0;  // positions in the file; 0 where there is none
  std::uint32_t gpsDirectory = 0;
  std::vector<std::pair<int, std::string>> texts;  // of the main directory, by tag
};
ExifInTiff LayOutExif(const ExifBlock& block, std::uint32_t position);

}  // namespace imageio
