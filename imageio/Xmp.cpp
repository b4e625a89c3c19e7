#include "imageio/Xmp.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace imageio {
namespace {

constexpr std::string_view kDigits = "0123456789";

// Where the digits of a property's value start; npos where there are none. A value stands in
// quotation marks behind "=", or in an element of its own.
std::size_t ValueAt(std::string_view text, std::size_t behindName) {
  constexpr std::string_view kBlanks = " \t\r\n";
  std::size_t at = text.find_first_not_of(kBlanks, behindName);
  if (at == text.npos) return at;
  if (text[at] == '=') {
    at = text.find_first_not_of(kBlanks, at + 1);
    if (at == text.npos || (text[at] != '"' && text[at] != '\'')) return text.npos;
  } else if (text[at] != '>') {
    return text.npos;
  }
  at = text.find_first_not_of(kBlanks, at + 1);
  return at != text.npos && kDigits.find(text[at]) != kDigits.npos ? at : text.npos;
}

// A packet in UTF-16 has no such names and stays as it is.
void SetNumber(XmpPacket& packet, std::string_view name, int number) {
  std::string text(packet.begin(), packet.end());
  const std::string digits = std::to_string(number);
  std::size_t found = text.find(name);
  for (; found != text.npos; found = text.find(name, found + name.size())) {
    const std::size_t at = ValueAt(text, found + name.size());
    if (at == text.npos) continue;
    const std::size_t end = std::min(text.find_first_not_of(kDigits, at), text.size());
    text.replace(at, end - at, digits);
  }
  packet.assign(text.begin(), text.end());
}

}  // namespace

void ResetXmpOrientation(XmpPacket& packet) {
  SetNumber(packet, "tiff:Orientation", 1);
}

void SetXmpSize(XmpPacket& packet, int width, int height) {
  SetNumber(packet, "tiff:ImageWidth", width);
  SetNumber(packet, "tiff:ImageLength", height);
  SetNumber(packet, "exif:PixelXDimension", width);
  SetNumber(packet, "exif:PixelYDimension", height);
}

}  // namespace imageio
