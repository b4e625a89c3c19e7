// Vectors: the types and operations that fast kernels are written with.
//
// The vectors of a file are as wide as the processors that it is compiled for allow: 64 bytes in a
// file `..._avx512`, 32 in one `..._avx2`, else 16. A kernel that is the same thought on all of
// them is written once in a header `...Loops.h`, which each of these files includes and so compiles
// for its own processors; everything lies in an unnamed namespace, so that no copy serves another
// file.
//
// The operators work lane by lane: + - * & | ^ << >>, comparisons, which give all bits or none, and
// ?: on the result of one. What they cannot say is a function in Avx2.h and in Avx512.h, under the
// same name and with the same result; Plain.h has the few that plain files need.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace kernels {
namespace {

#if defined(__AVX512VBMI__)
constexpr int kVectorBytes = 64;
#elif defined(__AVX2__)
constexpr int kVectorBytes = 32;
#else
constexpr int kVectorBytes = 16;
#endif

using Bytes [[gnu::vector_size(kVectorBytes)]] = std::uint8_t;
using Words [[gnu::vector_size(kVectorBytes)]] = std::uint16_t;
using Shorts [[gnu::vector_size(kVectorBytes)]] = std::int16_t;
using Ints [[gnu::vector_size(kVectorBytes)]] = std::int32_t;
using Longs [[gnu::vector_size(kVectorBytes)]] = std::uint64_t;
using Floats [[gnu::vector_size(kVectorBytes)]] = float;
using Doubles [[gnu::vector_size(kVectorBytes)]] = double;

// What a vector holds, and how many of them. A number by itself is a vector of one.
template <class Vector>
struct VectorTraits {
  using Lane = std::remove_reference_t<decltype(std::declval<Vector&>()[0])>;
};
template <>
struct VectorTraits<double> {
  using Lane = double;
};
template <class Vector>
using LaneOf = typename VectorTraits<Vector>::Lane;
template <class Vector>
constexpr int kLanes = static_cast<int>(sizeof(Vector) / sizeof(LaneOf<Vector>));

// The number in every lane; its low bits where it does not fit. Taking nothing off it is exact for
// every number, -0 among them.
template <class Vector, class Number>
[[gnu::always_inline]] inline Vector All(Number number) {
  return static_cast<LaneOf<Vector>>(number) - Vector{};
}

// The greater and the smaller one, of vectors or of single numbers; the limit where the value is no
// number.
template <class Number>
[[gnu::always_inline]] inline Number Max(Number value, Number limit) {
  return value > limit ? value : limit;
}
template <class Number>
[[gnu::always_inline]] inline Number Min(Number value, Number limit) {
  return value < limit ? value : limit;
}

// From and to memory at any alignment.
template <class Vector>
[[gnu::always_inline]] inline Vector Load(const void* at) {
  Vector vector;
  __builtin_memcpy(&vector, at, sizeof vector);
  return vector;
}
template <class Vector>
[[gnu::always_inline]] inline void Store(void* at, const Vector& vector) {
  __builtin_memcpy(at, &vector, sizeof vector);
}

}  // namespace
}  // namespace kernels

#if defined(__AVX512VBMI__)
#include "filters/pixels/simd/Avx512.h"
#elif defined(__AVX2__)
#include "filters/pixels/simd/Avx2.h"
#else
#include "filters/pixels/simd/Plain.h"
#endif
