// Writing rows of large pictures past the processor's caches.
#pragma once

#include <wtypes.h>

#include <cstddef>
#include <cstdint>

#include "base/Export.h"
#include "base/Rows.h"

namespace base {

// Copies and fills rows on one thread. Where they belong to a picture that no cache holds, they go
// to the memory directly: the processor then need not read what is overwritten, and what the caches
// hold stays there. Other threads may read the rows once the writer is gone.
class FXBOX_API RowWriter {
 public:
  // Of the whole picture, as far as it is written now.
  explicit RowWriter(std::int64_t pictureBytes) : isDirect(pictureBytes >= kDirectFrom) {}
  // The same of a picture of both planes.
  RowWriter(std::int64_t width, std::int64_t height)
      : RowWriter((kBytesPerPixel + 1) * width * height) {}
  ~RowWriter();
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;

  void Copy(BYTE* to, const BYTE* from, std::size_t bytes) const;
  void Fill(BYTE* to, BYTE value, std::size_t bytes) const;

 private:
  static constexpr std::int64_t kDirectFrom = 32 << 20;

  const bool isDirect;
};

}  // namespace base
