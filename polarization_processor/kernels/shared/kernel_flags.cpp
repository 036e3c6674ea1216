#include "kernels/shared/kernel_flags.h"

namespace nerova_zel {

KernelFlags kernel_flags(const TransformParameters& parameters, bool sse41) {
  const std::uint32_t full_scale = (1U << (static_cast<std::uint32_t>(parameters.bit_depth) % 32U)) - 1U;
  KernelFlags flags = {};
  flags.equal_maximum = parameters.integer_output_maximum == full_scale;
  Outputs::for_each([&](auto output) {
    flags.outputs |= parameters.images.*output.image != nullptr ? output_bit<decltype(output)> : 0;
  });
  flags.height_even = parameters.height % 2 == 0;
  flags.width_even = parameters.width % 2 == 0;
  flags.sse41 = sse41;
  return flags;
}

unsigned pack_flags(const KernelFlags& flags) {
  return pixel_selection_index({flags.equal_maximum, flags.outputs}) | (flags.height_even ? height_even_bit : 0) |
         (flags.width_even ? width_even_bit : 0) | (flags.sse41 ? sse41_bit : 0);
}

}  // namespace nerova_zel
