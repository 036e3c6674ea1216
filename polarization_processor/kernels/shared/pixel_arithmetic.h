#pragma once

#include "kernels/shared/always_inline.h"
#include "kernels/shared/output_set.h"

// The formulae, once, over any number of lanes. A lane type Float offers the arithmetic operators, comparisons that
// give masks, and the few named operations used below; each is rounded to single precision by itself. No memory, no
// intrinsics here. Everything has internal linkage: a copy compiled for one instruction set must never serve another.
namespace nerova_zel {
namespace {

/** The linear Stokes parameters of some pixels: total power, horizontal/vertical and diagonal difference. */
template <class Float>
struct LinearStokes {
  Float power;
  Float s1;
  Float s2;
};

/** s1 / power and s2 / power. */
template <class Float>
struct NormalizedStokes {
  Float s1;
  Float s2;
};

/** Arctangent on -1..1 to 0.005 radian by an odd cubic, in units of 1 / scale. The coefficients are part of the result.
 */
template <class Float>
NEROVA_INLINE Float cubic_arctangent(Float t, float scale) {
  const Float k1 = Float::broadcast(scale * 0.9723941F);
  const Float k2 = Float::broadcast(scale * -0.19194795F);
  return ((t * t) * k2 + k1) * t;
}

/** Of the angle of the Stokes vector, twice the azimuth. */
struct Radians {
  static constexpr float half_turn = 3.1415927F;
  static constexpr float quarter_turn = half_turn / 2;
  static constexpr float eighth_turn = half_turn / 4;
  /** 90 / pi, one unit in the last place below the nearest float; part of the result. */
  static constexpr float azimuth_degrees = 28.647888F;
};

/**
 * Azimuth in degrees, 0..180: half the angle of the Stokes vector, atan2(s2, s1), turned by 90 degrees; for any values,
 * infinities and NaN included. Near the S1 axis the cubic takes s2 / s1, else its inverse; both quotients come from
 * reciprocal estimates.
 */
struct AnySamples {
  template <class Float>
  NEROVA_INLINE static Float azimuth_degrees(Float s1, Float s2) {
    return stokes_angle(s1, s2) * Float::broadcast(Radians::azimuth_degrees) + Float::broadcast(90.0F);
  }

 private:
  template <class Float>
  NEROVA_INLINE static Float stokes_angle(Float s1, Float s2) {
    const Float zero = Float::broadcast(0.0F);
    const Float ratio = s2 * reciprocal_estimate(s1);
    const auto near_axis = abs(s2) < abs(s1);
    const Float arc = cubic_arctangent(select(near_axis, ratio, reciprocal_estimate(ratio)), 1.0F);
    const Float turn = select(s2 >= zero, Float::broadcast(Radians::half_turn), Float::broadcast(-Radians::half_turn));
    const Float quarter =
        select(s2 > zero, Float::broadcast(Radians::quarter_turn), Float::broadcast(-Radians::quarter_turn));
    const Float angle = select(near_axis, select(s1 > zero, zero, turn) + arc, quarter - arc);
    return select(s1 == zero, select(s2 == zero, zero, quarter), angle);
  }
};

/**
 * The same where quotients of s1 and s2 are normal numbers, 0 or infinite, and s2 is not -0. Then signs stand for
 * comparisons, only s1 = s2 = 0 yields NaN on the way, and the cubic, which is odd, may take a negated argument.
 * Halving the angle first, which is exact, leaves a quarter turn for its largest constant: one that AVX-512 has at
 * hand.
 */
struct OrdinarySamples {
  template <class Float>
  NEROVA_INLINE static Float azimuth_degrees(Float s1, Float s2) {
    const Float positive_zero = Float::broadcast(0.0F);
    return azimuth_degrees(abs(s2) < abs(s1), s1, s2 + positive_zero);
  }

 protected:
  template <class Mask, class Float>
  NEROVA_INLINE static Float azimuth_degrees(Mask near_axis, Float s1, Float s2) {
    return half_stokes_angle(near_axis, s1, s2) * Float::broadcast(2 * Radians::azimuth_degrees) +
           Float::broadcast(90.0F);
  }

 private:
  template <class Mask, class Float>
  NEROVA_INLINE static Float half_stokes_angle(Mask near_axis, Float s1, Float s2) {
    const Float ratio = s2 * reciprocal_estimate(s1);
    const Float negative_arc = cubic_arctangent(negative_or_other(near_axis, ratio, reciprocal_estimate(ratio)), 0.5F);
    const Float start = quarter_turn_if_negative(near_axis, s1, Float::broadcast(Radians::eighth_turn));
    return zero_if_nan(with_sign_of(s2, start) - negative_arc);
  }
};

/** The same where s1 and s2 are differences of samples: integers below 2^16, and zero only as +0. */
struct SampleDifferences : OrdinarySamples {
  template <class Float>
  NEROVA_INLINE static Float azimuth_degrees(Float s1, Float s2) {
    // As the magnitudes compare: squares of such integers lie further apart than their rounding reaches. The degree
    // needs them too.
    return OrdinarySamples::azimuth_degrees(s2 * s2 < s1 * s1, s1, s2);
  }
};

/** sqrt(s1^2 + s2^2) / power by a reciprocal estimate; infinite or NaN where the power is 0. */
template <class Float>
NEROVA_INLINE Float degree_of_linear_polarization(const LinearStokes<Float>& stokes) {
  return sqrt(stokes.s1 * stokes.s1 + stokes.s2 * stokes.s2) * reciprocal_estimate(stokes.power);
}

template <class Float>
NEROVA_INLINE NormalizedStokes<Float> divide_by_power(const LinearStokes<Float>& stokes) {
  return {stokes.s1 / stokes.power, stokes.s2 / stokes.power};
}

/** Clamps to 0..maximum; NaN becomes the maximum, because the minimum returns its second operand for NaN. */
template <class Float>
NEROVA_INLINE Float clamp_to_output(Float value, Float maximum) {
  const Float limited = min(value, maximum);
  if constexpr (Float::stores_negative_as_zero) {
    return limited;
  } else {
    return max(limited, Float::broadcast(0.0F));
  }
}

/** The degree's output, given it in units of the output; 0 where the power is 0. */
template <class Float>
NEROVA_INLINE Float clamp_degree(Float power, Float value, Float maximum) {
  return clamp_to_output(zero_if(power == Float::broadcast(0.0F), value), maximum);
}

/** The rules of pixels computed one by one: exact half, true divisions, any calibration. */
template <class Float>
struct PixelRules {
  using Samples = AnySamples;

  Float input_maximum;
  Float output_maximum;

  NEROVA_INLINE static Float power(Float sum) { return sum * Float::broadcast(0.5F); }
  NEROVA_INLINE static NormalizedStokes<Float> normalize(const LinearStokes<Float>& stokes) {
    return divide_by_power(stokes);
  }
  NEROVA_INLINE Float rescale(Float value) const { return (value * output_maximum) / input_maximum; }
  NEROVA_INLINE Float scale_degrees(Float degrees) const {
    return (degrees * output_maximum) / Float::broadcast(180.0F);
  }
  NEROVA_INLINE Float clamp(Float value) const { return clamp_to_output(value, output_maximum); }
  NEROVA_INLINE Float clamp_degree(Float power, Float value) const {
    return nerova_zel::clamp_degree(power, value, output_maximum);
  }
};

/** The rules of the built-in blocks: default calibration, and estimates prepared once per frame for divisions. */
template <class Float>
struct BlockRules {
  using Samples = SampleDifferences;

  Float half;
  Float input_reciprocal;
  Float output_maximum;
  Float azimuth_scale;

  NEROVA_INLINE Float power(Float sum) const { return sum * half; }
  NEROVA_INLINE static NormalizedStokes<Float> normalize(const LinearStokes<Float>& stokes) {
    return divide_by_power(stokes);
  }
  NEROVA_INLINE Float rescale(Float value) const { return (value * output_maximum) * input_reciprocal; }
  NEROVA_INLINE Float scale_degrees(Float degrees) const { return degrees * azimuth_scale; }
  NEROVA_INLINE Float clamp(Float value) const { return clamp_to_output(value, output_maximum); }
  NEROVA_INLINE Float clamp_degree(Float power, Float value) const {
    return nerova_zel::clamp_degree(power, value, output_maximum);
  }
};

template <bool equal_maximum, class Rules, class Float>
NEROVA_INLINE Float linear_output(const Rules& rules, Float value) {
  if constexpr (equal_maximum) {
    return rules.clamp(value);
  } else {
    return rules.clamp(rules.rescale(value));
  }
}

/** Of five things, one for each 16-bit output, the one for this output. */
template <OutputSet output, class Thing>
NEROVA_INLINE Thing& choose(Thing& total_power, Thing& horizontal_vertical, Thing& diagonal, Thing& azimuth,
                            Thing& degree) {
  if constexpr (output == output_total_power) {
    return total_power;
  } else if constexpr (output == output_horizontal_vertical) {
    return horizontal_vertical;
  } else if constexpr (output == output_diagonal) {
    return diagonal;
  } else if constexpr (output == output_azimuth) {
    return azimuth;
  } else {
    static_assert(output == output_degree);
    return degree;
  }
}

/** The image of a 16-bit output; of TransformParameters or ImageViews. */
template <OutputSet output, class Images>
NEROVA_INLINE const auto& image_of(const Images& images) {
  return choose<output>(images.total_power, images.horizontal_vertical, images.diagonal, images.azimuth,
                        images.degree_of_linear_polarization);
}

/**
 * Every selected output of some pixels. The target takes them with store_pair(s1 / p, s2 / p) and store<output>(value),
 * the value clamped as the rules do and not yet rounded.
 */
template <bool equal_maximum, OutputSet outputs, class Rules, class Float, class Target>
NEROVA_INLINE void compute_outputs(const Rules& rules, const LinearStokes<Float>& stokes, const Target& target) {
  if constexpr ((outputs & output_normalized_stokes) != 0) {
    const NormalizedStokes<Float> normalized = rules.normalize(stokes);
    target.store_pair(normalized.s1, normalized.s2);
  }
  if constexpr ((outputs & output_total_power) != 0) {
    target.template store<output_total_power>(linear_output<equal_maximum>(rules, stokes.power));
  }
  if constexpr ((outputs & output_horizontal_vertical) != 0) {
    target.template store<output_horizontal_vertical>(linear_output<equal_maximum>(rules, stokes.s1));
  }
  if constexpr ((outputs & output_diagonal) != 0) {
    target.template store<output_diagonal>(linear_output<equal_maximum>(rules, stokes.s2));
  }
  if constexpr ((outputs & output_azimuth) != 0) {
    const Float degrees = Rules::Samples::azimuth_degrees(stokes.s1, stokes.s2);
    target.template store<output_azimuth>(rules.clamp(rules.scale_degrees(degrees)));
  }
  if constexpr ((outputs & output_degree) != 0) {
    const Float degree = degree_of_linear_polarization(stokes) * rules.output_maximum;
    target.template store<output_degree>(rules.clamp_degree(stokes.power, degree));
  }
}

}  // namespace
}  // namespace nerova_zel
