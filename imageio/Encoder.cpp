#include "imageio/Encoder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "base/Rows.h"

namespace imageio {
namespace {

bool AnyTransparent(int width, int height, const Rows& rows) {
  if (rows.mask == nullptr) return false;
  return std::any_of(rows.mask, rows.mask + height, [width](const BYTE* row) {
    return std::any_of(row, row + width, [](BYTE mask) { return mask != base::kOpaque; });
  });
}

}  // namespace

Picture::Picture(int pictureWidth, int pictureHeight, const Rows& from)
    : width(pictureWidth),
      height(pictureHeight),
      rows(from),
      hasAlpha(AnyTransparent(width, height, rows)) {}

Picture::Picture(int pictureWidth, int pictureHeight, bool withAlpha, const RowFeed& rowFeed)
    : width(pictureWidth), height(pictureHeight), feed(&rowFeed), hasAlpha(withAlpha) {}

Picture Picture::WithoutMask() const {
  Picture opaque = *this;
  opaque.hasAlpha = false;
  return opaque;
}

PictureRow Picture::Row(int y) const {
  if (!feed) {
    const int row = height - 1 - y;
    return {rows.colour[row], hasAlpha ? rows.mask[row] : nullptr};
  }
  if (y != fedRow) {
    fed = (*feed)(y);
    fedRow = y;
  }
  return fed;
}

void Picture::Interleave(int y, bool redFirst, BYTE* to) const {
  const BYTE* colour = Colour(y);
  const BYTE* mask = hasAlpha ? Mask(y) : nullptr;
  const int first = redFirst ? base::kRed : base::kBlue;
  const int third = redFirst ? base::kBlue : base::kRed;
  for (int x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
    *to++ = colour[first];
    *to++ = colour[base::kGreen];
    *to++ = colour[third];
    if (mask != nullptr) *to++ = static_cast<BYTE>(255 - mask[x]);
  }
}

Output::Output(const std::filesystem::path& file)
    : stream(file, std::ios::binary | std::ios::in | std::ios::out | std::ios::trunc) {
  if (stream) return;
  NoteFailure();
  throw ImageError(Failure());
}

void Output::NoteFailure() noexcept {
  if (failed) return;
  failed = true;
  error = errno;
}

std::string Output::Failure() const {
  const std::string reason = error ? ": " + std::generic_category().message(error) : "";
  return kCannotWrite + reason;
}

Output::Output() : memory(std::ios::in | std::ios::out | std::ios::binary), isMemory(true) {
  static_cast<std::ios&>(stream).rdbuf(&memory);
}

void Output::Write(const void* from, std::size_t count) {
  if (!TryWrite(from, count)) throw ImageError(kCannotWrite);
}

bool Output::TryWrite(const void* from, std::size_t count) noexcept try {
  stream.write(static_cast<const char*>(from), static_cast<std::streamsize>(count));
  if (!stream.good()) NoteFailure();
  return stream.good();
} catch (...) {
  return false;
}

std::size_t Output::TryRead(void* to, std::size_t count) noexcept try {
  stream.read(static_cast<char*>(to), static_cast<std::streamsize>(count));
  const auto got = static_cast<std::size_t>(stream.gcount());
  stream.clear();
  return got;
} catch (...) {
  return 0;
}

std::int64_t Output::TrySeek(std::int64_t offset, int origin) noexcept try {
  const auto from = origin == SEEK_END   ? std::ios::end
                    : origin == SEEK_CUR ? std::ios::cur
                                         : std::ios::beg;
  if (isMemory && from == std::ios::beg) FillUpTo(offset);
  stream.seekp(offset, from);
  return stream.tellp();
} catch (...) {
  return -1;
}

// A file may be written to behind its end, memory may not.
void Output::FillUpTo(std::int64_t position) {
  stream.seekp(0, std::ios::end);
  for (std::int64_t at = stream.tellp(); at < position; ++at) stream.put('\0');
}

std::vector<std::uint8_t> Output::TakeBytes() {
  const std::string_view view = memory.view();
  return {view.begin(), view.end()};
}

void Output::Close() {
  if (!isMemory) stream.close();
  if (!stream) NoteFailure();
  if (failed) throw ImageError(Failure());
}

}  // namespace imageio
