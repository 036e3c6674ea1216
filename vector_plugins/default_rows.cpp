// The rows of one polarizer angle under the default calibration. Compiled once for each plugin and angle:
// NEROVA_FIRST_ANGLE is the angle of the row's first pixel (0 to 3), NEROVA_TABLE the name of the table.

#include "kernels/polarizer_differences.h"
#include "wide_step.h"

namespace nerova_zel {
namespace {

/** Sums and differences of the samples by polarizer, exact in integers. */
template <PolarPhase first_angle>
struct DefaultSource {
  struct Samples {
    Step::Pairs own;
    Step::Pairs partner;
  };

  NEROVA_INLINE static Samples load(const std::uint16_t* own, const std::uint16_t* partner) {
    return {Step::load_channels(own), Step::load_channels(partner)};
  }

  NEROVA_INLINE static LinearStokes<Float> stokes(const Samples& samples, int i) {
    const Channels<Int> upper = {samples.own.low(i), samples.own.high(i)};
    const Channels<Int> lower = {samples.partner.low(i), samples.partner.high(i)};
    const Int sum = (upper.even + upper.odd) + (lower.even + lower.odd);
    const Differences<Int> differences = polarizer_differences<first_angle>(upper, lower);
    return {DefaultRules<Float>::power(to_float(sum)), to_float(differences.s1), to_float(differences.s2)};
  }
};

template <PolarPhase first_angle, bool equal_maximum, OutputSet outputs>
void default_row(const TransformParameters& images, const FrameConstants& constants, const RowStretch& stretch) {
  compute_stretch<equal_maximum, outputs, DefaultRules<Float>>(images, constants, stretch,
                                                               DefaultSource<first_angle>());
}

struct DefaultRows {
  template <unsigned index>
  static constexpr WideRow of() {
    constexpr PixelSelection selection = pixel_selection(index);
    if constexpr (selection.outputs != 0 &&
                  distinct_angle(NEROVA_FIRST_ANGLE, selection.outputs) == NEROVA_FIRST_ANGLE) {
      return default_row<NEROVA_FIRST_ANGLE, selection.equal_maximum, selection.outputs>;
    } else {
      return nullptr;
    }
  }
};

}  // namespace

const WideRowTable NEROVA_TABLE = make_table<DefaultRows>();

}  // namespace nerova_zel
