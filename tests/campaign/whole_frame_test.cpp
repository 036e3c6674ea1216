// What the interface promises about calibration on the built-in route, without a model of the numbers.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "support/frame_images.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {
namespace {

constexpr int width = 19;  // blocks in columns 0 to 11
constexpr int height = 8;  // and rows 0 to 5
constexpr std::size_t pixels = std::size_t{width} * height;

class Calibration : public testing::Test {
 protected:
  Calibration() {
    processor_.get_coefficients(processor_.handle, matrices_[0], matrices_[1], matrices_[2], matrices_[3]);
  }

  FrameImages transform() {
    processor_.set_coefficients(processor_.handle, matrices_[0], matrices_[1], matrices_[2], matrices_[3]);
    FrameImages images(pixels);
    EXPECT_EQ(images.fill(processor_.transform, processor_.handle, mixed_samples(pixels), width), 0);
    return images;
  }

  const LoadedProcessor processor_{NEROVA_BUILT_IN_ONLY_LIBRARY};
  float matrices_[4][16] = {};
};

TEST_F(Calibration, ReachesOnlyTheLastColumnsAndRows) {
  const FrameImages before = transform();
  for (auto& matrix : matrices_) {
    for (std::size_t i = 0; i < 4; ++i) {
      matrix[i] *= 0.5F;  // half the power
    }
  }
  const FrameImages after = transform();
  for (std::size_t i = 0; i < pixels; ++i) {
    const bool block = i % width < 12 && i / width < 6;
    EXPECT_EQ(before.others[0][i] == after.others[0][i], block) << "total power of pixel " << i;
    EXPECT_EQ(before.stokes[2 * i] == after.stokes[2 * i], block) << "S1 / P of pixel " << i;
  }
  for (const std::size_t image : {1U, 2U, 3U}) {
    EXPECT_EQ(before.others[image], after.others[image]) << "does not depend on power";
  }
}

TEST_F(Calibration, NeverReadsTheFourthRow) {
  const FrameImages before = transform();
  for (auto& matrix : matrices_) {
    std::fill(matrix + 12, matrix + 16, std::numeric_limits<float>::quiet_NaN());
  }
  EXPECT_TRUE(before == transform());
}

}  // namespace
}  // namespace nerova_zel::test
