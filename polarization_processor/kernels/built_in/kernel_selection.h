#pragma once

#include "kernels/shared/kernel_flags.h"

namespace nerova_zel {

/** Total over its arguments: a phase outside 0..3 counts as 0. */
WholeImageKernel select_kernel(PolarPhase phase, const KernelFlags& flags);

/** Computes a checked frame on the caller's thread with the kernel selected for it. */
void run_built_in(const TransformParameters& parameters, MatrixRow matrices, bool sse41);

}  // namespace nerova_zel
