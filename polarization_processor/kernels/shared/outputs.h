#pragma once

#include <type_traits>
#include <utility>

#include "kernels/shared/kernels.h"

// The table of the outputs. What tells outputs apart is derived from it: sets, flags, kernels, views, stores.
namespace nerova_zel {

/**
 * One row: the image in a call; whether values are rescaled from the input range to the output range when the maxima
 * differ; whether the output tells S1 from S2, or their signs apart (if not, it is the same whatever the order of the
 * polarizers). Its formula is an output_value() of kernels/shared/pixel_arithmetic.h.
 */
template <auto image_of_call, bool is_rescaled, bool is_ordered>
struct OutputRow {
  static constexpr auto image = image_of_call;
  static constexpr bool rescaled = is_rescaled;
  static constexpr bool ordered = is_ordered;
  using Element = std::remove_pointer_t<std::remove_reference_t<decltype(std::declval<OutputImages>().*image)>>;
  static constexpr bool is_pair = std::is_same_v<Element, float>;  ///< two elements for each pixel instead of one
};

struct NormalizedStokesOutput : OutputRow<&OutputImages::normalized_stokes, false, true> {};
struct TotalPowerOutput : OutputRow<&OutputImages::total_power, true, false> {};
struct HorizontalVerticalOutput : OutputRow<&OutputImages::horizontal_vertical, true, true> {};
struct DiagonalOutput : OutputRow<&OutputImages::diagonal, true, true> {};
struct AzimuthOutput : OutputRow<&OutputImages::azimuth, false, true> {};
struct DegreeOutput : OutputRow<&OutputImages::degree_of_linear_polarization, false, false> {};

template <class... Rows>
struct OutputTable {
  static constexpr unsigned count = sizeof...(Rows);

  /** The place of an output in the table. */
  template <class Output>
  static constexpr unsigned index() {
    unsigned index = 0;
    bool found = false;
    ((found = found || std::is_same_v<Rows, Output>, index += found ? 0 : 1), ...);
    return index;
  }

  /** Calls visit(Row()) for each. */
  template <class Visitor>
  static constexpr void for_each(const Visitor& visit) {
    (visit(Rows()), ...);
  }
};

/** In the order of OutputImages. */
using Outputs = OutputTable<NormalizedStokesOutput, TotalPowerOutput, HorizontalVerticalOutput, DiagonalOutput,
                            AzimuthOutput, DegreeOutput>;
static_assert(Outputs::count * sizeof(void*) == sizeof(OutputImages), "an image without its row in the table");

template <class Output>
inline constexpr unsigned output_index = Outputs::index<Output>();

template <class Output>
inline constexpr OutputSet output_bit = 1U << output_index<Output>;

inline constexpr OutputSet all_outputs = (1U << Outputs::count) - 1U;

constexpr OutputSet rescaled_outputs() {
  OutputSet set = 0;
  Outputs::for_each([&](auto row) { set |= row.rescaled ? output_bit<decltype(row)> : 0; });
  return set;
}

constexpr OutputSet ordered_outputs() {
  OutputSet set = 0;
  Outputs::for_each([&](auto row) { set |= row.ordered ? output_bit<decltype(row)> : 0; });
  return set;
}

/** The phase whose code serves this phase: without an ordered output all phases are the same. */
constexpr int distinct_angle(int phase, OutputSet outputs) { return (outputs & ordered_outputs()) != 0 ? phase : 0; }

/** What per-pixel code is specialised for; most of the selections have code of their own. */
struct PixelSelection {
  bool equal_maximum;
  OutputSet outputs;
};

inline constexpr unsigned pixel_selection_count = 2U << Outputs::count;

constexpr unsigned pixel_selection_index(PixelSelection selection) {
  return (selection.outputs << 1U) | (selection.equal_maximum ? 1U : 0U);
}

/** The selection whose code serves an index: equal maxima make no difference unless an output is rescaled. */
constexpr PixelSelection pixel_selection(unsigned index) {
  const OutputSet outputs = index >> 1U;
  return {(index & 1U) != 0 && (outputs & rescaled_outputs()) != 0, outputs};
}

}  // namespace nerova_zel
