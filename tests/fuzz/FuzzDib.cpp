// Reads arbitrary bytes as a packed bitmap and as a serialised picture, and lets every function
// loose on it.
#include <objbase.h>
#include <winbase.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "picture/DibFunctions.h"
#include "picture/MemoryPicture.h"

namespace {

class BytesStream final : public IKvRead {
 public:
  BytesStream(const std::uint8_t* first, std::size_t count) : at(first), left(count) {}
  unsigned Read(void* buffer, unsigned count) override {
    const auto given = static_cast<unsigned>(std::min<std::size_t>(count, left));
    std::memcpy(buffer, at, given);
    at += given;
    left -= given;
    return given;
  }

 private:
  const std::uint8_t* at;
  std::size_t left;
};

void TryDib(const std::uint8_t* bytes, std::size_t size) {
  const DibHandle dib = GlobalAlloc(GMEM_FIXED, size);  // exact, so that a byte too many is seen
  if (!dib) return;
  std::memcpy(dib, bytes, size);
  constexpr std::uint32_t kColours[] = {0x000000, 0xFFFFFF};
  const DibHandle target = DibCreate(24, 20, 20);
  const DibTarget to{nullptr, target};
  const DibRectangle place{-3, 2, 15, 30};
  for (const DibHandle made : {Make24BitDib(dib), GolorGray(dib), DibScale(dib, 7, 5),
                               DibScale(dib, 40, 3), DibReadDib(bytes, size)}) {
    DIBPaint(&to, &place, made, nullptr);
    DibFree(made);
  }
  DIBFileSize(dib);
  DIBPaint(&to, &place, dib, nullptr);
  DIBDrawWithMask(&to, &place, dib, dib, nullptr);
  DibMapToPalette(dib, kColours, 2);
  DibSetUsage(dib, kColours, 2, 1);
  const DibTarget itself{nullptr, dib};
  DIBPaint(&itself, &place, dib, nullptr);
  DibFree(target);
  DibFree(dib);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  BytesStream stream(bytes, size);
  MemoryPicture(&stream).Clear();
  TryDib(bytes, size);
  return 0;
}
