// The plugins compiled without optimisation, which keep every vector on the stack.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "kernels/default_calibration.h"
#include "support/module_file.h"

namespace nerova_zel::test {
namespace {

constexpr std::int32_t width = 75;
constexpr std::int32_t height = 4;
constexpr std::size_t pixels = std::size_t{width} * std::size_t{height};

struct Images {
  std::vector<float> stokes = std::vector<float>(2 * pixels);
  std::array<std::vector<std::uint16_t>, 5> others;

  Images() { others.fill(std::vector<std::uint16_t>(pixels)); }
  bool operator==(const Images& images) const { return stokes == images.stokes && others == images.others; }
};

class Plugin {
 public:
  Plugin(const std::string& file, const std::string& set) : module_(open_module(file)), set_(set) {}
  ~Plugin() { close_module(module_); }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  bool runs_here() const {
    return reinterpret_cast<std::int32_t (*)()>(entry("vector_" + set_ + "_module_initialize"))() == 0;
  }

  Images compute(const std::vector<std::uint16_t>& frame, float output_maximum, MatrixRow matrices) const {
    Images images;
    const TransformParameters parameters = {height,
                                            width,
                                            0,
                                            frame.data(),
                                            12,
                                            4095.0F,
                                            output_maximum,
                                            static_cast<std::uint32_t>(output_maximum),
                                            images.stokes.data(),
                                            images.others[0].data(),
                                            images.others[1].data(),
                                            images.others[2].data(),
                                            images.others[3].data(),
                                            images.others[4].data()};
    reinterpret_cast<void (*)(const TransformParameters*, MatrixRow)>(entry("transform_vector_" + set_))(&parameters,
                                                                                                         matrices);
    return images;
  }

 private:
  void* entry(const std::string& name) const {
    return find_name(module_, ("nv_polarization_processor_" + name).c_str());
  }

  void* module_;
  std::string set_;
};

void expect_same_images(const std::string& set, const std::string& unoptimized_file, const std::string& file) {
  const Plugin unoptimized(unoptimized_file, set);
  const Plugin plugin(file, set);
  ASSERT_TRUE(unoptimized.runs_here());
  std::vector<std::uint16_t> frame(pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    frame[i] = static_cast<std::uint16_t>((i * 2654435761U >> 20U) | 1U);
  }
  CalibrationMatrix custom = default_matrices[0];
  custom.m[0] = 1.25F;
  const CalibrationMatrix* const default_row[] = {&default_matrices[0], &default_matrices[3], &default_matrices[1],
                                                  &default_matrices[2]};
  const CalibrationMatrix* const custom_row[] = {&custom, &custom, &custom, &custom};
  for (const float output_maximum : {4095.0F, 65535.0F}) {
    for (const MatrixRow row : {default_row, custom_row}) {
      EXPECT_TRUE(unoptimized.compute(frame, output_maximum, row) == plugin.compute(frame, output_maximum, row));
    }
  }
}

TEST(UnoptimizedPlugins, Avx2) { expect_same_images("avx2", NEROVA_UNOPTIMIZED_AVX2, NEROVA_PLUGIN_AVX2); }

#ifdef NEROVA_TEST_AVX512
TEST(UnoptimizedPlugins, Avx512) { expect_same_images("avx512", NEROVA_UNOPTIMIZED_AVX512, NEROVA_PLUGIN_AVX512); }
#endif

}  // namespace
}  // namespace nerova_zel::test
