#pragma once

#include <functional>
#include <string>

#include "kernels/transform_parameters.h"

namespace nerova_zel::benchmark {

/** One way to fill (or only to touch) the outputs of a frame. */
using Route = std::function<void(const TransformParameters& parameters, MatrixRow matrices)>;

/**
 * sse2, sse41: the built-in forms. avx2, avx512: the plugins that lie beside the library, initialised. stream: reads
 * the frame, writes as many bytes as the outputs have, computes nothing. plain: a per-pixel loop as users write it.
 * Throws std::runtime_error for a route that is unknown or does not run here.
 */
Route find_route(const std::string& name);

}  // namespace nerova_zel::benchmark
