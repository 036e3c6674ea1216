#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/always_inline.h"
#include "shifted_samples.h"

// Sixteen lanes with AVX-512 F, DQ and BW; two vectors of them, 32 pixels, make a step.
namespace nerova_zel {
namespace {

struct Mask16 {
  __mmask16 bits;
};

struct Float16 {
  static constexpr bool stores_negative_as_zero = true;

  __m512 v;

  NEROVA_INLINE static Float16 broadcast(float value) { return {_mm512_set1_ps(value)}; }
  /** The float with this representation. */
  NEROVA_INLINE static Float16 broadcast_bits(std::uint32_t bits) {
    return {_mm512_castsi512_ps(_mm512_set1_epi32(static_cast<std::int32_t>(bits)))};
  }
};

NEROVA_INLINE Float16 operator+(Float16 a, Float16 b) { return {_mm512_add_ps(a.v, b.v)}; }
NEROVA_INLINE Float16 operator-(Float16 a, Float16 b) { return {_mm512_sub_ps(a.v, b.v)}; }
NEROVA_INLINE Float16 operator*(Float16 a, Float16 b) { return {_mm512_mul_ps(a.v, b.v)}; }
NEROVA_INLINE Float16 operator/(Float16 a, Float16 b) { return {_mm512_div_ps(a.v, b.v)}; }
NEROVA_INLINE Mask16 operator<(Float16 a, Float16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_LT_OQ)}; }
NEROVA_INLINE Mask16 operator>(Float16 a, Float16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_GT_OQ)}; }
NEROVA_INLINE Mask16 operator>=(Float16 a, Float16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_GE_OQ)}; }
NEROVA_INLINE Mask16 operator==(Float16 a, Float16 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_EQ_OQ)}; }

NEROVA_INLINE Float16 min(Float16 a, Float16 b) { return {_mm512_min_ps(a.v, b.v)}; }
NEROVA_INLINE Float16 max(Float16 a, Float16 b) { return {_mm512_max_ps(a.v, b.v)}; }
NEROVA_INLINE Float16 abs(Float16 a) { return {_mm512_abs_ps(a.v)}; }
NEROVA_INLINE Float16 sqrt(Float16 a) { return {_mm512_sqrt_ps(a.v)}; }
/** a * b + c, rounded once. */
NEROVA_INLINE Float16 fused_multiply_add(Float16 a, Float16 b, Float16 c) { return {_mm512_fmadd_ps(a.v, b.v, c.v)}; }
/** c - a * b, rounded once. */
NEROVA_INLINE Float16 fused_subtract_product(Float16 c, Float16 a, Float16 b) {
  return {_mm512_fnmadd_ps(a.v, b.v, c.v)};
}

/** By the 256-bit instruction: the 512-bit one gives other estimates. */
NEROVA_INLINE Float16 reciprocal_estimate(Float16 a) {
  const __m256 low = _mm256_rcp_ps(_mm512_castps512_ps256(a.v));
  const __m256 high = _mm256_rcp_ps(_mm512_extractf32x8_ps(a.v, 1));
  return {_mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1)};
}

NEROVA_INLINE Float16 select(Mask16 mask, Float16 yes, Float16 no) {
  return {_mm512_mask_blend_ps(mask.bits, no.v, yes.v)};
}
NEROVA_INLINE Float16 zero_if(Mask16 mask, Float16 a) {
  return {_mm512_maskz_mov_ps(static_cast<__mmask16>(~mask.bits), a.v)};
}
NEROVA_INLINE Float16 zero_if_nan(Float16 a) {
  // One nibble for each class of numbers, the two kinds of NaN first: 8 for +0, 0 for the number itself.
  return {_mm512_fixupimm_ps(a.v, a.v, _mm512_set1_epi32(0x88), 0)};
}
/** The sum of the representations, as integers. */
NEROVA_INLINE Float16 add_bits(Float16 a, Float16 b) {
  return {_mm512_castsi512_ps(_mm512_add_epi32(_mm512_castps_si512(a.v), _mm512_castps_si512(b.v)))};
}
/** The magnitude, not negative, with the sign of another value. */
NEROVA_INLINE Float16 with_sign_of(Float16 sign, Float16 magnitude) {
  constexpr int first_or_both_others = 0xF8;
  return {_mm512_castsi512_ps(_mm512_ternarylogic_epi32(_mm512_castps_si512(magnitude.v), _mm512_castps_si512(sign.v),
                                                        _mm512_set1_epi32(INT32_MIN), first_or_both_others))};
}
/** -negative, or other. */
NEROVA_INLINE Float16 negative_or_other(Mask16 mask, Float16 negative, Float16 other) {
  return {_mm512_mask_xor_ps(other.v, mask.bits, negative.v, _mm512_set1_ps(-0.0F))};
}
/** pi / 2 if the sign is negative, else 0; or other. */
NEROVA_INLINE Float16 quarter_turn_if_negative(Mask16 mask, Float16 sign, Float16 other) {
  // A nibble for each class of numbers: D, pi / 2, for the negative ones, 8, +0, for the others.
  return {_mm512_mask_fixupimm_ps(other.v, mask.bits, sign.v, _mm512_set1_epi32(static_cast<int>(0x8D888888)), 0)};
}

struct Int16 {
  __m512i v;
};

NEROVA_INLINE Int16 round_to_int(Float16 a) { return {_mm512_cvtps_epi32(a.v)}; }

/** 32 results in the order of their pixels. */
struct Results32 {
  __m512i v;

  NEROVA_INLINE static Results32 broadcast(std::uint16_t value) {
    return {_mm512_set1_epi16(static_cast<std::int16_t>(value))};
  }
};

NEROVA_INLINE Results32 min(Results32 a, Results32 b) { return {_mm512_min_epu16(a.v, b.v)}; }

/**
 * How a row of samples comes into lanes, how results leave, and how many pixels that makes at a time. Vector 0 of a
 * step holds pixels 0 to 3, 8 to 11, 16 to 19 and 24 to 27, vector 1 the others: the order in which AVX-512 narrows.
 */
struct Step32 {
  using Float = Float16;
  using Int = Int16;
  using Results = Results32;
  static constexpr std::size_t pixels = 32;

  /** 33 samples of a row: 0 to 31, and 1 to 32; taken out shifted. */
  struct Samples {
    __m512i own;
    __m512i next;

    /** For each column k of vector i: of the samples of columns k and k + 1, the one that lies in an even column. */
    NEROVA_INLINE Float even(int i) const {
      return shifted(i, _mm512_set_epi32(28, 26, 26, 24, 20, 18, 18, 16, 12, 10, 10, 8, 4, 2, 2, 0));
    }
    /** The other one. */
    NEROVA_INLINE Float odd(int i) const {
      return shifted(i, _mm512_set_epi32(27, 27, 25, 25, 19, 19, 17, 17, 11, 11, 9, 9, 3, 3, 1, 1));
    }
    /** For each column k of vector i: the sample of column k. */
    NEROVA_INLINE Float column(int i) const {
      return shifted(i, _mm512_set_epi32(27, 26, 25, 24, 19, 18, 17, 16, 11, 10, 9, 8, 3, 2, 1, 0));
    }
    /** The sample of column k + 1. */
    NEROVA_INLINE Float next_column(int i) const {
      return shifted(i, _mm512_set_epi32(28, 27, 26, 25, 20, 19, 18, 17, 12, 11, 10, 9, 4, 3, 2, 1));
    }

   private:
    /** Vector 0's samples in this order; vector 1's are four further on, of which the second load lacks three. */
    NEROVA_INLINE Float shifted(int i, __m512i order) const {
      constexpr __mmask32 low_halves = 0x55555555;
      const __m512i shifted_zero = _mm512_castps_si512(_mm512_set1_ps(sample_shift));
      const __m512i order_in_next = _mm512_add_epi32(order, _mm512_set1_epi32(3));
      return {_mm512_castsi512_ps(i == 0
                                      ? _mm512_mask_permutexvar_epi16(shifted_zero, low_halves, order, own)
                                      : _mm512_mask_permutexvar_epi16(shifted_zero, low_halves, order_in_next, next))};
    }
  };

  NEROVA_INLINE static Samples load(const std::uint16_t* samples) {
    return {_mm512_loadu_si512(samples), _mm512_loadu_si512(samples + 1)};
  }

  /** Even columns take the first weight, odd columns the second. */
  NEROVA_INLINE static Float alternate(float even, float odd) {
    return {_mm512_mask_blend_ps(0xAAAA, _mm512_set1_ps(even), _mm512_set1_ps(odd))};
  }

  /** Saturates to 0..65535. */
  NEROVA_INLINE static Results narrow(Int first, Int second) { return {_mm512_packus_epi32(first.v, second.v)}; }

  NEROVA_INLINE static void store_outputs(std::uint16_t* to, Results results) { _mm512_storeu_si512(to, results.v); }

  /** Stores the (first, second) pairs of vector i of a step: 32 floats in four places. */
  NEROVA_INLINE static void store_pairs(float* to, std::size_t i, Float first, Float second) {
    const __m512i low = _mm512_set_epi32(23, 7, 22, 6, 21, 5, 20, 4, 19, 3, 18, 2, 17, 1, 16, 0);
    const __m512i high = _mm512_add_epi32(low, _mm512_set1_epi32(8));
    store_halves(to + 8 * i, _mm512_permutex2var_ps(first.v, low, second.v));
    store_halves(to + 8 * i + 32, _mm512_permutex2var_ps(first.v, high, second.v));
  }

 private:
  NEROVA_INLINE static void store_halves(float* to, __m512 pairs) {
    _mm256_storeu_ps(to, _mm512_castps512_ps256(pairs));
    _mm256_storeu_ps(to + 16, _mm512_extractf32x8_ps(pairs, 1));
  }
};

using Step = Step32;

}  // namespace
}  // namespace nerova_zel
