#pragma once

#include "kernels/shared/output_set.h"
#include "kernels/shared/transform_parameters.h"

namespace nerova_zel {

/** The ten booleans that, with the phase, select one whole-image kernel. */
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

/** One bit for each flag, in their order; the low seven are the pixel selection index. */
unsigned pack_flags(const KernelFlags& flags);

constexpr unsigned flag_combinations = 1024;
constexpr unsigned height_even_bit = 1U << 7U;
constexpr unsigned width_even_bit = 1U << 8U;
constexpr unsigned sse41_bit = 1U << 9U;
static_assert(height_even_bit == pixel_selection_count && flag_combinations == 2 * sse41_bit);

}  // namespace nerova_zel
