#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "nerova_zel/polarization_processor.hpp"

namespace nerova_zel {

/** One transform of a frame, such as Processor::transform. Called from several threads at the same time. */
using TransformCall = std::function<void(const Frame&, const Outputs&)>;

/**
 * Computes one frame in horizontal bands, each on a thread of its own (the first on the caller's), with the same bits
 * as a single call on every route. The images are the whole frame's. There are fewer bands where the frame has less
 * than two rows for each, and one call where that is fewer than two bands.
 *
 * Throws what `transform` throws. A call that refuses its arguments writes nothing here either; where another failure
 * ends one band, the images are undefined.
 */
void transform_in_bands(const TransformCall& transform, const Frame& frame, const Outputs& outputs, int bands);

/** Of at most `threads` bands of a frame, as many as are worth the start of a thread each; at least 1. */
int bands_worth_a_thread(std::int32_t width, std::int32_t height, int threads);

/** The first row of each band, and the frame's height behind the last: even rows, except for the height. */
std::vector<std::int32_t> band_limits(std::int32_t height, int bands);

}  // namespace nerova_zel
