// Callers that have set floating-point environments of their own.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "support/frame_images.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {
namespace {

constexpr std::int32_t width = 70;
constexpr std::int32_t height = 5;
constexpr std::size_t pixels = std::size_t{width} * std::size_t{height};

struct Settings {
  std::uint32_t vector_units = 0x1F80;
  std::uint16_t x87 = 0x037F;
  std::uint16_t x87_flags = 0;

  void apply() const {
    __asm__ volatile("ldmxcsr %0" : : "m"(vector_units));
    __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(x87));  // what was flagged under a mask is nobody's exception now
  }
  static Settings now() {
    Settings settings;
    __asm__ volatile("stmxcsr %0" : "=m"(settings.vector_units));
    __asm__ volatile("fnstcw %0\n\tfnstsw %1" : "=m"(settings.x87), "=m"(settings.x87_flags));
    settings.x87_flags &= 0x3FU;
    return settings;
  }
  bool operator==(const Settings& other) const {
    return vector_units == other.vector_units && x87 == other.x87 && x87_flags == other.x87_flags;
  }
};

class FloatingPoint : public testing::TestWithParam<const char*> {
 protected:
  FloatingPoint() {
    for (std::size_t i = 0; i < pixels; ++i) {
      frame_[i] = i % 7 < 3 ? std::uint16_t{0} : frame_[i];
    }
    EXPECT_EQ(library_.module_initialize(), 0);
    EXPECT_EQ(library_.create(&processor_), 0);
  }
  ~FloatingPoint() override {
    EXPECT_EQ(library_.destroy(processor_), 0);
    EXPECT_EQ(library_.module_terminate(), 0);
  }

  std::int32_t transform(nv_polarization_processor* processor, FrameImages& images) const {
    return library_.transform(processor, 0, frame_.data(), 0, 0, width, height, 12, 65535, images.stokes.data(),
                              images.others[0].data(), images.others[1].data(), images.others[2].data(),
                              images.others[3].data(), images.others[4].data());
  }

  /** Nothing between the two applications may compute with floating-point numbers. */
  void expect_unaffected(const Settings& settings) const {
    FrameImages expected(pixels);
    ASSERT_EQ(transform(processor_, expected), 0);
    FrameImages images(pixels);
    settings.apply();
    const std::int32_t result = transform(processor_, images);
    const std::int32_t result_without = transform(nullptr, images);  // its time is computed all the same
    const Settings after = Settings::now();
    Settings().apply();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(result_without, 4);
    EXPECT_TRUE(after == settings);
    EXPECT_TRUE(images == expected);
  }

  LoadedLibrary library_{GetParam()};
  nv_polarization_processor* processor_ = nullptr;
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
      ASSERT_EQ(library_.get_coefficients(processor_, matrices[0], matrices[1], matrices[2], matrices[3]), 0);
      for (auto& matrix : matrices) {
        for (float& weight : matrix) {
          weight = weight == 0.0F ? weight : (weight < 0.0F ? -unit : unit);
        }
      }
      ASSERT_EQ(library_.set_coefficients(processor_, matrices[0], matrices[1], matrices[2], matrices[3]), 0);
      expect_unaffected(settings);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, FloatingPoint, testing::Values(NEROVA_BUILT_IN_ONLY_LIBRARY));
INSTANTIATE_TEST_SUITE_P(WithPlugins, FloatingPoint, testing::Values(NEROVA_LIBRARY_WITH_PLUGINS));

}  // namespace
}  // namespace nerova_zel::test
