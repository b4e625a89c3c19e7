// Gaussian filters over wide vectors.
//
// Neighbours in the direction of a pass share most of their windows: a few of them are summed up
// together, so that each vector is loaded once for all. Along the rows this needs rows that lie
// side by side, a lane each. It pays for wide windows; a narrow one lies in a few vectors of its
// row, whose lanes are moved.
//
// Across the rows the sums are first taken in another order, which rounds otherwise and takes half
// as long. Where such a value lies so close to a whole number that its truncation is in doubt, the
// sums of GaussKernelLoops.h decide.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "filters/detail/GaussKernelLoops.h"

namespace kernels {
namespace {

// Neighbours that are summed up together.
constexpr int kNeighbours = 4;
constexpr int kLaneCount = kLanes<Floats>;

// The vectors at one distance on either side of neighbours, which move on by one place at a time.
// `at(n)` is what lies n places behind the first neighbour.
template <int kCount, class Place>
class Sides {
 public:
  [[gnu::always_inline]] explicit Sides(const Place& place) : at(place) {
    for (int i = 0; i < kCount; ++i) before[i] = behind[i] = at(i);
  }

  [[gnu::always_inline]] void MoveTo(int distance) {
    for (int i = kCount - 1; i > 0; --i) before[i] = before[i - 1];
    before[0] = at(-distance);
    for (int i = 0; i + 1 < kCount; ++i) behind[i] = behind[i + 1];
    behind[kCount - 1] = at(kCount - 1 + distance);
  }

  [[gnu::always_inline]] Floats Both(int i) const { return before[i] + behind[i]; }

 private:
  const Place at;
  Floats before[kCount], behind[kCount];
};

// The mean of the deviations as WholeWindow has it. Twice the centre is a number of single
// precision, so that taking it off by a product rounds no more than a subtraction.
template <int kCount, class Place>
[[gnu::always_inline]] inline void DeviateTogether(const Place& at, const GaussNumbers& numbers,
                                                   Floats (&mean)[kCount]) {
  Floats centre[kCount];
  for (int i = 0; i < kCount; ++i) {
    centre[i] = at(i);
    mean[i] = Floats{};
  }
  Sides<kCount, Place> sides(at);
#pragma GCC unroll 4
  for (int j = 1; j <= numbers.radius; ++j) {
    sides.MoveTo(j);
    const auto weight = All<Floats>(numbers.weights[j]);
    for (int i = 0; i < kCount; ++i) {
      mean[i] += MultiplyAdd(centre[i], All<Floats>(-2), sides.Both(i)) * weight;
    }
  }
}

// --- along rows that lie side by side

// Exchanges what lies off the diagonal of squares of 2 * kWay lanes.
template <int kWay, std::size_t... kLane>
[[gnu::always_inline]] inline void Exchange(Floats& a, Floats& b, std::index_sequence<kLane...>) {
  const Floats first =
      __builtin_shufflevector(a, b, (kLane & kWay ? kLaneCount + kLane - kWay : kLane)...);
  b = __builtin_shufflevector(a, b, (kLane & kWay ? kLaneCount + kLane : kLane + kWay)...);
  a = first;
}

// Rows become columns.
template <int kWay = kLaneCount / 2>
[[gnu::always_inline]] inline void Transpose(Floats (&square)[kLaneCount]) {
#pragma GCC unroll 16
  for (int i = 0; i < kLaneCount; ++i) {
    if (i & kWay) continue;
    Exchange<kWay>(square[i], square[i + kWay], std::make_index_sequence<kLaneCount>());
  }
  if constexpr (kWay > 1) Transpose<kWay / 2>(square);
}

// The numbers of the lines from `first` on, number by number.
inline void LayLinesSideBySide(const GaussLines& lines, int first, float* numbers,
                               std::size_t count) {
  const std::uint8_t* bytes[kLaneCount];
  for (int i = 0; i < kLaneCount; ++i) bytes[i] = lines.bytes[Min(first + i, lines.count - 1)];
  for (std::size_t n = 0; n < count; n += kLaneCount) {
    Floats square[kLaneCount];
#pragma GCC unroll 16
    for (int i = 0; i < kLaneCount; ++i) square[i] = LoadFloats(bytes[i] + n);
    Transpose(square);
#pragma GCC unroll 16
    for (int i = 0; i < kLaneCount; ++i) {
      Store(numbers + (n + static_cast<std::size_t>(i)) * kLaneCount, square[i]);
    }
  }
}

// Neighbouring pixels of one channel, from the first one's place on.
template <int kChannels>
[[gnu::always_inline]] inline void BlurNeighbours(const float* first, const GaussNumbers& numbers,
                                                  Floats* blurred) {
  const auto at = [first](int n) __attribute__((always_inline)) {
    return Load<Floats>(first + n * (kChannels * kLaneCount));
  };
  Floats mean[kNeighbours];
  DeviateTogether(at, numbers, mean);
  for (int i = 0; i < kNeighbours; ++i) blurred[i * kChannels] = at(i) + mean[i];
}

// A block of the numbers of all lanes, back into rows.
inline void StoreLanes(Floats (&block)[kRowBlock], float* const* rows, int rowCount,
                       std::size_t at) {
  for (std::size_t part = 0; part < kRowBlock; part += kLaneCount) {
    Floats square[kLaneCount];
#pragma GCC unroll 16
    for (std::size_t i = 0; i < kLaneCount; ++i) square[i] = block[part + i];
    Transpose(square);
#pragma GCC unroll 16
    for (int i = 0; i < kLaneCount; ++i) {
      if (i < rowCount) Store(rows[i] + at + part, square[i]);
    }
  }
}

// As many rows as there are lanes, or fewer, from `first` on.
template <class Image>
void BlurSideBySide(const GaussLines& lines, int first, const GaussNumbers& numbers, float* scratch,
                    float* const* blurred, std::size_t count) {
  constexpr int kChannels = Image::kChannels;
  constexpr int kPixels = static_cast<int>(kRowBlock) / kChannels;
  static_assert(kPixels % kNeighbours == 0);
  const auto ahead = static_cast<std::size_t>(numbers.radius * kChannels);
  const int rowCount = Min(kLaneCount, lines.count - first);
  LayLinesSideBySide(lines, first, scratch, count + 2 * ahead);
  for (std::size_t i = 0; i < count; i += kRowBlock) {
    for (int row = first; row < first + rowCount; ++row) {
      __builtin_prefetch(lines.next[row] + 3 * i / kChannels);
    }
    const float* const at = scratch + (ahead + i) * kLaneCount;
    Floats block[kRowBlock];
    for (int n = 0; n < kPixels * kChannels; n += kNeighbours * kChannels) {
      for (int channel = 0; channel < kChannels; ++channel) {
        BlurNeighbours<kChannels>(at + (n + channel) * kLaneCount, numbers, block + n + channel);
      }
    }
    StoreLanes(block, blurred + first, rowCount, i);
  }
}

// --- along a row by itself

// The lanes from `kFirst` on of vectors that follow each other.
template <int kFirst, std::size_t... kLane>
[[gnu::always_inline]] inline Floats LanesFrom(const Floats* vectors,
                                               std::index_sequence<kLane...>) {
  const Floats* const at = vectors + kFirst / kLaneCount;
  constexpr int kMoved = kFirst % kLaneCount;
  if constexpr (kMoved == 0) {
    return *at;
  } else {
    return __builtin_shufflevector(at[0], at[1], (kMoved + kLane)...);
  }
}

template <class Image, int kRadius>
class NarrowWindow {
 public:
  explicit NarrowWindow(const GaussNumbers& numbers) {
    for (int j = 0; j < kRadius; ++j) weights[j] = All<Floats>(numbers.weights[j + 1]);
  }

  void Blur(const std::uint8_t* bytes, const std::uint8_t* next, float* blurred,
            std::size_t count) const {
    Floats vectors[kVectorCount];
    for (int k = 0; k + 1 < kVectorCount; ++k) vectors[k] = LoadFloats(bytes + k * kLaneCount);
    bytes += (kVectorCount - 1) * kLaneCount;
    for (std::size_t i = 0; i < count; i += kRowBlock) {
      __builtin_prefetch(next + 3 * i / Image::kChannels);
#pragma GCC unroll 6
      for (std::size_t n = i; n < i + kRowBlock; n += kLaneCount) {
        vectors[kVectorCount - 1] = LoadFloats(bytes + n);
        Store(blurred + n, WeightedMean(vectors, std::make_integer_sequence<int, kRadius>()));
        for (int k = 0; k + 1 < kVectorCount; ++k) vectors[k] = vectors[k + 1];
      }
    }
  }

 private:
  static constexpr int kReach = kRadius * Image::kChannels;
  // Those in which the windows of a vector's numbers lie.
  static constexpr int kVectorCount = (2 * kReach + kLaneCount - 1) / kLaneCount + 1;

  template <int kPlace>
  [[gnu::always_inline]] static Floats At(const Floats* vectors) {
    return LanesFrom<kReach + kPlace * Image::kChannels>(vectors,
                                                         std::make_index_sequence<kLaneCount>());
  }

  template <int... j>
  [[gnu::always_inline]] Floats WeightedMean(const Floats* vectors,
                                             std::integer_sequence<int, j...>) const {
    const Floats centre = At<0>(vectors);
    Floats mean = {};
    ((mean +=
      MultiplyAdd(centre, All<Floats>(-2), At<-1 - j>(vectors) + At<1 + j>(vectors)) * weights[j]),
     ...);
    return centre + mean;
  }

  Floats weights[kRadius];  // from distance 1 on
};

// To move lanes by single numbers takes AVX2 longer than to load them anew.
template <class Image>
constexpr int kLeastNarrow = kLaneCount < 16 && Image::kChannels == 1 ? kWideRadius : 1;

template <class Image, int kRadius = kLeastNarrow<Image>>
void BlurLineInVectors(const std::uint8_t* bytes, const std::uint8_t* next,
                       const GaussNumbers& numbers, float* scratch, float* blurred,
                       std::size_t count) {
  if constexpr (kRadius == kWideRadius) {
    BlurLine<WholeWindow, Image>(bytes, next, numbers, scratch, blurred, count);
  } else if (numbers.radius == kRadius) {
    NarrowWindow<Image, kRadius>(numbers).Blur(bytes, next, blurred, count);
  } else {
    BlurLineInVectors<Image, kRadius + 1>(bytes, next, numbers, scratch, blurred, count);
  }
}

// A few rows would leave most lanes empty.
template <class Image>
void BlurLinesInVectors(const GaussLines& lines, const GaussNumbers& numbers, float* scratch,
                        float* const* blurred, std::size_t count) {
  int row = 0;
  for (; 2 * (lines.count - row) >= kLaneCount; row += kLaneCount) {
    BlurSideBySide<Image>(lines, row, numbers, scratch, blurred, count);
  }
  for (; row < lines.count; ++row) {
    BlurLineInVectors<Image>(lines.bytes[row], lines.next[row], numbers, scratch, blurred[row],
                             count);
  }
}

// --- across the rows

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
    return MultiplyAdd(before - blurred, All<Floats>(amount), before);
  }
  [[gnu::always_inline]] Floats Exactly(Floats before, Floats line, Floats deviation) const {
    return before - ((line - before) + deviation) * amount;
  }
  float amount, doubt;
};

template <class Method, int kRows>
class RowFinish {
 public:
  RowFinish(const float* const* bandRows, std::size_t firstNumber, const GaussNumbers& gaussNumbers)
      : rows(bandRows), first(firstNumber), numbers(gaussNumbers), method(gaussNumbers) {}

  // The numbers from place i on, which are the colours from place `at` on.
  [[gnu::always_inline]] void Finish(std::uint8_t* const* colours, std::size_t at,
                                     std::size_t i) const {
    const auto row = [ this, i ](int y) __attribute__((always_inline)) {
      return Load<Floats>(rows[y] + first + i);
    };
    Floats before[kRows], values[kRows];
    SumUp(row, values);
    for (int y = 0; y < kRows; ++y) {
      before[y] = LoadFloats(colours[y] + at);
      values[y] = method.About(before[y], values[y]);
    }
    if (IsInDoubt(values)) {
      Floats deviations[kRows];
      DeviateTogether(row, numbers, deviations);
      for (int y = 0; y < kRows; ++y) values[y] = method.Exactly(before[y], row(y), deviations[y]);
    }
    for (int y = 0; y < kRows; ++y) {
      StoreTruncated(colours[y] + at, Min(Max(values[y], Floats{}), All<Floats>(255)));
    }
  }

 private:
  template <class Place>
  [[gnu::always_inline]] void SumUp(const Place& row, Floats (&sums)[kRows]) const {
    for (int y = 0; y < kRows; ++y) sums[y] = row(y) * numbers.weights[0];
    Sides<kRows, Place> sides(row);
#pragma GCC unroll 4
    for (int j = 1; j <= numbers.radius; ++j) {
      sides.MoveTo(j);
      const auto weight = All<Floats>(numbers.weights[j]);
      for (int y = 0; y < kRows; ++y) sums[y] = MultiplyAdd(sides.Both(y), weight, sums[y]);
    }
  }

  [[gnu::always_inline]] bool IsInDoubt(const Floats (&values)[kRows]) const {
    Floats least = All<Floats>(1);
    for (const Floats& value : values) least = Min(Magnitude(value - Nearest(value)), least);
    return IsAny(least < method.doubt);
  }

  const float* const* const rows;
  const std::size_t first;
  const GaussNumbers& numbers;
  const Method method;
};

template <class Method, int kRows>
void FinishTogether(std::uint8_t* const* colours, const float* const* rows, std::size_t first,
                    const GaussNumbers& numbers, int pixels) {
  const RowFinish<Method, kRows> finish(rows, first, numbers);
  const std::size_t count = 3 * static_cast<std::size_t>(pixels);
  std::size_t i = 0;
  for (; i + kLaneCount <= count; i += kLaneCount) finish.Finish(colours, i, i);
  if (i == count) return;
  std::uint8_t rest[kRows][kLaneCount] = {};
  std::uint8_t* rests[kRows];
  for (int y = 0; y < kRows; ++y) {
    rests[y] = rest[y];
    std::memcpy(rest[y], colours[y] + i, count - i);
  }
  finish.Finish(rests, 0, i);
  for (int y = 0; y < kRows; ++y) std::memcpy(colours[y] + i, rest[y], count - i);
}

// Of methods that need a pixel's channels together.
template <class Image, auto kFinish, int kRows>
void FinishPixels(std::uint8_t* const* colours, const float* const* rows, std::size_t first,
                  const GaussNumbers& numbers, int pixels) {
  float deviations[kRows][kMostFinishedPixels];
  for (std::size_t i = 0; i < static_cast<std::size_t>(pixels * Image::kChannels);
       i += kLaneCount) {
    Floats mean[kRows];
    const auto at = [&](int y) __attribute__((always_inline)) {
      return Load<Floats>(rows[y] + first + i);
    };
    DeviateTogether(at, numbers, mean);
    for (int y = 0; y < kRows; ++y) Store(deviations[y] + i, mean[y]);
  }
  for (int y = 0; y < kRows; ++y) {
    kFinish(colours[y], rows[y] + first, deviations[y], numbers, pixels);
  }
}

// Some rows together, and what is left one by one.
template <auto kFinishSome, auto kFinishOne>
void FinishInGroups(std::uint8_t* const* colours, int rowCount, const float* const* rows,
                    std::size_t first, const GaussNumbers& numbers, int pixels) {
  int y = 0;
  for (; y + kNeighbours <= rowCount; y += kNeighbours) {
    kFinishSome(colours + y, rows + y, first, numbers, pixels);
  }
  for (; y < rowCount; ++y) kFinishOne(colours + y, rows + y, first, numbers, pixels);
}
template <class Method>
constexpr auto kFinishNumbers =
    FinishInGroups<FinishTogether<Method, kNeighbours>, FinishTogether<Method, 1>>;
template <class Image, auto kFinish>
constexpr auto kFinishPixels =
    FinishInGroups<FinishPixels<Image, kFinish, kNeighbours>, FinishPixels<Image, kFinish, 1>>;

inline void FinishSharpenInVectors(std::uint8_t* const* colours, int rowCount,
                                   const float* const* rows, std::size_t first,
                                   const GaussNumbers& numbers, int pixels) {
  (numbers.threshold <= 0.0f
       ? kFinishNumbers<Sharpened>
       : kFinishPixels<FloatImage, FinishSharpen>)(colours, rowCount, rows, first, numbers, pixels);
}

constexpr GaussKernelTable kGaussVectorKernels = [] {
  GaussKernelTable table = kGaussKernels;
  table.blur.blurLines = BlurLinesInVectors<FloatImage>;
  table.blur.finish = kFinishNumbers<Blurred>;
  table.sharpen.blurLines = BlurLinesInVectors<FloatImage>;
  table.sharpen.finish = FinishSharpenInVectors;
  table.sharpenBrightness.blurLines = BlurLinesInVectors<FloatPlane>;
  table.sharpenBrightness.finish = kFinishPixels<FloatPlane, FinishBrightness>;
  return table;
}();

}  // namespace
}  // namespace kernels
