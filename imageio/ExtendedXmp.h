// XMP packets that are too long for one marker of a JPEG file: a main packet names the rest, which
// lies in further markers.
#pragma once

#include <span>
#include <vector>

#include "imageio/Xmp.h"

namespace imageio {

// With its end in front of the rest of a packet.
inline constexpr char kXmpExtensionName[] = "http://ns.adobe.com/xmp/extension/";

// The whole packet: `main` with the rest out of these markers, each behind its name. The main
// packet as it is where it names no rest, or where that is not all there.
XmpPacket JoinXmp(const XmpPacket& main, std::span<const std::vector<std::uint8_t>> markers);

struct SplitXmp {
  XmpPacket main;
  std::vector<std::vector<std::uint8_t>> markers;  // each behind its name
};

// A packet that is too long for one marker, as a main packet that names the rest, and the rest.
// Nothing where it is no UTF-8 packet with descriptions.
SplitXmp SplitLongXmp(const XmpPacket& packet);

}  // namespace imageio
