// The kernels of every vector unit against the plain ones, byte for byte. What the plain ones give
// is tested with the filters.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <typeinfo>

#include "filters/colour/BalanceKernels.h"
#include "filters/colour/HueSectors.h"
#include "filters/colour/LightnessKernels.h"
#include "filters/colour/MixerKernels.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/detail/DustKernels.h"
#include "filters/detail/GaussKernels.h"
#include "filters/frames/EdgeFadeKernels.h"
#include "filters/frames/FrameKernels.h"
#include "filters/geometry/rotation/ShearKernels.h"
#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/ConvolutionRow.h"
#include "filters/pixels/HlsKernels.h"
#include "filters/pixels/LuminanceKernels.h"
#include "filters/pixels/PointKernelTable.h"
#include "filters/pixels/resampling/BicubicKernels.h"
#include "filters/pixels/resampling/ReductionKernels.h"
#include "tests/filters/KernelRows.h"

namespace {

using kernels::SimdLevel;
using testing_support::ExpectLevelsEqual;
using testing_support::ExpectLevelsEqualAtEveryWidth;
using testing_support::kNextRow;
using testing_support::RandomRow;
using testing_support::Row;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// How many functions of a table are the same at both levels.
template <class Table>
int Shared(SimdLevel a, SimdLevel b) {
  using Functions = std::array<void*, sizeof(Table) / sizeof(void*)>;
  const auto first = std::bit_cast<Functions>(kernels::Choose<Table>(a));
  const auto second = std::bit_cast<Functions>(kernels::Choose<Table>(b));
  int shared = 0;
  for (std::size_t i = 0; i < first.size(); ++i) shared += first[i] == second[i];
  return shared;
}

// But for so many, which the wider unit has from the other one.
template <class Table>
void ExpectOwn(int shared = 0) {
  EXPECT_EQ(Shared<Table>(SimdLevel::Plain, SimdLevel::Avx2), 0) << typeid(Table).name();
  EXPECT_EQ(Shared<Table>(SimdLevel::Avx2, SimdLevel::Avx512), shared) << typeid(Table).name();
}

TEST(KernelLevels, HaveKernelsOfTheirOwn) {
  ExpectOwn<kernels::BalanceKernels>();
  ExpectOwn<kernels::LightnessKernels>();
  ExpectOwn<kernels::MixerKernels>();
  ExpectOwn<kernels::YiqKernels>();
  ExpectOwn<kernels::GaussKernelTable>();
  ExpectOwn<kernels::EdgeFadeKernels>();
  ExpectOwn<kernels::FrameKernels>();
  ExpectOwn<kernels::ByteTableKernels>();
  ExpectOwn<kernels::ConvolutionKernels>();
  ExpectOwn<kernels::HlsKernelTable>();
  ExpectOwn<kernels::LuminanceKernelTable>();
  ExpectOwn<kernels::PointKernelTable>();
  ExpectOwn<kernels::BicubicKernels>();
  ExpectOwn<kernels::ReductionKernels>();
  ExpectOwn<kernels::DustKernelTable>(2);
  ExpectOwn<kernels::ShearKernelTable>(1);
}

TEST(KernelLevels, TheEnvironmentOnlyLimits) {
  using kernels::LimitSimdLevel;
  const struct {
    SimdLevel highest;
    const char* limit;
    SimdLevel level;
  } kCases[] = {{SimdLevel::Avx512, nullptr, SimdLevel::Avx512},
                {SimdLevel::Avx512, "avx512", SimdLevel::Avx512},
                {SimdLevel::Avx512, "avx2", SimdLevel::Avx2},
                {SimdLevel::Avx512, "plain", SimdLevel::Plain},
                {SimdLevel::Avx512, "AVX2", SimdLevel::Avx512},
                {SimdLevel::Avx2, "avx512", SimdLevel::Avx2},
                {SimdLevel::Plain, "avx2", SimdLevel::Plain}};
  for (const auto& c : kCases) EXPECT_EQ(LimitSimdLevel(c.highest, c.limit), c.level);
  const SimdLevel active = LimitSimdLevel(kernels::ProcessorSimdLevel(), std::getenv("FXBOX_SIMD"));
  EXPECT_EQ(kernels::ActiveSimdLevel(), active);
  EXPECT_EQ(&kernels::Choose<kernels::PointKernelTable>(),
            &kernels::Choose<kernels::PointKernelTable>(active));
}

// --- colours

// Every grey and every so manieth of all other colours, enough to meet all sectors, limits and
// ties: a fused or reordered operation shows in thousands of them.
Row Colours(int step) {
  Row row;
  for (int i = 0; i < 1 << 24; i += i < 256 ? 1 : step) {
    const int colour = i < 256 ? i * 0x010101 : i;
    for (const int shift : {0, 8, 16}) row.push_back(static_cast<std::uint8_t>(colour >> shift));
  }
  return row;
}

int WidthOf(const Row& row) {
  return static_cast<int>(row.size() / 3);
}

// Shifts alone, all sliders, and some hues alone that are recoloured.
TEST(KernelLevels, Balance) {
  const Row row = Colours(43);
  for (const kernels::BalanceSettings& settings :
       {kernels::BalanceSettings{
            .red = {20, {30, -60}}, .green = {0, {0, 0, 99}}, .blue = {-30, {}}},
        {.red = {20, {30, -60}},
        .green = {0, {0, 0, 99}},
        .blue = {-30, {}},
        .lightness = {5, {10, 0, -90}},
        .saturation = {-20, {60, 100, 0, -100}}},
        {.green = {7, {}}, .saturation = {0, {0, 0, 0, 0, 45}}}}) {
    kernels::Balance balance;
    kernels::BuildBalance(settings, balance);
    const auto change = [&](auto& k, std::uint8_t* at, int width) {
      k.balance(at, width, balance);
    };
    ExpectLevelsEqual<kernels::BalanceKernels>(
        row, [&](auto& k, std::uint8_t* at) { change(k, at, WidthOf(row)); });
    ExpectLevelsEqualAtEveryWidth<kernels::BalanceKernels>(change);
  }
}

TEST(KernelLevels, Hls) {
  kernels::HueFactors factors;
  kernels::HueChanges changes;
  for (int h = 0; h < 360; ++h) {
    factors.byHue[h] = h == 17 ? 101.0 : h == 200 ? kInfinity : h / 150.0;
    changes.byHue[h] = {h * 7 % 361 - 180.0, h / 150.0, (h * 11 % 201 - 100) / 100.0};
  }
  changes.greyLightness = 0.13;
  const auto change = [&](auto& k, std::uint8_t* at, int width) {
    k.saturate(at, width, 0.7);
    k.saturateByHue(at + kNextRow, width, factors);
    k.changeByHue(at + 2 * kNextRow, width, changes);
  };
  ExpectLevelsEqualAtEveryWidth<kernels::HlsKernelTable>(change);
  // Also every pair of a largest and a smallest channel, which all saturations come from.
  Row row = Colours(43);
  for (int pair = 0; pair < 1 << 16; ++pair) {
    const auto first = static_cast<std::uint8_t>(pair);
    row.insert(row.end(), {first, static_cast<std::uint8_t>(pair >> 8), first});
  }
  const int width = WidthOf(row);
  using Run = std::function<void(const kernels::HlsKernelTable&, std::uint8_t*)>;
  std::vector<Run> runs = {[&](auto& k, auto* at) { k.saturateByHue(at, width, factors); },
                           [&](auto& k, auto* at) { k.changeByHue(at, width, changes); }};
  for (const double factor : {1.0, 0.0, 0.37, 2.5, -0.5, 1e-6, kInfinity}) {
    runs.push_back([=](auto& k, auto* at) { k.saturate(at, width, factor); });
  }
  for (const Run& run : runs) ExpectLevelsEqual<kernels::HlsKernelTable>(row, run);
}

TEST(KernelLevels, Luminance) {
  std::mt19937 random(6);
  const auto below = [&random](unsigned end) { return static_cast<double>(random() % end); };
  kernels::ByteTable table;
  kernels::LuminanceFactors factors;
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = static_cast<std::uint8_t>(random());
    factors[i] = i % 9 == 0 ? 1000.0 : below(3000) / (i % 2 ? 510.0 : 1000.0);
  }
  const kernels::GreyMoves moves = {kernels::BuildGreyMove(0.37), kernels::BuildGreyMove(-1),
                                    kernels::BuildGreyMove(2.1)};
  const auto change = [&](auto& k, std::uint8_t* at, int width, std::ptrdiff_t next) {
    k.luminance(at + 3 * next, at, width);
    k.replaceLuminance(at, width, table);
    k.scaleByLuminance(at + next, width, factors);
    k.moveFromGrey(at + 2 * next, width, moves);
  };
  ExpectLevelsEqualAtEveryWidth<kernels::LuminanceKernelTable>(
      [&](auto& k, std::uint8_t* at, int width) { change(k, at, width, kNextRow); });
  // Most pairs of a luminance and a level.
  ExpectLevelsEqual<kernels::LuminanceKernelTable>(
      RandomRow(1000000, 7), [&](auto& k, std::uint8_t* at) { change(k, at, 80000, 240000); });
  kernels::ByteTable squares;
  for (std::size_t i = 0; i < 256; ++i) squares[i] = static_cast<std::uint8_t>(i * i / 255);
  const Row row = Colours(61);
  ExpectLevelsEqual<kernels::YiqKernels>(
      row, [&](auto& k, std::uint8_t* at) { k.mapLuminance(at, WidthOf(row), squares); });
  ExpectLevelsEqualAtEveryWidth<kernels::YiqKernels>(
      [&](auto& k, std::uint8_t* at, int width) { k.mapLuminance(at, width, table); });
}

// To another row and in place.
TEST(KernelLevels, ByteTables) {
  constexpr kernels::ByteTableKernels kPlain = {
      [](auto* to, auto* from, std::size_t count, const kernels::ByteTable& table) {
        std::transform(from, from + count, to, [&](std::uint8_t before) { return table[before]; });
      },
      [](auto* to, auto* from, int width, const kernels::ChannelTables& t) {
        const kernels::ByteTable* const tables[] = {&t.blue, &t.green, &t.red};
        for (int i = 0; i < 3 * width; ++i) to[i] = (*tables[i % 3])[from[i]];
      }};
  kernels::ByteTable tables[3];
  std::mt19937 random(4);
  for (auto& table : tables) {
    for (std::uint8_t& entry : table) entry = static_cast<std::uint8_t>(random());
  }
  const kernels::ChannelTables channels{tables[0], tables[1], tables[2]};
  ExpectLevelsEqualAtEveryWidth(kPlain, [&](auto& k, std::uint8_t* at, int width) {
    const auto bytes = static_cast<std::size_t>(std::max(width, 0) * 3);
    k.mapBytes(at, at, bytes, tables[0]);
    k.mapBytes(at + kNextRow, at + 2 * kNextRow, bytes, tables[1]);
    k.mapChannels(at + 3 * kNextRow, at + 3 * kNextRow, width, channels);
    k.mapChannels(at + 4 * kNextRow, at + 5 * kNextRow, width, channels);
  });
}

TEST(KernelLevels, DrawingByLightness) {
  const auto table = std::make_unique<kernels::DrawnTable>();
  for (const int percent : {0, 80, 100}) {
    table->Fill(kernels::MakeDuoColours({120, 40, 0}, {30, 180, 255}, percent));
    ExpectLevelsEqualAtEveryWidth<kernels::LightnessKernels>(
        [&](auto& k, std::uint8_t* at, int width) {
          k.draw(at + kNextRow, at, width, *table);
          k.draw(at, at, width, *table);
        });
    const Row row = RandomRow(9000, 1);
    ExpectLevelsEqual<kernels::LightnessKernels>(
        row, [&](auto& k, std::uint8_t* at) { k.draw(at, at, 3000, *table); });
  }
}

// Sums of every size, small ones among them, where many numbers lie in the middle between two that
// the sum can grow by, and such as pass a power of two.
TEST(KernelLevels, LightnessesAddUpToTheLastBit) {
  const int width = 700;
  for (unsigned seed = 0; seed < 300; ++seed) {
    Row row = RandomRow(4 * width, seed);
    if (seed % 3 == 0) std::fill(row.begin() + 3 * width, row.end(), seed % 2);
    for (std::size_t i = 0; i < 3 * width && seed % 5 == 0; ++i) {
      row[i] = static_cast<std::uint8_t>(100 + row[i] % 8);
    }
    kernels::LightnessStatistics first;
    first.sum = seed % 7 ? 600.0 * seed : std::ldexp(1.0, static_cast<int>(17 + seed % 16)) - 9000;
    first.total = 1e6;
    ExpectLevelsEqual<kernels::LightnessKernels>(row, [&](auto& k, std::uint8_t* at) {
      kernels::LightnessStatistics found = first;
      for (const int count : {width, 200, 63, 1, 0}) {
        k.addLightness(at, at + 3 * width, count, found);
      }
      std::memcpy(at, &found, sizeof found);
    });
    ASSERT_FALSE(HasFailure()) << seed;
  }
}

kernels::ChannelRecipe RandomRecipe(std::mt19937& random, int most) {
  const auto weight = [&] {
    return static_cast<std::int32_t>(random() % (2u * static_cast<unsigned>(most) + 1)) - most;
  };
  kernels::ChannelRecipe recipe{.blue = weight(), .green = weight(), .red = weight()};
  const std::int64_t sum = std::int64_t{recipe.blue} + recipe.green + recipe.red;
  if (random() % 2 && sum > 0) recipe.divisor = sum;
  if (random() % 2) recipe.constant = weight();
  return recipe;
}

// Weights as dialogs offer them, as large as the fast loop takes them, and beyond.
TEST(KernelLevels, Mixer) {
  std::mt19937 random(7);
  for (int run = 0; run < 400; ++run) {
    const int most = run % 8 == 0 ? 1 : run % 8 == 1 ? 2667 : run % 8 == 2 ? kMax / 2 : 200;
    kernels::Mixture mixture{RandomRecipe(random, most), RandomRecipe(random, most),
                             RandomRecipe(random, most)};
    if (run % 5 == 0) mixture.green = mixture.red = mixture.blue;
    if (run % 7 == 0) mixture.green = kernels::kKeepGreen;
    if (run == 3) mixture.red.constant = std::numeric_limits<std::int64_t>::max() / 2;
    ExpectLevelsEqual<kernels::MixerKernels>(
        RandomRow(900, static_cast<unsigned>(run)),
        [&](auto& k, std::uint8_t* at) { k.mix(at + 96 + run % 64, run % 200 - 1, mixture); });
  }
}

// All multiples of all divisors that dialogs can make: one too few shows at each of them.
TEST(KernelLevels, MixersTruncateQuotientsExactly) {
  Row ramp;
  for (int i = 0; i < 3 * 256; ++i) ramp.push_back(static_cast<std::uint8_t>(i / 3));
  for (int weight = -600; weight <= 600; ++weight) {
    for (const int divisor : {100, weight > 0 ? weight : 1, 599}) {
      const kernels::ChannelRecipe recipe{
          .red = weight, .divisor = divisor, .constant = weight < 0 ? 255 : 0};
      ExpectLevelsEqual<kernels::MixerKernels>(ramp, [&](auto& k, std::uint8_t* at) {
        k.mix(at, 256, {recipe, recipe, recipe});
      });
    }
  }
}

// --- points

constexpr kernels::PointKernelTable kPoints = {
    kernels::Sepia, kernels::BlackWhite, kernels::ShiftColours, kernels::Invert,
    kernels::Fade,  kernels::InvertMask, kernels::PutBackground};

// Every pair of two channels, the third between; grey pixels among them pair each lightness with
// each byte. Behind them, the second of each pair alone, for a mask.
Row AllPairs() {
  Row row;
  for (int i = 0; i < 1 << 16; ++i) {
    const int a = i >> 8, b = i & 255;
    for (const int channel : {a, b, a ^ (b * 5 & 255)}) {
      row.push_back(static_cast<std::uint8_t>(channel));
    }
  }
  for (int i = 0; i < 1 << 16; ++i) row.push_back(static_cast<std::uint8_t>(i));
  return row;
}

TEST(KernelLevels, PointsInRowsOfEveryWidth) {
  ExpectLevelsEqualAtEveryWidth(kPoints, [](auto& k, std::uint8_t* at, int width) {
    const auto count = static_cast<std::size_t>(std::max(width, 0));
    k.sepia(at, width, 90);
    k.blackWhite(at, width, 70);
    k.shiftColours(at, width, {17, -200, 90});
    k.invert(at + kNextRow, count, 37);
    k.fade(at + kNextRow + count, count, 90);
    for (const int percent : {-1, 0, 30, 100}) {
      // In place, and from rows that stay.
      for (std::uint8_t* const from : {at, at + 4 * kNextRow}) {
        k.invertMask({at, at + kNextRow}, {from, from + kNextRow}, width, {1, 128, 255}, percent);
        k.putBackground({at + 2 * kNextRow, at + 3 * kNextRow}, {from, from + kNextRow}, width,
                        {180, 128, 255}, percent);
      }
    }
  });
}

TEST(KernelLevels, PointsOfEveryPairAtEveryShare) {
  const Row row = AllPairs();
  constexpr int kWidth = 1 << 16;
  for (int share = 0; share < 256; ++share) {
    ExpectLevelsEqual(kPoints, row, [&](auto& k, std::uint8_t* at) {
      k.sepia(at, kWidth, static_cast<std::uint8_t>(share));
      k.fade(at + 3 * kWidth, 256, static_cast<std::uint8_t>(share));
    });
  }
  for (int percent = -1; percent <= 101; ++percent) {
    const kernels::Colour fill =
        percent % 2 ? kernels::Colour{0, 128, 255} : kernels::Colour{1, 77};
    const auto expectEqual = [&](auto run) {
      ExpectLevelsEqual(kPoints, row,
                        [&](auto& k, std::uint8_t* at) { run(k, at, at + 3 * kWidth); });
    };
    expectEqual([&](auto& k, auto* at, auto*) { k.blackWhite(at, kWidth, percent); });
    expectEqual([&](auto& k, auto* at, auto* mask) {
      k.invertMask({at, mask}, {at, mask}, kWidth, fill, percent);
    });
    expectEqual([&](auto& k, auto* at, auto* mask) {
      k.putBackground({at, mask}, {at, mask}, kWidth, fill, percent);
    });
  }
}

// The grey of every colour there is.
TEST(KernelLevels, GreyOfEveryColour) {
  for (int blue = 0; blue < 256; ++blue) {
    Row row(3 << 16, static_cast<std::uint8_t>(blue));
    for (std::size_t i = 0; i < 1 << 16; ++i) {
      row[3 * i + 1] = static_cast<std::uint8_t>(i >> 8);
      row[3 * i + 2] = static_cast<std::uint8_t>(i);
    }
    ExpectLevelsEqual(kPoints, row,
                      [](auto& k, std::uint8_t* at) { k.blackWhite(at, 1 << 16, 100); });
  }
}

TEST(KernelLevels, EveryByteThroughEveryShiftAndPercentage) {
  Row row;
  for (int i = 0; i < 3 * 256; ++i) row.push_back(static_cast<std::uint8_t>(i / 3));
  std::vector<int> numbers = {kMax, -kMax - 1};
  for (int number = -300; number <= 300; ++number) numbers.push_back(number);
  for (const int number : numbers) {
    const int shift = std::clamp(number, -255, 255);
    ExpectLevelsEqual(kPoints, row, [&](auto& k, std::uint8_t* at) {
      k.shiftColours(at, 256, {shift, -shift, shift / 2});
      k.blackWhite(at, 256, number);
      k.invertMask({at, at + 300}, {at, at + 300}, 99, {1, 128, 255}, number);
      k.putBackground({at + 400, at + 750}, {at + 400, at + 750}, 18, {1, 128, 255}, number);
    });
    if (std::abs(number / 2) > 150) continue;
    ExpectLevelsEqual(kPoints, row,
                      [&](auto& k, std::uint8_t* at) { k.invert(at, row.size(), number); });
  }
}

// --- neighbours

constexpr const kernels::KernelTable* kConvolutions[] = {
    &kernels::kSharpenTable, &kernels::kSoftenTable, &kernels::kFindEdgesTable,
    &kernels::kEmbossTable};

// Three rows with a pixel on either side, and what does not count in them: at both ends, and with
// `masked` in runs, so that blocks without any occur.
struct ConvolutionRows {
  ConvolutionRows(int rowWidth, unsigned seed, bool masked) : width(rowWidth) {
    const auto bytes = 3 * static_cast<std::size_t>(width) + 6;
    for (int i = 0; i < 3; ++i) {
      colour[i] = RandomRow(bytes + kernels::kConvolutionPadding, seed + static_cast<unsigned>(i));
      nothing[i].assign(colour[i].size(), 0);
      const Row mask = RandomRow(bytes / 3, seed + 7);
      for (std::size_t x = 0; x < mask.size(); ++x) {
        const bool isEnd = x == 0 || x == mask.size() - 1;
        if (isEnd || (masked && x / 50 % 2 == 0 && mask[x] % 3 == 0)) {
          std::fill_n(&nothing[i][3 * x], 3, std::uint8_t{255});
        }
      }
      view.colour[i] = colour[i].data() + 3;
      view.nothing[i] = nothing[i].data() + 3;
    }
    view.anyNothing = masked;
    std::uint8_t* const any = colour[2].data();
    view.ahead = {any, any, any, any};
  }
  void ExpectEqual(const kernels::KernelTable& table, double strength) const {
    const auto kernel = kernels::BlendKernel(table, strength);
    SCOPED_TRACE(testing::PrintToString(std::pair(strength, width)));
    ExpectLevelsEqual<kernels::ConvolutionKernels>(
        Row(3 * static_cast<std::size_t>(width) + 400, 77),
        [&](auto& k, std::uint8_t* at) { k.convolveRow(kernel, view, at + 200, width); });
  }

  int width;
  Row colour[3], nothing[3];
  kernels::ConvolutionRows view;
};

TEST(KernelLevels, Convolution) {
  for (const kernels::KernelTable* table : kConvolutions) {
    for (const bool masked : {false, true}) {
      for (int strength = 0; strength <= 255; ++strength) {
        ConvolutionRows(400, static_cast<unsigned>(strength), masked).ExpectEqual(*table, strength);
      }
      for (const double strength :
           {6.25, 33.3, 1e-7, 300.0, 12345.678, kInfinity, -kInfinity, -40.5, std::nan("")}) {
        ConvolutionRows(400, 5, masked).ExpectEqual(*table, strength);
      }
      for (int width = 1; width <= 100; ++width) {
        ConvolutionRows(width, 11, masked).ExpectEqual(*table, width % 2 ? 77 : 77.7);
      }
    }
  }
  ExpectLevelsEqualAtEveryWidth<kernels::ConvolutionKernels>(
      [](auto& k, std::uint8_t* at, int width) { k.spreadNothing(at, at + kNextRow, width); });
}

// The sums that the tables can reach, at every whole strength: upright stripes with a centre of
// every level, and ends around it. The quotient of the fast kernels is the exact one.
TEST(KernelLevels, ConvolutionOfEverySumAtEveryStrength) {
  ConvolutionRows rows(5 * 256, 1, false);
  for (std::size_t x = 1; x <= 5 * 256; ++x) {
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t byte = i == 1 ? (x - 1) % 256 : x / 256 * 64 + i * 93;
      std::fill_n(&rows.colour[i][3 * x], 3, static_cast<std::uint8_t>(byte));
    }
  }
  for (const kernels::KernelTable* table : kConvolutions) {
    for (int strength = 0; strength <= 255; ++strength) rows.ExpectEqual(*table, strength);
  }
}

// Eleven rows, the first of which may lie outside the picture, with the marks of the middle one.
TEST(KernelLevels, Dust) {
  constexpr kernels::DustLimits kLimits[] = {{45, 5},    {90, 15},   {200, 40}, {0, 5},
                                             {766, 120}, {766, 121}, {1, 0},    {0, -1}};
  for (int width = 1; width <= 140; ++width) {
    const auto count = static_cast<std::size_t>(width);
    const Row colour = RandomRow(3 * count * kernels::kDustRows, static_cast<unsigned>(width));
    const std::size_t stride = kernels::kDustReach + count + kernels::kDustPadding;
    const std::size_t bytes = stride * kernels::kDustRows * sizeof(std::uint16_t);
    for (const kernels::DustLimits& limits : kLimits) {
      SCOPED_TRACE(testing::PrintToString(std::pair(width, limits.tolerance)));
      // The marks, and behind them the sums.
      ExpectLevelsEqual<kernels::DustKernelTable>(
          Row(count + 64 + bytes, 77), [&](auto& k, std::uint8_t* marks) {
            std::vector<std::uint16_t> sums(stride * kernels::kDustRows, kernels::kNoSum);
            const std::uint16_t* rows[kernels::kDustRows];
            for (std::size_t y = 0; y < kernels::kDustRows; ++y) {
              std::uint16_t* const row = &sums[y * stride + kernels::kDustReach];
              if (y >= count % 4) k.addChannels(&colour[3 * count * y], width, row);
              rows[y] = row;
            }
            k.findDust(rows, width, limits, marks);
            std::memcpy(marks + count + 64, sums.data(), bytes);
          });
    }
  }
}

// --- frames

TEST(KernelLevels, EdgeFade) {
  std::vector<double> ways;
  for (int i = 0; i < 400; ++i) ways.push_back((i * 37 % 401) / 400.0);
  const std::vector<float> about(ways.begin(), ways.end());
  const kernels::FadeNumbers numbers = {ways.data() + 5, about.data() + 5};
  for (int count = 0; count < 300; ++count) {
    const double across = (count + 1) / 300.0;
    ExpectLevelsEqual<kernels::EdgeFadeKernels>(
        RandomRow(800, static_cast<unsigned>(count)), [&](auto& k, std::uint8_t* at) {
          k.byShares(at + 9, numbers, count);
          k.byWays(at + 10, numbers, across, count);
          k.byDistance(at + 11, numbers, across, count);
          k.mirroredByWays({at + 3, at + 720}, numbers, across, count);
          k.mirroredByDistance({at + 20, at + 701}, numbers, across, count);
        });
  }
}

// The sizes of real pictures, where neighbours differ by little and many products come close to a
// whole number.
TEST(KernelLevels, EdgeFadeInLargePictures) {
  constexpr int kWidth = 3001;
  std::vector<double> ways;
  for (int x = 0; x < kWidth; ++x) ways.push_back(1 - std::min((x + 0.5) / 1000, 1.0));
  const std::vector<float> about(ways.begin(), ways.end());
  const kernels::FadeNumbers numbers = {ways.data(), about.data()};
  for (int y = 0; y < 1000; ++y) {
    const double across = 1 - (y + 0.5) / 1000;
    Row row(kWidth, static_cast<std::uint8_t>(y % 3 == 0 ? 0 : y));
    std::fill(row.begin() + 2000, row.end(), static_cast<std::uint8_t>(y % 2));
    ExpectLevelsEqual<kernels::EdgeFadeKernels>(row, [&](auto& k, std::uint8_t* at) {
      (y % 2 ? k.byDistance : k.byWays)(at, numbers, across, 1000);
      (y % 2 ? k.mirroredByWays : k.mirroredByDistance)({at + 1000, at + kWidth}, numbers, across,
                                                        1000);
    });
  }
}

// With masks that are alike for a while, and weights as a relief has them and beyond.
TEST(KernelLevels, Frames) {
  for (const int wide : {0, 1 << 19, kMax}) {
    ExpectLevelsEqualAtEveryWidth<kernels::FrameKernels>([&](auto& k, std::uint8_t* at, int width) {
      kernels::MaskWeights weights = {
          {8192, -8192, 4096, 1, 0, -1, -4096, 819, -8191}, 126113, 17004};
      if (wide) weights.relief[width & 7] = wide;
      std::uint8_t* const masks[] = {at + kNextRow, at + 2 * kNextRow, at + 3 * kNextRow};
      std::fill_n(masks[0], std::clamp(width - 100, 0, 40), width % 2 ? 0 : 255);
      std::fill_n(masks[1] + 50, std::clamp(width - 100, 0, 50), width % 3 ? 0 : 255);
      std::uint8_t* to = at + 4 * kNextRow;
      for (const auto pass : {k.smooth, k.relief, k.grow, k.blur, k.fraction}) {
        const Row behind(to + std::max(width, 0), to + 250);
        pass(to, {masks[0], masks[1], masks[2]}, width, weights);
        ASSERT_TRUE(std::equal(behind.begin(), behind.end(), to + std::max(width, 0)));
        to += 250;
      }
      k.compose(at, masks[1], masks[2], masks[0], width);
      k.addRelief(masks[2], masks[0], width, width % 2 != 0);
    });
  }
  constexpr int kPixels = 1 << 16;  // every pair of masks
  Row row = RandomRow(8 * kPixels, 5);
  for (std::size_t i = 0; i < kPixels; ++i) {
    row[6 * kPixels + i] = static_cast<std::uint8_t>(i);
    row[7 * kPixels + i] = static_cast<std::uint8_t>(i >> 8);
  }
  ExpectLevelsEqual<kernels::FrameKernels>(row, [&](auto& k, std::uint8_t* at) {
    k.compose(at, at + 6 * kPixels, at + 3 * kPixels, at + 7 * kPixels, kPixels);
  });
}

// --- shears

using kernels::Quad;

constexpr kernels::ShearKernelTable kShears = {
    kernels::JoinQuads, kernels::SplitQuads, kernels::TransposeQuads,
    [](const Quad* p, const Quad* c, Quad* result, int count, kernels::PixelPart part) {
      for (int i = 0; i < count; ++i) result[i] = kernels::BlendQuads(p[i], c[i], part);
    },
    [](const Quad* p, const Quad* c, Quad* result, int count, kernels::PixelParts parts) {
      for (int i = 0; i < count; ++i) {
        result[i] = kernels::BlendQuads(p[i], c[i], {parts.of32[4 * i], parts.of16384[i]});
      }
    }};

// Quads lie from byte 0, 4000 and 8000 on in the row; the rest is a guard.
template <class Run>
void ExpectEqualShears(int seed, Run run) {
  ExpectLevelsEqual(
      kShears, RandomRow(12000, static_cast<unsigned>(seed)), [&](auto& k, std::uint8_t* bytes) {
        const auto quads = [&](int at) { return reinterpret_cast<Quad*>(bytes + at); };
        run(k, bytes, quads(0), quads(4000), quads(8000));
      });
}

TEST(KernelLevels, ShearedRowsOfAllWidths) {
  for (int n = 0; n <= 100; ++n) {
    const int odd = 4000 + n % 7;
    ExpectEqualShears(n, [&](auto& k, std::uint8_t* bytes, Quad*, Quad*, Quad* quads) {
      k.join(bytes + odd, bytes + odd + 3 * n, quads + 1, n);
      k.split(quads + 300, bytes + odd, bytes + odd + 3 * n + 64, n);
    });
    ExpectEqualShears(n, [&](auto& k, std::uint8_t*, Quad* from, Quad* to, Quad*) {
      k.transpose(from, 30, to, 31, n % 29, n / 4);
      k.transpose(from, 30, to + 970, -31, n / 4, n % 29);
    });
  }
}

// Masks that are equal, that are not, and ends of all kinds; parts of all sizes.
TEST(KernelLevels, ShearsBlendAnyMasks) {
  for (int round = 0; round < 600; ++round) {
    ExpectEqualShears(round, [&](auto& k, std::uint8_t* bytes, Quad* p, Quad* c, Quad* result) {
      std::mt19937 random(static_cast<unsigned>(round));
      std::uint8_t of32[4 * 100];
      std::int32_t of16384[100];
      for (int i = 0; i < 100; ++i) {
        of16384[i] =
            static_cast<std::int32_t>(random() % 8 ? random() % 16385 : random() % 2 * 16384);
        std::fill_n(of32 + 4 * i, 4, std::min(31, of16384[i] / 512));
        if (round % 3 == 0 || (round % 3 == 1 && random() % 16)) {
          bytes[4 * i + 3] = bytes[4003 + 4 * i];
        }
        p[i] = std::min(p[i], kernels::kNothing);
        c[i] = std::min(c[i], kernels::kNothing);
      }
      const int n = round % 101;
      k.blend(p, c, result, n, {of32[0], of16384[0]});
      k.blendEach(p, c, result + 200, n, {of32, of16384});
    });
  }
}

// --- reduction and enlargement

// Runs of one number of taps in any rows, as many as sums allow or few: of the same weights and of
// others, side by side, at growing distances and in no order, up to the row's last pixel.
struct Windows {
  Windows(int turn, std::mt19937& random) : taps(turn / 2), width(taps + 60) {
    const int most = taps < 2 ? 128 : kernels::kMostTaps / taps;
    rowCount = turn % 2 ? most : std::min(most, 1 + taps);
    bytes = RandomRow(std::size_t(rowCount) * std::size_t(4 * width), unsigned(taps));
    const std::size_t block = Row::size_type((taps + 15) / 16 * 16);
    stride = 3 * block;
    weights.resize(std::size_t(rowCount) * stride);
    for (int y = 0; y < rowCount; ++y) {
      colour.push_back(bytes.data() + y * 4 * width);
      mask.push_back(colour.back() + 3 * width);
      if (turn % 3 != 0) FillMask(bytes.data() + (y * 4 + 3) * width, turn % 3 == 1 ? 255 : 7);
      for (int t = 0; t < 3 * taps; ++t) {
        weights[std::size_t(y) * stride + std::size_t(t / 3) + std::size_t(t % 3) * block] =
            static_cast<std::uint16_t>(random() % 5 ? random() : 65535);
      }
    }
    const auto add = [&](int first, std::size_t place) {
      runs.push_back({first, taps, place % 3 * block});
    };
    for (const int step : {1, 2, 3, 9}) {
      for (int i = 0; i <= 60; i += step) add(i, step == 1 ? 0 : std::size_t(i));
    }
    for (int i = 0; i < 20; ++i) add(static_cast<int>(random() % 61), random());
  }
  // Masks are mostly the same for many pixels.
  void FillMask(std::uint8_t* row, std::uint8_t last) const {
    std::fill_n(row, 24, std::uint8_t{0});
    std::fill_n(row + 24, 20, std::uint8_t{130});
    std::fill_n(row + 44, width - 44, last);
  }
  // Writes all sums, opacities and quotients.
  void Sum(const kernels::ReductionKernels& k, std::uint8_t* to) const {
    const int count = static_cast<int>(runs.size());
    const kernels::ReductionRows rows = {colour.data(), mask.data(), rowCount, weights.data(),
                                         stride};
    auto* const sums = reinterpret_cast<kernels::ColourSums*>(to);
    auto* const opacities = reinterpret_cast<std::uint32_t*>(sums + 2 * count);
    k.sumColours(runs.data(), count, width, rows, sums);
    k.sumMasked(runs.data(), count, width, rows, sums + count, opacities);
    k.divide(reinterpret_cast<std::uint8_t*>(opacities + count), sums + count, count);
  }

  int taps, width, rowCount;
  Row bytes;
  std::size_t stride;
  std::vector<std::uint16_t> weights;
  std::vector<const std::uint8_t*> colour, mask;
  std::vector<kernels::ReductionRun> runs;
};

TEST(KernelLevels, SumsOfWindows) {
  std::mt19937 random(1);
  for (int turn = 0; turn <= 2 * kernels::kMostTaps; turn += turn < 80 ? 1 : 53) {
    SCOPED_TRACE(turn);
    const Windows windows(turn, random);
    ExpectLevelsEqual<kernels::ReductionKernels>(
        Row(windows.runs.size() * 39 + 8, 77),
        [&](auto& k, std::uint8_t* at) { windows.Sum(k, at); });
  }
}

// Whole numbers, halves and what lies beside them.
TEST(KernelLevels, QuotientsOfSums) {
  std::vector<kernels::ColourSums> sums = {{{0, 0, 0}, 0}};
  for (std::uint32_t weight = 1; weight < 1u << 24; weight = weight * 3 + 1) {
    for (std::uint32_t level = 0; level < 256; ++level) {
      const std::uint32_t sum = level * weight;
      const std::uint32_t half = level < 255 ? sum + (weight + 1) / 2 : sum;
      sums.push_back({{sum, half, half > 0 ? half - 1 : 0}, weight});
    }
  }
  ExpectLevelsEqual<kernels::ReductionKernels>(
      Row(sums.size() * 3 + 8, 77),
      [&](auto& k, std::uint8_t* at) { k.divide(at, sums.data(), static_cast<int>(sums.size())); });
}

// Lonely pixels, whose weights may be negative, opaque ones, and any.
TEST(KernelLevels, SharpeningAndStretching) {
  for (int width = 1; width <= 90; ++width) {
    SCOPED_TRACE(width);
    const auto bytes = std::size_t(3 * width);
    const Row row = RandomRow(4 * (bytes + 24), unsigned(width));
    Row masks = RandomRow(4 * (bytes + 24), unsigned(width) + 500);
    for (auto& mask : masks) mask = width % 3 == 1 && mask < 190 ? 255 : width % 7 ? mask : 0;
    const auto in = [&](const Row& of, int i) { return of.data() + i * int(bytes + 24) + 12; };
    ExpectLevelsEqual<kernels::ReductionKernels>(Row(1000, 77), [&](auto& k, std::uint8_t* at) {
      const kernels::SharpenRows rows = {in(row, 0),   in(row, 1),   in(row, 2),
                                         in(masks, 0), in(masks, 1), in(masks, 2)};
      k.sharpen(at, 3 * width, rows, {111111, -11111});
      k.sharpenMasked(at + 300, 3 * width, rows, {std::int64_t{1} << 40, -99});
      k.sharpenMasked(at + 600, 3 * width, rows, {111111, -11111});
    });
    const auto taps = kernels::BicubicTaps(width, 2 * width);
    const auto& weights = kernels::BicubicPhases()[width % kernels::kBicubicPhases];
    ExpectLevelsEqual<kernels::BicubicKernels>(Row(4000, 77), [&](auto& k, std::uint8_t* at) {
      const std::uint8_t* const four[4] = {in(row, 0), in(row, 1), in(row, 2), in(row, 3)};
      k.blend(at, four, bytes, weights);
      k.stretch(at + 1000, in(row, 1), taps.data(), width);
      std::vector<kernels::WeighedPixel> weighed(std::size_t(width) + 8), wide(weighed.size());
      k.weigh(weighed.data() + 4, in(row, 2), in(masks, 2), width);
      k.stretchMasked(wide.data(), weighed.data() + 4, taps.data(), width);
      const kernels::WeighedPixel* const lines[4] = {weighed.data() + 4, wide.data(),
                                                     weighed.data() + 4, wide.data()};
      k.blendMasked(at + 2000, at + 3000, lines, width, weights);
    });
  }
}

}  // namespace
