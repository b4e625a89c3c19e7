// The loops of the Gaussian filters over vectors of any length: every file that includes this has a
// copy of its own, compiled for the processors of that file.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "filters/detail/GaussKernels.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

// No number gives 0.
template <class Real>
[[gnu::always_inline]] inline std::uint8_t ToByte(Real value) {
  value = value > 0 ? value : 0;
  value = value < 255 ? value : 255;
  return static_cast<std::uint8_t>(static_cast<int>(value));
}

[[gnu::always_inline]] inline std::uint8_t Largest(const std::uint8_t* pixel) {
  return Max(Max(pixel[0], pixel[1]), pixel[2]);
}

// What sharpening adds for each unit of deviation: nothing below the threshold. A copy of its
// numbers, as the compiler does not widen loops that may or may not read one.
struct Sharpening {
  float threshold, amount;
  [[gnu::always_inline]] float AmountFor(float deviation) const {
    return __builtin_fabsf(deviation) < threshold ? 0.0f : amount;
  }
};

inline void PickColours(const std::uint8_t* colour, std::uint8_t* bytes, int pixels) {
  std::copy_n(colour, 3 * pixels, bytes);
}

inline void PickBrightness(const std::uint8_t* colour, std::uint8_t* bytes, int pixels) {
  for (int x = 0; x < pixels; ++x) bytes[x] = Largest(colour + 3 * x);
}

template <class Real>
void FinishBlur(std::uint8_t* colour, const Real* line, const Real* deviations, const GaussNumbers&,
                int pixels) {
  for (int i = 0; i < 3 * pixels; ++i) colour[i] = ToByte(line[i] + deviations[i]);
}

// Of the whole blur, of both directions, from the picture.
[[gnu::always_inline]] inline float FullDeviation(float before, float line, float deviation) {
  return (line - before) + deviation;
}

inline void FinishSharpenAll(std::uint8_t* colour, const float* line, const float* deviations,
                             const GaussNumbers& numbers, int pixels) {
  for (int i = 0; i < 3 * pixels; ++i) {
    const float before = static_cast<float>(colour[i]);
    colour[i] = ToByte(before - FullDeviation(before, line[i], deviations[i]) * numbers.amount);
  }
}

// A pixel is sharpened by what its channels deviate together. The loops of a step are apart so that
// the compiler widens each.
inline void FinishSharpen(std::uint8_t* colour, const float* line, const float* deviations,
                          const GaussNumbers& numbers, int pixels) {
  if (numbers.threshold <= 0.0f) {
    return FinishSharpenAll(colour, line, deviations, numbers, pixels);
  }
  const Sharpening sharpening = {numbers.threshold, numbers.amount};
  float full[3 * kMostFinishedPixels], amounts[3 * kMostFinishedPixels];
  for (int i = 0; i < 3 * pixels; ++i) {
    full[i] = FullDeviation(static_cast<float>(colour[i]), line[i], deviations[i]);
  }
  for (int i = 0; i < 3 * pixels; i += 3) {
    const float amount = sharpening.AmountFor(full[i] + full[i + 1] + full[i + 2]);
    amounts[i] = amount;
    amounts[i + 1] = amount;
    amounts[i + 2] = amount;
  }
  for (int i = 0; i < 3 * pixels; ++i) {
    colour[i] = ToByte(static_cast<float>(colour[i]) - full[i] * amounts[i]);
  }
}

// Another brightness at the same hue and saturation scales all three channels alike. Black has
// none, and becomes grey.
inline void FinishBrightness(std::uint8_t* colour, const float* line, const float* deviations,
                             const GaussNumbers& numbers, int pixels) {
  const Sharpening sharpening = {numbers.threshold, numbers.amount};
  float befores[kMostFinishedPixels], afters[kMostFinishedPixels];
  for (int x = 0; x < pixels; ++x) {
    const float before = Largest(colour + 3 * x);
    const float deviation = FullDeviation(before, line[x], deviations[x]);
    befores[x] = before;
    afters[x] = before - deviation * sharpening.AmountFor(deviation);
  }
  for (int x = 0; x < pixels; ++x) {
    std::uint8_t* const pixel = colour + 3 * x;
    const float black = befores[x] > 0.0f ? 0.0f : 1.0f;
    const float before = befores[x] + black;
    const float after = afters[x];
    const float blue = pixel[0], green = pixel[1], red = pixel[2];
    pixel[0] = ToByte((blue + black) * after / before);
    pixel[1] = ToByte((green + black) * after / before);
    pixel[2] = ToByte((red + black) * after / before);
  }
}

template <class Real>
struct VectorOf;
template <>
struct VectorOf<float> {
  using Type = Floats;
};
template <>
struct VectorOf<double> {
  using Type = Doubles;
};

// Numbers that are worked on together: a few vectors side by side, enough to hide how long an
// addition takes.
template <class Real>
using Vector = typename VectorOf<Real>::Type;
constexpr int kVectors = 3;
template <class Real>
constexpr std::size_t kTogether = kVectors* kLanes<Vector<Real>>;
static_assert(kRowBlock % kTogether<float> == 0);

template <class Real>
[[gnu::always_inline]] inline Vector<Real> Load(const Real* from, int v) {
  return Load<Vector<Real>>(from + static_cast<std::size_t>(v) * kLanes<Vector<Real>>);
}
template <class Real>
[[gnu::always_inline]] inline void Store(const Vector<Real>& vector, Real* to, int v) {
  Store(to + static_cast<std::size_t>(v) * kLanes<Vector<Real>>, vector);
}

// Where the neighbours of the numbers that start at some place are: along a line or across rows.
template <class Image>
struct AlongLine {
  const typename Image::Real* line;
  [[gnu::always_inline]] const typename Image::Real* At(int j) const {
    return line + j * Image::kChannels;
  }
};
template <class Real>
struct AcrossRows {
  const Real* const* rows;
  std::size_t first;
  [[gnu::always_inline]] const Real* At(int j) const { return rows[j] + first; }
};

// The weighted mean of the deviations within a window. `i` is the place from the window's own.
struct WholeWindow {
  template <class Real, class Window>
  [[gnu::always_inline]] static void Deviate(const Window& window, std::size_t i,
                                             const GaussNumbers& numbers,
                                             Vector<Real> (&mean)[kVectors]) {
    Vector<Real> twice[kVectors];
    for (int v = 0; v < kVectors; ++v) {
      twice[v] = 2 * Load(window.At(0) + i, v);
      mean[v] = Vector<Real>{};
    }
    for (int j = 1; j <= numbers.radius; ++j) {
      const Real* const before = window.At(-j) + i;
      const Real* const behind = window.At(j) + i;
      const Real weight = numbers.weights[j];
      for (int v = 0; v < kVectors; ++v) {
        mean[v] += ((Load(before, v) + Load(behind, v)) - twice[v]) * weight;
      }
    }
  }
};

// The same over the neighbours within the threshold alone. It is rounded to a multiple of 2^-36, so
// that lines which differ by a whole number everywhere differ by exactly that number behind the
// first pass: the second then takes or leaves them as exact arithmetic would.
struct LikeNeighbours {
  template <class Real, class Window>
  [[gnu::always_inline]] static void Deviate(const Window& window, std::size_t i,
                                             const GaussNumbers& numbers,
                                             Vector<Real> (&mean)[kVectors]) {
    constexpr Real kRounder = 3.0 * (1 << 15);
    const Real threshold = numbers.threshold;
    const Vector<Real> none = {};
    Vector<Real> centre[kVectors], whole[kVectors];
    for (int v = 0; v < kVectors; ++v) {
      centre[v] = Load(window.At(0) + i, v);
      mean[v] = none;
      whole[v] = numbers.weights[0] - none;
    }
    for (int j = 1; j <= numbers.radius; ++j) {
      const Real* const before = window.At(-j) + i;
      const Real* const behind = window.At(j) + i;
      const Vector<Real> weight = numbers.weights[j] - none;
      for (int v = 0; v < kVectors; ++v) {
        const auto a = Load(before, v) - centre[v];
        const auto b = Load(behind, v) - centre[v];
        const auto takesA = IsWithin(a, threshold);
        const auto takesB = IsWithin(b, threshold);
        mean[v] += ((takesA ? a : none) + (takesB ? b : none)) * weight;
        whole[v] += (takesA ? weight : none) + (takesB ? weight : none);
      }
    }
    for (int v = 0; v < kVectors; ++v) mean[v] = (mean[v] / whole[v] + kRounder) - kRounder;
  }
};

// One row after the other, so that a row's numbers stay in the nearest cache.
template <class Neighbours, class Image, class Real = typename Image::Real>
void BlurLine(const std::uint8_t* bytes, const std::uint8_t* next, const GaussNumbers& numbers,
              Real* scratch, Real* blurred, std::size_t count) {
  const auto ahead = static_cast<std::size_t>(numbers.radius * Image::kChannels);
  for (std::size_t i = 0; i < count + 2 * ahead; ++i) scratch[i] = bytes[i];
  const Real* const line = scratch + ahead;
  for (std::size_t i = 0; i < count; i += kTogether<Real>) {
    __builtin_prefetch(next + 3 * i / Image::kChannels);
    Vector<Real> mean[kVectors];
    Neighbours::template Deviate<Real>(AlongLine<Image>{line}, i, numbers, mean);
    for (int v = 0; v < kVectors; ++v) Store(Load(line + i, v) + mean[v], blurred + i, v);
  }
}

template <class Neighbours, class Image, class Real = typename Image::Real>
void BlurLines(const GaussLines& lines, const GaussNumbers& numbers, Real* scratch,
               Real* const* blurred, std::size_t count) {
  for (int i = 0; i < lines.count; ++i) {
    BlurLine<Neighbours, Image>(lines.bytes[i], lines.next[i], numbers, scratch, blurred[i], count);
  }
}

template <class Neighbours, class Real>
void DeviateRows(const Real* const* rows, std::size_t first, const GaussNumbers& numbers,
                 Real* deviations, std::size_t count) {
  for (std::size_t i = 0; i < count; i += kTogether<Real>) {
    Vector<Real> mean[kVectors];
    Neighbours::template Deviate<Real>(AcrossRows<Real>{rows, first}, i, numbers, mean);
    for (int v = 0; v < kVectors; ++v) Store(mean[v], deviations + i, v);
  }
}

// The pass across the rows, and then the bytes.
template <class Neighbours, class Image, auto kFinish, class Real = typename Image::Real>
void FinishRows(std::uint8_t* const* colours, int rowCount, const Real* const* rows,
                std::size_t first, const GaussNumbers& numbers, int pixels) {
  Real deviations[kMostFinishedPixels];
  const std::size_t count = WholeRowBlocks(static_cast<std::size_t>(pixels * Image::kChannels));
  for (int y = 0; y < rowCount; ++y) {
    DeviateRows<Neighbours>(rows + y, first, numbers, deviations, count);
    kFinish(colours[y], rows[y] + first, deviations, numbers, pixels);
  }
}

constexpr GaussKernelTable kGaussKernels = {
    {PickColours, BlurLines<WholeWindow, FloatImage>,
     FinishRows<WholeWindow, FloatImage, FinishBlur<float>>},
    {PickColours, BlurLines<WholeWindow, FloatImage>,
     FinishRows<WholeWindow, FloatImage, FinishSharpen>},
    {PickBrightness, BlurLines<WholeWindow, FloatPlane>,
     FinishRows<WholeWindow, FloatPlane, FinishBrightness>},
    {PickColours, BlurLines<LikeNeighbours, DoubleImage>,
     FinishRows<LikeNeighbours, DoubleImage, FinishBlur<double>>}};

}  // namespace
}  // namespace kernels
