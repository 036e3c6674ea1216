#include "kernels/shared/compute_pixel.h"

#include <cstddef>
#include <utility>

#include "kernels/shared/lanes_1.h"
#include "kernels/shared/pixel_arithmetic.h"

namespace nerova_zel {
namespace {

/** Where the results of one pixel go. */
struct PixelTarget {
  const TransformParameters& parameters;
  const ImageViews& views;
  std::size_t element;

  template <class Output>
  NEROVA_INLINE void store(Output /*output*/, const NormalizedStokes<F32x1>& pair) const {
    float* const to = parameters.images.*Output::image + 2 * element;
    to[0] = pair.s1.value;
    to[1] = pair.s2.value;
  }
  template <class Output>
  NEROVA_INLINE void store(Output /*output*/, F32x1 value) const {
    views.outputs[output_index<Output>].first[element] = round_to_output(value);
  }
};

/** The four samples of a pixel: itself, its horizontal, its vertical and its diagonal partner. */
struct Neighbourhood {
  F32x1 sample[4];
};

NEROVA_INLINE F32x1 to_float(std::uint16_t sample) { return {static_cast<float>(static_cast<std::int32_t>(sample))}; }

NEROVA_INLINE Neighbourhood read_neighbourhood(const ImageView<const std::uint16_t>& input, std::uint32_t row,
                                               std::uint32_t column, NeighbourhoodShape shape) {
  const auto mirror = static_cast<std::uint32_t>(shape);
  const std::uint32_t partner_column = column + 1 - 2 * (mirror & 1U);
  const std::uint32_t partner_row = row + 1 - (mirror & 2U);
  const std::uint16_t* own = input.first + static_cast<std::size_t>(row) * input.columns;
  const std::uint16_t* partner = input.first + static_cast<std::size_t>(partner_row) * input.columns;
  return {{to_float(own[column]), to_float(own[partner_column]), to_float(partner[column]),
           to_float(partner[partner_column])}};
}

/** One row of the matrix times the neighbourhood; the grouping of the sums is part of the result. */
NEROVA_INLINE F32x1 weigh(const float* weights, const Neighbourhood& n) {
  return ((n.sample[0] * F32x1{weights[0]} + n.sample[1] * F32x1{weights[1]}) + n.sample[2] * F32x1{weights[2]}) +
         n.sample[3] * F32x1{weights[3]};
}

template <bool equal_maximum, OutputSet outputs>
void compute_pixel(std::uint32_t row, std::uint32_t column, const CalibrationMatrix& matrix,
                   const TransformParameters& parameters, const ImageViews& views, NeighbourhoodShape shape) {
  using Rules = PixelRules<F32x1>;
  const Rules rules = {{parameters.input_maximum}, {parameters.output_maximum}};
  const Neighbourhood samples = read_neighbourhood(views.input, row, column, shape);
  const LinearStokes<F32x1> stokes = {Rules::power(weigh(matrix.m, samples)), weigh(matrix.m + 4, samples),
                                      weigh(matrix.m + 8, samples)};
  const std::size_t element = static_cast<std::size_t>(row) * views.input.columns + column;
  compute_outputs<equal_maximum, outputs>(rules, stokes, PixelTarget{parameters, views, element});
}

template <unsigned... indices>
constexpr ComputePixelTable make_table(std::integer_sequence<unsigned, indices...> /*all*/) {
  return {{compute_pixel<pixel_selection(indices).equal_maximum, pixel_selection(indices).outputs>...}};
}

}  // namespace

const ComputePixelTable compute_pixel_table = make_table(std::make_integer_sequence<unsigned, pixel_selection_count>());

}  // namespace nerova_zel
