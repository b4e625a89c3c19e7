// The shear kernels of every level against the plain forms.
#include "filters/geometry/rotation/ShearKernels.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "filters/geometry/rotation/QuarterTurn.h"
#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::PixelPart;
using kernels::PixelParts;
using kernels::Quad;
using kernels::ShearKernelTable;
using kernels::SimdLevel;
using testing_support::RandomRow;

void PlainBlendEach(const Quad* p, const Quad* c, Quad* result, int count, PixelParts parts) {
  for (int i = 0; i < count; ++i) {
    result[i] = kernels::BlendQuads(p[i], c[i], {parts.of32[4 * i], parts.of16384[i]});
  }
}

void PlainBlend(const Quad* p, const Quad* c, Quad* result, int count, PixelPart part) {
  for (int i = 0; i < count; ++i) result[i] = kernels::BlendQuads(p[i], c[i], part);
}

constexpr ShearKernelTable kPlain = {kernels::JoinQuads, kernels::SplitQuads,
                                     kernels::TransposeQuads, PlainBlend, PlainBlendEach};

class ShearKernelLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
  // Quads lie from byte 0, 4000 and 8000 on in the row; the rest is a guard.
  template <class Run>
  void ExpectSame(unsigned seed, Run run) {
    const auto row = RandomRow(12000, seed);
    testing_support::ExpectSameRow(kPlain, kernels::Choose<kernels::ShearKernelTable>(GetParam()),
                                   row, [&](auto& table, std::uint8_t* bytes) {
                                     const auto quads = [&](int at) {
                                       return reinterpret_cast<Quad*>(bytes + at);
                                     };
                                     run(table, bytes, quads(0), quads(4000), quads(8000));
                                   });
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, ShearKernelLevels, testing::ValuesIn(kernels::kSimdLevels),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

TEST_P(ShearKernelLevels, RowsOfAllWidths) {
  for (int n = 0; n <= 100; ++n) {
    const auto seed = static_cast<unsigned>(n);
    const int odd = 4000 + n % 7;
    ExpectSame(seed, [&](auto& k, std::uint8_t* bytes, Quad*, Quad*, Quad* quads) {
      k.join(bytes + odd, bytes + odd + 3 * n, quads + 1, n);
      k.split(quads + 300, bytes + odd, bytes + odd + 3 * n + 64, n);
    });
    ExpectSame(seed, [&](auto& k, std::uint8_t*, Quad* from, Quad* to, Quad*) {
      k.transpose(from, 30, to, 31, n % 29, n / 4);
      k.transpose(from, 30, to + 970, -31, n / 4, n % 29);
    });
  }
}

// Masks that are equal, that are not, and ends of all kinds; parts of all sizes.
TEST_P(ShearKernelLevels, BlendsAnyMasks) {
  for (int round = 0; round < 600; ++round) {
    const auto seed = static_cast<unsigned>(round);
    ExpectSame(seed, [&](auto& k, std::uint8_t* bytes, Quad* p, Quad* c, Quad* result) {
      std::mt19937 random(seed);
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

TEST_P(ShearKernelLevels, HasKernelsOfItsOwn) {
  for (const SimdLevel level : kernels::kSimdLevels) {
    if (level == GetParam()) continue;
    const ShearKernelTable& own = kernels::Choose<kernels::ShearKernelTable>(GetParam());
    const ShearKernelTable& other = kernels::Choose<kernels::ShearKernelTable>(level);
    EXPECT_NE(own.join, other.join);
    EXPECT_NE(own.split, other.split);
    EXPECT_NE(own.blend, other.blend);
    EXPECT_NE(own.blendEach, other.blendEach);
  }
}

// --- quarter turns

constexpr int kWidth = 301, kHeight = 277;  // more than the tiles that a turn is done in
constexpr int kSide = kWidth;               // of squares that hold the picture upright and lying

std::uint8_t ByteAt(int x, int y, int c) {
  return static_cast<std::uint8_t>(x * 7 + y * 13 + c * 31 + (x * y >> 3));
}

struct Square {
  std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(4 * kSide * kSide);
  std::vector<std::uint8_t*> colour, mask;

  Square() {
    for (int y = 0; y < kSide; ++y) {
      colour.push_back(bytes.data() + 4 * kSide * y);
      mask.push_back(colour.back() + 3 * kSide);
    }
  }
  std::uint8_t& At(int x, int y, int c) { return c < 3 ? colour[y][3 * x + c] : mask[y][x]; }
};

bool IsTurned(Square& result, int turns, bool mirror) {
  for (int i = 0; i < kWidth * kHeight; ++i) {
    int x = mirror ? kWidth - 1 - i % kWidth : i % kWidth;
    int y = i / kWidth;
    for (int turn = 0; turn < turns; ++turn) {
      std::swap(x, y);
      x = (turn % 2 == 0 ? kHeight : kWidth) - 1 - x;
    }
    for (int c = 0; c < 4; ++c) {
      if (result.At(x, y, c) != ByteAt(i % kWidth, i / kWidth, c)) return false;
    }
  }
  return true;
}

TEST_P(ShearKernelLevels, QuarterTurnsOfWholePictures) {
  Square from;
  for (int i = 0; i < 4 * kWidth * kHeight; ++i) {
    const int x = i / 4 % kWidth, y = i / 4 / kWidth;
    from.At(x, y, i % 4) = ByteAt(x, y, i % 4);
  }
  for (int i = 0; i < 8; ++i) {
    const kernels::QuarterTurn turned({from.colour.data(), from.mask.data(), kWidth, kHeight},
                                      i / 2, i % 2 == 1,
                                      kernels::Choose<ShearKernelTable>(GetParam()));
    Square to;
    const base::WritableRows rows{to.colour.data(), to.mask.data(), turned.Width(),
                                  turned.Height()};
    for (int band = 0; band < turned.Bands(); ++band) {
      turned.ReadBand(turned.BandAt(band), rows);
    }
    EXPECT_TRUE(IsTurned(to, i / 2, i % 2 == 1)) << i / 2 << " turns, mirrored: " << i % 2;
  }
}

}  // namespace
