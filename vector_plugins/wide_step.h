#pragma once

#include NEROVA_STEP  // the lanes of one instruction set, and how samples come into them and results leave

#include <utility>

#include "kernels/shared/pixel_arithmetic.h"
#include "wide_row.h"
#include "wide_rules.h"

// One step: two vectors of pixels, computed one after the other and stored together. Included by one file for each
// table of rows; everything has internal linkage.
namespace nerova_zel {
namespace {

using Float = StepFor<false>::Float;

constexpr bool has_pairs(OutputSet outputs) { return (outputs & output_bit<NormalizedStokesOutput>) != 0; }

/** How many of the outputs are of 16 bits. */
constexpr unsigned count_results(OutputSet outputs) {
  unsigned count = 0;
  for (OutputSet left = outputs & ~output_bit<NormalizedStokesOutput>; left != 0; left &= left - 1) {
    ++count;
  }
  return count;
}

/** Whether the outputs are at most this many of the 16-bit ones. */
constexpr bool results_only(OutputSet outputs, unsigned most) {
  return !has_pairs(outputs) && count_results(outputs) <= most;
}
constexpr bool few_results(OutputSet outputs) { return results_only(outputs, 2); }

/** What a row may store past the caches: the pairs, or a 16-bit output that is alone. */
constexpr OutputSet streamable_outputs(OutputSet outputs) {
  if (has_pairs(outputs)) {
    return output_bit<NormalizedStokesOutput>;
  }
  return results_only(outputs, 1) ? outputs : 0;
}

/** Eight vector registers, those of 32-bit code, do not suffice for two steps at a time. */
constexpr bool enough_registers = sizeof(void*) == 8;

/** Outputs of the first vector of a step, until the second one's join them; pairs only where they do. */
struct PendingOutputs {
  NormalizedStokes<Float> pairs;
  Float results[Outputs::count];  ///< by output_index
};

/**
 * Asks for the cache lines that results will be written to some steps from now, so that the stores need not wait for
 * them. May run past the end of an image: a prefetch touches nothing.
 */
template <std::size_t bytes>
NEROVA_INLINE void prepare_to_write(const void* to) {
  constexpr std::size_t line = 64;
  constexpr std::size_t distance = 8 * bytes;
  for (std::size_t offset = 0; offset < bytes; offset += line) {
    __builtin_prefetch(static_cast<const char*>(to) + distance + offset, 1);
  }
}

/**
 * Asks for samples of the partner row, which no step has read before. By so many bytes because processors do not fetch
 * ahead from one page into the next by themselves. May run past the end of the frame.
 */
NEROVA_INLINE void prepare_to_read(const std::uint16_t* samples) {
  constexpr std::size_t distance = 4096;
  __builtin_prefetch(reinterpret_cast<const char*>(samples) + distance);
}

/** Where the results of vector 0 or 1 of a step go; the streamed outputs past the caches. */
template <class Step, class Rules, OutputSet streamed, int vector>
struct StepTarget {
  const OutputImages& images;
  const OutputMaximum& maximum;
  std::size_t element;
  PendingOutputs& waiting;

  template <class Output>
  NEROVA_INLINE void store(Output /*output*/, const NormalizedStokes<Float>& pair) const {
    float* const to = images.*Output::image + 2 * element;
    constexpr bool past_caches = is_streamed<Output>;
    if constexpr (vector == 0 && !past_caches) {
      prepare_to_write<2 * Step::pixels * sizeof(float)>(to);
    }
    if constexpr (!Step::joins_pairs) {
      Step::template store_pairs<past_caches>(to, vector, pair);
    } else if constexpr (vector == 0) {
      waiting.pairs = pair;
    } else {
      Step::template store_pairs<past_caches>(to, waiting.pairs, pair);
    }
  }

  template <class Output>
  NEROVA_INLINE void store(Output /*output*/, Float value) const {
    Float& pending = waiting.results[output_index<Output>];
    if constexpr (vector == 0) {
      pending = value;
    } else {
      std::uint16_t* const to = images.*Output::image + element;
      constexpr bool past_caches = is_streamed<Output>;
      if constexpr (!past_caches) {
        prepare_to_write<Step::pixels * sizeof(std::uint16_t)>(to);
      }
      Step::template store_outputs<past_caches>(to, narrow(pending, value));
    }
  }

 private:
  template <class Output>
  static constexpr bool is_streamed = (streamed & output_bit<Output>) != 0;

  NEROVA_INLINE typename Step::Results narrow(Float first, Float second) const {
    if constexpr (Rules::clamps_results) {
      return Step::narrow(first, second, maximum);
    } else {
      return Step::narrow(first, second);
    }
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

/** The samples of a step of two rows. */
template <class Step>
struct StepSamples {
  typename Step::Samples own;
  typename Step::Samples partner;
};

/**
 * Walks a stretch. Source gives the Stokes parameters of vector i of a step. Two steps at a time where that leaves
 * enough registers: the instructions of one fill the waits of the other.
 */
template <class Step, bool equal_maximum, OutputSet outputs, bool streams, bool two_at_a_time, class Rules,
          class Source>
NEROVA_INLINE void compute_stretch(const TransformParameters& parameters, const FrameConstants& constants,
                                   const RowStretch& row_stretch, const Source& source) {
  constexpr OutputSet streamed = streams ? streamable_outputs(outputs) : 0;
  const auto rules = make_rules<Rules>(constants);
  const OutputMaximum maximum(constants.output_maximum);
  // Copies the stores below cannot alias, so that the pointers in them stay in registers.
  const OutputImages images = parameters.images;
  const RowStretch stretch = row_stretch;
  const std::uint16_t* own = stretch.own;
  const std::uint16_t* partner = stretch.partner;
  const auto load = [&]() __attribute__((always_inline)) {
    prepare_to_read(partner);
    const StepSamples<Step> samples = {Step::load(own), Step::load(partner)};
    own += Step::pixels;
    partner += Step::pixels;
    return samples;
  };
  const auto compute = [&](const StepSamples<Step>& samples, std::size_t x) __attribute__((always_inline)) {
    PendingOutputs waiting;
    const std::size_t element = stretch.element + x;
    compute_outputs<equal_maximum, outputs>(rules, source.stokes(samples, 0),
                                            StepTarget<Step, Rules, streamed, 0>{images, maximum, element, waiting});
    if constexpr (pairs_keep_order && outputs == output_bit<NormalizedStokesOutput>) {
      // The compiler moves nothing across.
      __asm__ volatile("");
    }
    compute_outputs<equal_maximum, outputs>(rules, source.stokes(samples, 1),
                                            StepTarget<Step, Rules, streamed, 1>{images, maximum, element, waiting});
  };
  std::size_t x = 0;
  if constexpr (two_at_a_time) {
    for (; x + Step::pixels < stretch.pixels; x += 2 * Step::pixels) {
      const StepSamples<Step> first = load();
      const StepSamples<Step> second = load();
      compute(first, x);
      compute(second, x + Step::pixels);
    }
  }
  std::size_t end = stretch.pixels;
  for (bool last = stretch.last.own == nullptr;; last = true) {
    for (; x < end; x += Step::pixels) {
      compute(load(), x);
    }
    if (last) {
      return;
    }
    // By the same code once more, so that there is only one copy of it.
    own = stretch.last.own;
    partner = stretch.last.partner;
    x = stretch.last.x;
    end = x + Step::pixels;
  }
}

/** The row that Rows::of<equal_maximum, outputs, streams>() names, or NULL where it has none. */
template <class Rows, bool streams, unsigned index>
constexpr WideRow choose_row() {
  constexpr PixelSelection selection = pixel_selection(index);
#if defined(NEROVA_ONLY_OUTPUTS)  // where the rows are compiled once more for a test
  constexpr bool is_wanted = selection.outputs == NEROVA_ONLY_OUTPUTS;
#else
  constexpr bool is_wanted = selection.outputs != 0;
#endif
  if constexpr (is_wanted && (!streams || streamable_outputs(selection.outputs) != 0)) {
    return Rows::template of<selection.equal_maximum, selection.outputs, streams>();
  } else {
    return nullptr;
  }
}

template <class Rows, unsigned... indices>
constexpr WideRowTable make_table(std::integer_sequence<unsigned, indices...> /*all*/) {
  static_assert(StepFor<false>::pixels <= largest_step);
  return {{choose_row<Rows, false, indices>()...}, {choose_row<Rows, true, indices>()...}, StepFor<false>::pixels};
}

template <class Rows>
constexpr WideRowTable make_table() {
  return make_table<Rows>(std::make_integer_sequence<unsigned, pixel_selection_count>());
}

}  // namespace
}  // namespace nerova_zel
