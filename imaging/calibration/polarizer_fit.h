#pragma once

#include <array>
#include <vector>

#include "nerova_zel/polarization_processor.hpp"

namespace nerova_zel {

/** One value for each polarizer of the mosaic: 0, 45, 90 and 135 degrees. */
using PerPolarizer = std::array<double, 4>;

/** One frame of a uniform source behind a linear polarizer. */
struct SourceSample {
  double angle_degrees;  ///< of the polarizer before the source
  PerPolarizer signal;   ///< mean pixel values, dark level taken off
};

/**
 * How the pixels under one polarizer answer to light with the linear Stokes parameters s0, s1, s2:
 * unpolarized * s0 + cosine * s1 + sine * s2. An ideal polarizer at the angle a has 1/2, cos(2a)/2 and sin(2a)/2.
 */
struct PolarizerResponse {
  double unpolarized;
  double cosine;
  double sine;

  /** -90 to 90. */
  double angle_degrees() const;
  /** Least over greatest response to fully polarized light, the inverse of the extinction ratio; noise may make it < 0.
   */
  double leakage() const;
  /** Response to unpolarized light, relative to the mean of the four. */
  double gain() const { return 2.0 * unpolarized; }
};

/** Greatest over least response to fully polarized light. */
struct ExtinctionRatio {
  double ratio;
  /** The leakage vanishes in its uncertainty, or is too small to tell: the ratio is at least this. */
  bool is_lower_bound;
};

/** Standard errors that the residuals let expect. */
struct ResponseUncertainty {
  double angle_degrees;
  double leakage;
};

struct PolarizerFit {
  /** Scaled so that the four answer to unpolarized light as ideal polarizers do on average. */
  std::array<PolarizerResponse, 4> responses;
  std::array<ResponseUncertainty, 4> uncertainties;
  /** Intensity of the source in each frame: pixel value behind an ideal polarizer that is aligned with the source's. */
  std::vector<double> source;
  /** Angle of the source in each frame, degrees. */
  std::vector<double> angles;
  /** Measured less fitted signal in each frame, as a share of the mean of `source`. */
  std::vector<PerPolarizer> residuals;

  /** Degrees by which a polarizer (0 to 3) is turned, from its nominal angle counter-clockwise; -90 to 90. */
  double angle_error(std::size_t polarizer) const;
  /** Mean of the four: a turn of the sensor or of the source's scale, which no frame can tell apart. */
  double common_angle_error() const;
  ExtinctionRatio extinction(std::size_t polarizer) const;
  /** Root mean square of the residuals of one polarizer. */
  double residual_of(std::size_t polarizer) const;
  double residual_of_frame(std::size_t frame) const;
};

/**
 * Least-squares fit of the four responses, and of the source's intensity in each frame unless it is `steady`. Takes at
 * least four samples; throws Failure when their angles or signals do not determine the responses.
 */
PolarizerFit fit_polarizers(const std::vector<SourceSample>& samples, bool steady);

/** The library's matrices 0 to 3 for a sensor with these responses: the defaults, if its polarizers are ideal. */
Calibration calibration_matrices(const std::array<PolarizerResponse, 4>& responses);

}  // namespace nerova_zel
