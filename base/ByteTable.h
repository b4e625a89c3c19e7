// A table with one result for each byte.
#pragma once

#include <array>
#include <cstdint>

namespace base {

using ByteTable = std::array<std::uint8_t, 256>;

}  // namespace base
