#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/shared/always_inline.h"

// Sixteen lanes with AVX-512 F, DQ and BW.
namespace nerova_zel {
namespace {

struct Mask16 {
  __mmask16 bits;
};

struct F32x16 {
  static constexpr bool stores_negative_as_zero = true;

  __m512 v;

  NEROVA_INLINE static F32x16 broadcast(float value) { return {_mm512_set1_ps(value)}; }
  /** The float with this representation. */
  NEROVA_INLINE static F32x16 broadcast_bits(std::uint32_t bits) {
    return {_mm512_castsi512_ps(_mm512_set1_epi32(static_cast<std::int32_t>(bits)))};
  }
};

NEROVA_INLINE F32x16 operator+(F32x16 a, F32x16 b) { return {_mm512_add_ps(a.v, b.v)}; }
NEROVA_INLINE F32x16 operator-(F32x16 a, F32x16 b) { return {_mm512_sub_ps(a.v, b.v)}; }
NEROVA_INLINE F32x16 operator*(F32x16 a, F32x16 b) { return {_mm512_mul_ps(a.v, b.v)}; }
NEROVA_INLINE F32x16 operator/(F32x16 a, F32x16 b) { return {_mm512_div_ps(a.v, b.v)}; }
NEROVA_INLINE Mask16 operator<(F32x16 a, F32x16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_LT_OQ)}; }
NEROVA_INLINE Mask16 operator>(F32x16 a, F32x16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_GT_OQ)}; }
NEROVA_INLINE Mask16 operator>=(F32x16 a, F32x16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_GE_OQ)}; }
NEROVA_INLINE Mask16 operator==(F32x16 a, F32x16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_EQ_OQ)}; }

NEROVA_INLINE F32x16 min(F32x16 a, F32x16 b) { return {_mm512_min_ps(a.v, b.v)}; }
NEROVA_INLINE F32x16 max(F32x16 a, F32x16 b) { return {_mm512_max_ps(a.v, b.v)}; }
NEROVA_INLINE F32x16 abs(F32x16 a) { return {_mm512_abs_ps(a.v)}; }
NEROVA_INLINE F32x16 sqrt(F32x16 a) { return {_mm512_sqrt_ps(a.v)}; }
/** a * b + c, rounded once. */
NEROVA_INLINE F32x16 fused_multiply_add(F32x16 a, F32x16 b, F32x16 c) { return {_mm512_fmadd_ps(a.v, b.v, c.v)}; }
/** c - a * b, rounded once. */
NEROVA_INLINE F32x16 fused_subtract_product(F32x16 c, F32x16 a, F32x16 b) { return {_mm512_fnmadd_ps(a.v, b.v, c.v)}; }

/** By the 256-bit instruction: the 512-bit one gives other estimates. */
NEROVA_INLINE F32x16 reciprocal_estimate(F32x16 a) {
  // That instruction knows sixteen registers: moved there whole, which is free, the halves need one shuffle less.
  __asm__("" : "+x"(a.v));
  const __m256 low = _mm256_rcp_ps(_mm512_castps512_ps256(a.v));
  const __m256 high = _mm256_rcp_ps(_mm512_extractf32x8_ps(a.v, 1));
  return {_mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1)};
}

NEROVA_INLINE F32x16 select(Mask16 mask, F32x16 yes, F32x16 no) {
  return {_mm512_mask_blend_ps(mask.bits, no.v, yes.v)};
}
NEROVA_INLINE F32x16 zero_if(Mask16 mask, F32x16 a) {
  return {_mm512_maskz_mov_ps(static_cast<__mmask16>(~mask.bits), a.v)};
}
NEROVA_INLINE F32x16 zero_if_nan(F32x16 a) {
  // One nibble for each class of numbers, the two kinds of NaN first: 8 for +0, 0 for the number itself.
  return {_mm512_fixupimm_ps(a.v, a.v, _mm512_set1_epi32(0x88), 0)};
}
/** The sum of the representations, as integers. */
NEROVA_INLINE F32x16 add_bits(F32x16 a, F32x16 b) {
  return {_mm512_castsi512_ps(_mm512_add_epi32(_mm512_castps_si512(a.v), _mm512_castps_si512(b.v)))};
}
/** The magnitude, not negative, with the sign of another value. */
NEROVA_INLINE F32x16 with_sign_of(F32x16 sign, F32x16 magnitude) {
  constexpr int first_or_both_others = 0xF8;
  return {_mm512_castsi512_ps(_mm512_ternarylogic_epi32(_mm512_castps_si512(magnitude.v), _mm512_castps_si512(sign.v),
                                                        _mm512_set1_epi32(INT32_MIN), first_or_both_others))};
}
/** -negative, or other. */
NEROVA_INLINE F32x16 negative_or_other(Mask16 mask, F32x16 negative, F32x16 other) {
  return {_mm512_mask_xor_ps(other.v, mask.bits, negative.v, _mm512_set1_ps(-0.0F))};
}
/** pi / 2 if the sign is negative, else 0; or other. */
NEROVA_INLINE F32x16 quarter_turn_if_negative(Mask16 mask, F32x16 sign, F32x16 other) {
  // A nibble for each class of numbers: D, pi / 2, for the negative ones, 8, +0, for the others.
  return {_mm512_mask_fixupimm_ps(other.v, mask.bits, sign.v, _mm512_set1_epi32(static_cast<int>(0x8D888888)), 0)};
}

struct I32x16 {
  __m512i v;
};

NEROVA_INLINE I32x16 round_to_int(F32x16 a) { return {_mm512_cvtps_epi32(a.v)}; }

}  // namespace
}  // namespace nerova_zel
