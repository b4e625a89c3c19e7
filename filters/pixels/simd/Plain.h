// The operations of Vectors.h that kernels use in plain files as well. Avx2.h tells what each is.
#pragma once

#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

template <class Vector>
[[gnu::always_inline]] inline bool IsAny(const Vector& vector) {
  const auto bits = (Longs)vector;
  std::uint64_t any = 0;
  for (int i = 0; i < kLanes<Longs>; ++i) any |= bits[i];
  return any != 0;
}

[[gnu::always_inline]] inline auto IsWithin(Doubles value, double limit) {
  return (value <= limit) & (value >= -limit);
}

}  // namespace
}  // namespace kernels
