// The real plugins, called as the library calls them.

#include <gtest/gtest.h>
#include <immintrin.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/cpu_route.h"
#include "support/loaded_library.h"
#include "support/plugin_module.h"

namespace nerova_zel::test {
namespace {

struct Plugin : PluginModule {
  explicit Plugin(const std::string& set) : PluginModule(plugin_path(library_path(), set), set) {}
};

TEST(RealPlugins, InitializeOnlyWhereTheyRun) {
  for (const std::string set : {NEROVA_BUILT_SETS}) {
    EXPECT_EQ(Plugin(set).initialize() == 0, cpu_level() >= (set == "avx2" ? 1 : 2)) << set;
  }
}

/** Whether the upper halves of ymm0-15 or zmm0-15 hold anything but zero. */
__attribute__((target("xsave"))) bool wide_registers_in_use() {
  constexpr auto ymm_and_zmm_halves = 0x44U;
  return (static_cast<unsigned>(_xgetbv(1)) & ymm_and_zmm_halves) != 0;
}

// Assembler, because the compiler cleans up after intrinsics by itself.
void use_wide_registers() { __asm__ volatile("vcmptrueps %%ymm7, %%ymm7, %%ymm7" : : : "xmm7"); }
void clean_wide_registers() { __asm__ volatile("vzeroupper"); }

class CleanRegisters : public testing::TestWithParam<const char*> {};

TEST_P(CleanRegisters, AfterFramesOfEveryPath) {
  if (const auto reason = why_route_cannot_run(route_by_name(GetParam()).value())) {
    ASSERT_TRUE(may_skip_route(GetParam(), *reason));
    GTEST_SKIP();
  }
  const Plugin plugin(GetParam());
  ASSERT_EQ(plugin.initialize(), 0);
  const CalibrationMatrix zero = {};
  const CalibrationMatrix* const custom_row[] = {&zero, &zero, &zero, &zero};
  // Below a step, and whole steps with the last one overlapping.
  for (const std::int32_t width : {7, 100}) {
    const std::vector<std::uint16_t> frame(static_cast<std::size_t>(width) * 4, 100);
    FrameImages images(frame.size());
    for (const MatrixRow row : {default_row, custom_row}) {
      clean_wide_registers();
      plugin.transform(plugin_call(frame, width, 255, images), row);
      EXPECT_FALSE(wide_registers_in_use()) << "width " << width;
    }
  }
  use_wide_registers();
  EXPECT_TRUE(wide_registers_in_use()) << "the check sees nothing";
  clean_wide_registers();
}

INSTANTIATE_TEST_SUITE_P(RealPlugins, CleanRegisters, testing::Values(NEROVA_BUILT_SETS));

}  // namespace
}  // namespace nerova_zel::test
