// The arithmetic of the YIQ kernels, written once for one pixel and for a vector of pixels.
//
// A `Number` is a double or a vector of them.
#pragma once

#include <cstdint>

#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

struct Matrix {
  double rows[3][3];
};

// Luminance and two colour differences out of red, green, blue.
constexpr Matrix kToYiq = {
    {{0.299, 0.587, 0.114}, {0.596, -0.275, -0.321}, {0.212, -0.523, 0.311}}};

// By the rule of cofactors.
constexpr Matrix Invert(const Matrix& m) {
  const auto& [a, b, c] = m.rows[0];
  const auto& [d, e, f] = m.rows[1];
  const auto& [g, h, i] = m.rows[2];
  const double determinant = a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
  Matrix inverse = {{{e * i - f * h, c * h - b * i, b * f - c * e},
                     {f * g - d * i, a * i - c * g, c * d - a * f},
                     {d * h - e * g, b * g - a * h, a * e - b * d}}};
  for (auto& row : inverse.rows) {
    for (double& cofactor : row) cofactor /= determinant;
  }
  return inverse;
}
constexpr Matrix kToRgb = Invert(kToYiq);

template <class Number>
struct Rgb {
  Number red, green, blue;
};

// The dot product with a row of the matrix, summed from left to right.
template <class Number>
[[gnu::always_inline]] inline Number Dot(const Matrix& m, int row, Number x, Number y, Number z) {
  const auto& r = m.rows[row];
  return r[0] * x + r[1] * y + r[2] * z;
}

// The colour with another luminance, limited to 0..255.
template <class Number>
[[gnu::always_inline]] inline Rgb<Number> WithLuminance(const Rgb<Number>& rgb, Number luminance) {
  const auto i = Dot(kToYiq, 1, rgb.red, rgb.green, rgb.blue);
  const auto q = Dot(kToYiq, 2, rgb.red, rgb.green, rgb.blue);
  const auto channel = [&](int row) {
    return Min(Max(Dot(kToRgb, row, luminance, i, q), All<Number>(0)), All<Number>(255));
  };
  return {channel(0), channel(1), channel(2)};
}

// The weights sum to 256, so that 16 bits hold the sum.
[[gnu::always_inline]] inline std::uint8_t LuminanceIndex(int red, int green, int blue) {
  const auto sum = static_cast<std::uint16_t>(151 * green + 77 * red + 28 * blue);
  return static_cast<std::uint8_t>(sum >> 8);
}

}  // namespace
}  // namespace kernels
