#pragma once

#include <string>

#include "calibration/polarizer_fit.h"

namespace nerova_zel {

// Numbers of a fit as every report shows them.

/** Degrees, such as "+0.812". */
std::string angle_error_text(const PolarizerFit& fit, std::size_t polarizer);

/** Three digits, or "above" and one digit where only a lower bound is known. */
std::string extinction_text(const PolarizerFit& fit, std::size_t polarizer);

}  // namespace nerova_zel
