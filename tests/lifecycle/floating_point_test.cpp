// Callers that have set floating-point environments of their own.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "lifecycle/floating_point_settings.h"
#include "support/frame_images.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {
namespace {

constexpr std::int32_t width = 70;
constexpr std::size_t pixels = std::size_t{width} * 5;

using Settings = FloatingPointSettings;

class FloatingPoint : public testing::TestWithParam<const char*> {
 protected:
  FloatingPoint() {
    for (std::size_t i = 0; i < pixels; ++i) {
      frame_[i] = i % 7 < 3 ? std::uint16_t{0} : frame_[i];
    }
  }

  /** Nothing between the two applications may compute with floating-point numbers. */
  void expect_unaffected(const Settings& settings) const {
    FrameImages expected(pixels);
    ASSERT_EQ(expected.fill(processor_.transform, processor_.handle, frame_, width), 0);
    FrameImages images(pixels);
    settings.apply();
    const std::int32_t result = images.fill(processor_.transform, processor_.handle, frame_, width);
    const std::int32_t result_without =
        images.fill(processor_.transform, nullptr, frame_, width);  // its time is computed all the same
    const Settings after = Settings::now();
    Settings().apply();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(result_without, 4);
    EXPECT_TRUE(after == settings);
    EXPECT_TRUE(images == expected);
  }

  LoadedProcessor processor_{GetParam()};
  std::vector<std::uint16_t> frame_ = mixed_samples(pixels);
};

TEST_P(FloatingPoint, CallersSettingsNeitherMatterNorChange) {
  constexpr std::uint32_t flush_to_zero = 0x8000;
  constexpr std::uint32_t denormals_are_zero = 0x0040;
  constexpr std::uint32_t flags = 0x003F;
  constexpr std::uint16_t all_unmasked_extended = 0x0340;
  const Settings environments[] = {{0x1F80U | flush_to_zero | denormals_are_zero, 0x037F},
                                   {0x1F80U | flags, 0x027F},
                                   {0, 0x037F},
                                   {0x1F80, all_unmasked_extended},
                                   {flush_to_zero | denormals_are_zero, all_unmasked_extended}};
  // The default weights, then ones that make denormal numbers.
  for (const float unit : {1.0F, 1e-42F}) {
    for (const Settings& settings : environments) {
      SCOPED_TRACE(settings.vector_units);
      float matrices[4][16];
      ASSERT_EQ(processor_.get_coefficients(processor_.handle, matrices[0], matrices[1], matrices[2], matrices[3]), 0);
      for (auto& matrix : matrices) {
        for (float& weight : matrix) {
          weight = weight == 0.0F ? weight : (weight < 0.0F ? -unit : unit);
        }
      }
      ASSERT_EQ(processor_.set_coefficients(processor_.handle, matrices[0], matrices[1], matrices[2], matrices[3]), 0);
      expect_unaffected(settings);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Both, FloatingPoint,
                         testing::Values(NEROVA_BUILT_IN_ONLY_LIBRARY, NEROVA_LIBRARY_WITH_PLUGINS));

}  // namespace
}  // namespace nerova_zel::test
