#include "platform/compound/ElementName.h"

#include <algorithm>

namespace platform::compound {
namespace {

bool IsBetween(char16_t unit, char16_t first, char16_t last) {
  return unit >= first && unit <= last;
}

// The letters that come in pairs of neighbours, a capital one first.
bool IsSecondOfPair(char16_t unit) {
  const bool isOdd = (unit & 1) != 0;
  if (IsBetween(unit, 0x139, 0x148) || IsBetween(unit, 0x179, 0x17E)) return !isOdd;
  if (unit == 0x131 || unit == 0x138 || unit == 0x149 || unit == 0x17F) return false;
  const bool isPaired = IsBetween(unit, 0x100, 0x177) || IsBetween(unit, 0x460, 0x481) ||
                        IsBetween(unit, 0x48A, 0x4BF) || IsBetween(unit, 0x4D0, 0x52F) ||
                        IsBetween(unit, 0x1E00, 0x1E95) || IsBetween(unit, 0x1EA0, 0x1EFF);
  return isPaired && isOdd;
}

// Latin, Greek, Cyrillic and Armenian letters; all others stay as they are.
char16_t Upper(char16_t unit) {
  if (IsBetween(unit, u'a', u'z')) return static_cast<char16_t>(unit - 32);
  if (IsBetween(unit, 0xE0, 0xFE) && unit != 0xF7) return static_cast<char16_t>(unit - 32);
  if (unit == 0xFF) return 0x178;
  if (IsSecondOfPair(unit)) return static_cast<char16_t>(unit - 1);
  if (IsBetween(unit, 0x3B1, 0x3CB) && unit != 0x3C2) return static_cast<char16_t>(unit - 32);
  if (unit == 0x3AC) return 0x386;
  if (IsBetween(unit, 0x3AD, 0x3AF)) return static_cast<char16_t>(unit - 37);
  if (IsBetween(unit, 0x430, 0x44F)) return static_cast<char16_t>(unit - 32);
  if (IsBetween(unit, 0x450, 0x45F)) return static_cast<char16_t>(unit - 80);
  if (IsBetween(unit, 0x561, 0x586)) return static_cast<char16_t>(unit - 48);
  return unit;
}

}  // namespace

bool IsValidName(std::u16string_view name) {
  return !name.empty() && name.size() <= kLongestName &&
         name.find_first_of(u"/\\:!") == std::u16string_view::npos;
}

NameKey KeyOf(std::u16string_view name) {
  std::u16string upper(name);
  std::transform(upper.begin(), upper.end(), upper.begin(), Upper);
  return {name.size(), std::move(upper)};
}

}  // namespace platform::compound
