#pragma once

#include <type_traits>

#include "kernels/shared/pixel_arithmetic.h"
#include "lanes_8.h"
#include "shifted_samples.h"

// Two vectors of eight lanes, 16 pixels, make a step.
namespace nerova_zel {
namespace {

/** Sixteen results in the order of their pixels. */
struct U16x16 {
  __m256i v;

  NEROVA_INLINE static U16x16 broadcast(std::uint16_t value) {
    return {_mm256_set1_epi16(static_cast<std::int16_t>(value))};
  }
};

/** As a result in every lane. */
struct OutputMaximum {
  U16x16 results;

  NEROVA_INLINE explicit OutputMaximum(float maximum)
      : results(U16x16::broadcast(static_cast<std::uint16_t>(maximum))) {}
};

/**
 * How a row of samples comes into lanes, how results leave, and how many pixels that makes at a time. Vector 0 of a
 * step holds pixels 0 to 3 and 8 to 11, vector 1 the others: the order in which AVX2 widens and narrows.
 */
struct Step16 {
  using Float = F32x8;
  using Results = U16x16;
  static constexpr std::size_t pixels = 16;

  /** 17 samples of a row: 0 to 15, and 1 to 16; taken out shifted. */
  struct Samples {
    __m256i own;
    __m256i next;

    /** For each column k of vector i: of the samples of columns k and k + 1, the one that lies in an even column. */
    NEROVA_INLINE Float even(int i) const { return shifted(i, _mm256_blend_epi16(own, next, 0xAA)); }
    /** For each column k of vector i: of the samples of columns k and k + 1, the one that lies in an odd column. */
    NEROVA_INLINE Float odd(int i) const { return shifted(i, _mm256_blend_epi16(next, own, 0xAA)); }
    /** For each column k of vector i: the sample of column k. */
    NEROVA_INLINE Float column(int i) const { return shifted(i, own); }
    /** The sample of column k + 1. */
    NEROVA_INLINE Float next_column(int i) const { return shifted(i, next); }

   private:
    NEROVA_INLINE static Float shifted(int i, __m256i samples) {
      const __m256i above = _mm256_set1_epi16(SampleShift::bits >> 16);
      return {
          _mm256_castsi256_ps(i == 0 ? _mm256_unpacklo_epi16(samples, above) : _mm256_unpackhi_epi16(samples, above))};
    }
  };

  NEROVA_INLINE static Samples load(const std::uint16_t* samples) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples)),
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples + 1))};
  }

  /** Of vector i: even columns take the first weight, odd columns the second. */
  NEROVA_INLINE static Float alternate(int /*i*/, float even, float odd) {
    return {_mm256_blend_ps(_mm256_set1_ps(even), _mm256_set1_ps(odd), 0xAA)};
  }

  /** Rounds, and saturates to 0..65535. */
  NEROVA_INLINE static Results narrow(Float first, Float second) {
    return {_mm256_packus_epi32(round_to_int(first).v, round_to_int(second).v)};
  }
  /** Rounds, and clamps to 0..maximum; NaN becomes 0. */
  NEROVA_INLINE static Results narrow(Float first, Float second, const OutputMaximum& maximum) {
    return {_mm256_min_epu16(narrow(first, second).v, maximum.results.v)};
  }

  template <bool past_caches>
  NEROVA_INLINE static void store_outputs(std::uint16_t* to, Results results) {
    if constexpr (past_caches) {  // to a multiple of 32
      _mm256_stream_si256(reinterpret_cast<__m256i*>(to), results.v);
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), results.v);
    }
  }

  /** The two vectors' pairs are not kept for each other: there are few registers. */
  static constexpr bool joins_pairs = false;
  /** Stores the (first, second) pairs of vector i of a step: 16 floats in two places. */
  template <bool past_caches>
  NEROVA_INLINE static void store_pairs(float* to, std::size_t i, const NormalizedStokes<Float>& stokes) {
    const __m256 low = _mm256_unpacklo_ps(stokes.s1.v, stokes.s2.v);
    const __m256 high = _mm256_unpackhi_ps(stokes.s1.v, stokes.s2.v);
    store<past_caches>(to + 8 * i, _mm256_permute2f128_ps(low, high, 0x20));
    store<past_caches>(to + 8 * i + 16, _mm256_permute2f128_ps(low, high, 0x31));
  }

 private:
  template <bool past_caches>
  NEROVA_INLINE static void store(float* to, __m256 values) {
    if constexpr (past_caches) {  // to a multiple of 32
      _mm256_stream_ps(to, values);
    } else {
      _mm256_storeu_ps(to, values);
    }
  }
};

/**
 * The same with the even columns in vector 0 and the odd ones in vector 1. The samples come with one blend each, but
 * every result takes a shuffle more: for at most two 16-bit outputs.
 */
struct ApartStep16 {
  using Float = F32x8;
  using Results = U16x16;
  static constexpr std::size_t pixels = Step16::pixels;

  using Samples = ApartSamples<Float>;

  /** Reads 17 samples. */
  NEROVA_INLINE static Samples load(const std::uint16_t* samples) {
    const __m256i own = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples));
    const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples + 1));
    // Not by a third load, which would reach one sample too far.
    return {shifted(own), shifted(next), shifted(_mm256_srli_epi32(next, 16))};
  }

  NEROVA_INLINE static Results narrow(Float even, Float odd, const OutputMaximum& maximum) {
    const __m256i turns =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
    return {_mm256_shuffle_epi8(Step16::narrow(even, odd, maximum).v, turns)};
  }

  template <bool past_caches>
  NEROVA_INLINE static void store_outputs(std::uint16_t* to, Results results) {
    Step16::store_outputs<past_caches>(to, results);
  }

 private:
  /** Every other one of 16 samples. */
  NEROVA_INLINE static Float shifted(__m256i samples) {
    return {_mm256_castsi256_ps(_mm256_blend_epi16(_mm256_set1_epi32(SampleShift::bits), samples, 0x55))};
  }
};

/** Without calibration; weights that differ between the vectors would not fit into the registers. */
template <bool few_results>
using StepFor = std::conditional_t<few_results, ApartStep16, Step16>;

/**
 * Whether Stokes pairs alone are computed strictly one vector after the other: the divisions of both, moved together,
 * wait for each other. Measured; other outputs lose by it.
 */
constexpr bool pairs_keep_order = true;

/** Up to how many 16-bit outputs two steps are computed at a time, without calibration; more would make large code. */
constexpr unsigned most_results_of_two_steps(bool pairs) { return pairs ? 0 : 5; }

}  // namespace
}  // namespace nerova_zel
