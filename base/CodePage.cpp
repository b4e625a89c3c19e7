#include "base/CodePage.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace base {
namespace {

using ByteTable = std::array<char, 256>;

constexpr std::size_t Index(char c) {
  return static_cast<unsigned char>(c);
}
constexpr char Byte(std::size_t value) {
  return static_cast<char>(value);
}

// Wide characters of the bytes 80 to 9F; all others are their own number.
constexpr char16_t kWide[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  //
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  //
                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  //
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The Windows-1252 bytes of the OEM characters 80 to FF, first the letters, then lines and signs,
// with the nearest likeness for those that are not in Windows-1252.
constexpr unsigned char kFromOem[128] = {
    0xC7, 0xFC, 0xE9, 0xE2, 0xE4, 0xE0, 0xE5, 0xE7, 0xEA, 0xEB, 0xE8, 0xEF, 0xEE, 0xEC, 0xC4, 0xC5,
    0xC9, 0xE6, 0xC6, 0xF4, 0xF6, 0xF2, 0xFB, 0xF9, 0xFF, 0xD6, 0xDC, 0xF8, 0xA3, 0xD8, 0xD7, 0x83,
    0xE1, 0xED, 0xF3, 0xFA, 0xF1, 0xD1, 0xAA, 0xBA, 0xBF, 0xAE, 0xAC, 0xBD, 0xBC, 0xA1, 0xAB, 0xBB,
    0xA6, 0xA6, 0xA6, 0xA6, 0xA6, 0xC1, 0xC2, 0xC0, 0xA9, 0xA6, 0xA6, '+',  '+',  0xA2, 0xA5, '+',
    '+',  '-',  '-',  '+',  '-',  '+',  0xE3, 0xC3, '+',  '+',  '-',  '-',  0xA6, '-',  '+',  0xA4,
    0xF0, 0xD0, 0xCA, 0xCB, 0xC8, 'i',  0xCD, 0xCE, 0xCF, '+',  '+',  0xA6, '_',  0xA6, 0xCC, 0xAF,
    0xD3, 0xDF, 0xD4, 0xD2, 0xF5, 0xD5, 0xB5, 0xFE, 0xDE, 0xDA, 0xDB, 0xD9, 0xFD, 0xDD, 0xAF, 0xB4,
    0xAD, 0xB1, '=',  0xBE, 0xB6, 0xA7, 0xF7, 0xB8, 0xB0, 0xA8, 0xB7, 0xB9, 0xB3, 0xB2, 0xA6, 0xA0};

// OEM characters above 7F that are only a likeness of their entry in kFromOem.
constexpr bool IsLikeness(std::size_t oem) {
  constexpr unsigned char kLikenesses[] = {0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB9,
                                           0xBA, 0xDB, 0xCC, 0xFE, 0xDF};
  return kFromOem[oem - 128] < 128 || std::ranges::find(kLikenesses, oem) != std::end(kLikenesses);
}

// OEM likenesses of the bytes 80 to 9F, of which only 83 is in the OEM page.
constexpr unsigned char kToOem[32] = {'?', '?', '\'', '?', '"', '.', 0xC5, 0xCE, '^', '%', 'S',
                                      '<', 'O', '?',  'Z', '?', '?', '\'', '\'', '"', '"', 0xFA,
                                      '-', '-', '~',  'T', 's', '>', 'o',  '?',  'z', 'Y'};

constexpr ByteTable MakeFromOem() {
  ByteTable table = {};
  for (std::size_t i = 0; i < 256; ++i) table[i] = Byte(i < 128 ? i : kFromOem[i - 128]);
  return table;
}

constexpr ByteTable MakeToOem() {
  ByteTable table = {};
  for (std::size_t i = 0; i < 256; ++i) table[i] = i < 128 ? Byte(i) : '?';
  for (std::size_t i = 0; i < 32; ++i) table[128 + i] = Byte(kToOem[i]);
  for (std::size_t oem = 128; oem < 256; ++oem) {
    if (!IsLikeness(oem)) table[kFromOem[oem - 128]] = Byte(oem);
  }
  return table;
}

constexpr ByteTable MakeLower() {
  ByteTable table = {};
  for (std::size_t i = 0; i < 256; ++i) {
    const bool capital = (i >= 'A' && i <= 'Z') || (i >= 0xC0 && i <= 0xDE && i != 0xD7);
    table[i] = Byte(capital ? i + 32 : i);
  }
  for (const std::size_t caron : {0x8Au, 0x8Cu, 0x8Eu}) table[caron] = Byte(caron + 16);
  table[0x9F] = Byte(0xFF);
  return table;
}

constexpr ByteTable MakeUpper() {
  constexpr ByteTable lower = MakeLower();
  ByteTable table = {};
  for (std::size_t i = 0; i < 256; ++i) table[i] = Byte(i);
  for (std::size_t i = 0; i < 256; ++i) {
    if (lower[i] != Byte(i)) table[Index(lower[i])] = Byte(i);
  }
  return table;
}

constexpr ByteTable kOemTable = MakeToOem();
constexpr ByteTable kAnsiTable = MakeFromOem();
constexpr ByteTable kLowerTable = MakeLower();
constexpr ByteTable kUpperTable = MakeUpper();

constexpr char16_t WideOf(char c) {
  const std::size_t byte = Index(c);
  return byte >= 0x80 && byte < 0xA0 ? kWide[byte - 0x80] : static_cast<char16_t>(byte);
}

char NarrowOf(char32_t wide) {
  if (wide < 0x80 || (wide >= 0xA0 && wide <= 0xFF)) return Byte(wide);
  const auto found = std::ranges::find(kWide, wide);
  return found == std::end(kWide) ? '?' : Byte(0x80 + static_cast<std::size_t>(found - kWide));
}

struct Utf8Character {
  char32_t code;
  std::size_t bytes;
};

// The character at the front; one that no text may hold for a byte that starts no well-formed one.
Utf8Character FirstCharacter(std::string_view utf8) {
  constexpr Utf8Character kMalformed = {0x110000, 1};
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const std::size_t first = Index(utf8.front());
  if (first < 0x80) return {static_cast<char32_t>(first), 1};
  const std::size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC0 || first > 0xF7 || utf8.size() < bytes) return kMalformed;
  auto code = static_cast<char32_t>(first & (0x7Fu >> bytes));
  for (std::size_t i = 1; i < bytes; ++i) {
    if ((Index(utf8[i]) & 0xC0) != 0x80) return kMalformed;
    code = code << 6 | static_cast<char32_t>(Index(utf8[i]) & 0x3F);
  }
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < kSmallest[bytes] || code > 0x10FFFF || surrogate ? kMalformed
                                                                 : Utf8Character{code, bytes};
}

}  // namespace

std::u16string ToWide(std::string_view text) {
  std::u16string wide(text.size(), u'\0');
  std::ranges::transform(text, wide.begin(), WideOf);
  return wide;
}

std::string FromWide(std::u16string_view text) {
  std::string narrow(text.size(), '\0');
  std::ranges::transform(text, narrow.begin(), NarrowOf);
  return narrow;
}

std::string ToUtf8(std::string_view text) {
  std::string utf8;
  utf8.reserve(text.size());
  for (const char c : text) {
    const unsigned code = WideOf(c);
    if (code < 0x80) {
      utf8 += c;
      continue;
    }
    if (code < 0x800) {
      utf8 += Byte(0xC0 | code >> 6);
    } else {
      utf8 += Byte(0xE0 | code >> 12);
      utf8 += Byte(0x80 | (code >> 6 & 0x3F));
    }
    utf8 += Byte(0x80 | (code & 0x3F));
  }
  return utf8;
}

std::string FromUtf8(std::string_view utf8) {
  std::string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    const Utf8Character character = FirstCharacter(utf8);
    text += NarrowOf(character.code);
    utf8.remove_prefix(character.bytes);
  }
  return text;
}

char ToOem(char c) {
  return kOemTable[Index(c)];
}
char FromOem(char c) {
  return kAnsiTable[Index(c)];
}
char ToLower(char c) {
  return kLowerTable[Index(c)];
}
char ToUpper(char c) {
  return kUpperTable[Index(c)];
}

}  // namespace base
