// What kernel selection promises beyond what transform lets through.

#include "kernels/built_in/kernel_selection.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/plugin_module.h"

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
  for (const std::int32_t width : {2, 16, 17}) {
    for (const std::int32_t height : {2, 4, 5}) {
      const std::vector<std::uint16_t> frame(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 100);
      FrameImages none(0);
      TransformParameters parameters = plugin_call(frame, width, 255, none);
      parameters.images = {};
      run_built_in(parameters, default_row, false);  // a write would go to NULL
    }
  }
}

}  // namespace
}  // namespace nerova_zel::test
