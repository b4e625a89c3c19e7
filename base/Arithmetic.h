// The two ways in which a number becomes a byte (cut or clamped), and conversions that never
// overflow.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace base {

// The low eight bits.
constexpr std::uint8_t LowByte(std::int64_t value) {
  return static_cast<std::uint8_t>(value & 255);
}

// Limited to 0..255.
constexpr std::uint8_t ClampByte(std::int64_t value) {
  return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

// The value as a 32-bit signed number, wrapped where it does not fit.
constexpr std::int32_t WrapToInt32(std::int64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

// The value, or the end of the 32-bit range that it lies beyond.
constexpr std::int32_t LimitToInt32(std::int64_t value) {
  constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kGreatest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(value < kLeast ? kLeast : value > kGreatest ? kGreatest : value);
}

// Truncates toward zero. What does not fit 32 bits wraps; what does not fit 64 bits gives the
// nearest end of the 32-bit range, and no number gives 0.
inline std::int32_t TruncateToInt32(double value) {
  constexpr double kLimit = 9223372036854775808.0;
  if (value > -kLimit && value < kLimit) return WrapToInt32(static_cast<std::int64_t>(value));
  if (std::isnan(value)) return 0;
  return value < 0 ? std::numeric_limits<std::int32_t>::min()
                   : std::numeric_limits<std::int32_t>::max();
}

// The nearest whole number, halves away from zero. What does not fit 32 bits gives the nearest end
// of the range, and no number gives 0.
inline std::int32_t RoundToInt32(double value) {
  const double whole = std::round(value);
  if (std::isnan(whole)) return 0;
  if (whole >= std::numeric_limits<std::int32_t>::max()) {
    return std::numeric_limits<std::int32_t>::max();
  }
  if (whole <= std::numeric_limits<std::int32_t>::min()) {
    return std::numeric_limits<std::int32_t>::min();
  }
  return static_cast<std::int32_t>(whole);
}

// Truncates toward zero and keeps the low eight bits.
inline std::uint8_t TruncateToByte(double value) {
  return LowByte(TruncateToInt32(value));
}

// Truncates toward zero and limits to 0..255.
inline std::uint8_t TruncateAndClampByte(double value) {
  return ClampByte(TruncateToInt32(value));
}

}  // namespace base
