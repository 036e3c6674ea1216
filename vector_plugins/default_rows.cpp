// The rows of one polarizer angle under the default calibration. Compiled once for each plugin and angle:
// NEROVA_FIRST_ANGLE is the angle of the row's first pixel (0 to 3), NEROVA_TABLE the name of the table.

#include "kernels/shared/polarizer_differences.h"
#include "wide_step.h"

namespace nerova_zel {
namespace {

/** Sums and differences of the samples by polarizer, exact. */
template <PolarPhase first_angle>
struct DefaultSource {
  template <class Step>
  NEROVA_INLINE static LinearStokes<Float> stokes(const StepSamples<Step>& samples, int i) {
    const Channels<Float> upper = {samples.own.even(i), samples.own.odd(i)};
    const Channels<Float> lower = {samples.partner.even(i), samples.partner.odd(i)};
    const Differences<Float> differences = polarizer_differences<first_angle>(upper, lower);
    return {half_sum(upper, lower), differences.s1, differences.s2};
  }

 private:
  /** Grouped so that vectors which share their odd samples share their sum. */
  NEROVA_INLINE static Float half_sum(const Channels<Float>& upper, const Channels<Float>& lower) {
    const Float odd = add_bits(upper.odd, lower.odd);
    const Float sum = add_bits(add_bits(upper.even, lower.even), odd);
    // Four shifts add up to the bits of 2^-39, whose last place is 2^-62.
    static_assert(4U * SampleShift::bits == 0x2C000000U);
    return fused_multiply_add(sum, Float::broadcast(0x1p61F), Float::broadcast(-0x1p22F));
  }
};

template <bool equal_maximum, OutputSet outputs, bool streams>
void default_row(const TransformParameters& images, const FrameConstants& constants, const RowStretch& stretch) {
  using Rules = DefaultRules<Float>;
  constexpr bool two_at_a_time =
      enough_registers && count_results(outputs) <= most_results_of_two_steps(has_pairs(outputs));
  compute_stretch<StepFor<few_results(outputs)>, equal_maximum, outputs, streams, two_at_a_time, Rules>(
      images, constants, stretch, DefaultSource<NEROVA_FIRST_ANGLE>());
}

struct DefaultRows {
  template <bool equal_maximum, OutputSet outputs, bool streams>
  static constexpr WideRow of() {
    if constexpr (distinct_angle(NEROVA_FIRST_ANGLE, outputs) == NEROVA_FIRST_ANGLE) {
      return default_row<equal_maximum, outputs, streams>;
    } else {
      return nullptr;
    }
  }
};

}  // namespace

const WideRowTable NEROVA_TABLE = make_table<DefaultRows>();

}  // namespace nerova_zel
