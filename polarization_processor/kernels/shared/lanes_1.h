#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "kernels/shared/always_inline.h"

namespace nerova_zel {
namespace {

/** One lane: a float with the processor's own minimum, maximum, estimate and conversion. */
struct F32x1 {
  static constexpr bool stores_negative_as_zero = false;

  float value;

  NEROVA_INLINE static F32x1 broadcast(float v) { return {v}; }
};

NEROVA_INLINE F32x1 operator+(F32x1 a, F32x1 b) { return {a.value + b.value}; }
NEROVA_INLINE F32x1 operator-(F32x1 a, F32x1 b) { return {a.value - b.value}; }
NEROVA_INLINE F32x1 operator*(F32x1 a, F32x1 b) { return {a.value * b.value}; }
NEROVA_INLINE F32x1 operator/(F32x1 a, F32x1 b) { return {a.value / b.value}; }
NEROVA_INLINE bool operator<(F32x1 a, F32x1 b) { return a.value < b.value; }
NEROVA_INLINE bool operator>(F32x1 a, F32x1 b) { return a.value > b.value; }
NEROVA_INLINE bool operator>=(F32x1 a, F32x1 b) { return a.value >= b.value; }
NEROVA_INLINE bool operator==(F32x1 a, F32x1 b) { return a.value == b.value; }

NEROVA_INLINE F32x1 min(F32x1 a, F32x1 b) { return {a.value < b.value ? a.value : b.value}; }
NEROVA_INLINE F32x1 max(F32x1 a, F32x1 b) { return {a.value > b.value ? a.value : b.value}; }
NEROVA_INLINE F32x1 abs(F32x1 a) { return {__builtin_fabsf(a.value)}; }
NEROVA_INLINE F32x1 sqrt(F32x1 a) { return {_mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(a.value)))}; }
NEROVA_INLINE F32x1 reciprocal_estimate(F32x1 a) { return {_mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(a.value)))}; }

NEROVA_INLINE F32x1 select(bool mask, F32x1 yes, F32x1 no) { return mask ? yes : no; }
NEROVA_INLINE F32x1 zero_if(bool mask, F32x1 a) { return {mask ? 0.0F : a.value}; }
/** -negative, or other. */
NEROVA_INLINE F32x1 negative_or_other(bool mask, F32x1 negative, F32x1 other) {
  return {mask ? -negative.value : other.value};
}

/** Rounds to nearest, ties to even; the value lies in 0..65535. */
NEROVA_INLINE std::uint16_t round_to_output(F32x1 a) {
  return static_cast<std::uint16_t>(_mm_cvtss_si32(_mm_set_ss(a.value)));
}

}  // namespace
}  // namespace nerova_zel
