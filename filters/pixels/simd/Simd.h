// Which vector units the kernels may use: decided once from the processor and the environment.
#pragma once

namespace kernels {

// Each level includes the ones before it. Plain is what every processor of the family runs; Avx512
// stands for its byte permutes and products (VBMI, VNNI) as well.
enum class SimdLevel { Plain, Avx2, Avx512 };

inline constexpr SimdLevel kSimdLevels[] = {SimdLevel::Plain, SimdLevel::Avx2, SimdLevel::Avx512};

// "plain", "avx2" or "avx512".
const char* SimdLevelName(SimdLevel level);

// The highest level that this processor and its system can run.
SimdLevel ProcessorSimdLevel();

// `highest`, or the level that `limit` names where that is lower. Null and unknown names limit
// nothing.
SimdLevel LimitSimdLevel(SimdLevel highest, const char* limit);

// The processor's level limited by FXBOX_SIMD in the environment, which is read once.
SimdLevel ActiveSimdLevel();

}  // namespace kernels
