// The library's azimuth and degree on simulated frames against the polarization that the scene truly has.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "angles.h"
#include "imaging/library_outputs.h"

namespace nerova_zel::test {
namespace {

constexpr std::uint16_t output_maximum = 65535;

/** What the samples of one output pixel can have lost against the light at their centre, in pixel values. */
struct SamplingError {
  double s;      ///< of the vector (S1, S2)
  double power;  ///< of P
};

/**
 * Differences of the light between the centre and each of the four samples, and rounding to whole pixel values. In
 * every fourth column some routes of the library take the samples to the left in place of those to the right.
 */
SamplingError sampling_error(const SimulatedScene& scene, const CameraSettings& camera, int x, int y, double rounding) {
  const double full_scale = (1 << camera.bit_depth) - 1;
  const StokesVector centre = true_light(scene, camera, x, y);
  const int right = std::min(x + 1, camera.width - 1);
  const int top = std::min(y, camera.height - 2);
  double of_angle[4] = {};
  for (const int row : {top, top + 1}) {
    for (int column = x % 4 == 3 || x == right ? x - 1 : x; column <= right; ++column) {
      const int angle = camera.layout.angle_at(camera.origin_x + column, camera.origin_y + row);
      const double difference =
          scene.light_at(column + 0.5, row + 0.5).behind_polarizer(angle) - centre.behind_polarizer(angle);
      double& error = of_angle[angle / 45];
      error = std::max(error, rounding + full_scale * std::abs(difference));
    }
  }
  return {std::hypot(of_angle[0] + of_angle[2], of_angle[1] + of_angle[3]),
          0.5 * (of_angle[0] + of_angle[1] + of_angle[2] + of_angle[3])};
}

/** Angle of linear polarization that an azimuth output stands for, less the true one; -90 to 90 degrees. */
double azimuth_error(std::uint16_t azimuth, const StokesVector& truth) {
  return std::remainder(azimuth * 180.0 / output_maximum - 90.0 - truth.angle_degrees(), 180.0);
}

// Without noise every single pixel obeys a bound that follows from how it came about: S1 and S2 are off by no more than
// the light differs between the four samples and their centre, plus half a pixel value of rounding each; that turns the
// angle by at most asin(error / |S|) / 2. The library adds its documented 0.16 degrees to the angle, and to the degree
// twice the relative error 1.5 * 2^-12 of the reciprocal estimate (in P and in 1 / P); outputs are rounded.
class PhysicsOfRoute : public ::testing::TestWithParam<const char*> {};

TEST_P(PhysicsOfRoute, EveryPixelIsWithinItsBoundForAllLayoutsAndOrigins) {
  constexpr double azimuth_approximation = 0.16;
  constexpr double estimates = 2.0 * 1.5 / 4096.0 + 1e-6;
  constexpr double half_code = 0.5 / output_maximum;
  struct Sensor {
    int layout;
    int origin_x;
    int origin_y;
  };
  // Every layout and every parity of both coordinates.
  for (const auto& [layout, origin_x, origin_y] :
       {Sensor{0, 0, 0}, Sensor{45, 1, 0}, Sensor{90, 0, 1}, Sensor{135, 101, 63}}) {
    SCOPED_TRACE(::testing::Message() << "layout " << layout << ", origin " << origin_x << "," << origin_y);
    CameraSettings camera;
    camera.width = 612 + origin_y % 2;
    camera.height = 512 + origin_x % 2;
    camera.layout = MosaicLayout(layout);
    camera.origin_x = origin_x;
    camera.origin_y = origin_y;
    const double full_scale = (1 << camera.bit_depth) - 1;
    const SimulatedScene scene(camera.width, camera.height, {});
    const LibraryOutputs outputs =
        transform_by_library(camera, simulate_frame(scene, camera), output_maximum, GetParam());
    int outside = 0;
    int sharply_bounded = 0;
    std::size_t at = 0;
    for (int y = 0; y < camera.height; ++y) {
      for (int x = 0; x < camera.width; ++x, ++at) {
        const StokesVector truth = true_light(scene, camera, x, y);
        const SamplingError error = sampling_error(scene, camera, x, y, 0.5);
        const double power = truth.s0 * full_scale;
        const double s = truth.degree() * power;
        if (error.s < s) {
          const double bound =
              0.5 * std::asin(error.s / s) * degrees_per_radian + azimuth_approximation + 180.0 * half_code;
          outside += std::abs(azimuth_error(outputs.azimuth[at], truth)) > bound ? 1 : 0;
          sharply_bounded += bound < 1.0 ? 1 : 0;
        }
        if (error.power < power) {
          const double degree = outputs.dolp[at] / static_cast<double>(output_maximum);
          const double least = (s - error.s) / (power + error.power) * (1.0 - estimates) - half_code;
          const double most = (s + error.s) / (power - error.power) * (1.0 + estimates) + half_code;
          outside += degree < std::min(1.0, least) || degree > most ? 1 : 0;
        }
      }
    }
    EXPECT_EQ(outside, 0);
    // The bounds say something: on an eighth of the picture and more the angle is held to a degree.
    EXPECT_GT(sharply_bounded, camera.width * camera.height / 8);
  }
}

INSTANTIATE_TEST_SUITE_P(Physics, PhysicsOfRoute, ::testing::Values(NEROVA_TESTED_LIBRARIES),
                         [](const auto& library) { return library.index == 0 ? "WithPlugins" : "BuiltIn"; });

// With shot noise the errors are as large as photon statistics makes them, neither more nor less. For N electrons at
// full scale a sample of relative intensity I has the variance I / N; with I0 + I90 = I45 + I135 = S0 the variance of
// both S1 and S2 is S0 / N. First-order propagation gives the standard deviations 1 / (2 d sqrt(S0 N)) of the angle and
// sqrt((1 - d^2 / 2) / (S0 N)) of the degree d. Over tens of thousands of pixels their ratio to the errors met is known
// to about one in a hundred; the azimuth's approximation and rounding to pixel values stay below two.
TEST(Physics, NoiseIsThatOfThePhotons) {
  CameraSettings camera;
  camera.width = 640;
  camera.height = 480;
  camera.full_well = 2500;
  camera.seed = 20;
  camera.layout = MosaicLayout(0);
  camera.origin_x = 1;
  const SimulatedScene scene(camera.width, camera.height, {});
  const LibraryOutputs outputs = transform_by_library(camera, simulate_frame(scene, camera), output_maximum);
  double azimuth_squares = 0.0;
  double degree_squares = 0.0;
  int azimuths = 0;
  int degrees = 0;
  std::size_t at = 0;
  for (int y = 0; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x, ++at) {
      const StokesVector truth = true_light(scene, camera, x, y);
      const double degree = truth.degree();
      if (degree < 0.3 || sampling_error(scene, camera, x, y, 0.0).s > 5.0) {
        continue;  // hardly polarized, or at an edge
      }
      const double photons = truth.s0 * camera.full_well;
      const double azimuth_deviation = degrees_per_radian / (2.0 * degree * std::sqrt(photons));
      azimuth_squares += std::pow(azimuth_error(outputs.azimuth[at], truth) / azimuth_deviation, 2);
      ++azimuths;
      if (degree < 0.8) {  // degrees near 1 are cut off there
        const double degree_deviation = std::sqrt((1.0 - 0.5 * degree * degree) / photons);
        degree_squares +=
            std::pow((outputs.dolp[at] / static_cast<double>(output_maximum) - degree) / degree_deviation, 2);
        ++degrees;
      }
    }
  }
  ASSERT_GT(azimuths, 40000);
  ASSERT_GT(degrees, 15000);
  EXPECT_NEAR(std::sqrt(azimuth_squares / azimuths), 1.0, 0.03);
  EXPECT_NEAR(std::sqrt(degree_squares / degrees), 1.0, 0.03);
}

// Fresnel's equations in their well-known special cases.
TEST(Physics, SphereFollowsFresnel) {
  SceneSettings settings;
  settings.body_albedo = 0.0;
  const SimulatedScene scene(2000, 1000, settings);
  const double radius = 430.0;
  const double centre_x = 520.0;
  const double centre_y = 500.0;
  const StokesVector centre = scene.light_at(centre_x, centre_y);
  EXPECT_NEAR(centre.degree(), 0.0, 1e-12);
  EXPECT_NEAR(centre.s0, 0.85 * 0.04, 1e-12);  // ((n - 1) / (n + 1))^2 of the light around
  const double brewster = std::sin(std::atan(settings.refractive_index)) * radius;
  for (const double position : {0.0, 30.0, 100.0, 225.0}) {
    const double radians = position / degrees_per_radian;
    const StokesVector light =
        scene.light_at(centre_x + brewster * std::cos(radians), centre_y - brewster * std::sin(radians));
    EXPECT_NEAR(light.degree(), 1.0, 1e-12);
    EXPECT_NEAR(std::remainder(light.angle_degrees() - position - 90.0, 180.0), 0.0, 1e-9);
  }
}

}  // namespace
}  // namespace nerova_zel::test
