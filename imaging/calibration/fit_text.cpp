#include "calibration/fit_text.h"

#include <cmath>

#include "formatted.h"

namespace nerova_zel {

std::string angle_error_text(const PolarizerFit& fit, std::size_t polarizer) {
  const double thousandths = std::round(1000.0 * fit.angle_error(polarizer));
  return formatted("%+.3f", thousandths == 0.0 ? 0.0 : thousandths / 1000.0);
}

std::string extinction_text(const PolarizerFit& fit, std::size_t polarizer) {
  const ExtinctionRatio extinction = fit.extinction(polarizer);
  if (!extinction.is_lower_bound) {
    return formatted("%.3g", extinction.ratio);
  }
  const double digit = std::pow(10.0, std::floor(std::log10(extinction.ratio)));
  return formatted("above %.0f", std::floor(extinction.ratio / digit + 1e-9) * digit);
}

}  // namespace nerova_zel
