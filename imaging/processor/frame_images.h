#pragma once

#include "processor/bands.h"
#include "processor/linear_stokes.h"

namespace nerova_zel {

/** Where the images of a frame go: the library's and this module's own. What is not wanted is empty or NULL. */
struct ImageBuffers {
  Outputs library;
  StokesPlanes planes{};
  float* angle = nullptr;  ///< width * height degrees
};

/**
 * Computes the images of a frame on up to `threads` threads; their number does not change a bit. `matrices` are those
 * that `transform` uses. With an angle but no Stokes pairs, the pairs are computed a few rows at a time and not kept.
 * At least one image is wanted, and the frame is not smaller than 2 x 2. Throws what `transform` throws.
 */
void compute_images(const TransformCall& transform, const Calibration& matrices, const Frame& frame,
                    const ImageBuffers& images, int threads);

}  // namespace nerova_zel
