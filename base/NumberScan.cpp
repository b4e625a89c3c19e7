#include "base/NumberScan.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstddef>
#include <limits>
#include <string>
#include <system_error>

#include "base/Guid.h"

namespace base {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

void SkipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
}

bool Skip(std::string_view& text, std::string_view expected) {
  if (!text.starts_with(expected)) return false;
  text.remove_prefix(expected.size());
  return true;
}

// Steps over a sign; true for a minus.
bool SkipSign(std::string_view& text) {
  if (Skip(text, "-")) return true;
  Skip(text, "+");
  return false;
}

std::string_view SkipDigits(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

std::optional<std::uint64_t> ScanWrapping(std::string_view text, unsigned radix) {
  SkipBlanks(text);
  const bool negative = SkipSign(text);
  if (radix == 16 && text.size() > 2 && HexDigit(text[2]) >= 0) {
    if (!Skip(text, "0x")) Skip(text, "0X");
  }
  std::uint64_t value = 0;
  bool any = false;
  for (const char c : text) {
    const int digit = HexDigit(c);
    if (digit < 0 || digit >= static_cast<int>(radix)) break;
    value = value * radix + static_cast<unsigned>(digit);
    any = true;
  }
  if (!any) return std::nullopt;
  return negative ? 0 - value : value;
}

// A decimal number in its parts; its sign has been taken off.
struct Decimal {
  std::string_view whole;
  std::string_view fraction;
  bool negativeExponent = false;
  std::string_view exponent;

  // With a point for the decimal point, as std::from_chars reads it in any locale.
  std::string Text() const {
    std::string text = "0";
    text.append(whole).append(".").append(fraction);
    if (!exponent.empty()) text.append(negativeExponent ? "e-" : "e").append(exponent);
    return text;
  }

  // Whether it is beyond the largest double rather than below the smallest, when it is one of the
  // two.
  bool IsLarge() const {
    long long shift = 0;
    const auto end = exponent.data() + exponent.size();
    if (std::from_chars(exponent.data(), end, shift).ec == std::errc::result_out_of_range) {
      return !negativeExponent;
    }
    const std::size_t first = whole.find_first_not_of('0');
    const std::size_t zeros = std::min(fraction.find_first_not_of('0'), fraction.size());
    const auto place = first == std::string_view::npos
                           ? -static_cast<long long>(zeros)
                           : static_cast<long long>(whole.size() - first);
    return place + (negativeExponent ? -shift : shift) > 0;
  }
};

std::optional<Decimal> SplitDecimal(std::string_view text, std::string_view decimalPoint) {
  Decimal parts;
  parts.whole = SkipDigits(text);
  if (Skip(text, decimalPoint)) parts.fraction = SkipDigits(text);
  if (parts.whole.empty() && parts.fraction.empty()) return std::nullopt;
  if (Skip(text, "e") || Skip(text, "E")) {
    parts.negativeExponent = SkipSign(text);
    parts.exponent = SkipDigits(text);
  }
  return parts;
}

}  // namespace

std::optional<std::int32_t> ScanInt(std::string_view text) {
  const auto value = ScanWrapping(text, 10);
  if (!value) return std::nullopt;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(*value));
}

std::optional<std::int64_t> ScanInt64(std::string_view text) {
  const auto value = ScanWrapping(text, 10);
  if (!value) return std::nullopt;
  return static_cast<std::int64_t>(*value);
}

std::optional<std::uint64_t> ScanUnsigned64(std::string_view text) {
  return ScanWrapping(text, 10);
}

std::optional<std::uint32_t> ScanHex(std::string_view text) {
  const auto value = ScanWrapping(text, 16);
  if (!value) return std::nullopt;
  return static_cast<std::uint32_t>(*value);
}

std::optional<double> ScanDouble(std::string_view text) {
  return ScanDoubleWith(text, std::localeconv()->decimal_point);
}

std::optional<double> ScanDoubleWith(std::string_view text, std::string_view decimalPoint) {
  SkipBlanks(text);
  const bool negative = SkipSign(text);
  const std::optional<Decimal> parts = SplitDecimal(text, decimalPoint);
  if (!parts) return std::nullopt;
  const std::string digits = parts->Text();
  double value = 0;
  const auto scanned = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (scanned.ec == std::errc::result_out_of_range) {
    value = parts->IsLarge() ? std::numeric_limits<double>::infinity() : 0;
  }
  return negative ? -value : value;
}

}  // namespace base
