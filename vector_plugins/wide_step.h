#pragma once

#include NEROVA_LANES  // the lanes of one instruction set

#include <utility>

#include "kernels/pixel_arithmetic.h"
#include "wide_row.h"
#include "wide_rules.h"

// One step: two vectors of pixels, computed one after the other and stored together. Included by one file for each
// table of rows; everything has internal linkage.
namespace nerova_zel {
namespace {

using Float = Step::Float;
using Int = Step::Int;

/** The 16-bit results of the first vector of a step, until the second one's join them. */
struct PendingOutputs {
  Int total_power;
  Int horizontal_vertical;
  Int diagonal;
  Int azimuth;
  Int degree_of_linear_polarization;
};

/**
 * Asks for the cache lines that results will be written to some steps from now, so that the stores need not wait for
 * them. May run past the end of an image: a prefetch touches nothing.
 */
template <std::size_t bytes>
NEROVA_INLINE void prepare_to_write(const void* to) {
  constexpr std::size_t line = 64;
  constexpr std::size_t distance = 32 * bytes;
  for (std::size_t offset = 0; offset < bytes; offset += line) {
    __builtin_prefetch(static_cast<const char*>(to) + distance + offset, 1);
  }
}

/** Where the results of vector 0 or 1 of a step go. */
template <class Rules, std::size_t vector>
struct StepTarget {
  const TransformParameters& images;
  const Step::Results& output_maximum;
  std::size_t element;
  PendingOutputs& waiting;

  NEROVA_INLINE void store_pair(Float first, Float second) const {
    if constexpr (vector == 0) {
      prepare_to_write<2 * Step::pixels * sizeof(float)>(images.normalized_stokes + 2 * element);
    }
    Step::store_pairs(images.normalized_stokes + 2 * element, vector, first, second);
  }

  template <OutputSet output>
  NEROVA_INLINE void store(Float value) const {
    if constexpr (vector == 0) {
      pending<output>() = round_to_int(value);
    } else {
      prepare_to_write<Step::pixels * sizeof(std::uint16_t)>(image_of<output>(images) + element);
      Step::Results results = Step::narrow(pending<output>(), round_to_int(value));
      if constexpr (Rules::clamps_results) {
        results = min(results, output_maximum);
      }
      Step::store_outputs(image_of<output>(images) + element, results);
    }
  }

 private:
  template <OutputSet output>
  NEROVA_INLINE Int& pending() const {
    return choose<output>(waiting.total_power, waiting.horizontal_vertical, waiting.diagonal, waiting.azimuth,
                          waiting.degree_of_linear_polarization);
  }
};

template <class Rules>
NEROVA_INLINE Rules make_rules(const FrameConstants& constants) {
  Rules rules;
  rules.output_maximum = Float::broadcast(constants.output_maximum);
  rules.input_maximum = {Float::broadcast(constants.input_reciprocal),
                         Float::broadcast(constants.input_reciprocal_remainder)};
  rules.half_turn = {Float::broadcast(constants.half_turn_reciprocal),
                     Float::broadcast(constants.half_turn_reciprocal_remainder)};
  return rules;
}

/** Walks a stretch. Source gives the Stokes parameters of vector i of the step at some samples of two rows. */
template <bool equal_maximum, OutputSet outputs, class Rules, class Source>
NEROVA_INLINE void compute_stretch(const TransformParameters& parameters, const FrameConstants& constants,
                                   const RowStretch& stretch, const Source& source) {
  const auto rules = make_rules<Rules>(constants);
  const auto output_maximum = Step::Results::broadcast(static_cast<std::uint16_t>(constants.output_maximum));
  // A copy the stores below cannot alias, so that the pointers in it stay in registers.
  const TransformParameters images = parameters;
  for (std::size_t x = 0; x < stretch.pixels; x += Step::pixels) {
    const auto samples = source.load(stretch.own + x, stretch.partner + x);
    PendingOutputs waiting;
    const std::size_t element = stretch.element + x;
    compute_outputs<equal_maximum, outputs>(rules, source.stokes(samples, 0),
                                            StepTarget<Rules, 0>{images, output_maximum, element, waiting});
    compute_outputs<equal_maximum, outputs>(rules, source.stokes(samples, 1),
                                            StepTarget<Rules, 1>{images, output_maximum, element, waiting});
  }
}

/** The rows that Rows::of<index>() names. */
template <class Rows, unsigned... indices>
constexpr WideRowTable make_table(std::integer_sequence<unsigned, indices...> /*all*/) {
  return {{Rows::template of<indices>()...}, Step::pixels};
}

template <class Rows>
constexpr WideRowTable make_table() {
  return make_table<Rows>(std::make_integer_sequence<unsigned, pixel_selection_count>());
}

}  // namespace
}  // namespace nerova_zel
