// The parameters of the red-eye filter: a list of clicks.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/ParameterText.h"

namespace editing {

struct RedEyeClick {
  double x = 0.5,
         y = 0.5;  // as fractions of the picture, 0 to 1; 1 falls on the last column or row
  std::int32_t darkness = 0;    // -50..50, above 0 the grey is darker
  std::int32_t correction = 0;  // -50..50, above 0 fewer pixels belong to the eye
};

}  // namespace editing

struct RedEyeParameters {
  static constexpr int kMostClicks = 128;

  std::int32_t count = 0;
  std::array<editing::RedEyeClick, kMostClicks> clicks = {};

  static RedEyeParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 501;
  // Without those of the clicks.
  static std::span<const ParameterRow<RedEyeParameters>> Rows();
};

// The clicks that the text names, each without the keys that it leaves out.
RedEyeParameters ReadClicks(const char* text);
// With the places of the clicks on a picture that was turned by so many quarters, 0 to 3, counter-
// clockwise.
std::string PrintClicks(const RedEyeParameters& parameters, int quarterTurns = 0);
// With the keys of the first click for those of all.
std::vector<ParameterDescription> DescribeClicks();
