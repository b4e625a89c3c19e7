// Interface and class ids, written in the code as the text that registries show.
#pragma once

#include <guiddef.h>

#include <cstddef>
#include <cstdint>

namespace base {

// Length of the text form "{8-4-4-4-12}" without its terminator.
inline constexpr std::size_t kGuidTextLength = 38;

constexpr int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Reads "{22E7124D-0B5A-449C-BC15-213E7B98324B}". False when the text is anything else; it need not
// end behind the closing brace.
constexpr bool ParseGuid(const char* text, GUID& id) {
  constexpr char kPattern[] = "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
  std::uint8_t nibbles[32] = {};
  int count = 0;
  for (std::size_t i = 0; i < kGuidTextLength; ++i) {
    if (kPattern[i] != 'X') {
      if (text[i] != kPattern[i]) return false;
      continue;
    }
    const int digit = HexDigit(text[i]);
    if (digit < 0) return false;
    nibbles[count++] = static_cast<std::uint8_t>(digit);
  }
  const auto number = [&nibbles](int first, int digits) {
    std::uint32_t value = 0;
    for (int i = 0; i < digits; ++i) value = value << 4 | nibbles[first + i];
    return value;
  };
  id.Data1 = number(0, 8);
  id.Data2 = static_cast<std::uint16_t>(number(8, 4));
  id.Data3 = static_cast<std::uint16_t>(number(12, 4));
  for (int i = 0; i < 8; ++i) id.Data4[i] = static_cast<std::uint8_t>(number(16 + 2 * i, 2));
  return true;
}

// An id from its text at compile time; a wrong text does not compile.
consteval GUID Guid(const char* text) {
  GUID id = {};
  if (!ParseGuid(text, id)) throw "not the text of an id";
  return id;
}

constexpr bool SameGuid(const GUID& a, const GUID& b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return true;
}

// Writes the text form in upper case, with braces and a terminator, into 39 characters.
template <class Character>
constexpr void PrintGuid(const GUID& id, Character (&text)[kGuidTextLength + 1]) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::size_t at = 0;
  const auto put = [&](std::uint32_t value, int digits) {
    for (int i = digits - 1; i >= 0; --i) {
      text[at++] = static_cast<Character>(kDigits[value >> (4 * i) & 15]);
    }
  };
  const auto sign = [&](char c) { text[at++] = static_cast<Character>(c); };
  sign('{');
  put(static_cast<std::uint32_t>(id.Data1), 8);
  sign('-');
  put(id.Data2, 4);
  sign('-');
  put(id.Data3, 4);
  sign('-');
  for (int i = 0; i < 8; ++i) {
    if (i == 2) sign('-');
    put(id.Data4[i], 2);
  }
  sign('}');
  text[at] = 0;
}

}  // namespace base
