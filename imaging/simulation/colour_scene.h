#pragma once

#include <cstdint>
#include <vector>

#include "frames/colour_mosaic.h"
#include "simulation/simulated_frame.h"
#include "simulation/simulated_scene.h"

namespace nerova_zel {

/**
 * Cauchy's refractive index for light of a wavelength in micrometres, 0.3 to 1: `index` at the sodium line, 0.5893, and
 * `dispersion` in square micrometres, 0.0042 for usual crown glass and 0.013 for dense flint.
 */
double cauchy_index(double index, double dispersion, double wavelength);

/** Micrometres, of the light that the red filter passes. */
constexpr double longest_wavelength = 0.62;

/**
 * A scene as the filters of a colour sensor see it, at 620, 540 and 460 nanometres: the sphere's refractive index by
 * Cauchy's formula (`settings` holds the one at the sodium line), the wheel's sectors tinted around it, and less light
 * through the filters of red (0.75) and blue (0.55) than of green (1).
 */
class ColourScene {
 public:
  ColourScene(int width, int height, const SceneSettings& settings, double dispersion);

  const SimulatedScene& seen_by(ColourPlane colour) const { return scenes_[static_cast<std::size_t>(colour)]; }

 private:
  PerPlane<SimulatedScene> scenes_;
};

/** Raw frame of a colour sensor. The same settings give the same frame. */
std::vector<std::uint16_t> simulate_colour_frame(const ColourScene& scene, const CameraSettings& camera,
                                                 ColourPattern pattern);

/**
 * The light that the output pixel (x, y) of a plane stands for, as true_light has it for frames; the plane is cut to
 * the part that all planes have.
 */
StokesVector true_colour_light(const ColourScene& scene, const ColourMosaic& mosaic, ColourPlane colour, int x, int y);

}  // namespace nerova_zel
