#pragma once

#include "kernels/shared/kernels.h"

namespace nerova_zel::benchmark {

/**
 * The six images by one loop over the pixels with the standard library's arctangent, as a careful user would write it
 * for the compiler to optimise (-O3 -march=native). Default calibration; the last column and row are mirrored.
 */
void plain_loop(const TransformParameters& parameters);

}  // namespace nerova_zel::benchmark
