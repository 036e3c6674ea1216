#pragma once

#include <type_traits>

#include "lanes_16.h"
#include "shifted_samples.h"

// Two vectors of sixteen lanes, 32 pixels, make a step.
namespace nerova_zel {
namespace {

/** 32 results in the order of their pixels. */
struct Results32 {
  __m512i v;

  NEROVA_INLINE static Results32 broadcast(std::uint16_t value) {
    return {_mm512_set1_epi16(static_cast<std::int16_t>(value))};
  }
};

/** As a number, and as a result in every lane. */
struct OutputMaximum {
  Float16 number;
  Results32 results;

  NEROVA_INLINE explicit OutputMaximum(float maximum)
      : number(Float16::broadcast(maximum)), results(Results32::broadcast(static_cast<std::uint16_t>(maximum))) {}
};

/**
 * How a row of samples comes into lanes, how results leave, and how many pixels that makes at a time. Vector 0 of a
 * step holds pixels 0 to 3, 8 to 11, 16 to 19 and 24 to 27, vector 1 the others: the order in which AVX-512 narrows.
 */
struct Step32 {
  using Float = Float16;
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
      const __m512i shifted_zero = _mm512_castps_si512(_mm512_set1_ps(SampleShift::value));
      const __m512i order_in_next = _mm512_add_epi32(order, _mm512_set1_epi32(3));
      return {_mm512_castsi512_ps(i == 0
                                      ? _mm512_mask_permutexvar_epi16(shifted_zero, low_halves, order, own)
                                      : _mm512_mask_permutexvar_epi16(shifted_zero, low_halves, order_in_next, next))};
    }
  };

  NEROVA_INLINE static Samples load(const std::uint16_t* samples) {
    return {_mm512_loadu_si512(samples), _mm512_loadu_si512(samples + 1)};
  }

  /** Of vector i: even columns take the first weight, odd columns the second. */
  NEROVA_INLINE static Float alternate(int /*i*/, float even, float odd) {
    return {_mm512_mask_blend_ps(0xAAAA, _mm512_set1_ps(even), _mm512_set1_ps(odd))};
  }

  /** Rounds, and saturates to 0..65535. */
  NEROVA_INLINE static Results narrow(Float first, Float second) {
    return {_mm512_packus_epi32(round_to_int(first).v, round_to_int(second).v)};
  }
  /** Rounds, and clamps to 0..maximum; NaN becomes 0. */
  NEROVA_INLINE static Results narrow(Float first, Float second, const OutputMaximum& maximum) {
    return {_mm512_min_epu16(narrow(first, second).v, maximum.results.v)};
  }

  NEROVA_INLINE static void store_outputs(std::uint16_t* to, Results results) { _mm512_storeu_si512(to, results.v); }

  /** Stores the (first, second) pairs of vector i of a step: 32 floats in four places. */
  NEROVA_INLINE static void store_pairs(float* to, std::size_t i, Float first, Float second) {
    store_halves(to + 8 * i, lower_pairs(first, second));
    store_halves(to + 8 * i + 32, upper_pairs(first, second));
  }

  static constexpr bool streams_whole_lines = true;
  /** Stores the pairs of both vectors past the caches, to the beginning of a cache line. */
  NEROVA_INLINE static void stream_pairs(float* to, Float first_0, Float second_0, Float first_1, Float second_1) {
    stream_lines(to, lower_pairs(first_0, second_0), lower_pairs(first_1, second_1));
    stream_lines(to + 32, upper_pairs(first_0, second_0), upper_pairs(first_1, second_1));
  }

 private:
  /** The pairs of lanes 0 to 7. */
  NEROVA_INLINE static __m512 lower_pairs(Float first, Float second) {
    const __m512i order = _mm512_set_epi32(23, 7, 22, 6, 21, 5, 20, 4, 19, 3, 18, 2, 17, 1, 16, 0);
    return _mm512_permutex2var_ps(first.v, order, second.v);
  }
  NEROVA_INLINE static __m512 upper_pairs(Float first, Float second) {
    const __m512i order = _mm512_set_epi32(31, 15, 30, 14, 29, 13, 28, 12, 27, 11, 26, 10, 25, 9, 24, 8);
    return _mm512_permutex2var_ps(first.v, order, second.v);
  }

  NEROVA_INLINE static void store_halves(float* to, __m512 pairs) {
    _mm256_storeu_ps(to, _mm512_castps512_ps256(pairs));
    _mm256_storeu_ps(to + 16, _mm512_extractf32x8_ps(pairs, 1));
  }
  /** Halves of the two vectors in turn. */
  NEROVA_INLINE static void stream_lines(float* to, __m512 pairs_0, __m512 pairs_1) {
    _mm512_stream_ps(to, _mm512_shuffle_f32x4(pairs_0, pairs_1, 0x44));
    _mm512_stream_ps(to + 16, _mm512_shuffle_f32x4(pairs_0, pairs_1, 0xEE));
  }
};

/**
 * The same with the even columns in vector 0 and the odd ones in vector 1. The samples come without being shuffled, but
 * the results take longer to clamp and to join, and pairs would have to be shuffled twice: for few results.
 */
struct ApartStep32 {
  using Float = Float16;
  using Results = Results32;
  static constexpr std::size_t pixels = 32;

  /** 33 samples of a row, shifted: every other one from 0, from 1, and from 2. */
  struct Samples {
    Float from_0;
    Float from_1;
    Float from_2;

    NEROVA_INLINE Float even(int i) const { return i == 0 ? from_0 : from_2; }
    NEROVA_INLINE Float odd(int /*i*/) const { return from_1; }
    NEROVA_INLINE Float column(int i) const { return i == 0 ? from_0 : from_1; }
    NEROVA_INLINE Float next_column(int i) const { return i == 0 ? from_1 : from_2; }
  };

  NEROVA_INLINE static Samples load(const std::uint16_t* samples) {
    return {every_other(samples), every_other(samples + 1), every_other(samples + 2)};
  }

  NEROVA_INLINE static Float alternate(int i, float even, float odd) { return Float::broadcast(i == 0 ? even : odd); }

  NEROVA_INLINE static Results narrow(Float first, Float second, const OutputMaximum& maximum) {
    const __m512i even = round_to_int(clamp(first, maximum)).v;
    const __m512i odd = round_to_int(clamp(second, maximum)).v;
    return {_mm512_or_si512(even, _mm512_slli_epi32(odd, 16))};
  }

  NEROVA_INLINE static void store_outputs(std::uint16_t* to, Results results) { _mm512_storeu_si512(to, results.v); }

 private:
  /** 16 samples; what lies between them is not touched. */
  NEROVA_INLINE static Float every_other(const std::uint16_t* samples) {
    constexpr __mmask32 low_halves = 0x55555555;
    const __m512i shifted_zero = _mm512_castps_si512(_mm512_set1_ps(SampleShift::value));
    return {_mm512_castsi512_ps(_mm512_mask_loadu_epi16(shifted_zero, low_halves, samples))};
  }

  /** The maximum returns its second operand for NaN. */
  NEROVA_INLINE static Float clamp(Float value, const OutputMaximum& maximum) {
    return min(max(value, Float::broadcast(0.0F)), maximum.number);
  }
};

template <bool few_results>
using StepFor = std::conditional_t<few_results, ApartStep32, Step32>;

}  // namespace
}  // namespace nerova_zel
