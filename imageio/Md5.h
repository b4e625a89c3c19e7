// The digest by which the parts of a long XMP packet know each other; protects nothing.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace imageio {

// 32 hexadecimal digits, capital letters.
std::string Md5(std::span<const std::uint8_t> bytes);

}  // namespace imageio
