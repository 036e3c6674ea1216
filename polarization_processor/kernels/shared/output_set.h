#pragma once

#include <cstdint>

namespace nerova_zel {

/** A combination of outputs, one bit each, in the order of the KernelFlags. */
using OutputSet = unsigned;

constexpr OutputSet output_normalized_stokes = 1U << 0U;
constexpr OutputSet output_total_power = 1U << 1U;
constexpr OutputSet output_horizontal_vertical = 1U << 2U;
constexpr OutputSet output_diagonal = 1U << 3U;
constexpr OutputSet output_azimuth = 1U << 4U;
constexpr OutputSet output_degree = 1U << 5U;
constexpr OutputSet all_outputs = 63;
static_assert(all_outputs == 2 * output_degree - 1);

/** Outputs that are rescaled from the input range to the output range when the maxima differ. */
constexpr OutputSet rescaled_outputs = output_total_power | output_horizontal_vertical | output_diagonal;

/**
 * Outputs that tell S1 from S2, or their signs apart. The others are the same whatever the order of the polarizers.
 */
constexpr OutputSet ordered_outputs =
    output_normalized_stokes | output_horizontal_vertical | output_diagonal | output_azimuth;

/** The phase whose code serves this phase: without an ordered output all phases are the same. */
constexpr int distinct_angle(int phase, OutputSet outputs) { return (outputs & ordered_outputs) != 0 ? phase : 0; }

/** What per-pixel code is specialised for: 128 values, most of them with code of their own. */
struct PixelSelection {
  bool equal_maximum;
  OutputSet outputs;
};

constexpr unsigned pixel_selection_count = 128;
static_assert(pixel_selection_count == 2 * (all_outputs + 1));

constexpr unsigned pixel_selection_index(PixelSelection selection) {
  return (selection.outputs << 1U) | (selection.equal_maximum ? 1U : 0U);
}

/** The selection whose code serves an index: equal maxima make no difference unless an output is rescaled. */
constexpr PixelSelection pixel_selection(unsigned index) {
  const OutputSet outputs = index >> 1U;
  return {(index & 1U) != 0 && (outputs & rescaled_outputs) != 0, outputs};
}

}  // namespace nerova_zel
