#include "reference/reference_model.h"

#include <gtest/gtest.h>

#include <limits>

namespace nerova_zel::test {
namespace {

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();

// Values that hold for any reciprocal estimate within its bound.

TEST(ReferenceModel, LinearCodesAreRescaledClampedAndRoundedToEven) {
  EXPECT_EQ(linear_code(2047.5F, 12, 4095), 2048);
  EXPECT_EQ(linear_code(2046.5F, 12, 4095), 2046);
  EXPECT_EQ(linear_code(5000.0F, 12, 4095), 4095);
  EXPECT_EQ(linear_code(-5.0F, 12, 4095), 0);
  EXPECT_EQ(linear_code(nan_value, 12, 4095), 4095);
  EXPECT_EQ(linear_code(1000.0F, 12, 255), 62);
  EXPECT_EQ(linear_code(100.0F, 8, 65535), 25700);
  EXPECT_EQ(linear_code(255.0F, 8, 65535), 65535);
  EXPECT_EQ(linear_code(2.0F, 12, 1023), 0);
  EXPECT_EQ(linear_code(6.0F, 12, 1023), 1);
}

TEST(ReferenceModel, AzimuthCodesFollowTheAngle) {
  struct Expected {
    float s1, s2;
    int code;
  };
  for (const Expected& e : {Expected{100, 0, 2048},
                            {-100, 0, 4095},
                            {0, 100, 3071},
                            {0, -100, 1024},
                            {0, 0, 2048},
                            {-100, 100, 3580},
                            {-100, -100, 515},
                            {100, 50, 2349},
                            {50, 100, 2770},
                            {100, -50, 1746},
                            {-100, -1, 6},
                            {-100, -0.0F, 4095}}) {
    EXPECT_EQ(azimuth_code(e.s1, e.s2, 4095), e.code) << e.s1 << ", " << e.s2;
  }
  for (const Expected& e :
       {Expected{100, 0, 32768}, {-100, 0, 65535}, {0, 100, 49151}, {0, -100, 16384}, {0, 0, 32768}}) {
    EXPECT_EQ(azimuth_code(e.s1, e.s2, 65535), e.code) << e.s1 << ", " << e.s2;
  }
  EXPECT_EQ(azimuth_code(0, nan_value, 4095), 1024) << "S1 = 0 leaves only the sign test, which a NaN fails";
  EXPECT_EQ(azimuth_code(nan_value, 1, 4095), 4095);
}

TEST(ReferenceModel, DegreeCodesAreClampedAndZeroWithoutPower) {
  EXPECT_EQ(degree_code({100, 60, 80}, 255), 255);
  EXPECT_EQ(degree_code({300, 60, 80}, 255), 85);
  EXPECT_EQ(degree_code({400, 30, 40}, 255), 32);
  EXPECT_EQ(degree_code({100, 100, 100}, 255), 255);
  EXPECT_EQ(degree_code({100, 0, 0}, 255), 0);
  EXPECT_EQ(degree_code({-100, 60, 80}, 255), 0);
  EXPECT_EQ(degree_code({0, 60, 80}, 255), 0);
  EXPECT_EQ(degree_code({-0.0F, nan_value, 0}, 255), 0);
  EXPECT_EQ(degree_code({100, nan_value, 0}, 255), 255);
}

TEST(ReferenceModel, OddFramesGiveTheCornerTheMatrixOfTheTopLeftPixel) {
  struct Expected {
    int width, height;
    std::uint16_t above_corner, corner;
  };
  // Phase 1 takes matrices 1, 2, 0 and 3 by parity; each makes its number + 1 the power of a frame of ones.
  CalibrationMatrices matrices = default_matrices();
  for (std::size_t m = 0; m < 4; ++m) {
    matrices[m] = {static_cast<float>(2 * (m + 1))};
  }
  for (const Expected& e : {Expected{4, 4, 3, 4}, {5, 4, 2, 2}, {4, 5, 4, 2}, {5, 5, 1, 2}, {2, 2, 3, 4}}) {
    const std::vector<std::uint16_t> ones(static_cast<std::size_t>(e.width * e.height), 1);
    const Frame frame = {e.width, e.height, ones.data(), 1, 0, 0, 12, 4095};
    const OutputImages images = compute_reference(frame, matrices, Route::PerPixel);
    const std::size_t last = ones.size() - 1;
    EXPECT_EQ(images.codes[TotalPower][last], e.corner) << e.width << " x " << e.height;
    EXPECT_EQ(images.codes[TotalPower][last - static_cast<std::size_t>(e.width)], e.above_corner)
        << e.width << " x " << e.height;
  }
}

}  // namespace
}  // namespace nerova_zel::test
