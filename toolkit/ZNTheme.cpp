#include "toolkit/ZNTheme.h"

#include <algorithm>

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
  return toolkit::MixedColour(first, second, std::clamp(share, 0.0, 1.0));
}
