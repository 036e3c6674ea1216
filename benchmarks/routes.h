#pragma once

#include <functional>
#include <string>

#include "kernels/shared/kernels.h"

namespace nerova_zel::benchmark {

/** One way to fill (or only to touch) the outputs of a frame. */
using Route = std::function<void(const TransformParameters& parameters, MatrixRow matrices)>;

/**
 * The named way:
 * sse2, sse41: the built-in forms; avx2, avx512: the plugins. Called directly, without the C interface.
 * library, library-alone: through the C interface, plugins beside the library or none, never a logger; default
 * calibration, whatever the matrices.
 * cpu-question: nothing but what the library asks of the processor once in every call.
 * cycles: a thousand cycles of the processor.
 * stream, stream-prefetched, stream-uncached: reads the frame, writes as many bytes as the outputs have, computes
 * nothing; see streaming_limit.h.
 * plain: a per-pixel loop as users write it. opencv: the functions of OpenCV, one thread.
 * Throws std::runtime_error for a route that is unknown or does not run here.
 */
Route find_route(const std::string& name);

/** Every route that runs here, separated by blanks. */
std::string runnable_routes();

}  // namespace nerova_zel::benchmark
