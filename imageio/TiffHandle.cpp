#include "imageio/TiffHandle.h"

#include <cstdio>
#include <limits>
#include <new>

#include "imageio/Decoder.h"

namespace imageio {

TiffHandle::TiffHandle(Source& from) : source(&from) {
  Open("r");
}

TiffHandle::TiffHandle(Output& to, bool littleEndian) : output(&to) {
  Open(littleEndian ? "wl" : "wb");
}

TiffHandle::~TiffHandle() {
  if (tiff != nullptr) TIFFClose(tiff);
}

void TiffHandle::Open(const char* mode) {
  constexpr tmsize_t kLargestBlock = std::numeric_limits<std::int32_t>::max();
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) throw std::bad_alloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, kLargestBlock);
  TIFFOpenOptionsSetErrorHandlerExtR(options, &OnError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(
      options, [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, nullptr);
  tiff = TIFFClientOpenExt(
      "", mode, this, &OnRead, &OnWrite, &OnSeek, [](thandle_t) { return 0; }, &OnSize, nullptr,
      nullptr, options);
  TIFFOpenOptionsFree(options);
  if (tiff == nullptr) Fail();
}

void TiffHandle::Close() {
  TIFFClose(tiff);
  tiff = nullptr;
  if (failed) Fail();
}

void TiffHandle::Fail() const {
  throw ImageError(endReached ? kEndsEarly : LibraryMessage(message.data()));
}

tmsize_t TiffHandle::OnRead(thandle_t handle, void* to, tmsize_t count) {
  TiffHandle& self = Self(handle);
  const auto wanted = static_cast<std::size_t>(count);
  if (self.output != nullptr) return static_cast<tmsize_t>(self.output->TryRead(to, wanted));
  const std::size_t got = self.source->ReadAt(self.position, to, wanted);
  self.position += got;
  if (got < wanted) self.endReached = true;
  return static_cast<tmsize_t>(got);
}

tmsize_t TiffHandle::OnWrite(thandle_t handle, void* from, tmsize_t count) {
  TiffHandle& self = Self(handle);
  if (self.output != nullptr && self.output->TryWrite(from, static_cast<std::size_t>(count))) {
    return count;
  }
  std::snprintf(self.message.data(), self.message.size(), "%s", kCannotWrite);
  self.failed = true;
  return -1;
}

toff_t TiffHandle::OnSeek(thandle_t handle, toff_t offset, int origin) {
  TiffHandle& self = Self(handle);
  if (self.output != nullptr) {
    return static_cast<toff_t>(self.output->TrySeek(static_cast<std::int64_t>(offset), origin));
  }
  const std::uint64_t start = origin == SEEK_SET   ? 0
                              : origin == SEEK_CUR ? self.position
                                                   : self.source->Size();
  self.position = start + offset;
  return self.position;
}

toff_t TiffHandle::OnSize(thandle_t handle) {
  TiffHandle& self = Self(handle);
  if (self.source != nullptr) return self.source->Size();
  const std::int64_t here = self.output->TrySeek(0, SEEK_CUR);
  const std::int64_t size = self.output->TrySeek(0, SEEK_END);
  self.output->TrySeek(here, SEEK_SET);
  return static_cast<toff_t>(size);
}

int TiffHandle::OnError(TIFF*, void* self, const char*, const char* format, va_list list) {
  auto& handle = *static_cast<TiffHandle*>(self);
  if (!handle.failed) {  // what follows a failed write is its consequence
    std::vsnprintf(handle.message.data(), handle.message.size(), format, list);
  }
  return 1;  // told; nobody else needs to know
}

}  // namespace imageio
