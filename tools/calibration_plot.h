#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "polarizer_fit.h"

namespace nerova_zel {

/**
 * Draws one page of 2400 pixels width: the response of each polarizer over the angle of the source, measured and
 * fitted, the residuals, and the numbers. `angles` in degrees, one per frame of the fit.
 */
cv::Mat draw_calibration(const PolarizerFit& fit, const std::vector<double>& angles, const std::string& name);

/** Such as "+0.812". */
std::string angle_error_text(const PolarizerFit& fit, std::size_t polarizer);

/** The extinction ratio in three digits, or the least that it is, if the leakage vanishes in its uncertainty. */
std::string extinction_text(const PolarizerFit& fit, std::size_t polarizer);

}  // namespace nerova_zel
