// The byte that sepia and transparency store in place of their percentage: how much of the picture
// is kept.
#pragma once

#include "base/Arithmetic.h"
#include "core/ParameterText.h"

// 0 in the text keeps everything (255), 100 nothing (0). Of the number only the low eight bits
// count, and a text without the key says 0.
constexpr ParameterDescription KeptShare(const char* gloss) {
  return {.gloss = gloss,
          .absent = AbsentKey::CountsAsZero,
          .stored = [](int text) { return (100 - base::LowByte(text)) * 255 / 100; },
          .shown = [](int field) { return (255 - field) * 100 / 255; }};
}
