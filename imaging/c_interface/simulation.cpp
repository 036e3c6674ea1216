#include "simulation/simulated_frame.h"

#include <algorithm>
#include <cmath>

#include "angles.h"
#include "c_interface/frame_of.h"
#include "c_interface/guarded_call.h"

namespace nerova_zel {

namespace {

CameraSettings camera_of(const nv_imaging_scene* scene) {
  require(scene != nullptr, "there is no scene");
  require(scene->width >= 2 && scene->height >= 2, "a frame must be at least 2 x 2 pixels");
  require(scene->origin_x >= 0 && scene->origin_y >= 0, "the origin must be 0 or more");
  require(scene->bit_depth >= 1 && scene->bit_depth <= 16, "the bit depth must be 1 to 16");
  require(scene->photons >= 0.0 && scene->photons <= 1e12, "photons must be 0 to 1e12");
  require(scene->dark_level >= 0.0 && scene->dark_level < (1 << scene->bit_depth),
          "the dark level must be 0 or more, and less than the pixel values there are");
  CameraSettings camera;
  camera.width = scene->width;
  camera.height = scene->height;
  camera.bit_depth = scene->bit_depth;
  camera.layout = layout_of(scene->layout);
  camera.origin_x = scene->origin_x;
  camera.origin_y = scene->origin_y;
  camera.full_well = scene->photons;
  camera.seed = scene->seed;
  camera.dark_level = scene->dark_level;
  for (std::size_t i = 0; i < camera.polarizers.size(); ++i) {
    require(scene->extinctions[i] >= 1.0, "extinction ratios must be 1 or more");
    require(scene->gains[i] > 0.0 && scene->gains[i] <= 10.0, "gains must be above 0 and at most 10");
    require(std::abs(scene->angle_errors[i]) <= 180.0, "angle errors must be -180 to 180 degrees");
    camera.polarizers[i] = {scene->angle_errors[i], scene->extinctions[i], scene->gains[i]};
  }
  return camera;
}

SceneSettings light_of(const nv_imaging_scene& scene) {
  SceneSettings settings;
  if (scene.uniform != 0) {
    const auto [s0, s1, s2] = std::array<double, 3>{scene.light[0], scene.light[1], scene.light[2]};
    require(s0 >= 0.0 && s0 <= 10.0 && length_of(s1, s2) <= s0 * (1.0 + 1e-9),
            "light must be 0 to 10, and not more than wholly polarized");
    settings.uniform_light = {s0, s1, s2};
  }
  return settings;
}

}  // namespace

}  // namespace nerova_zel

using namespace nerova_zel;

int32_t nv_imaging_simulate(const nv_imaging_scene* scene, uint16_t* pixels, float* s0, float* s1, float* s2) {
  return guarded_call([&] {
    const CameraSettings camera = camera_of(scene);
    const SimulatedScene light(camera.width, camera.height, light_of(*scene));
    const bool truth = s0 != nullptr;
    require(truth == (s1 != nullptr) && truth == (s2 != nullptr), "s0, s1 and s2 are wanted together or not at all");
    if (pixels != nullptr) {
      const std::vector<std::uint16_t> frame = simulate_frame(light, camera);
      std::copy(frame.begin(), frame.end(), pixels);
    }
    for (int y = 0; truth && y < camera.height; ++y) {
      for (int x = 0; x < camera.width; ++x) {
        const StokesVector true_one = true_light(light, camera, x, y);
        *s0++ = static_cast<float>(true_one.s0);
        *s1++ = static_cast<float>(true_one.s1);
        *s2++ = static_cast<float>(true_one.s2);
      }
    }
  });
}
