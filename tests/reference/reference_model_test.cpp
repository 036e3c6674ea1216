#include "reference/reference_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
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

TEST(ReferenceModel, PhaseFollowsTheOrigin) {
  EXPECT_EQ(phase_at_origin(0, 1, 0), 3);
  EXPECT_EQ(phase_at_origin(0, 0, 1), 1);
  EXPECT_EQ(phase_at_origin(0, 1, 1), 2);
  EXPECT_EQ(phase_at_origin(0, -1, 0), 2);
  EXPECT_EQ(phase_at_origin(3, 0, -1), 1);
  EXPECT_EQ(phase_at_origin(2, 3, -2), 1);
  EXPECT_EQ(phase_at_origin(-7, 0, 3), 1);
  EXPECT_EQ(phase_at_origin(-7, 5, 0), 3);
  EXPECT_EQ(phase_at_origin(-7, 4, -2), 0);
}

// Whole frames

struct TestFrame {
  std::vector<std::uint16_t> pixels;
  Frame frame;

  TestFrame(int width, int height, const std::function<int(int, int)>& value)
      : frame{width, height, nullptr, 0, 0, 0, 12, 4095} {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        pixels.push_back(static_cast<std::uint16_t>(value(x, y)));
      }
    }
    frame.input = pixels.data();
  }
};

constexpr std::array<Route, 3> all_routes = {Route::Sse2, Route::Sse41, Route::PerPixel};

TEST(ReferenceModel, TheSameSceneGivesTheSamePolarizationAtEveryPixelOfEveryPhase) {
  // (I0, I45, I90, I135) = (100, 50, 0, 50) everywhere: P = 100, S1 = 100, S2 = 0.
  static constexpr int angles[4][2][2] = {
      {{0, 135}, {45, 90}}, {{45, 90}, {0, 135}}, {{90, 45}, {135, 0}}, {{135, 0}, {90, 45}}};
  for (const Route route : all_routes) {
    for (const int height : {4, 6}) {  // even sizes, where every pixel has the matrix of its own parity
      for (int phase = 0; phase < 4; ++phase) {
        TestFrame scene(12, height, [&](int x, int y) {
          const int angle = angles[phase][y % 2][x % 2];
          return angle == 0 ? 100 : (angle == 90 ? 0 : 50);
        });
        scene.frame.phase = phase;
        const OutputImages images = compute_reference(scene.frame, default_matrices(), route);
        for (std::size_t i = 0; i < scene.pixels.size(); ++i) {
          ASSERT_NEAR(images.normalized_stokes[2 * i], 1.0F, 0.001F) << "phase " << phase << ", pixel " << i;
          ASSERT_EQ(images.normalized_stokes[2 * i + 1], 0.0F) << "phase " << phase << ", pixel " << i;
          ASSERT_EQ(images.codes[TotalPower][i], 100);
          ASSERT_EQ(images.codes[HorizontalVertical][i], 100);
          ASSERT_EQ(images.codes[Azimuth][i], 2048);
        }
        EXPECT_EQ(images.normalized_stokes[2 * scene.pixels.size() - 2], 1.0F) << "the last pixel is exact";
      }
    }
  }
}

TEST(ReferenceModel, ARampSeparatesTheBuiltInRoutesInTheFourthColumnOfBlocksOnly) {
  for (const int width : {8, 13, 19}) {
    for (const int height : {2, 3, 6}) {
      const TestFrame ramp(width, height, [](int x, int y) { return 100 * x + 7 * y; });
      const OutputImages sse2 = compute_reference(ramp.frame, default_matrices(), Route::Sse2);
      const OutputImages sse41 = compute_reference(ramp.frame, default_matrices(), Route::Sse41);
      std::size_t i = 0;
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, ++i) {
          const bool last_rows = y >= height - (height % 2 == 0 ? 2 : 1);
          const bool block = !last_rows && x < width / 4 * 4 - 4;
          EXPECT_EQ(sse2.codes[TotalPower][i] != sse41.codes[TotalPower][i], block && x % 4 == 3)
              << x << ", " << y << " of " << width << " x " << height;
        }
      }
    }
  }
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
    TestFrame ones(e.width, e.height, [](int, int) { return 1; });
    ones.frame.phase = 1;
    const OutputImages images = compute_reference(ones.frame, matrices, Route::PerPixel);
    const std::size_t last = ones.pixels.size() - 1;
    EXPECT_EQ(images.codes[TotalPower][last], e.corner) << e.width << " x " << e.height;
    EXPECT_EQ(images.codes[TotalPower][last - static_cast<std::size_t>(e.width)], e.above_corner)
        << e.width << " x " << e.height;
  }
}

}  // namespace
}  // namespace nerova_zel::test
