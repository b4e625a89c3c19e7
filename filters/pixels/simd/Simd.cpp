#include "filters/pixels/simd/Simd.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kernels {

const char* SimdLevelName(SimdLevel level) {
  switch (level) {
    case SimdLevel::Avx512:
      return "avx512";
    case SimdLevel::Avx2:
      return "avx2";
    default:
      return "plain";
  }
}

SimdLevel ProcessorSimdLevel() {
#if defined(__x86_64__)
  __builtin_cpu_init();
  const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                    __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma");
  if (!avx2) return SimdLevel::Plain;
  const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
                      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
                      __builtin_cpu_supports("avx512vnni");
  return avx512 ? SimdLevel::Avx512 : SimdLevel::Avx2;
#else
  return SimdLevel::Plain;
#endif
}

SimdLevel LimitSimdLevel(SimdLevel highest, const char* limit) {
  for (const SimdLevel level : kSimdLevels) {
    if (limit && std::strcmp(limit, SimdLevelName(level)) == 0) return std::min(highest, level);
  }
  return highest;
}

SimdLevel ActiveSimdLevel() {
  static const SimdLevel level = LimitSimdLevel(ProcessorSimdLevel(), std::getenv("FXBOX_SIMD"));
  return level;
}

}  // namespace kernels
