#pragma once

#include "kernels/shared/kernels.h"

namespace nerova_zel::benchmark {

/**
 * The six images by OpenCV's functions over whole float images, in one thread. Default calibration; the last column
 * and row are mirrored.
 */
void opencv_functions(const TransformParameters& parameters);

}  // namespace nerova_zel::benchmark
