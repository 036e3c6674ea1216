// The rows under calibrations of one kind. Compiled twice for each plugin: NEROVA_RULES is the kind's rules,
// NEROVA_TABLE the name of the table.

#include "wide_step.h"

namespace nerova_zel {
namespace {

/**
 * The weights of one row of the matrices for vector i of a step; columns as in CalibrationMatrix.
 * Fused: (sample + 2^23) * weight - 2^23 * weight, rounded once. Equal to sample * weight but for the sign of a zero,
 * and only for ordinary weights.
 */
template <class Step, bool fused>
struct Weights {
  Float column[4];
  Float shift[4];

  /** In units of 1 / scale, a power of 2. */
  NEROVA_INLINE Weights(const RowStretch& stretch, std::size_t row, float scale, int i) {
    const float* const even = stretch.even_matrix->m + 4 * row;
    const float* const odd = stretch.odd_matrix->m + 4 * row;
    for (std::size_t k = 0; k < 4; ++k) {
      column[k] = Step::alternate(i, scale * even[k], scale * odd[k]);
      shift[k] = column[k] * Float::broadcast(-SampleShift::value);
    }
  }

  /** The grouping of the sums is part of the result. */
  NEROVA_INLINE Float weigh(const Float (&shifted)[4]) const {
    return ((product(shifted, 0) + product(shifted, 1)) + product(shifted, 2)) + product(shifted, 3);
  }

 private:
  NEROVA_INLINE Float product(const Float (&shifted)[4], std::size_t k) const {
    if constexpr (fused) {
      return fused_multiply_add(shifted[k], column[k], shift[k]);
    } else {
      return (shifted[k] - Float::broadcast(SampleShift::value)) * column[k];
    }
  }
};

/** Weighed samples; ordinary weights of the sum are halved beforehand. */
template <class Step, bool ordinary, bool fused>
class CalibratedSource {
 public:
  NEROVA_INLINE explicit CalibratedSource(const RowStretch& stretch)
      : vectors_{VectorWeights(stretch, 0), VectorWeights(stretch, 1)} {}

  NEROVA_INLINE LinearStokes<Float> stokes(const StepSamples<Step>& samples, int i) const {
    const Float shifted[4] = {samples.own.column(i), samples.own.next_column(i), samples.partner.column(i),
                              samples.partner.next_column(i)};
    const VectorWeights& weights = vectors_[i];
    const Float sum = weights.sum.weigh(shifted);
    return {ordinary ? sum : sum * Float::broadcast(0.5F), weights.s1.weigh(shifted), weights.s2.weigh(shifted)};
  }

 private:
  struct VectorWeights {
    Weights<Step, fused> sum;
    Weights<Step, fused> s1;
    Weights<Step, fused> s2;

    NEROVA_INLINE VectorWeights(const RowStretch& stretch, int i)
        : sum(stretch, 0, ordinary ? 0.5F : 1.0F, i), s1(stretch, 1, 1.0F, i), s2(stretch, 2, 1.0F, i) {}
  };

  VectorWeights vectors_[2];
};

template <bool equal_maximum, OutputSet outputs, bool streams>
void calibrated_row(const TransformParameters& images, const FrameConstants& constants, const RowStretch& stretch) {
  using Rules = NEROVA_RULES<Float>;
  using Step = StepFor<false>;
  constexpr bool ordinary = Rules::weights_are_ordinary;
  // The signs of zeros are seen in quotients, which are not among few results; more results leave the shifts' shares no
  // registers.
  constexpr bool fused = ordinary && few_results(outputs);
  constexpr bool two_at_a_time = enough_registers && ordinary && results_only(outputs, 1);
  compute_stretch<Step, equal_maximum, outputs, streams, two_at_a_time, Rules>(
      images, constants, stretch, CalibratedSource<Step, ordinary, fused>(stretch));
}

struct CalibratedRows {
  template <bool equal_maximum, OutputSet outputs, bool streams>
  static constexpr WideRow of() {
    return calibrated_row<equal_maximum, outputs, streams>;
  }
};

}  // namespace

const WideRowTable NEROVA_TABLE = make_table<CalibratedRows>();

}  // namespace nerova_zel
