#include "program/Sha256.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace program {
namespace {

// The first 32 bits behind the point of the cube roots of the first 64 primes.
constexpr std::uint32_t kRoots[64] = {
    0x428A2F98, 0x71374491, 0xB5C0FBCF, 0xE9B5DBA5, 0x3956C25B, 0x59F111F1, 0x923F82A4, 0xAB1C5ED5,
    0xD807AA98, 0x12835B01, 0x243185BE, 0x550C7DC3, 0x72BE5D74, 0x80DEB1FE, 0x9BDC06A7, 0xC19BF174,
    0xE49B69C1, 0xEFBE4786, 0x0FC19DC6, 0x240CA1CC, 0x2DE92C6F, 0x4A7484AA, 0x5CB0A9DC, 0x76F988DA,
    0x983E5152, 0xA831C66D, 0xB00327C8, 0xBF597FC7, 0xC6E00BF3, 0xD5A79147, 0x06CA6351, 0x14292967,
    0x27B70A85, 0x2E1B2138, 0x4D2C6DFC, 0x53380D13, 0x650A7354, 0x766A0ABB, 0x81C2C92E, 0x92722C85,
    0xA2BFE8A1, 0xA81A664B, 0xC24B8B70, 0xC76C51A3, 0xD192E819, 0xD6990624, 0xF40E3585, 0x106AA070,
    0x19A4C116, 0x1E376C08, 0x2748774C, 0x34B0BCB5, 0x391C0CB3, 0x4ED8AA4A, 0x5B9CCA4F, 0x682E6FF3,
    0x748F82EE, 0x78A5636F, 0x84C87814, 0x8CC70208, 0x90BEFFFA, 0xA4506CEB, 0xBEF9A3F7, 0xC67178F2};

std::uint32_t BigEndian(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

}  // namespace

void Sha256::Mix(const std::uint8_t* block) {
  std::uint32_t w[64];
  for (int i = 0; i < 16; ++i) w[i] = BigEndian(block + 4 * i);
  for (int i = 16; i < 64; ++i) {
    const std::uint32_t a = w[i - 15], b = w[i - 2];
    w[i] = w[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) + w[i - 7] +
           (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (int i = 0; i < 64; ++i) {
    const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                ((e & f) ^ (~e & g)) + kRoots[i] + w[i];
    const std::uint32_t second =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g, g = f, f = e, e = d + first;
    d = c, c = b, b = a, a = first + second;
  }
  const std::uint32_t added[8] = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += added[i];
}

void Sha256::Add(const void* bytes, std::size_t count) {
  const auto* from = static_cast<const std::uint8_t*>(bytes);
  while (count > 0) {
    const auto filled = static_cast<std::size_t>(length % rest.size());
    const std::size_t taken = std::min(count, rest.size() - filled);
    std::copy_n(from, taken, rest.begin() + static_cast<std::ptrdiff_t>(filled));
    length += taken;
    from += taken;
    count -= taken;
    if (length % rest.size() == 0) Mix(rest.data());
  }
}

std::string Sha256::Digits() {
  const std::uint64_t bits = length * 8;
  constexpr std::uint8_t kMark = 0x80, kZero = 0;
  Add(&kMark, 1);
  while (length % rest.size() != rest.size() - sizeof bits) Add(&kZero, 1);
  for (int shift = 56; shift >= 0; shift -= 8) {
    const auto byte = static_cast<std::uint8_t>(bits >> shift);
    Add(&byte, 1);
  }
  std::string digits;
  for (const std::uint32_t word : state) {
    for (int shift = 28; shift >= 0; shift -= 4) digits += "0123456789abcdef"[word >> shift & 15];
  }
  return digits;
}

FileDigest DigestOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::vector<char> block(std::size_t{1} << 16);
  Sha256 sum;
  FileDigest digest;
  while (stream) {
    stream.read(block.data(), static_cast<std::streamsize>(block.size()));
    const auto got = static_cast<std::size_t>(stream.gcount());
    sum.Add(block.data(), got);
    digest.bytes += got;
  }
  if (!stream.eof()) throw std::runtime_error("the finished picture cannot be read again");
  digest.sha256 = sum.Digits();
  return digest;
}

}  // namespace program
