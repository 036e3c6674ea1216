#pragma once

#include "kernels/shared/pixel_arithmetic.h"
#include "lanes_16.h"
#include "shifted_samples.h"

// Two vectors of sixteen lanes, 32 pixels, make a step.
namespace nerova_zel {
namespace {

/** 32 results in the order of their pixels. */
struct U16x32 {
  __m512i v;

  NEROVA_INLINE static U16x32 broadcast(std::uint16_t value) {
    return {_mm512_set1_epi16(static_cast<std::int16_t>(value))};
  }
};

/** As a result in every lane. */
struct OutputMaximum {
  U16x32 results;

  NEROVA_INLINE explicit OutputMaximum(float maximum)
      : results(U16x32::broadcast(static_cast<std::uint16_t>(maximum))) {}
};

/**
 * How a row of samples comes into lanes, how results leave, and how many pixels that makes at a time. Vector 0 of a
 * step holds the even columns, vector 1 the odd ones: loads with a mask take them so without a shuffle.
 */
struct Step32 {
  using Float = F32x16;
  using Results = U16x32;
  static constexpr std::size_t pixels = 32;

  using Samples = ApartSamples<Float>;

  /** Reads 33 samples. */
  NEROVA_INLINE static Samples load(const std::uint16_t* samples) {
    return {every_other(samples), every_other(samples + 1), every_other(samples + 2)};
  }

  /** Of vector i: even columns take the first weight, odd columns the second. */
  NEROVA_INLINE static Float alternate(int i, float even, float odd) { return Float::broadcast(i == 0 ? even : odd); }

  /** Rounds, and saturates to 0..65535. */
  NEROVA_INLINE static Results narrow(Float even, Float odd) {
    const __m512i fours = _mm512_packus_epi32(round_to_int(even).v, round_to_int(odd).v);
    const __m512i turns = _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
    return {_mm512_shuffle_epi8(fours, turns)};
  }
  /** Rounds, and clamps to 0..maximum; NaN becomes 0. */
  NEROVA_INLINE static Results narrow(Float even, Float odd, const OutputMaximum& maximum) {
    return {_mm512_min_epu16(narrow(even, odd).v, maximum.results.v)};
  }

  template <bool past_caches>
  NEROVA_INLINE static void store_outputs(std::uint16_t* to, Results results) {
    if constexpr (past_caches) {  // to the beginning of a cache line
      _mm512_stream_si512(reinterpret_cast<__m512i*>(to), results.v);
    } else {
      _mm512_storeu_si512(to, results.v);
    }
  }

  static constexpr bool joins_pairs = true;
  /** Stores the (first, second) pairs of both vectors: 64 floats. */
  template <bool past_caches>
  NEROVA_INLINE static void store_pairs(float* to, const NormalizedStokes<Float>& even,
                                        const NormalizedStokes<Float>& odd) {
    const PairLines pairs(even, odd);
    for (std::size_t i = 0; i < 4; ++i) {
      if constexpr (past_caches) {  // to the beginning of a cache line
        _mm512_stream_ps(to + 16 * i, pairs.lines[i]);
      } else {
        _mm512_storeu_ps(to + 16 * i, pairs.lines[i]);
      }
    }
  }

 private:
  /** 16 samples; what lies between them is not touched. */
  NEROVA_INLINE static Float every_other(const std::uint16_t* samples) {
    constexpr __mmask32 low_halves = 0x55555555;
    const __m512i shifted_zero = _mm512_castps_si512(_mm512_set1_ps(SampleShift::value));
    return {_mm512_castsi512_ps(_mm512_mask_loadu_epi16(shifted_zero, low_halves, samples))};
  }

  /** Eight pairs each, in the order of the columns. */
  struct PairLines {
    __m512 lines[4];

    NEROVA_INLINE PairLines(const NormalizedStokes<Float>& even, const NormalizedStokes<Float>& odd) {
      join(lines, lower_pairs(even), lower_pairs(odd));
      join(lines + 2, upper_pairs(even), upper_pairs(odd));
    }

   private:
    /** The pairs of lanes 0, 4, 1, 5, 2, 6, 3, 7. */
    NEROVA_INLINE static __m512d lower_pairs(const NormalizedStokes<Float>& stokes) {
      const __m512i order = _mm512_set_epi32(23, 7, 19, 3, 22, 6, 18, 2, 21, 5, 17, 1, 20, 4, 16, 0);
      return _mm512_castps_pd(_mm512_permutex2var_ps(stokes.s1.v, order, stokes.s2.v));
    }
    /** Of the lanes eight further on. */
    NEROVA_INLINE static __m512d upper_pairs(const NormalizedStokes<Float>& stokes) {
      const __m512i order = _mm512_set_epi32(31, 15, 27, 11, 30, 14, 26, 10, 29, 13, 25, 9, 28, 12, 24, 8);
      return _mm512_castps_pd(_mm512_permutex2var_ps(stokes.s1.v, order, stokes.s2.v));
    }
    NEROVA_INLINE static void join(__m512* to, __m512d even, __m512d odd) {
      to[0] = _mm512_castpd_ps(_mm512_unpacklo_pd(even, odd));
      to[1] = _mm512_castpd_ps(_mm512_unpackhi_pd(even, odd));
    }
  };
};

/** However many results there are. */
template <bool few_results>
using StepFor = Step32;

/** Stokes pairs alone are computed in any order; see step_16.h. */
constexpr bool pairs_keep_order = false;

/** Up to how many 16-bit outputs two steps are computed at a time, without calibration; more would make large code. */
constexpr unsigned most_results_of_two_steps(bool pairs) { return pairs ? 0 : 2; }

}  // namespace
}  // namespace nerova_zel
