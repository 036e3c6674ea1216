#pragma once

#include <string>
#include <vector>

#include "calibration/polarizer_fit.h"
#include "picture.h"

namespace nerova_zel {

/**
 * Draws one page of 2400 pixels width: the response of each polarizer over the angle of the source, measured and
 * fitted, the residuals, and the numbers. `angles` in degrees, one per frame of the fit.
 */
Picture draw_calibration(const PolarizerFit& fit, const std::vector<double>& angles, const std::string& name);

}  // namespace nerova_zel
