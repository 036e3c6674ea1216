#include "simulation/simulated_frame.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace nerova_zel {

namespace {

/** Share of full scale that a pixel below the polarizer of a nominal angle receives, as an exact number. */
double received(const StokesVector& light, const PixelPolarizer& polarizer, int nominal_degrees) {
  const double along = light.behind_polarizer(nominal_degrees + polarizer.angle_error);
  return std::max(0.0, polarizer.gain * (along + (light.s0 - along) / polarizer.extinction));
}

}  // namespace

std::vector<std::uint16_t> simulate_frame(const SimulatedScene& scene, const CameraSettings& camera) {
  return simulate_frame([&scene](int x, int y) { return scene.light_at(x + 0.5, y + 0.5); }, camera);
}

std::vector<std::uint16_t> simulate_frame(const std::function<StokesVector(int x, int y)>& light,
                                          const CameraSettings& camera) {
  const double full_scale = (1 << camera.bit_depth) - 1;
  std::mt19937_64 generator(camera.seed);
  std::vector<std::uint16_t> pixels;
  pixels.reserve(static_cast<std::size_t>(camera.width) * static_cast<std::size_t>(camera.height));
  for (int y = 0; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x) {
      const int angle = camera.layout.angle_at(camera.origin_x + x, camera.origin_y + y);
      const PixelPolarizer& polarizer = camera.polarizers[static_cast<std::size_t>(angle / 45)];
      double signal = received(light(x, y), polarizer, angle);
      // Photo-electrons arrive independently: their number is Poisson distributed.
      if (camera.full_well > 0.0 && signal > 0.0) {
        std::poisson_distribution<std::int64_t> electrons(signal * camera.full_well);
        signal = static_cast<double>(electrons(generator)) / camera.full_well;
      }
      pixels.push_back(
          static_cast<std::uint16_t>(std::lround(std::min(full_scale, signal * full_scale + camera.dark_level))));
    }
  }
  return pixels;
}

StokesVector true_light(const SimulatedScene& scene, const CameraSettings& camera, int x, int y) {
  return scene.light_at(std::min(x + 1, camera.width - 1), std::min(y + 1, camera.height - 1));
}

}  // namespace nerova_zel
