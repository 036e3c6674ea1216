#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/shared/always_inline.h"
#include "kernels/shared/radians.h"

// Eight lanes with AVX2 and FMA.
namespace nerova_zel {
namespace {

struct Mask8 {
  __m256 bits;
};

struct F32x8 {
  static constexpr bool stores_negative_as_zero = true;

  __m256 v;

  NEROVA_INLINE static F32x8 broadcast(float value) { return {_mm256_set1_ps(value)}; }
  /** The float with this representation. */
  NEROVA_INLINE static F32x8 broadcast_bits(std::uint32_t bits) {
    return {_mm256_castsi256_ps(_mm256_set1_epi32(static_cast<std::int32_t>(bits)))};
  }
};

NEROVA_INLINE F32x8 operator+(F32x8 a, F32x8 b) { return {_mm256_add_ps(a.v, b.v)}; }
NEROVA_INLINE F32x8 operator-(F32x8 a, F32x8 b) { return {_mm256_sub_ps(a.v, b.v)}; }
NEROVA_INLINE F32x8 operator*(F32x8 a, F32x8 b) { return {_mm256_mul_ps(a.v, b.v)}; }
NEROVA_INLINE F32x8 operator/(F32x8 a, F32x8 b) { return {_mm256_div_ps(a.v, b.v)}; }
NEROVA_INLINE Mask8 operator<(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
NEROVA_INLINE Mask8 operator>(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_GT_OQ)}; }
NEROVA_INLINE Mask8 operator>=(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_GE_OQ)}; }
NEROVA_INLINE Mask8 operator==(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)}; }

NEROVA_INLINE F32x8 min(F32x8 a, F32x8 b) { return {_mm256_min_ps(a.v, b.v)}; }
NEROVA_INLINE F32x8 max(F32x8 a, F32x8 b) { return {_mm256_max_ps(a.v, b.v)}; }
NEROVA_INLINE F32x8 abs(F32x8 a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0F), a.v)}; }
NEROVA_INLINE F32x8 sqrt(F32x8 a) { return {_mm256_sqrt_ps(a.v)}; }
/** a * b + c, rounded once. */
NEROVA_INLINE F32x8 fused_multiply_add(F32x8 a, F32x8 b, F32x8 c) { return {_mm256_fmadd_ps(a.v, b.v, c.v)}; }
/** c - a * b, rounded once. */
NEROVA_INLINE F32x8 fused_subtract_product(F32x8 c, F32x8 a, F32x8 b) { return {_mm256_fnmadd_ps(a.v, b.v, c.v)}; }
NEROVA_INLINE F32x8 reciprocal_estimate(F32x8 a) { return {_mm256_rcp_ps(a.v)}; }

NEROVA_INLINE F32x8 select(Mask8 mask, F32x8 yes, F32x8 no) { return {_mm256_blendv_ps(no.v, yes.v, mask.bits)}; }
NEROVA_INLINE F32x8 zero_if(Mask8 mask, F32x8 a) { return {_mm256_andnot_ps(mask.bits, a.v)}; }
NEROVA_INLINE F32x8 zero_if_nan(F32x8 a) { return {_mm256_and_ps(_mm256_cmp_ps(a.v, a.v, _CMP_ORD_Q), a.v)}; }
/** The sum of the representations, as integers. */
NEROVA_INLINE F32x8 add_bits(F32x8 a, F32x8 b) {
  return {_mm256_castsi256_ps(_mm256_add_epi32(_mm256_castps_si256(a.v), _mm256_castps_si256(b.v)))};
}
/** The magnitude, not negative, with the sign of another value. */
NEROVA_INLINE F32x8 with_sign_of(F32x8 sign, F32x8 magnitude) {
  return {_mm256_or_ps(_mm256_and_ps(_mm256_set1_ps(-0.0F), sign.v), magnitude.v)};
}
/** -negative, or other. */
NEROVA_INLINE F32x8 negative_or_other(Mask8 mask, F32x8 negative, F32x8 other) {
  return select(mask, {_mm256_xor_ps(negative.v, _mm256_set1_ps(-0.0F))}, other);
}
/** pi / 2 if the sign is negative, else 0; or other. */
NEROVA_INLINE F32x8 quarter_turn_if_negative(Mask8 mask, F32x8 sign, F32x8 other) {
  const auto negative = _mm256_castsi256_ps(_mm256_srai_epi32(_mm256_castps_si256(sign.v), 31));
  return select(mask, {_mm256_and_ps(negative, _mm256_set1_ps(Radians::quarter_turn))}, other);
}

struct I32x8 {
  __m256i v;
};

NEROVA_INLINE I32x8 round_to_int(F32x8 a) { return {_mm256_cvtps_epi32(a.v)}; }

}  // namespace
}  // namespace nerova_zel
