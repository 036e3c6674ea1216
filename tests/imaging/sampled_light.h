#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>

#include "angles.h"
#include "simulation/simulated_scene.h"

namespace nerova_zel::test {

/** What a simulated mosaic was exposed to. */
struct SampledLight {
  int width;
  int height;
  double full_scale;
  std::function<int(int x, int y)> polarizer;       ///< degrees, over a pixel
  std::function<StokesVector(int x, int y)> light;  ///< on a pixel
  std::function<StokesVector(int x, int y)> truth;  ///< what an output pixel stands for
};

/** What the samples of one output pixel can have lost against the light at their centre, in pixel values. */
struct SamplingError {
  double s;      ///< of the vector (S1, S2)
  double power;  ///< of P
};

/**
 * Differences of the light between the centre and each of the four samples, and rounding to whole pixel values. In
 * every fourth column some routes of the library take the samples to the left in place of those to the right.
 */
inline SamplingError sampling_error(const SampledLight& sampled, int x, int y, double rounding) {
  const StokesVector centre = sampled.truth(x, y);
  const int right = std::min(x + 1, sampled.width - 1);
  const int top = std::min(y, sampled.height - 2);
  double of_angle[4] = {};
  for (const int row : {top, top + 1}) {
    for (int column = x % 4 == 3 || x == right ? x - 1 : x; column <= right; ++column) {
      const int angle = sampled.polarizer(column, row);
      const double difference = sampled.light(column, row).behind_polarizer(angle) - centre.behind_polarizer(angle);
      double& error = of_angle[angle / 45];
      error = std::max(error, rounding + sampled.full_scale * std::abs(difference));
    }
  }
  return {std::hypot(of_angle[0] + of_angle[2], of_angle[1] + of_angle[3]),
          0.5 * (of_angle[0] + of_angle[1] + of_angle[2] + of_angle[3])};
}

/** Angle of linear polarization that an azimuth output stands for, less the true one; -90 to 90 degrees. */
inline double azimuth_error(std::uint16_t azimuth, int output_maximum, const StokesVector& truth) {
  return std::remainder(azimuth * 180.0 / output_maximum - 90.0 - truth.angle_degrees(), 180.0);
}

struct BoundCheck {
  int outside = 0;
  int sharply_bounded = 0;  ///< pixels whose angle is held to a degree
};

/**
 * Without noise every single pixel obeys a bound that follows from how it came about: S1 and S2 are off by no more than
 * the light differs between the four samples and their centre, plus half a pixel value of rounding each; that turns the
 * angle by at most asin(error / |S|) / 2. The library adds its documented 0.16 degrees to the angle, and to the degree
 * twice the relative error 1.5 * 2^-12 of the reciprocal estimate (in P and in 1 / P); outputs are rounded.
 */
inline BoundCheck check_bounds(const SampledLight& sampled, const std::uint16_t* azimuth, const std::uint16_t* dolp,
                               int output_maximum) {
  constexpr double azimuth_approximation = 0.16;
  constexpr double estimates = 2.0 * 1.5 / 4096.0 + 1e-6;
  const double half_code = 0.5 / output_maximum;
  BoundCheck check;
  std::size_t at = 0;
  for (int y = 0; y < sampled.height; ++y) {
    for (int x = 0; x < sampled.width; ++x, ++at) {
      const StokesVector truth = sampled.truth(x, y);
      const SamplingError error = sampling_error(sampled, x, y, 0.5);
      const double power = truth.s0 * sampled.full_scale;
      const double s = truth.degree() * power;
      if (error.s < s) {
        const double bound =
            0.5 * std::asin(error.s / s) * degrees_per_radian + azimuth_approximation + 180.0 * half_code;
        check.outside += std::abs(azimuth_error(azimuth[at], output_maximum, truth)) > bound ? 1 : 0;
        check.sharply_bounded += bound < 1.0 ? 1 : 0;
      }
      if (error.power < power) {
        const double degree = dolp[at] / static_cast<double>(output_maximum);
        const double least = (s - error.s) / (power + error.power) * (1.0 - estimates) - half_code;
        const double most = (s + error.s) / (power - error.power) * (1.0 + estimates) + half_code;
        check.outside += degree < std::min(1.0, least) || degree > most ? 1 : 0;
      }
    }
  }
  return check;
}

}  // namespace nerova_zel::test
