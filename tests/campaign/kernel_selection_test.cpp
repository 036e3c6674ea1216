// What kernel selection promises beyond what transform lets through.

#include "kernels/built_in/kernel_selection.h"

#include <gtest/gtest.h>

#include <vector>

#include "kernels/shared/default_calibration.h"

namespace nerova_zel::test {
namespace {

TEST(KernelSelection, PhasesOutsideTheirRangeCountAsZero) {
  KernelFlags flags = {};
  flags.outputs = output_bit<NormalizedStokesOutput>;
  for (const bool sse41 : {false, true}) {
    flags.sse41 = sse41;
    EXPECT_EQ(select_kernel(-1, flags), select_kernel(0, flags));
    EXPECT_EQ(select_kernel(4, flags), select_kernel(0, flags));
    EXPECT_NE(select_kernel(1, flags), select_kernel(0, flags));
  }
}

TEST(KernelSelection, WithoutAnOutputNothingIsWritten) {
  const CalibrationMatrix* const matrices[] = {&default_matrices[0], &default_matrices[3], &default_matrices[1],
                                               &default_matrices[2]};
  for (const std::int32_t width : {2, 16, 17}) {
    for (const std::int32_t height : {2, 4, 5}) {
      const std::vector<std::uint16_t> input(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 100);
      TransformParameters parameters = {};
      parameters.height = height;
      parameters.width = width;
      parameters.input = input.data();
      parameters.bit_depth = 8;
      parameters.input_maximum = parameters.output_maximum = 255.0F;
      parameters.integer_output_maximum = 255;
      run_built_in(parameters, matrices, false);  // a write would go to NULL
    }
  }
}

}  // namespace
}  // namespace nerova_zel::test
