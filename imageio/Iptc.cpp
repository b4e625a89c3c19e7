#include "imageio/Iptc.h"

#include <charconv>
#include <cstring>

namespace imageio {
namespace {

constexpr char kSignature[] = {'8', 'B', 'I', 'M'};
constexpr std::uint32_t kIptcResource = 0x0404;
constexpr std::string_view kTextHead = "\niptc\n";
constexpr std::size_t kDigitsInLine = 72;

std::uint32_t Load(const std::uint8_t* at, int bytes) {
  std::uint32_t value = 0;
  for (int i = 0; i < bytes; ++i) value = value << 8 | at[i];
  return value;
}

void Append(std::vector<std::uint8_t>& to, std::uint32_t value, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) to.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

std::size_t Even(std::size_t length) {
  return length + length % 2;
}

}  // namespace

IptcRecords IptcOfResources(const std::vector<std::uint8_t>& resources) {
  // Signature, number, a counted name, the length: at least 12 bytes.
  for (std::size_t at = 0; at + 12 <= resources.size();) {
    const std::uint8_t* const start = resources.data() + at;
    if (std::memcmp(start, kSignature, sizeof kSignature) != 0) break;
    const std::size_t lengthAt = at + 6 + Even(std::size_t{1} + start[6]);
    if (lengthAt + 4 > resources.size()) break;
    const std::size_t length = Load(resources.data() + lengthAt, 4);
    const std::size_t dataAt = lengthAt + 4;
    if (length > resources.size() - dataAt) break;
    const auto data = resources.begin() + static_cast<std::ptrdiff_t>(dataAt);
    if (Load(start + 4, 2) == kIptcResource) {
      return {data, data + static_cast<std::ptrdiff_t>(length)};
    }
    at = dataAt + Even(length);
  }
  return {};
}

std::vector<std::uint8_t> ResourcesOfIptc(const IptcRecords& records) {
  std::vector<std::uint8_t> resources(kSignature, kSignature + sizeof kSignature);
  Append(resources, kIptcResource, 2);
  Append(resources, 0, 2);  // no name
  Append(resources, static_cast<std::uint32_t>(records.size()), 4);
  resources.insert(resources.end(), records.begin(), records.end());
  resources.resize(Even(resources.size()));
  return resources;
}

IptcRecords IptcOfText(std::string_view text) {
  const std::size_t lineEnd = text.find('\n', kTextHead.size());
  if (!text.starts_with(kTextHead) || lineEnd == text.npos) return {};
  IptcRecords bytes;
  std::string digits;
  for (const char c : text.substr(lineEnd)) {
    if (c == '\n' || c == '\r' || c == ' ') continue;
    digits += c;
    if (digits.size() < 2) continue;
    std::uint8_t byte = 0;
    const auto end = std::from_chars(digits.data(), digits.data() + 2, byte, 16).ptr;
    if (end != digits.data() + 2) return {};
    bytes.push_back(byte);
    digits.clear();
  }
  return IptcOfResources(bytes);
}

std::string TextOfIptc(const IptcRecords& records) {
  constexpr char kHexadecimal[] = "0123456789abcdef";
  const std::vector<std::uint8_t> bytes = ResourcesOfIptc(records);
  std::string length = std::to_string(bytes.size());
  if (length.size() < 8) length.insert(0, 8 - length.size(), ' ');
  std::string text = std::string(kTextHead) + length;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i % (kDigitsInLine / 2) == 0) text += '\n';
    text += kHexadecimal[bytes[i] >> 4];
    text += kHexadecimal[bytes[i] & 15];
  }
  return text + '\n';
}

}  // namespace imageio
