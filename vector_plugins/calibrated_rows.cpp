// The rows under calibrations of one kind. Compiled twice for each plugin: NEROVA_RULES is the kind's rules,
// NEROVA_TABLE the name of the table.

#include "wide_step.h"

namespace nerova_zel {
namespace {

/**
 * The weights of one row of the matrices, for even and odd columns in turn; columns as in CalibrationMatrix.
 * Fused: products of shifted samples, rounded once, less the shift's share; equal but for the sign of a zero, and only
 * for ordinary weights.
 */
template <bool fused>
struct Weights {
  Float column[4];
  Float shift[4];

  /** In units of 1 / scale, a power of 2. */
  NEROVA_INLINE static Weights of(const RowStretch& stretch, std::size_t row, float scale) {
    Weights weights;
    const float* even = stretch.even_matrix->m + 4 * row;
    const float* odd = stretch.odd_matrix->m + 4 * row;
    for (std::size_t i = 0; i < 4; ++i) {
      weights.column[i] = Step::alternate(scale * even[i], scale * odd[i]);
      weights.shift[i] = weights.column[i] * Float::broadcast(-sample_shift);
    }
    return weights;
  }

  /** The grouping of the sums is part of the result. */
  NEROVA_INLINE Float weigh(const Float (&shifted)[4]) const {
    return ((product(shifted, 0) + product(shifted, 1)) + product(shifted, 2)) + product(shifted, 3);
  }

 private:
  NEROVA_INLINE Float product(const Float (&shifted)[4], std::size_t i) const {
    if constexpr (fused) {
      return fused_multiply_add(shifted[i], column[i], shift[i]);
    } else {
      return (shifted[i] - Float::broadcast(sample_shift)) * column[i];
    }
  }
};

template <bool ordinary, bool fused>
struct CalibratedSource {
  struct Samples {
    Step::Samples own;
    Step::Samples partner;
  };

  using RowWeights = Weights<fused>;

  RowWeights sum;
  RowWeights s1;
  RowWeights s2;

  NEROVA_INLINE explicit CalibratedSource(const RowStretch& stretch)
      : sum(RowWeights::of(stretch, 0, ordinary ? 0.5F : 1.0F)),
        s1(RowWeights::of(stretch, 1, 1.0F)),
        s2(RowWeights::of(stretch, 2, 1.0F)) {}

  NEROVA_INLINE static Samples load(const std::uint16_t* own, const std::uint16_t* partner) {
    return {Step::load(own), Step::load(partner)};
  }

  NEROVA_INLINE LinearStokes<Float> stokes(const Samples& samples, int i) const {
    const Float shifted[4] = {samples.own.column(i), samples.own.next_column(i), samples.partner.column(i),
                              samples.partner.next_column(i)};
    return {power(sum.weigh(shifted)), s1.weigh(shifted), s2.weigh(shifted)};
  }

 private:
  /** Ordinary weights are halved beforehand. */
  NEROVA_INLINE static Float power(Float weighed) {
    if constexpr (ordinary) {
      return weighed;
    } else {
      return weighed * Float::broadcast(0.5F);
    }
  }
};

template <bool equal_maximum, OutputSet outputs>
void calibrated_row(const TransformParameters& images, const FrameConstants& constants, const RowStretch& stretch) {
  using Rules = NEROVA_RULES<Float>;
  constexpr bool ordinary = Rules::weights_are_ordinary;
  // The signs of zeros are seen in the quotients only.
  constexpr bool fused = ordinary && (outputs & output_normalized_stokes) == 0;
  compute_stretch<equal_maximum, outputs, Rules>(images, constants, stretch,
                                                 CalibratedSource<ordinary, fused>(stretch));
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

const WideRowTable NEROVA_TABLE = make_table<CalibratedRows>();

}  // namespace nerova_zel
