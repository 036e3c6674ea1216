#pragma once

#include "kernels/shared/kernels.h"

namespace nerova_zel::benchmark {

/** Reads every sample of the frame and writes every byte of the outputs, row by row; the bytes mean nothing. */
void stream_frame(const TransformParameters& parameters);

/** The same, with stores that bypass the caches. */
void stream_frame_uncached(const TransformParameters& parameters);

}  // namespace nerova_zel::benchmark
