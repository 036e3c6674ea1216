#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/always_inline.h"
#include "shifted_samples.h"

// Eight lanes with AVX2 and FMA; two vectors of them, 16 pixels, make a step.
namespace nerova_zel {
namespace {

struct Mask8 {
  __m256 bits;
};

struct Float8 {
  static constexpr bool stores_negative_as_zero = true;

  __m256 v;

  NEROVA_INLINE static Float8 broadcast(float value) { return {_mm256_set1_ps(value)}; }
  /** The float with this representation. */
  NEROVA_INLINE static Float8 broadcast_bits(std::uint32_t bits) {
    return {_mm256_castsi256_ps(_mm256_set1_epi32(static_cast<std::int32_t>(bits)))};
  }
};

NEROVA_INLINE Float8 operator+(Float8 a, Float8 b) { return {_mm256_add_ps(a.v, b.v)}; }
NEROVA_INLINE Float8 operator-(Float8 a, Float8 b) { return {_mm256_sub_ps(a.v, b.v)}; }
NEROVA_INLINE Float8 operator*(Float8 a, Float8 b) { return {_mm256_mul_ps(a.v, b.v)}; }
NEROVA_INLINE Float8 operator/(Float8 a, Float8 b) { return {_mm256_div_ps(a.v, b.v)}; }
NEROVA_INLINE Mask8 operator<(Float8 a, Float8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
NEROVA_INLINE Mask8 operator>(Float8 a, Float8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_GT_OQ)}; }
NEROVA_INLINE Mask8 operator>=(Float8 a, Float8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_GE_OQ)}; }
NEROVA_INLINE Mask8 operator==(Float8 a, Float8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)}; }

NEROVA_INLINE Float8 min(Float8 a, Float8 b) { return {_mm256_min_ps(a.v, b.v)}; }
NEROVA_INLINE Float8 max(Float8 a, Float8 b) { return {_mm256_max_ps(a.v, b.v)}; }
NEROVA_INLINE Float8 abs(Float8 a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0F), a.v)}; }
NEROVA_INLINE Float8 sqrt(Float8 a) { return {_mm256_sqrt_ps(a.v)}; }
/** a * b + c, rounded once. */
NEROVA_INLINE Float8 fused_multiply_add(Float8 a, Float8 b, Float8 c) { return {_mm256_fmadd_ps(a.v, b.v, c.v)}; }
/** c - a * b, rounded once. */
NEROVA_INLINE Float8 fused_subtract_product(Float8 c, Float8 a, Float8 b) { return {_mm256_fnmadd_ps(a.v, b.v, c.v)}; }
NEROVA_INLINE Float8 reciprocal_estimate(Float8 a) { return {_mm256_rcp_ps(a.v)}; }

NEROVA_INLINE Float8 select(Mask8 mask, Float8 yes, Float8 no) { return {_mm256_blendv_ps(no.v, yes.v, mask.bits)}; }
NEROVA_INLINE Float8 zero_if(Mask8 mask, Float8 a) { return {_mm256_andnot_ps(mask.bits, a.v)}; }
NEROVA_INLINE Float8 zero_if_nan(Float8 a) { return {_mm256_and_ps(_mm256_cmp_ps(a.v, a.v, _CMP_ORD_Q), a.v)}; }
/** The sum of the representations, as integers. */
NEROVA_INLINE Float8 add_bits(Float8 a, Float8 b) {
  return {_mm256_castsi256_ps(_mm256_add_epi32(_mm256_castps_si256(a.v), _mm256_castps_si256(b.v)))};
}
/** The magnitude, not negative, with the sign of another value. */
NEROVA_INLINE Float8 with_sign_of(Float8 sign, Float8 magnitude) {
  return {_mm256_or_ps(_mm256_and_ps(_mm256_set1_ps(-0.0F), sign.v), magnitude.v)};
}
/** -negative, or other. */
NEROVA_INLINE Float8 negative_or_other(Mask8 mask, Float8 negative, Float8 other) {
  return select(mask, {_mm256_xor_ps(negative.v, _mm256_set1_ps(-0.0F))}, other);
}
/** pi / 2 if the sign is negative, else 0; or other. */
NEROVA_INLINE Float8 quarter_turn_if_negative(Mask8 mask, Float8 sign, Float8 other) {
  const auto negative = _mm256_castsi256_ps(_mm256_srai_epi32(_mm256_castps_si256(sign.v), 31));
  return select(mask, {_mm256_and_ps(negative, _mm256_set1_ps(1.5707964F))}, other);
}

struct Int8 {
  __m256i v;
};

NEROVA_INLINE Int8 round_to_int(Float8 a) { return {_mm256_cvtps_epi32(a.v)}; }

/** Sixteen results in the order of their pixels. */
struct Results16 {
  __m256i v;

  NEROVA_INLINE static Results16 broadcast(std::uint16_t value) {
    return {_mm256_set1_epi16(static_cast<std::int16_t>(value))};
  }
};

NEROVA_INLINE Results16 min(Results16 a, Results16 b) { return {_mm256_min_epu16(a.v, b.v)}; }

/**
 * How a row of samples comes into lanes, how results leave, and how many pixels that makes at a time. Vector 0 of a
 * step holds pixels 0 to 3 and 8 to 11, vector 1 the others: the order in which AVX2 widens and narrows.
 */
struct Step16 {
  using Float = Float8;
  using Int = Int8;
  using Results = Results16;
  static constexpr std::size_t pixels = 16;

  /** 17 samples of a row: 0 to 15, and 1 to 16; taken out shifted. */
  struct Samples {
    __m256i own;
    __m256i next;

    /** For each column k of vector i: of the samples of columns k and k + 1, the one that lies in an even column. */
    NEROVA_INLINE Float even(int i) const { return shifted(i, _mm256_blend_epi16(own, next, 0xAA)); }
    /** The other one. */
    NEROVA_INLINE Float odd(int i) const { return shifted(i, _mm256_blend_epi16(next, own, 0xAA)); }
    /** For each column k of vector i: the sample of column k. */
    NEROVA_INLINE Float column(int i) const { return shifted(i, own); }
    /** The sample of column k + 1. */
    NEROVA_INLINE Float next_column(int i) const { return shifted(i, next); }

   private:
    NEROVA_INLINE static Float shifted(int i, __m256i samples) {
      const __m256i above = _mm256_set1_epi16(sample_shift_bits >> 16);
      return {
          _mm256_castsi256_ps(i == 0 ? _mm256_unpacklo_epi16(samples, above) : _mm256_unpackhi_epi16(samples, above))};
    }
  };

  NEROVA_INLINE static Samples load(const std::uint16_t* samples) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples)),
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples + 1))};
  }

  /** Even columns take the first weight, odd columns the second. */
  NEROVA_INLINE static Float alternate(float even, float odd) {
    return {_mm256_blend_ps(_mm256_set1_ps(even), _mm256_set1_ps(odd), 0xAA)};
  }

  /** Saturates to 0..65535. */
  NEROVA_INLINE static Results narrow(Int first, Int second) { return {_mm256_packus_epi32(first.v, second.v)}; }

  NEROVA_INLINE static void store_outputs(std::uint16_t* to, Results results) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), results.v);
  }

  /** Stores the (first, second) pairs of vector i of a step: 16 floats in two places. */
  NEROVA_INLINE static void store_pairs(float* to, std::size_t i, Float first, Float second) {
    const __m256 low = _mm256_unpacklo_ps(first.v, second.v);
    const __m256 high = _mm256_unpackhi_ps(first.v, second.v);
    _mm256_storeu_ps(to + 8 * i, _mm256_permute2f128_ps(low, high, 0x20));
    _mm256_storeu_ps(to + 8 * i + 16, _mm256_permute2f128_ps(low, high, 0x31));
  }
};

using Step = Step16;

}  // namespace
}  // namespace nerova_zel
