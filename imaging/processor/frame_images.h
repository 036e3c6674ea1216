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

/**
 * Computes rows first_row to end_row - 1 with the same bits as compute_images. The images begin at first_row and have
 * room for two rows more, whose content is undefined. first_row is even; end_row is the height, or even, above
 * first_row and at least two less than the height. Throws what `transform` throws.
 */
void compute_image_rows(const TransformCall& transform, const Calibration& matrices, const Frame& frame,
                        std::int32_t first_row, std::int32_t end_row, const ImageBuffers& images);

}  // namespace nerova_zel
