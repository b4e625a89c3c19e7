// Gaussian filters over wide vectors: across the rows first by sums that round otherwise and take
// half as long. Where such a value lies so close to a whole number that its truncation is in doubt,
// the sums of GaussKernelLoops.h decide.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/detail/GaussKernelLoops.h"

namespace kernels {
namespace {

// Levels by which the two sums of a blur may differ: half a unit in the last place of the partial
// sums for each neighbour, and some for the weights.
[[gnu::always_inline]] inline float BlurDoubt(int radius) {
  return static_cast<float>(2 * radius + 12) / (1 << 17);
}

// What a method makes of a pixel, of its blurred value or of line and deviation.
struct Blurred {
  explicit Blurred(const GaussNumbers& numbers) : doubt(BlurDoubt(numbers.radius)) {}
  [[gnu::always_inline]] Floats About(Floats, Floats blurred) const { return blurred; }
  [[gnu::always_inline]] Floats Exactly(Floats, Floats line, Floats deviation) const {
    return line + deviation;
  }
  float doubt;
};
struct Sharpened {
  explicit Sharpened(const GaussNumbers& numbers)
      : amount(numbers.amount),
        doubt((BlurDoubt(numbers.radius) + 1.0f / (1 << 14)) * (__builtin_fabsf(amount) + 1)) {}
  [[gnu::always_inline]] Floats About(Floats before, Floats blurred) const {
    return before - (blurred - before) * amount;
  }
  [[gnu::always_inline]] Floats Exactly(Floats before, Floats line, Floats deviation) const {
    return before - ((line - before) + deviation) * amount;
  }
  float amount, doubt;
};

template <class Method>
class RowFinish {
 public:
  RowFinish(const float* const* rows, std::size_t first, const GaussNumbers& gaussNumbers)
      : window{rows, first}, numbers(gaussNumbers), method(gaussNumbers) {}

  // The pixels' numbers from place i on. Doubt mostly comes in areas.
  [[gnu::always_inline]] void Finish(std::uint8_t* colour, std::size_t i) {
    Floats values[kVectors];
    if (!isInDoubt) {
      SumUp(colour, i, values);
      isInDoubt = IsInDoubt(values);
    }
    if (isInDoubt) {
      Floats deviations[kVectors];
      WholeWindow::Deviate<float>(window, i, numbers, deviations);
      for (int v = 0; v < kVectors; ++v) {
        values[v] = method.Exactly(Before(colour, v), Load(window.At(0) + i, v), deviations[v]);
      }
      isInDoubt = IsInDoubt(values);
    }
    for (int v = 0; v < kVectors; ++v) {
      StoreTruncated(colour + v * kLanes<Floats>, Min(Max(values[v], Floats{}), All<Floats>(255)));
    }
  }

 private:
  [[gnu::always_inline]] static Floats Before(const std::uint8_t* colour, int v) {
    return LoadFloats(colour + v * kLanes<Floats>);
  }

  [[gnu::always_inline]] void SumUp(const std::uint8_t* colour, std::size_t i,
                                    Floats (&values)[kVectors]) const {
    for (int v = 0; v < kVectors; ++v) values[v] = Load(window.At(0) + i, v) * numbers.weights[0];
    for (int j = 1; j <= numbers.radius; ++j) {
      const auto weight = All<Floats>(numbers.weights[j]);
      for (int v = 0; v < kVectors; ++v) {
        const Floats both = Load(window.At(-j) + i, v) + Load(window.At(j) + i, v);
        values[v] = MultiplyAdd(both, weight, values[v]);
      }
    }
    for (int v = 0; v < kVectors; ++v) values[v] = method.About(Before(colour, v), values[v]);
  }

  [[gnu::always_inline]] bool IsInDoubt(const Floats (&values)[kVectors]) const {
    Floats least = All<Floats>(1);
    for (int v = 0; v < kVectors; ++v) {
      least = Min(Magnitude(values[v] - Nearest(values[v])), least);
    }
    return IsAny(least < method.doubt);
  }

  const AcrossRows<float> window;
  const GaussNumbers& numbers;
  const Method method;
  bool isInDoubt = false;
};

template <class Method>
void FinishInVectors(std::uint8_t* colour, const float* const* rows, std::size_t first,
                     const GaussNumbers& numbers, int pixels) {
  RowFinish<Method> row(rows, first, numbers);
  const std::size_t count = 3 * static_cast<std::size_t>(pixels);
  std::size_t i = 0;
  for (; i + kTogether<float> <= count; i += kTogether<float>) row.Finish(colour + i, i);
  if (i == count) return;
  std::uint8_t rest[kTogether<float>] = {};
  __builtin_memcpy(rest, colour + i, count - i);
  row.Finish(rest, i);
  __builtin_memcpy(colour + i, rest, count - i);
}

inline void FinishSharpenInVectors(std::uint8_t* colour, const float* const* rows,
                                   std::size_t first, const GaussNumbers& numbers, int pixels) {
  (numbers.threshold <= 0.0f
       ? FinishInVectors<Sharpened>
       : FinishRows<WholeWindow, FloatImage, FinishSharpen>)(colour, rows, first, numbers, pixels);
}

constexpr GaussKernelTable kGaussVectorKernels = [] {
  GaussKernelTable table = kGaussKernels;
  table.blur.finish = FinishInVectors<Blurred>;
  table.sharpen.finish = FinishSharpenInVectors;
  return table;
}();

}  // namespace
}  // namespace kernels
