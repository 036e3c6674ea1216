// The block rows of one polarizer angle and one form. Compiled once for each: NEROVA_FIRST_ANGLE is the angle of the
// row's first pixel (0 to 3) and NEROVA_TABLE the name of the table, built with the flags of that instruction set.

#include <utility>

#include "kernels/built_in/block_row.h"
#include "kernels/built_in/lanes_4.h"
#include "kernels/shared/pixel_arithmetic.h"
#include "kernels/shared/polarizer_differences.h"

namespace nerova_zel {
namespace {

/** Where the results of four pixels go. */
struct BlockTarget {
  const OutputImages& images;
  std::size_t element;

  template <class Output>
  NEROVA_INLINE void store(Output /*output*/, const NormalizedStokes<F32x4>& pairs) const {
    store_pairs(images.*Output::image + 2 * element, pairs.s1, pairs.s2);
  }
  template <class Output>
  NEROVA_INLINE void store(Output /*output*/, F32x4 value) const {
    store_outputs(images.*Output::image + element, value);
  }
};

template <PolarPhase first_angle, bool equal_maximum, OutputSet outputs>
void block_row(const TransformParameters& parameters, const BlockConstants& constants, std::size_t row,
               std::size_t columns) {
  const BlockRules<F32x4> rules = {F32x4::broadcast(constants.half), F32x4::broadcast(constants.input_reciprocal),
                                   F32x4::broadcast(constants.output_maximum),
                                   F32x4::broadcast(constants.azimuth_scale)};
  // A copy the stores below cannot alias, so that the pointers in it stay in registers.
  const OutputImages images = parameters.images;
  const std::uint16_t* const input = parameters.input;
  const auto width = static_cast<std::size_t>(parameters.width);
  const std::size_t first = row * width;
  for (std::size_t element = first; element < first + columns; element += 4) {
    const Channels<I32x4> upper = load_channels(input + element);
    const Channels<I32x4> lower = load_channels(input + element + width);
    const I32x4 sum = (upper.even + upper.odd) + (lower.even + lower.odd);
    const Differences<I32x4> differences = polarizer_differences<first_angle>(upper, lower);
    const LinearStokes<F32x4> stokes = {rules.power(to_float(sum)), to_float(differences.s1), to_float(differences.s2)};
    compute_outputs<equal_maximum, outputs>(rules, stokes, BlockTarget{images, element});
  }
}

template <unsigned index>
constexpr BlockRow block_row_of_index() {
  constexpr PixelSelection selection = pixel_selection(index);
  if constexpr (distinct_angle(NEROVA_FIRST_ANGLE, selection.outputs) == NEROVA_FIRST_ANGLE) {
    return block_row<NEROVA_FIRST_ANGLE, selection.equal_maximum, selection.outputs>;
  } else {
    return nullptr;
  }
}

template <unsigned... indices>
constexpr BlockRowTable make_table(std::integer_sequence<unsigned, indices...> /*all*/) {
  return {{block_row_of_index<indices>()...}};
}

}  // namespace

const BlockRowTable NEROVA_TABLE = make_table(std::make_integer_sequence<unsigned, pixel_selection_count>());

}  // namespace nerova_zel
