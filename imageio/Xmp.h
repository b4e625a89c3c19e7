// What the project knows of XMP packets: the few properties that tell of the pixels.
#pragma once

#include <cstdint>
#include <vector>

namespace imageio {

using XmpPacket = std::vector<std::uint8_t>;

// Sets the orientation to 1 where the packet has one.
void ResetXmpOrientation(XmpPacket& packet);

// Sets what the packet says of the picture's size.
void SetXmpSize(XmpPacket& packet, int width, int height);

}  // namespace imageio
