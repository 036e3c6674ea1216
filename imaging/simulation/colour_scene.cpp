#include "simulation/colour_scene.h"

#include <algorithm>

namespace nerova_zel {

namespace {

struct Filter {
  double wavelength;  ///< micrometres
  double passes;      ///< of the light
  double tint;        ///< degrees, see SceneSettings
};

SimulatedScene scene_behind(const Filter& filter, int width, int height, SceneSettings settings, double dispersion) {
  settings.refractive_index = cauchy_index(settings.refractive_index, dispersion, filter.wavelength);
  settings.light *= filter.passes;
  settings.tint = filter.tint;
  return {width, height, settings};
}

}  // namespace

double cauchy_index(double index, double dispersion, double wavelength) {
  constexpr double sodium = 0.5893;
  return index + dispersion * (1.0 / (wavelength * wavelength) - 1.0 / (sodium * sodium));
}

ColourScene::ColourScene(int width, int height, const SceneSettings& settings, double dispersion)
    : scenes_{scene_behind({longest_wavelength, 0.75, 0.0}, width, height, settings, dispersion),
              scene_behind({0.54, 1.0, 120.0}, width, height, settings, dispersion),
              scene_behind({0.54, 1.0, 120.0}, width, height, settings, dispersion),
              scene_behind({0.46, 0.55, 240.0}, width, height, settings, dispersion)} {}

std::vector<std::uint16_t> simulate_colour_frame(const ColourScene& scene, const CameraSettings& camera,
                                                 ColourPattern pattern) {
  const ColourMosaic mosaic(pattern, {camera.origin_x, camera.origin_y}, {camera.width, camera.height});
  return simulate_frame([&](int x, int y) { return scene.seen_by(mosaic.plane_at(x, y)).light_at(x + 0.5, y + 0.5); },
                        camera);
}

StokesVector true_colour_light(const ColourScene& scene, const ColourMosaic& mosaic, ColourPlane colour, int x, int y) {
  const Region common = mosaic.common_region(colour);
  const int left = common.x + std::min(x, common.size.width - 2);
  const int top = common.y + std::min(y, common.size.height - 2);
  const Origin first = mosaic.frame_pixel(colour, left, top);
  const Origin last = mosaic.frame_pixel(colour, left + 1, top + 1);
  return scene.seen_by(colour).light_at(0.5 * (first.x + last.x + 1), 0.5 * (first.y + last.y + 1));
}

}  // namespace nerova_zel
