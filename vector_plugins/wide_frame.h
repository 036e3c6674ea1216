#pragma once

#include "kernels/shared/kernels.h"

namespace nerova_zel {

/**
 * Computes a checked frame on the caller's thread with the wide rows of this plugin: every pixel by the per-pixel
 * rules and the matrices handed over, mirrored edges included. A negative phase counts as 0.
 */
void compute_wide_frame(const TransformParameters& parameters, MatrixRow matrices);

}  // namespace nerova_zel
