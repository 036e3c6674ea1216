// The rows under any calibration. Compiled once for each plugin.

#include "wide_step.h"

namespace nerova_zel {
namespace {

/** The weights of one row of the matrices, for even and odd columns in turn; columns as in CalibrationMatrix. */
struct Weights {
  Float column[4];

  NEROVA_INLINE static Weights of(const RowStretch& stretch, std::size_t row) {
    const float* even = stretch.even_matrix->m + 4 * row;
    const float* odd = stretch.odd_matrix->m + 4 * row;
    return {{Step::alternate(even[0], odd[0]), Step::alternate(even[1], odd[1]), Step::alternate(even[2], odd[2]),
             Step::alternate(even[3], odd[3])}};
  }

  /** The grouping of the sums is part of the result. */
  NEROVA_INLINE Float weigh(const Float (&samples)[4]) const {
    return ((samples[0] * column[0] + samples[1] * column[1]) + samples[2] * column[2]) + samples[3] * column[3];
  }
};

struct CalibratedSource {
  struct Samples {
    Step::Pairs own;
    Step::Pairs partner;
  };

  Weights sum;
  Weights s1;
  Weights s2;

  NEROVA_INLINE static Samples load(const std::uint16_t* own, const std::uint16_t* partner) {
    return {Step::load_neighbours(own), Step::load_neighbours(partner)};
  }

  NEROVA_INLINE LinearStokes<Float> stokes(const Samples& samples, int i) const {
    const Float neighbourhood[4] = {to_float(samples.own.low(i)), to_float(samples.own.high(i)),
                                    to_float(samples.partner.low(i)), to_float(samples.partner.high(i))};
    return {CalibratedRules<Float>::power(sum.weigh(neighbourhood)), s1.weigh(neighbourhood), s2.weigh(neighbourhood)};
  }
};

template <bool equal_maximum, OutputSet outputs>
void calibrated_row(const TransformParameters& images, const FrameConstants& constants, const RowStretch& stretch) {
  const CalibratedSource source = {Weights::of(stretch, 0), Weights::of(stretch, 1), Weights::of(stretch, 2)};
  compute_stretch<equal_maximum, outputs, CalibratedRules<Float>>(images, constants, stretch, source);
}

struct CalibratedRows {
  template <unsigned index>
  static constexpr WideRow of() {
    constexpr PixelSelection selection = pixel_selection(index);
    if constexpr (selection.outputs != 0) {
      return calibrated_row<selection.equal_maximum, selection.outputs>;
    } else {
      return nullptr;
    }
  }
};

}  // namespace

const WideRowTable calibrated_wide_rows = make_table<CalibratedRows>();
const std::size_t wide_step_pixels = Step::pixels;

}  // namespace nerova_zel
