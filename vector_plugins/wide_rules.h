#pragma once

#include "kernels/shared/pixel_arithmetic.h"

// The per-pixel rules for wide lanes: the same results as PixelRules, bit for bit, without its divisions where a proof
// allows.
namespace nerova_zel {
namespace {

/** 1 / d as the sum of two floats, good to 2^-48: the nearest float, and the float nearest to what that leaves. */
template <class Float>
struct Divisor {
  Float reciprocal;
  Float remainder;
};

/**
 * a / d, correctly rounded, for integers d below 2^16 and results above 2^-100 (smaller ones are 0 as outputs, however
 * they are rounded). A quotient lies at least 2^-41 of itself
 * from a boundary between two roundings: a 24-bit number divided by d cannot equal a 25-bit number m (d is odd, or 180
 * with m odd), and differs from it by at least 1 / (d * m). The sum before its rounding is good to 2^-47.
 */
template <class Float>
NEROVA_INLINE Float divide(Float a, const Divisor<Float>& d) {
  return fused_multiply_add(a, d.reciprocal, a * d.remainder);
}

template <class Float>
struct WideConstants {
  Float output_maximum;
  Divisor<Float> input_maximum;
  Divisor<Float> half_turn;  ///< 180 degrees
};

/** Where every output but the degree fits into 32 bits, so that results may be clamped once they are narrow. */
template <class Float>
struct FiniteRules : WideConstants<Float> {
  static constexpr bool clamps_results = true;
  NEROVA_INLINE static Float clamp(Float value) { return value; }

  NEROVA_INLINE Float rescale(Float value) const { return divide(value * this->output_maximum, this->input_maximum); }
  NEROVA_INLINE Float scale_degrees(Float degrees) const {
    return divide(degrees * this->output_maximum, this->half_turn);
  }
};

/** Where the default calibration is in force: sums and differences of samples. */
template <class Float>
struct DefaultRules : FiniteRules<Float> {
  using Samples = SampleDifferences;

  /** At most twice the maximum, or NaN where no light is, which as an integer becomes 0. */
  NEROVA_INLINE static Float clamp_degree(Float /*power*/, Float value) { return value; }

  /**
   * Two quotients by one reciprocal, each corrected by its exact remainder. Correctly rounded: s / p is the quotient of
   * integers below 2^17 and 2^18, so it lies at least 2^-43 of itself from a boundary between two roundings, and the
   * sum before its rounding errs by less than 2^-43.4 (the error of the first quotient times that of the
   * reciprocal, either below 2^-21.9).
   */
  NEROVA_INLINE static NormalizedStokes<Float> normalize(const LinearStokes<Float>& stokes) {
    const Float estimate = reciprocal_estimate(stokes.power);
    const Float error = fused_subtract_product(Float::broadcast(1.0F), stokes.power, estimate);
    const Float reciprocal = fused_multiply_add(estimate, error, estimate);
    return {quotient(stokes.s1, stokes.power, reciprocal), quotient(stokes.s2, stokes.power, reciprocal)};
  }

 private:
  NEROVA_INLINE static Float quotient(Float a, Float b, Float reciprocal) {
    const Float near = a * reciprocal;
    return fused_multiply_add(fused_subtract_product(a, near, b), reciprocal, near);
  }
};

/** Where the matrices may hold anything. */
template <class Float>
struct CalibratedRules : WideConstants<Float> {
  using Samples = AnySamples;
  static constexpr bool weights_are_ordinary = false;

  static constexpr bool clamps_results = false;
  NEROVA_INLINE Float clamp(Float value) const { return clamp_to_output(value, this->output_maximum); }
  NEROVA_INLINE Float clamp_degree(Float power, Float value) const {
    return nerova_zel::clamp_degree(power, value, this->output_maximum);
  }

  NEROVA_INLINE static NormalizedStokes<Float> normalize(const LinearStokes<Float>& stokes) {
    return divide_by_power(stokes);
  }
  NEROVA_INLINE Float rescale(Float value) const {
    return divide(not_negative(value * this->output_maximum), this->input_maximum);
  }
  NEROVA_INLINE Float scale_degrees(Float degrees) const {
    return divide(not_negative(degrees * this->output_maximum), this->half_turn);
  }

 private:
  /**
   * The output is 0 for anything negative, so negative values may as well be 0 before the division, where minus
   * infinity would become NaN. NaN stays; plus infinity becomes NaN, which gives the output maximum just as well.
   */
  NEROVA_INLINE static Float not_negative(Float value) { return max(Float::broadcast(0.0F), value); }
};

/** Where all weights are ordinary: the Stokes parameters are 0, or normal numbers by a wide margin. */
template <class Float>
struct OrdinaryRules : FiniteRules<Float> {
  using Samples = OrdinarySamples;
  static constexpr bool weights_are_ordinary = true;

  NEROVA_INLINE Float clamp_degree(Float power, Float value) const {
    return nerova_zel::clamp_degree(power, value, this->output_maximum);
  }
  NEROVA_INLINE static NormalizedStokes<Float> normalize(const LinearStokes<Float>& stokes) {
    return divide_by_power(stokes);
  }
};

}  // namespace
}  // namespace nerova_zel
