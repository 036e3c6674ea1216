// The library's azimuth and degree on simulated frames against the polarization that the scene truly has.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "angles.h"
#include "imaging/library_outputs.h"
#include "imaging/sampled_light.h"

namespace nerova_zel::test {
namespace {

constexpr std::uint16_t largest_output = 65535;

/** A frame of a grey sensor. */
SampledLight sampled_light(const SimulatedScene& scene, const CameraSettings& camera) {
  return {camera.width,
          camera.height,
          static_cast<double>((1 << camera.bit_depth) - 1),
          [&camera](int x, int y) { return camera.layout.angle_at(camera.origin_x + x, camera.origin_y + y); },
          [&scene](int x, int y) { return scene.light_at(x + 0.5, y + 0.5); },
          [&scene, &camera](int x, int y) { return true_light(scene, camera, x, y); }};
}

class PhysicsOfRoute : public ::testing::TestWithParam<const char*> {};

TEST_P(PhysicsOfRoute, EveryPixelIsWithinItsBound) {
  // Of the 16 combinations those in which every layout and every parity of the origin occurs.
  struct Mosaic {
    int layout;
    int origin_x;
    int origin_y;
  };
  for (const auto& [layout, origin_x, origin_y] :
       {Mosaic{0, 0, 0}, Mosaic{45, 1, 0}, Mosaic{90, 0, 1}, Mosaic{135, 101, 63}}) {
    SCOPED_TRACE(::testing::Message() << "layout " << layout << ", origin " << origin_x << "," << origin_y);
    CameraSettings camera;
    camera.width = 612 + origin_y % 2;
    camera.height = 512 + origin_x % 2;
    camera.layout = MosaicLayout(layout);
    camera.origin_x = origin_x;
    camera.origin_y = origin_y;
    const SimulatedScene scene(camera.width, camera.height, {});
    const LibraryOutputs outputs =
        transform_by_library(camera, simulate_frame(scene, camera), largest_output, GetParam());
    const BoundCheck check =
        check_bounds(sampled_light(scene, camera), outputs.azimuth.data(), outputs.dolp.data(), largest_output);
    EXPECT_EQ(check.outside, 0);
    // The bounds say something: on an eighth of the picture and more the angle is held to a degree.
    EXPECT_GT(check.sharply_bounded, camera.width * camera.height / 8);
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
  const LibraryOutputs outputs = transform_by_library(camera, simulate_frame(scene, camera), largest_output);
  const SampledLight sampled = sampled_light(scene, camera);
  double azimuth_squares = 0.0;
  double degree_squares = 0.0;
  int azimuths = 0;
  int degrees = 0;
  std::size_t at = 0;
  for (int y = 0; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x, ++at) {
      const StokesVector truth = true_light(scene, camera, x, y);
      const double degree = truth.degree();
      if (degree < 0.3 || sampling_error(sampled, x, y, 0.0).s > 5.0) {
        continue;  // hardly polarized, or at an edge
      }
      const double photons = truth.s0 * camera.full_well;
      const double azimuth_deviation = degrees_per_radian / (2.0 * degree * std::sqrt(photons));
      azimuth_squares += std::pow(azimuth_error(outputs.azimuth[at], largest_output, truth) / azimuth_deviation, 2);
      ++azimuths;
      if (degree < 0.8) {  // degrees near 1 are cut off there
        const double degree_deviation = std::sqrt((1.0 - 0.5 * degree * degree) / photons);
        degree_squares +=
            std::pow((outputs.dolp[at] / static_cast<double>(largest_output) - degree) / degree_deviation, 2);
        ++degrees;
      }
    }
  }
  ASSERT_GT(azimuths, 40000);
  ASSERT_GT(degrees, 15000);
  EXPECT_NEAR(std::sqrt(azimuth_squares / azimuths), 1.0, 0.03);
  EXPECT_NEAR(std::sqrt(degree_squares / degrees), 1.0, 0.03);
}

TEST(Physics, LightOfTheLastPixelsIsThatOfTheirNeighbours) {
  const CameraSettings camera;
  const SimulatedScene scene(camera.width, camera.height, {});
  const int x = camera.width / 2;
  const int y = camera.height / 2;
  EXPECT_EQ(true_light(scene, camera, camera.width - 1, y).s0, true_light(scene, camera, camera.width - 2, y).s0);
  EXPECT_EQ(true_light(scene, camera, x, camera.height - 1).s0, true_light(scene, camera, x, camera.height - 2).s0);
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
