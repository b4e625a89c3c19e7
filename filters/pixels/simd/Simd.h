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

// Whether there are levels beyond Plain on processors of this family.
#if defined(__x86_64__)
inline constexpr bool kHasVectorUnits = true;
#else
inline constexpr bool kHasVectorUnits = false;
#endif

// The kernels of a level, which the processor must be able to run. `Table` is a structure of
// functions with the static members Plain(), Avx2() and Avx512(), each of which gives one; the last
// two lie in files with a processor suffix and are left out where there are no vector units. All
// three have the same results, byte for byte, and no function is null.
template <class Table>
const Table& Choose(SimdLevel level) {
  if constexpr (kHasVectorUnits) {
    if (level == SimdLevel::Avx512) return Table::Avx512();
    if (level == SimdLevel::Avx2) return Table::Avx2();
  }
  return Table::Plain();
}

// The kernels of ActiveSimdLevel().
template <class Table>
const Table& Choose() {
  static const Table& table = Choose<Table>(ActiveSimdLevel());
  return table;
}

}  // namespace kernels
