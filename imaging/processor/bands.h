#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "nerova_zel/polarization_processor.hpp"

namespace nerova_zel {

/** One transform of a frame, such as Processor::transform. Called from several threads at the same time. */
using TransformCall = std::function<void(const Frame&, const Outputs&)>;

/** Told of rows first_row to end_row - 1 when their images are complete. */
using RowsCall = std::function<void(std::int32_t first_row, std::int32_t end_row)>;

/**
 * Computes one frame in horizontal bands, each on a thread of its own (the first on the caller's), with the same bits
 * as a single call on every route. The images are the whole frame's. There are fewer bands where the frame has less
 * than two rows for each, and one call where that is fewer than two bands. `finish`, unless empty, is called once for
 * each band on its thread.
 *
 * Throws what `transform` and `finish` throw. A call that refuses its arguments writes nothing here either; where
 * another failure ends one band, the images are undefined.
 */
void transform_in_bands(const TransformCall& transform, const Frame& frame, const Outputs& outputs, int bands,
                        const RowsCall& finish = {});

/**
 * Computes rows first_row to end_row - 1 with the same bits as a call of the whole frame. The images begin at first_row
 * and have room for two rows more, whose content is undefined. first_row is even; end_row is the height, or even, above
 * first_row and at least two less than the height. Throws what `transform` throws.
 */
void transform_rows(const TransformCall& transform, const Frame& frame, std::int32_t first_row, std::int32_t end_row,
                    const Outputs& outputs);

/** Of at most `threads` bands of a frame, as many as are worth the start of a thread each; at least 1. */
int bands_worth_a_thread(std::int32_t width, std::int32_t height, int threads);

/** The first row of each band, and the frame's height behind the last: even rows, except for the height. */
std::vector<std::int32_t> band_limits(std::int32_t height, int bands);

}  // namespace nerova_zel
