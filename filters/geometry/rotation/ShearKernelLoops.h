// The blends of a shear over vectors of any width.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/geometry/rotation/ShearKernels.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

// One lane a quad, or one a byte of a quad.
using Quads [[gnu::vector_size(kVectorBytes)]] = Quad;
using WideShorts [[gnu::vector_size(2 * kVectorBytes)]] = std::int16_t;
constexpr int kQuads = kLanes<Quads>;

// --- equal masks

// `part` of 32 of the way from `from` to `to`, byte for byte. The half that rounds is added before
// the quotient is truncated toward zero.
[[gnu::always_inline]] inline Bytes Between(const Bytes& from, const Bytes& to, const Bytes& part) {
  const WideShorts start = __builtin_convertvector(from, WideShorts);
  const WideShorts whole = __builtin_convertvector(to, WideShorts) - start;
  const WideShorts way = whole * __builtin_convertvector(part, WideShorts) + 16;
  const WideShorts steps = (way + ((way >> 15) & 31)) >> 5;
  return __builtin_convertvector(start + steps, Bytes);
}

// --- any masks

// numerator / divisor, truncated, for numerators below 2^30 and quotients up to 255. The quotient
// in floats is off by one at most.
[[gnu::always_inline]] inline Ints Quotient(const Ints& numerator, const Ints& divisor,
                                            const Floats& inverse) {
  const Ints guess =
      __builtin_convertvector(__builtin_convertvector(numerator, Floats) * inverse, Ints);
  const Ints rest = numerator - guess * divisor;
  // A comparison that holds gives -1.
  return guess - (rest >= divisor) + (rest < 0);
}

[[gnu::always_inline]] inline Quads Blend(const Quads& previous, const Quads& current,
                                          const Quads& straight, const Ints& of16384) {
  const Ints maskP = (Ints)(previous >> kMaskShift);
  const Ints maskC = (Ints)(current >> kMaskShift);
  const Ints weightP = (255 - maskP) * (16384 - of16384);
  const Ints weightC = (255 - maskC) * of16384;
  const Ints whole = weightP + weightC;
  const Ints divisor = whole - (whole == 0);
  const Floats inverse = 1.0f / __builtin_convertvector(divisor, Floats);
  const auto channel = [&](int shift) {
    const Ints p = (Ints)(previous >> shift & 255);
    const Ints c = (Ints)(current >> shift & 255);
    return (Quads)Quotient(p * weightP + c * weightC, divisor, inverse) << shift;
  };
  const Ints mask = maskP + (((maskC - maskP) * of16384 + 8192) >> 14);
  const Quads mixed = channel(0) | channel(8) | channel(16) | (Quads)mask << kMaskShift;
  const Quads blended = (Quads)(maskP == maskC) ? straight : mixed;
  const Ints isNothing = (whole == 0) | (mask == 255);
  return isNothing ? Quads{} + kNothing : blended;
}

// --- rows

struct SamePart {
  PixelPart part;
  Bytes Of32(int) const { return Bytes{} + static_cast<std::uint8_t>(part.of32); }
  Ints Of16384(int) const { return Ints{} + part.of16384; }
  PixelPart One(int) const { return part; }
};

struct EachPart {
  PixelParts parts;
  Bytes Of32(int at) const { return Load<Bytes>(parts.of32 + 4 * at); }
  Ints Of16384(int at) const { return Load<Ints>(parts.of16384 + at); }
  PixelPart One(int at) const { return {parts.of32[4 * at], parts.of16384[at]}; }
};

template <class Part>
[[gnu::always_inline]] inline Quads BlendBlock(const Quad* previous, const Quad* current,
                                               const Part& part, int at) {
  const auto p = Load<Quads>(previous + at);
  const auto c = Load<Quads>(current + at);
  const Quads straight = (Quads)Between((Bytes)p, (Bytes)c, part.Of32(at));
  // Equal masks, the usual case, need no more.
  if (!IsAny((p ^ c) >> kMaskShift)) return straight;
  return Blend(p, c, straight, part.Of16384(at));
}

template <class Part>
[[gnu::always_inline]] inline void BlendRow(const Quad* previous, const Quad* current, Quad* result,
                                            int count, const Part& part) {
  int at = 0;
  for (; at + kQuads <= count; at += kQuads) {
    Store(result + at, BlendBlock(previous, current, part, at));
  }
  for (; at < count; ++at) result[at] = BlendQuads(previous[at], current[at], part.One(at));
}

void BlendSame(const Quad* previous, const Quad* current, Quad* result, int count, PixelPart part) {
  BlendRow(previous, current, result, count, SamePart{part});
}

void BlendEach(const Quad* previous, const Quad* current, Quad* result, int count,
               PixelParts parts) {
  BlendRow(previous, current, result, count, EachPart{parts});
}

}  // namespace
}  // namespace kernels
