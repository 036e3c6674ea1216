#pragma once

#include "kernels/transform_parameters.h"

namespace nerova_zel {

/** A whole-image kernel, specialised for one phase and one combination of KernelFlags. */
using WholeImageKernel = void (*)(const TransformParameters& parameters, MatrixRow matrices);

/** The ten booleans that, with the phase, select one whole-image kernel; in the order of their bits in a packed index.
 */
struct KernelFlags {
  bool equal_maximum;
  bool normalized_stokes;
  bool total_power;
  bool horizontal_vertical;
  bool diagonal;
  bool azimuth;
  bool degree_of_linear_polarization;
  bool height_even;
  bool width_even;
  bool sse41;
};

KernelFlags kernel_flags(const TransformParameters& parameters, bool sse41);

/** Total over its arguments: a phase outside 0..3 counts as 0. */
WholeImageKernel select_kernel(PolarPhase phase, const KernelFlags& flags);

/** Computes a checked frame on the caller's thread with the kernel selected for it. */
void run_built_in(const TransformParameters& parameters, MatrixRow matrices, bool sse41);

}  // namespace nerova_zel
