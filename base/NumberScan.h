// Reads the number at the front of a text, with the same result on every system.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace base {

// Each function skips white space (space, TAB, LF, VT, FF, CR), reads an optional sign and the
// longest number behind it, and ignores what follows. Nothing is returned when no digit stands
// there.

// Decimal, "%d". A value beyond 32 bits keeps its low 32.
std::optional<std::int32_t> ScanInt(std::string_view text);

// Decimal of 64 bits. A value beyond them keeps its low 64.
std::optional<std::int64_t> ScanInt64(std::string_view text);

// The same for an unsigned number; "-1" gives the largest one.
std::optional<std::uint64_t> ScanUnsigned64(std::string_view text);

// Hexadecimal with or without "0x", "%lx". A value beyond 32 bits keeps its low 32.
std::optional<std::uint32_t> ScanHex(std::string_view text);

// Decimal with an optional exponent, "%lf". A value too large is infinite, one too small is 0, both
// with the sign given. "inf", "nan" and hexadecimal fractions are no numbers. The first takes the
// decimal point of the process's numeric locale.
std::optional<double> ScanDouble(std::string_view text);
std::optional<double> ScanDoubleWith(std::string_view text, std::string_view decimalPoint);

}  // namespace base
