#include "platform/Device.h"

namespace platform {

bool PaintableArea(void*, DeviceArea&) {
  return false;
}

bool ReadDevice(void*, const DeviceArea&, BYTE*) {
  return false;
}

bool WriteDevice(void*, const DeviceArea&, const BYTE*) {
  return false;
}

}  // namespace platform
