// What the encoders of all picture formats share: the picture as they see it and the file they
// write.
#pragma once

#include <wtypes.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "imageio/ImageFile.h"
#include "imageio/RowSink.h"

namespace imageio {

inline constexpr char kCannotWrite[] = "the file cannot be written";

// The caller's rows from the top to the bottom, as all files but one kind hold them.
class Picture {
 public:
  Picture(int width, int height, const Rows& rows);
  // One that is made while it is written: rows can be had in order alone.
  Picture(int width, int height, bool hasAlpha, const RowFeed& feed);

  int Width() const { return width; }
  int Height() const { return height; }
  Picture WithoutMask() const;
  // Some mask byte is not 0: the file needs an alpha channel.
  bool HasAlpha() const { return hasAlpha; }
  // Row y counts from the top.
  const BYTE* Colour(int y) const { return Row(y).colour; }
  // Only where HasAlpha.
  const BYTE* Mask(int y) const { return Row(y).mask; }

  // Row y as blue, green, red and, where HasAlpha, alpha; in the order red, green, blue with
  // `redFirst`.
  void Interleave(int y, bool redFirst, BYTE* to) const;
  int Channels() const { return hasAlpha ? 4 : 3; }
  std::size_t RowBytes() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(Channels());
  }

 private:
  PictureRow Row(int y) const;

  int width;
  int height;
  Rows rows;
  const RowFeed* feed = nullptr;  // in the place of the rows
  mutable PictureRow fed;         // what it gave last
  mutable int fedRow = -1;
  bool hasAlpha;
};

// The file that is written, empty at first. What throws gives an ImageError; the rest never throws,
// so that the C libraries may call it.
class Output {
 public:
  explicit Output(const std::filesystem::path& file);
  // Collects the file in memory.
  Output();
  void Write(const void* from, std::size_t count);
  bool TryWrite(const void* from, std::size_t count) noexcept;
  std::size_t TryRead(void* to, std::size_t count) noexcept;
  // The new position, or -1.
  std::int64_t TrySeek(std::int64_t offset, int origin) noexcept;
  void Close();
  // What was collected in memory, after Close.
  std::vector<std::uint8_t> TakeBytes();

  bool HasFailed() const { return failed; }
  // With the system's reason.
  std::string Failure() const;

 private:
  void NoteFailure() noexcept;

  void FillUpTo(std::int64_t position);

  std::fstream stream;
  std::stringbuf memory;  // in the place of the file
  bool isMemory = false;
  bool failed = false;
  int error = 0;  // the system's, of the first failure
};

// Each writes a whole file; false when `progress` stopped it.
bool WritePnm(Output& output, const Picture& picture, const Progress& progress);
bool WritePam(Output& output, const Picture& picture, const Progress& progress);
bool WritePng(Output& output, const Picture& picture, const WriteOptions& options,
              const Progress& progress);
bool WriteJpeg(Output& output, const Picture& picture, const WriteOptions& options,
               const Progress& progress);
bool WriteTiff(Output& output, const Picture& picture, const WriteOptions& options,
               const Progress& progress);
bool WriteBmp(Output& output, const Picture& picture, const WriteOptions& options,
              const Progress& progress);

}  // namespace imageio
