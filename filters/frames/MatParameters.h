// The keys that passepartout and smoked glass share, with the words of each for them.
#pragma once

#include "core/ParameterText.h"

// What differs between the two: pixels of a mat, percentages of a pane.
struct MatWords {
  double leastSize, greatestSize;  // of a border
  double leastShift, greatestShift;
  const char* mode;
  const char* borderhori;
  const char* borderverti;
  const char* totalHori;
  const char* totalVerti;
  const char* radius;
  const char* shiftHori;
  const char* shiftVerti;
  const char* transparency;
};

// The blank behind the number of `Blue` belongs to the text of both.
template <class P>
inline constexpr ParameterRow<P> kMatRows[] = {
    {"BordersizeOn", "BordersizeOn=%.1d", &P::bordersizeOn, {.gloss = P::kWords.mode}},
    {"Borderhori",
     ", Borderhori=%.3d",
     &P::borderhori,
     {.least = P::kWords.leastSize,
      .greatest = P::kWords.greatestSize,
      .gloss = P::kWords.borderhori}},
    {"Borderverti",
     ", Borderverti=%.3d",
     &P::borderverti,
     {.least = P::kWords.leastSize,
      .greatest = P::kWords.greatestSize,
      .gloss = P::kWords.borderverti}},
    {"TotalHori",
     ", TotalHori=%.4d",
     &P::totalHori,
     {.least = 1, .greatest = 10000, .gloss = P::kWords.totalHori}},
    {"TotalVerti",
     ", TotalVerti=%.4d",
     &P::totalVerti,
     {.least = 1, .greatest = 10000, .gloss = P::kWords.totalVerti}},
    {"Radius", ", Radius=%.3d", &P::radius, {.gloss = P::kWords.radius}},
    {"Blue", ", Blue=%.3d ", &P::blue, {.greatest = 255, .gloss = "blue of the colour"}},
    {"Green", ", Green=%.3d", &P::green, {.greatest = 255, .gloss = "green of the colour"}},
    {"Red", ", Red=%.3d", &P::red, {.greatest = 255, .gloss = "red of the colour"}},
    {"Poscorhori",
     ", Poscorhori=%.3d",
     &P::poscorhori,
     {.least = P::kWords.leastShift,
      .greatest = P::kWords.greatestShift,
      .gloss = P::kWords.shiftHori}},
    {"Poscorverti",
     ", Poscorverti=%.3d",
     &P::poscorverti,
     {.least = P::kWords.leastShift,
      .greatest = P::kWords.greatestShift,
      .gloss = P::kWords.shiftVerti}},
    {"Transparency", ", Transparency=%.3d", &P::transparency, {.gloss = P::kWords.transparency}}};
