#pragma once

#include <emmintrin.h>
#ifdef NEROVA_SSE41_FORM
#include <smmintrin.h>
#endif

#include <cstdint>

#include "kernels/shared/always_inline.h"
#include "kernels/shared/polarizer_differences.h"
#include "kernels/shared/radians.h"

// Four lanes, in the SSE2 or the SSE4.1 form: NEROVA_SSE41_FORM decides, not what the compiler may use. The forms
// differ in how samples are brought into lanes and in how results are narrowed to 16 bits; the arithmetic is the same.
namespace nerova_zel {
namespace {

struct Mask4 {
  __m128 bits;
};

struct F32x4 {
  __m128 v;

  NEROVA_INLINE static F32x4 broadcast(float value) { return {_mm_set1_ps(value)}; }

#ifdef NEROVA_SSE41_FORM
  static constexpr bool stores_negative_as_zero = true;  // the narrowing saturates at both ends
#else
  static constexpr bool stores_negative_as_zero = false;
#endif
};

NEROVA_INLINE F32x4 operator+(F32x4 a, F32x4 b) { return {_mm_add_ps(a.v, b.v)}; }
NEROVA_INLINE F32x4 operator-(F32x4 a, F32x4 b) { return {_mm_sub_ps(a.v, b.v)}; }
NEROVA_INLINE F32x4 operator*(F32x4 a, F32x4 b) { return {_mm_mul_ps(a.v, b.v)}; }
NEROVA_INLINE F32x4 operator/(F32x4 a, F32x4 b) { return {_mm_div_ps(a.v, b.v)}; }
NEROVA_INLINE Mask4 operator<(F32x4 a, F32x4 b) { return {_mm_cmplt_ps(a.v, b.v)}; }
NEROVA_INLINE Mask4 operator==(F32x4 a, F32x4 b) { return {_mm_cmpeq_ps(a.v, b.v)}; }

NEROVA_INLINE F32x4 min(F32x4 a, F32x4 b) { return {_mm_min_ps(a.v, b.v)}; }
NEROVA_INLINE F32x4 max(F32x4 a, F32x4 b) { return {_mm_max_ps(a.v, b.v)}; }
NEROVA_INLINE F32x4 sqrt(F32x4 a) { return {_mm_sqrt_ps(a.v)}; }
NEROVA_INLINE F32x4 reciprocal_estimate(F32x4 a) { return {_mm_rcp_ps(a.v)}; }

NEROVA_INLINE F32x4 select(Mask4 mask, F32x4 yes, F32x4 no) {
  return {_mm_or_ps(_mm_and_ps(mask.bits, yes.v), _mm_andnot_ps(mask.bits, no.v))};
}
NEROVA_INLINE F32x4 zero_if(Mask4 mask, F32x4 a) { return {_mm_andnot_ps(mask.bits, a.v)}; }
NEROVA_INLINE F32x4 zero_if_nan(F32x4 a) { return {_mm_and_ps(_mm_cmpord_ps(a.v, a.v), a.v)}; }
/** The magnitude, not negative, with the sign of another value. */
NEROVA_INLINE F32x4 with_sign_of(F32x4 sign, F32x4 magnitude) {
  return {_mm_or_ps(_mm_and_ps(_mm_set1_ps(-0.0F), sign.v), magnitude.v)};
}
/** -negative, or other. */
NEROVA_INLINE F32x4 negative_or_other(Mask4 mask, F32x4 negative, F32x4 other) {
  return select(mask, {_mm_xor_ps(negative.v, _mm_set1_ps(-0.0F))}, other);
}
/** pi / 2 if the sign is negative, else 0; or other. */
NEROVA_INLINE F32x4 quarter_turn_if_negative(Mask4 mask, F32x4 sign, F32x4 other) {
  const auto negative = _mm_castsi128_ps(_mm_srai_epi32(_mm_castps_si128(sign.v), 31));
  return select(mask, {_mm_and_ps(negative, _mm_set1_ps(Radians::quarter_turn))}, other);
}

/** Four samples as integers; sums and differences of samples are exact in them and in single precision. */
struct I32x4 {
  __m128i v;
};

NEROVA_INLINE I32x4 operator+(I32x4 a, I32x4 b) { return {_mm_add_epi32(a.v, b.v)}; }
NEROVA_INLINE I32x4 operator-(I32x4 a, I32x4 b) { return {_mm_sub_epi32(a.v, b.v)}; }
NEROVA_INLINE F32x4 to_float(I32x4 a) { return {_mm_cvtepi32_ps(a.v)}; }

#ifdef NEROVA_SSE41_FORM

/** Eight samples s0..s7 are read. Lane 3 of the even channel repeats s2; that is this form's defined result. */
NEROVA_INLINE Channels<I32x4> load_channels(const std::uint16_t* samples) {
  const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
  const __m128i even = _mm_shuffle_epi8(s, _mm_setr_epi8(0, 1, -1, -1, 4, 5, -1, -1, 4, 5, -1, -1, 4, 5, -1, -1));
  const __m128i odd = _mm_shuffle_epi8(s, _mm_setr_epi8(2, 3, -1, -1, 2, 3, -1, -1, 6, 7, -1, -1, 6, 7, -1, -1));
  return {{even}, {odd}};
}

/** Rounds to nearest, ties to even, saturates to 0..65535 and stores four results. */
NEROVA_INLINE void store_outputs(std::uint16_t* to, F32x4 a) {
  const __m128i rounded = _mm_cvtps_epi32(a.v);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi32(rounded, rounded));
}

#else

/** Eight samples s0..s7 are read and five used: even channel (s0, s2, s2, s4), odd channel (s1, s1, s3, s3). */
NEROVA_INLINE Channels<I32x4> load_channels(const std::uint16_t* samples) {
  const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
  const __m128i even = _mm_and_si128(s, _mm_set1_epi32(0xFFFF));
  const __m128i odd = _mm_srli_epi32(s, 16);
  return {{_mm_shuffle_epi32(even, _MM_SHUFFLE(2, 1, 1, 0))}, {_mm_shuffle_epi32(odd, _MM_SHUFFLE(1, 1, 0, 0))}};
}

/** Rounds to nearest, ties to even, and stores four results; the values lie in 0..65535. */
NEROVA_INLINE void store_outputs(std::uint16_t* to, F32x4 a) {
  // SSE2 narrows signed numbers only: shift the range down, narrow, shift it back.
  const __m128i shifted = _mm_sub_epi32(_mm_cvtps_epi32(a.v), _mm_set1_epi32(32768));
  const __m128i narrow = _mm_packs_epi32(shifted, shifted);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_xor_si128(narrow, _mm_set1_epi16(-32768)));
}

#endif

/** Stores four (first, second) pairs: eight floats. */
NEROVA_INLINE void store_pairs(float* to, F32x4 first, F32x4 second) {
  _mm_storeu_ps(to, _mm_unpacklo_ps(first.v, second.v));
  _mm_storeu_ps(to + 4, _mm_unpackhi_ps(first.v, second.v));
}

}  // namespace
}  // namespace nerova_zel
