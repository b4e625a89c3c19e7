// An open TIFF file of libtiff, with errors as exceptions and silent warnings.
#pragma once

#include <tiffio.h>

#include <array>
#include <cstdint>

#include "imageio/Encoder.h"
#include "imageio/Source.h"

namespace imageio {

// Either reads a source or writes an output, which must outlive it. The library calls back into
// this object, so it stays where it is.
class TiffHandle {
 public:
  // An ImageError where the head is damaged.
  explicit TiffHandle(Source& from);
  TiffHandle(Output& to, bool littleEndian);
  ~TiffHandle();
  TiffHandle(const TiffHandle&) = delete;
  TiffHandle& operator=(const TiffHandle&) = delete;

  TIFF* Get() const { return tiff; }
  // Writes what is pending and closes; Get is null from then on. An ImageError where that failed.
  void Close();
  // Throws the error that the library told last.
  [[noreturn]] void Fail() const;

 private:
  void Open(const char* mode);
  static TiffHandle& Self(thandle_t handle) { return *static_cast<TiffHandle*>(handle); }
  static tmsize_t OnRead(thandle_t handle, void* to, tmsize_t count);
  static tmsize_t OnWrite(thandle_t handle, void* from, tmsize_t count);
  static toff_t OnSeek(thandle_t handle, toff_t offset, int origin);
  static toff_t OnSize(thandle_t handle);
  static int OnError(TIFF* tiff, void* self, const char* module, const char* format, va_list list);

  Source* source = nullptr;
  Output* output = nullptr;
  TIFF* tiff = nullptr;
  std::uint64_t position = 0;
  bool endReached = false;
  bool failed = false;
  std::array<char, 300> message = {};
};

}  // namespace imageio
