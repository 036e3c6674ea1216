// What the interface promises about calibration on the built-in route, without a model of the numbers.

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

#include "support/loaded_library.h"

namespace nerova_zel::test {
namespace {

constexpr int width = 19;  // blocks in columns 0 to 11
constexpr int height = 8;  // and rows 0 to 5
constexpr std::size_t pixels = std::size_t{width} * height;

using Matrix = std::array<float, 16>;
using Images = std::array<std::vector<std::uint16_t>, 5>;

class Calibration : public testing::Test {
 protected:
  Calibration() {
    library_.module_initialize();
    EXPECT_EQ(library_.create(&processor_), NV_POLARIZATION_PROCESSOR_SUCCESS);
    library_.get_coefficients(processor_, matrices_[0].data(), matrices_[1].data(), matrices_[2].data(),
                              matrices_[3].data());
    for (std::size_t i = 0; i < pixels; ++i) {
      input_.push_back(static_cast<std::uint16_t>(1000 + i * i * 37 % 1009));
    }
  }
  ~Calibration() override {
    library_.destroy(processor_);
    library_.module_terminate();
  }

  void set_matrices() {
    library_.set_coefficients(processor_, matrices_[0].data(), matrices_[1].data(), matrices_[2].data(),
                              matrices_[3].data());
  }

  Images transform(std::vector<float>& stokes) {
    Images images;
    for (auto& image : images) {
      image.resize(pixels);
    }
    stokes.resize(2 * pixels);
    EXPECT_EQ(
        library_.transform(processor_, 2, input_.data(), 0, 0, width, height, 12, 65535, stokes.data(),
                           images[0].data(), images[1].data(), images[2].data(), images[3].data(), images[4].data()),
        NV_POLARIZATION_PROCESSOR_SUCCESS);
    return images;
  }

  LoadedLibrary library_{NEROVA_BUILT_IN_ONLY_LIBRARY};
  nv_polarization_processor* processor_ = nullptr;
  std::array<Matrix, 4> matrices_ = {};
  std::vector<std::uint16_t> input_;
  std::vector<float> stokes_before_;
  std::vector<float> stokes_after_;
};

TEST_F(Calibration, ReachesOnlyTheLastColumnsAndRows) {
  const Images before = transform(stokes_before_);
  for (Matrix& matrix : matrices_) {
    for (std::size_t i = 0; i < 4; ++i) {
      matrix[i] *= 0.5F;  // half the power
    }
  }
  set_matrices();
  const Images after = transform(stokes_after_);

  for (std::size_t i = 0; i < pixels; ++i) {
    const bool block = i % width < 12 && i / width < 6;
    EXPECT_EQ(before[0][i] == after[0][i], block) << "total power of pixel " << i;
    EXPECT_EQ(before[4][i] == after[4][i], block) << "degree of polarization of pixel " << i;
    EXPECT_EQ(stokes_before_[2 * i] == stokes_after_[2 * i], block) << "S1 / P of pixel " << i;
  }
  EXPECT_EQ(before[1], after[1]);
  EXPECT_EQ(before[2], after[2]);
  EXPECT_EQ(before[3], after[3]);
}

TEST_F(Calibration, NeverReadsTheFourthRow) {
  const Images before = transform(stokes_before_);
  for (Matrix& matrix : matrices_) {
    for (std::size_t i = 12; i < 16; ++i) {
      matrix[i] = std::numeric_limits<float>::quiet_NaN();
    }
  }
  set_matrices();
  EXPECT_EQ(before, transform(stokes_after_));
  EXPECT_EQ(stokes_before_, stokes_after_);
}

}  // namespace
}  // namespace nerova_zel::test
