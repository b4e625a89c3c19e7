#include "toolkit/ZNTheme.h"

#include <algorithm>
#include <cmath>

namespace {

std::uint8_t MixedByte(std::uint8_t first, std::uint8_t second, double share) {
  return static_cast<std::uint8_t>(std::lround(first + (second - first) * share));
}

}  // namespace

void CZNTheme::Choose(toolkit::ThemeChoice choice) {
  toolkit::ChooseTheme(choice);
}

toolkit::ThemeChoice CZNTheme::Chosen() {
  return toolkit::ChosenTheme();
}

toolkit::Look CZNTheme::Colours() {
  toolkit::Backend* const backend = toolkit::CurrentBackend();
  return backend ? backend->CurrentLook() : toolkit::Look();
}

toolkit::Colour CZNTheme::Mixed(toolkit::Colour first, toolkit::Colour second, double share) {
  const double limited = std::clamp(share, 0.0, 1.0);
  return {MixedByte(first.red, second.red, limited), MixedByte(first.green, second.green, limited),
          MixedByte(first.blue, second.blue, limited)};
}
