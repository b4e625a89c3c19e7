// What lies between the library and the module of a picture format: plain records and functions, so
// that either can be built without the other.
//
// A module is a shared object with the one function kFormatEntry. It is loaded with the first
// picture of its format and stays. Rows go from the top to the bottom, samples are bytes in the
// order red, green, blue and, where there is alpha, alpha. Nothing thrown passes this border.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imageio {

inline constexpr int kFormatVersion = 1;
inline constexpr char kFormatEntry[] = "FxboxPictureFormat";
inline constexpr std::size_t kFormatMessage = 300;  // bytes of room for a message

struct FormatBlock {
  const std::uint8_t* bytes = nullptr;
  std::size_t count = 0;  // 0: there is none
};

// What a file tells. The blocks live as long as the file is open.
struct FormatHead {
  std::int32_t width = 0;  // of the rows that will come
  std::int32_t height = 0;
  std::int32_t hasAlpha = 0;
  std::int32_t orientation = 0;  // of the rows, 1 to 8; 0: as the EXIF data say
  std::int32_t bits = 8;         // of a sample in the file
  std::int32_t pictures = 1;     // in the file, of which the first or chief one is given
  FormatBlock exif;              // with or without "Exif\0\0" ahead of it
  FormatBlock profile;
  FormatBlock xmp;
};

// A picture to be written.
struct FormatPicture {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t hasAlpha = 0;
  std::int32_t quality = 0;  // 1 to 100; 100: without loss where the format can
  const std::uint8_t* pixels = nullptr;
  FormatBlock exif;  // without "Exif\0\0"
  FormatBlock profile;
  FormatBlock xmp;
};

// Takes row y, or bytes of the file that is written; 0 to stop.
using FormatRow = int (*)(void* context, int y, const std::uint8_t* samples);
using FormatBytes = int (*)(void* context, const std::uint8_t* bytes, std::size_t count);

enum class FormatResult : std::int32_t { Done, Stopped, Failed };  // with a message when it failed

struct FormatFunctions {
  std::int32_t version = kFormatVersion;
  // Reads the head of a file in memory, which must live until `close`. Null when it fails.
  void* (*open)(const std::uint8_t* bytes, std::size_t count, FormatHead* head, char* message);
  FormatResult (*decode)(void* file, FormatRow row, void* context, char* message);
  void (*close)(void* file);
  // Null where the format is only read.
  FormatResult (*write)(const FormatPicture* picture, FormatBytes bytes, void* context,
                        char* message);
};

using FormatEntry = const FormatFunctions* (*)();

}  // namespace imageio
