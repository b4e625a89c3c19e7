// Drawing by lightness over vectors of any width.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/colour/LightnessKernels.h"
#include "filters/pixels/HlsKernelLoops.h"

namespace kernels {
namespace {

[[gnu::always_inline]] inline Bytes Largest(const Planes& planes) {
  return Max(Max(planes.blue, planes.green), planes.red);
}
[[gnu::always_inline]] inline Bytes Smallest(const Planes& planes) {
  return Min(Min(planes.blue, planes.green), planes.red);
}

// --- out of a table

// The pixels of a block with four bytes each, of which the last counts for nothing: as unpacks give
// them, in the order that packs undo.
constexpr int kFours = 4;  // vectors
struct Fours {
  alignas(kVectorBytes) std::uint8_t at[kFours * kVectorBytes];

  // The pixel whose four bytes come first or later in a vector, by their number there.
  static constexpr int PixelOf(int vector, int number) {
    return number / 4 * 16 + 4 * vector + number % 4;
  }
};

[[gnu::always_inline]] inline void Interleave(const Planes& planes, Fours& fours) {
  const Bytes none = {};
  const auto low = (Words)UnpackLow(planes.blue, planes.green);
  const auto high = (Words)UnpackHigh(planes.blue, planes.green);
  const auto lowReds = (Words)UnpackLow(planes.red, none);
  const auto highReds = (Words)UnpackHigh(planes.red, none);
  Store(fours.at, UnpackLow(low, lowReds));
  Store(fours.at + kVectorBytes, UnpackHigh(low, lowReds));
  Store(fours.at + 2 * kVectorBytes, UnpackLow(high, highReds));
  Store(fours.at + 3 * kVectorBytes, UnpackHigh(high, highReds));
}

[[gnu::always_inline]] inline Planes TakeApart(const Bytes (&fours)[kFours]) {
  const auto plane = [&](int shift) __attribute__((always_inline)) {
    return PackQuarters([&](int i) { return (Ints)fours[i] >> shift & 255; });
  };
  return {plane(0), plane(8), plane(16)};
}

struct EntryNumbers {
  std::uint16_t of[kPixels];
};
[[gnu::always_inline]] inline void FindEntries(const Planes& planes, EntryNumbers& numbers) {
  Plane largest, smallest;
  largest.Set(Largest(planes));
  smallest.Set(Smallest(planes));
  for (int i = 0; i < kPixels; ++i) {
    const std::uint16_t high = largest.at[i];
    const auto twice = static_cast<std::uint16_t>(high * (high + 1));
    numbers.of[i] = static_cast<std::uint16_t>((twice >> 1) + smallest.at[i]);
  }
}

[[gnu::always_inline]] inline Block DrawBlock(const Block& block, const DrawnTable& table) {
  const Planes planes = Split(block);
  const double kept = table.Kept();
  const DrawnTable::Drawn* const entries = table.Entries();
  EntryNumbers numbers;
  Fours sources;
  FindEntries(planes, numbers);
  Interleave(planes, sources);
  WriteToMemory(numbers);
  WriteToMemory(sources);
  Bytes drawn[kFours];
#pragma GCC unroll 4
  for (int k = 0; k < kFours; ++k) {
    drawn[k] = BytesOf([&](int i) __attribute__((always_inline)) {
      const Doubles added = LoadFours([&](int n) __attribute__((always_inline)) {
        return &entries[numbers.of[Fours::PixelOf(k, i / 4 + n)]].blue;
      });
      return added + LoadDoubles(sources.at + k * kVectorBytes + i) * kept;
    });
  }
  return Join(TakeApart(drawn));
}

inline void DrawLoop(std::uint8_t* colour, const std::uint8_t* source, int width,
                     const DrawnTable& table) {
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes, source += kBlockBytes) {
    Prefetch(source);
    Prefetch(colour);
    StoreBlock(colour, DrawBlock(LoadBlock(source), table));
  }
  LightnessKernels::Plain().draw(colour, source, width, table);
}

// --- sums

// While a sum stays between two powers of two, it grows by multiples of one unit, its last place,
// and each number that is added is rounded to one, whatever the sum is; but for a number in the
// middle between two. So the rounded numbers may be added in any order. All numbers here are twice
// as large as what they stand for.
class UnitSum {
 public:
  // For a sum from `power` to below twice that.
  explicit UnitSum(double power)
      : rounder_(All<Doubles>(3 * power)), middle_(All<Doubles>(power / (std::int64_t{1} << 52))) {}

  [[gnu::always_inline]] void Add(Doubles number) {
    const Doubles rounded = (number + rounder_) - rounder_;
    inMiddle_ |= Magnitude(number - rounded) == middle_;
    sum_ += rounded;
  }
  bool HadMiddle() const { return IsAny(inMiddle_); }
  double Half() const {
    double sum = 0;
    for (int i = 0; i < kLanes<Doubles>; ++i) sum += sum_[i];
    return sum * 0.5;
  }

 private:
  const Doubles rounder_, middle_;
  Doubles sum_ = {};
  decltype(Doubles{} == Doubles{}) inMiddle_ = {};
};

// The power of two that a positive number reaches.
[[gnu::always_inline]] inline double PowerIn(double number) {
  constexpr std::uint64_t kExponent = 0x7FF0000000000000;
  std::uint64_t bits;
  __builtin_memcpy(&bits, &number, sizeof bits);
  bits &= kExponent;
  __builtin_memcpy(&number, &bits, sizeof bits);
  return number;
}

class LightnessSums {
 public:
  explicit LightnessSums(const LightnessStatistics& statistics)
      : sums_(statistics),
        most_(All<Doubles>(2 * statistics.maximum)),
        least_(All<Doubles>(2 * statistics.minimum)) {}

  // A block of pixels.
  [[gnu::always_inline]] void Add(const std::uint8_t* colour, const std::uint8_t* mask) {
    constexpr double kMost = 256.0 * kPixels;  // that a block adds
    const double power = PowerIn(sums_.sum);
    if (sums_.sum >= 4 * kMost && sums_.sum + kMost < 2 * power &&
        AddInUnits(colour, mask, power)) {
      return;
    }
    AddLightness(colour, mask, kPixels, sums_);
  }

  LightnessStatistics Total() const {
    LightnessStatistics total = sums_;
    for (int i = 0; i < kLanes<Doubles>; ++i) {
      total.maximum = Max(total.maximum, most_[i] * 0.5);
      total.minimum = Min(total.minimum, least_[i] * 0.5);
    }
    return total;
  }

 private:
  // False, and nothing is added, where that would depend on the order.
  [[gnu::always_inline]] bool AddInUnits(const std::uint8_t* colour, const std::uint8_t* mask,
                                         double power) {
    const Planes planes = Split(LoadBlock(colour));
    Plane largest, smallest, weights;
    largest.Set(Largest(planes));
    smallest.Set(Smallest(planes));
    weights.Set(~Load<Bytes>(mask));
    WriteToMemory(largest);
    WriteToMemory(smallest);
    WriteToMemory(weights);
    UnitSum sum(power);
    Doubles total = {};
    for (int i = 0; i < kPixels; i += kLanes<Doubles>) {
      const Doubles weight = LoadDoubles(weights.at + i);
      const Doubles twice = ShareAt(largest.at + i) + ShareAt(smallest.at + i);
      sum.Add(weight * twice);
      total += weight;
      most_ = Max(most_, twice);
      least_ = Min(least_, twice);
    }
    if (sum.HadMiddle()) return false;
    sums_.sum += sum.Half();
    for (int i = 0; i < kLanes<Doubles>; ++i) sums_.total += total[i];
    return true;
  }

  LightnessStatistics sums_;
  Doubles most_, least_;  // twice what they stand for
};

inline void AddLightnessLoop(const std::uint8_t* colour, const std::uint8_t* mask, int width,
                             LightnessStatistics& statistics) {
  LightnessSums sums(statistics);
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes, mask += kPixels) {
    Prefetch(colour);
    sums.Add(colour, mask);
  }
  statistics = sums.Total();
  AddLightness(colour, mask, width, statistics);
}

constexpr LightnessKernels kLightnessLoops = {DrawLoop, AddLightnessLoop};

}  // namespace
}  // namespace kernels
