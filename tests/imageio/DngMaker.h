// Raw pictures of a camera for the tests: the sensor's numbers, as DNG files have them.
#pragma once

#include "tests/imageio/ExifMaker.h"

namespace test {

inline constexpr int kDngWidth = 64;
inline constexpr int kDngHeight = 48;
inline constexpr char kDngPacket[] = "<x:xmpmeta/>   ";

// 16 bits under a pattern of red and green above green and blue. The left half is red, the right
// half blue; the camera's colours are those of sRGB before its curve. Or
// greys that grow darker from the top left corner on.
inline Bytes MakeDng(int orientation, bool isGrey = false) {
  constexpr std::uint32_t kPixels = kDngWidth * kDngHeight;
  constexpr std::uint32_t kEntries = 20;
  constexpr std::uint32_t kName = 8 + 2 + 12 * kEntries + 4;
  constexpr std::uint32_t kMatrix = kName + 12;
  constexpr std::uint32_t kNeutral = kMatrix + 9 * 8;
  constexpr std::uint32_t kPacket = kNeutral + 3 * 8;
  constexpr std::uint32_t kStrip = kPacket + sizeof kDngPacket;
  BlockWriter writer(true, kEntries);
  writer.Entry(254, 4, 1, 0);
  writer.Entry(256, 4, 1, kDngWidth);
  writer.Entry(257, 4, 1, kDngHeight);
  writer.Entry(258, 3, 1, 16);
  writer.Entry(259, 3, 1, 1);
  writer.Entry(262, 3, 1, isGrey ? 34892 : 32803);
  writer.Entry(271, 2, sizeof kCamera, kName);
  writer.Entry(272, 2, sizeof kCamera, kName);
  writer.Entry(273, 4, 1, kStrip);
  writer.Entry(274, 3, 1, static_cast<std::uint32_t>(orientation));
  writer.Entry(277, 3, 1, 1);
  writer.Entry(278, 4, 1, kDngHeight);
  writer.Entry(279, 4, 1, kPixels * 2);
  writer.Entry(700, 1, sizeof kDngPacket, kPacket);
  writer.Entry(33421, 4, 1, 0x00020002);  // two by two
  writer.Entry(33422, 1, 4, 0x02010100);
  writer.Entry(50706, 1, 4, 0x00000401);
  writer.Entry(50717, 4, 1, 65535);
  writer.Entry(50721, 10, 9, kMatrix);
  writer.Entry(50728, 5, 3, kNeutral);
  writer.Number(0, 4);
  writer.block.insert(writer.block.end(), kCamera, kCamera + sizeof kCamera);
  for (const int part : {32405, -15371, -4985, -9693, 18760, 416, 556, -2040, 10572}) {
    writer.Longs({static_cast<std::uint32_t>(part), 10000});
  }
  writer.Longs({1, 1, 1, 1, 1, 1});
  writer.block.insert(writer.block.end(), kDngPacket, kDngPacket + sizeof kDngPacket);
  for (int y = 0; y < kDngHeight; ++y) {
    for (int x = 0; x < kDngWidth; ++x) {
      const bool isRed = x % 2 == 0 && y % 2 == 0;
      const bool isBlue = x % 2 == 1 && y % 2 == 1;
      const bool isBright = x < kDngWidth / 2 ? isRed : isBlue;
      const int grey = 60000 - 600 * x - 300 * y;
      writer.Number(isGrey ? static_cast<std::uint32_t>(grey) : isBright ? 40000 : 4000, 2);
    }
  }
  return writer.block;
}

}  // namespace test
