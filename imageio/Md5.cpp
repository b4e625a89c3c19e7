#include "imageio/Md5.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <vector>

namespace imageio {
namespace {

using State = std::array<std::uint32_t, 4>;

constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLengthBytes = 8;
constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// Round i of 64: what is mixed, and which word of the block comes in.
std::uint32_t Mixed(unsigned i, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  if (i < 16) return (b & c) | (~b & d);
  if (i < 32) return (d & b) | (~d & c);
  return i < 48 ? b ^ c ^ d : c ^ (b | ~d);
}
unsigned WordOf(unsigned i) {
  if (i < 16) return i;
  if (i < 32) return (5 * i + 1) % 16;
  return i < 48 ? (3 * i + 5) % 16 : 7 * i % 16;
}

void AddBlock(State& state, const std::uint8_t* block) {
  State now = state;
  auto& [a, b, c, d] = now;
  for (unsigned i = 0; i < 64; ++i) {
    const std::uint8_t* const at = block + 4 * WordOf(i);
    const std::uint32_t word =
        at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 | std::uint32_t{at[3]} << 24;
    const auto constant = static_cast<std::uint32_t>(std::abs(std::sin(i + 1.0)) * 0x1p32);
    const std::uint32_t sum = a + Mixed(i, b, c, d) + word + constant;
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, kShifts[i / 16][i % 4]);
  }
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += now[i];
}

}  // namespace

std::string Md5(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::vector<std::uint8_t> padded(bytes.begin(), bytes.end());
  padded.push_back(0x80);
  while (padded.size() % kBlockBytes != kBlockBytes - kLengthBytes) padded.push_back(0);
  const std::uint64_t bits = std::uint64_t{bytes.size()} * 8;
  for (int shift = 0; shift < 64; shift += 8) {
    padded.push_back(static_cast<std::uint8_t>(bits >> shift));
  }
  State state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  for (std::size_t at = 0; at < padded.size(); at += kBlockBytes) AddBlock(state, &padded[at]);
  std::string digest;
  for (const std::uint32_t word : state) {
    for (const int shift : {4, 0, 12, 8, 20, 16, 28, 24}) digest += kDigits[word >> shift & 15];
  }
  return digest;
}

}  // namespace imageio
