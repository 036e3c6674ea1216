#pragma once

#include "kernels/shared/outputs.h"

namespace nerova_zel {

KernelFlags kernel_flags(const TransformParameters& parameters, bool sse41);

/** One bit for each flag, in their order; the lowest are the pixel selection index. */
unsigned pack_flags(const KernelFlags& flags);

inline constexpr unsigned height_even_bit = pixel_selection_count;
inline constexpr unsigned width_even_bit = 2 * pixel_selection_count;
inline constexpr unsigned sse41_bit = 4 * pixel_selection_count;
inline constexpr unsigned flag_combinations = 8 * pixel_selection_count;

}  // namespace nerova_zel
