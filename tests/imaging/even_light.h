#pragma once

#include <cmath>

#include "angles.h"
#include "frames/raw_frame.h"
#include "simulation/simulated_frame.h"

namespace nerova_zel::test {

/** The same light everywhere; power as a share of full scale, angle in degrees. */
inline SimulatedScene even_light(double power, double degree, double angle) {
  SceneSettings settings;
  const double polarized = power * degree;
  settings.uniform_light =
      StokesVector{power, polarized * std::cos(angle * pi / 90.0), polarized * std::sin(angle * pi / 90.0)};
  return {1, 1, settings};
}

/** What the camera sees of the scene. */
inline RawFrame frame_of(const SimulatedScene& scene, const CameraSettings& camera) {
  return {camera.width, camera.height, camera.bit_depth, 16, simulate_frame(scene, camera)};
}

}  // namespace nerova_zel::test
