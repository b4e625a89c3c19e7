// Device contexts of the system: what windows and printers are painted through.
#pragma once

#include <wtypes.h>

namespace platform {

struct DeviceArea {
  int x;
  int y;
  int width;
  int height;
};

// The part that can be painted, in the device's own coordinates; sides of 0 when it is none. False
// when it is no device, as is everything where there are none.
bool PaintableArea(void* device, DeviceArea& area);

// Pixels of an area, as rows of blue, green, red from the bottom up, each filled up to 4 bytes.
// False when the device does not give or take them.
bool ReadDevice(void* device, const DeviceArea& area, BYTE* rows);
bool WriteDevice(void* device, const DeviceArea& area, const BYTE* rows);

}  // namespace platform
