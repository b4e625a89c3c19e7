#include "platform/Device.h"

#include <windows.h>

#include <cstring>

namespace platform {
namespace {

BITMAPINFO InfoOf(const DeviceArea& area) {
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = area.width;
  info.bmiHeader.biHeight = area.height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 24;
  return info;
}

// A bitmap in memory that the system paints into.
class MemoryDevice {
 public:
  explicit MemoryDevice(const DeviceArea& area) : context(CreateCompatibleDC(nullptr)) {
    const BITMAPINFO info = InfoOf(area);
    bitmap = CreateDIBSection(context, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    before = bitmap ? SelectObject(context, bitmap) : nullptr;
  }
  ~MemoryDevice() {
    if (before) SelectObject(context, before);
    if (bitmap) DeleteObject(bitmap);
    if (context) DeleteDC(context);
  }
  MemoryDevice(const MemoryDevice&) = delete;
  MemoryDevice& operator=(const MemoryDevice&) = delete;

  HDC Context() const { return before ? context : nullptr; }
  const void* Bits() const { return bits; }

 private:
  HDC context;
  HBITMAP bitmap = nullptr;
  HGDIOBJ before = nullptr;
  void* bits = nullptr;
};

}  // namespace

bool PaintableArea(void* device, DeviceArea& area) {
  RECT box = {};
  if (GetClipBox(static_cast<HDC>(device), &box) == ERROR) return false;
  area = {static_cast<int>(box.left), static_cast<int>(box.top),
          static_cast<int>(box.right - box.left), static_cast<int>(box.bottom - box.top)};
  return true;
}

bool ReadDevice(void* device, const DeviceArea& area, BYTE* rows) {
  const MemoryDevice memory(area);
  if (!memory.Context() || !BitBlt(memory.Context(), 0, 0, area.width, area.height,
                                   static_cast<HDC>(device), area.x, area.y, SRCCOPY)) {
    return false;
  }
  GdiFlush();
  const std::size_t stride = (static_cast<std::size_t>(area.width) * 3 + 3) / 4 * 4;
  std::memcpy(rows, memory.Bits(), stride * static_cast<std::size_t>(area.height));
  return true;
}

bool WriteDevice(void* device, const DeviceArea& area, const BYTE* rows) {
  const BITMAPINFO info = InfoOf(area);
  return StretchDIBits(static_cast<HDC>(device), area.x, area.y, area.width, area.height, 0, 0,
                       area.width, area.height, rows, &info, DIB_RGB_COLORS, SRCCOPY) > 0;
}

}  // namespace platform
