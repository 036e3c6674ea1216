#pragma once

#include "kernels/shared/kernels.h"

namespace nerova_zel::benchmark {

// Read every sample of the frame and write every byte of the outputs, 32 pixels at a time; the bytes mean nothing.
// Samples are fetched 4 KiB ahead.

/** Plain stores. */
void stream_frame(const TransformParameters& parameters);

/** Stores that bypass the caches. */
void stream_frame_uncached(const TransformParameters& parameters);

/** Plain stores to lines that were fetched ahead for writing, as the plugins do. */
void stream_frame_prefetched(const TransformParameters& parameters);

}  // namespace nerova_zel::benchmark
