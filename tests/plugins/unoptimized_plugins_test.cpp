// The plugins compiled without optimisation, which keep every vector on the stack.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/cpu_route.h"
#include "support/plugin_module.h"

namespace nerova_zel::test {
namespace {

constexpr std::int32_t width = 75;
constexpr std::size_t pixels = std::size_t{width} * 4;

FrameImages compute(const PluginModule& plugin, const std::vector<std::uint16_t>& frame, std::uint16_t output_maximum,
                    MatrixRow matrices) {
  FrameImages images(pixels);
  plugin.transform(plugin_call(frame, width, output_maximum, images), matrices);
  return images;
}

void expect_same_images(const std::string& set, const std::string& unoptimized_file, const std::string& file) {
  if (const auto reason = why_route_cannot_run(route_by_name(set).value())) {
    ASSERT_TRUE(may_skip_route(set, *reason));
    GTEST_SKIP();
  }
  const PluginModule unoptimized(unoptimized_file, set);
  const PluginModule plugin(file, set);
  ASSERT_EQ(unoptimized.initialize(), 0);
  const std::vector<std::uint16_t> frame = mixed_samples(pixels);
  CalibrationMatrix custom = default_matrices[0];
  custom.m[0] = 1.25F;
  const CalibrationMatrix* const custom_row[] = {&custom, &custom, &custom, &custom};
  for (const std::uint16_t output_maximum : {std::uint16_t{4095}, std::uint16_t{65535}}) {
    for (const MatrixRow row : {default_row, custom_row}) {
      EXPECT_TRUE(compute(unoptimized, frame, output_maximum, row) == compute(plugin, frame, output_maximum, row));
    }
  }
}

TEST(UnoptimizedPlugins, Avx2) { expect_same_images("avx2", NEROVA_UNOPTIMIZED_AVX2, NEROVA_PLUGIN_AVX2); }

TEST(UnoptimizedPlugins, Avx512) { expect_same_images("avx512", NEROVA_UNOPTIMIZED_AVX512, NEROVA_PLUGIN_AVX512); }

}  // namespace
}  // namespace nerova_zel::test
