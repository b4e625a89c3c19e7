// Reads arbitrary bytes as a packed bitmap and as a serialised picture, and lets every function
// loose on it.
#include <objbase.h>
#include <winbase.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "picture/DibFunctions.h"
#include "picture/MemoryPicture.h"
#include "tests/storage/MemoryStream.h"

namespace {

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
  test::MemoryStream stream({reinterpret_cast<const char*>(bytes), size});
  MemoryPicture(&stream).Clear();
  TryDib(bytes, size);
  return 0;
}
