#pragma once

#include "kernels/shared/always_inline.h"
#include "kernels/shared/outputs.h"
#include "kernels/shared/radians.h"

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

/**
 * Azimuth in degrees, 0..180: half the angle of the Stokes vector, atan2(s2, s1), turned by 90 degrees.
 *
 *   |s2| < |s1|:  angle = start + cubic(s2 / s1)   start = 0 where s1 > 0, else pi with the sign of s2
 *   otherwise:    angle = start - cubic(s1 / s2)   start = pi / 2 with the sign of s2
 *
 * Both quotients come from reciprocal estimates; the cubic is odd, so that one subtraction serves both. The angle is
 * halved first, which is exact: its largest constant is then a quarter turn, which an AVX-512 instruction supplies.
 * Samples says how the cases are told apart, depending on what s1 and s2 can be.
 */
template <class Samples, class Float>
NEROVA_INLINE Float azimuth_degrees(Float s1, Float s2) {
  const Float ratio = s2 * reciprocal_estimate(s1);
  const auto near_axis = Samples::near_axis(s1, s2);
  const Float arc = cubic_arctangent(negative_or_other(near_axis, ratio, reciprocal_estimate(ratio)), 0.5F);
  const Float half_angle = Samples::settle(s1, s2, Samples::half_start(near_axis, s1, s2) - arc);
  return half_angle * Float::broadcast(2 * Radians::azimuth_degrees) + Float::broadcast(90.0F);
}

/** s1 and s2 may be anything, infinities and NaN included. */
struct AnySamples {
  template <class Float>
  NEROVA_INLINE static auto near_axis(Float s1, Float s2) {
    return abs(s2) < abs(s1);
  }

  template <class Mask, class Float>
  NEROVA_INLINE static Float half_start(Mask near_axis, Float s1, Float s2) {
    const Float zero = Float::broadcast(0.0F);
    const Float quarter_turn =
        select(s2 >= zero, Float::broadcast(Radians::quarter_turn), Float::broadcast(-Radians::quarter_turn));
    return select(near_axis, select(s1 > zero, zero, quarter_turn), eighth_turn(s2));
  }

  /** Where s1 = 0 the quotients mean nothing. */
  template <class Float>
  NEROVA_INLINE static Float settle(Float s1, Float s2, Float half_angle) {
    const Float zero = Float::broadcast(0.0F);
    return select(s1 == zero, select(s2 == zero, zero, eighth_turn(s2)), half_angle);
  }

 private:
  template <class Float>
  NEROVA_INLINE static Float eighth_turn(Float s2) {
    return select(s2 > Float::broadcast(0.0F), Float::broadcast(Radians::eighth_turn),
                  Float::broadcast(-Radians::eighth_turn));
  }
};

/**
 * Quotients of s1 and s2 are normal numbers, 0 or infinite. Then signs stand for comparisons, and only s1 = s2 = 0
 * yields NaN on the way.
 */
struct OrdinarySamples {
  template <class Float>
  NEROVA_INLINE static auto near_axis(Float s1, Float s2) {
    return abs(s2) < abs(s1);
  }

  template <class Mask, class Float>
  NEROVA_INLINE static Float half_start(Mask near_axis, Float s1, Float s2) {
    const Float positive_zero = Float::broadcast(0.0F);
    return signed_half_start(near_axis, s1, s2 + positive_zero);
  }

  template <class Float>
  NEROVA_INLINE static Float settle(Float /*s1*/, Float /*s2*/, Float half_angle) {
    return zero_if_nan(half_angle);
  }

 protected:
  /** s2 is not -0. */
  template <class Mask, class Float>
  NEROVA_INLINE static Float signed_half_start(Mask near_axis, Float s1, Float s2) {
    return with_sign_of(s2, quarter_turn_if_negative(near_axis, s1, Float::broadcast(Radians::eighth_turn)));
  }
};

/** s1 and s2 are differences of samples: integers below 2^16, and zero only as +0. */
struct SampleDifferences : OrdinarySamples {
  /** Squares of such integers lie further apart than their rounding reaches, and the degree needs them too. */
  template <class Float>
  NEROVA_INLINE static auto near_axis(Float s1, Float s2) {
    return s2 * s2 < s1 * s1;
  }

  template <class Mask, class Float>
  NEROVA_INLINE static Float half_start(Mask near_axis, Float s1, Float s2) {
    return signed_half_start(near_axis, s1, s2);
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

// A Rules type says how precisely an output is computed. It offers, each over lanes:
//   Samples                     what s1 and s2 can be: AnySamples, OrdinarySamples or SampleDifferences
//   output_maximum              full scale of the 16-bit outputs
//   normalize(stokes)           s1 / power and s2 / power
//   rescale(value)              value * output maximum / input maximum
//   scale_degrees(degrees)      degrees * output maximum / 180
//   clamp(value)                to 0..output maximum, NaN to the maximum; or as it is, where the target clamps
//   clamp_degree(power, value)  the same for the degree, which is 0 where the power is 0
// A source of samples may ask for more: PixelRules and BlockRules have power(sum), half of a sum of samples.

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

// The formula of each output, clamped as the rules do and not yet rounded.

template <bool equal_maximum, class Rules, class Float>
NEROVA_INLINE NormalizedStokes<Float> output_value(NormalizedStokesOutput /*output*/, const Rules& rules,
                                                   const LinearStokes<Float>& stokes) {
  return rules.normalize(stokes);
}

template <bool equal_maximum, class Rules, class Float>
NEROVA_INLINE Float output_value(TotalPowerOutput /*output*/, const Rules& rules, const LinearStokes<Float>& stokes) {
  return linear_output<equal_maximum>(rules, stokes.power);
}

template <bool equal_maximum, class Rules, class Float>
NEROVA_INLINE Float output_value(HorizontalVerticalOutput /*output*/, const Rules& rules,
                                 const LinearStokes<Float>& stokes) {
  return linear_output<equal_maximum>(rules, stokes.s1);
}

template <bool equal_maximum, class Rules, class Float>
NEROVA_INLINE Float output_value(DiagonalOutput /*output*/, const Rules& rules, const LinearStokes<Float>& stokes) {
  return linear_output<equal_maximum>(rules, stokes.s2);
}

template <bool equal_maximum, class Rules, class Float>
NEROVA_INLINE Float output_value(AzimuthOutput /*output*/, const Rules& rules, const LinearStokes<Float>& stokes) {
  return rules.clamp(rules.scale_degrees(azimuth_degrees<typename Rules::Samples>(stokes.s1, stokes.s2)));
}

template <bool equal_maximum, class Rules, class Float>
NEROVA_INLINE Float output_value(DegreeOutput /*output*/, const Rules& rules, const LinearStokes<Float>& stokes) {
  return rules.clamp_degree(stokes.power, degree_of_linear_polarization(stokes) * rules.output_maximum);
}

template <bool equal_maximum, OutputSet outputs, class Output, class Rules, class Float, class Target>
NEROVA_INLINE void compute_output(const Rules& rules, const LinearStokes<Float>& stokes, const Target& target) {
  if constexpr ((outputs & output_bit<Output>) != 0) {
    target.store(Output(), output_value<equal_maximum>(Output(), rules, stokes));
  }
}

template <bool equal_maximum, OutputSet outputs, class Rules, class Float, class Target, class... Rows>
NEROVA_INLINE void compute_outputs(const Rules& rules, const LinearStokes<Float>& stokes, const Target& target,
                                   OutputTable<Rows...> /*table*/) {
  (compute_output<equal_maximum, outputs, Rows>(rules, stokes, target), ...);
}

/**
 * Every selected output of some pixels. The target takes each with store(row of the table, value); the value of the
 * pairs is a NormalizedStokes.
 */
template <bool equal_maximum, OutputSet outputs, class Rules, class Float, class Target>
NEROVA_INLINE void compute_outputs(const Rules& rules, const LinearStokes<Float>& stokes, const Target& target) {
  compute_outputs<equal_maximum, outputs>(rules, stokes, target, Outputs());
}

}  // namespace
}  // namespace nerova_zel
