#include "kernels/shared/kernel_flags.h"

#include <initializer_list>

namespace nerova_zel {

KernelFlags kernel_flags(const TransformParameters& parameters, bool sse41) {
  const std::uint32_t full_scale = (1U << (static_cast<std::uint32_t>(parameters.bit_depth) % 32U)) - 1U;
  KernelFlags flags = {};
  flags.equal_maximum = parameters.integer_output_maximum == full_scale;
  flags.normalized_stokes = parameters.normalized_stokes != nullptr;
  flags.total_power = parameters.total_power != nullptr;
  flags.horizontal_vertical = parameters.horizontal_vertical != nullptr;
  flags.diagonal = parameters.diagonal != nullptr;
  flags.azimuth = parameters.azimuth != nullptr;
  flags.degree_of_linear_polarization = parameters.degree_of_linear_polarization != nullptr;
  flags.height_even = parameters.height % 2 == 0;
  flags.width_even = parameters.width % 2 == 0;
  flags.sse41 = sse41;
  return flags;
}

unsigned pack_flags(const KernelFlags& flags) {
  unsigned packed = 0;
  unsigned bit = 0;
  for (const bool flag :
       {flags.equal_maximum, flags.normalized_stokes, flags.total_power, flags.horizontal_vertical, flags.diagonal,
        flags.azimuth, flags.degree_of_linear_polarization, flags.height_even, flags.width_even, flags.sse41}) {
    packed |= (flag ? 1U : 0U) << bit++;
  }
  return packed;
}

}  // namespace nerova_zel
