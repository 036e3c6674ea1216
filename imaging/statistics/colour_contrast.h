#pragma once

#include <optional>

#include "frames/raw_frame.h"

namespace nerova_zel {

/**
 * How much the four cells of a 4 x 4 pattern differ in light, whatever the polarizers: the greatest mean less the
 * least, as a share of all. Medians over tiles of the frame, so that neither edges nor a small coloured thing count.
 */
struct ColourContrast {
  double contrast;
  double uncertainty;  ///< standard error of a cell's mean, likewise a share

  /** The planes of the colours are equal within noise: the sensor is likely a grey one. */
  bool is_grey() const;
  /** There is a pattern that repeats every 4 pixels: the sensor likely has colour filters. */
  bool is_colour() const;
};

/** Nothing if less than a tile of 16 x 16 pixels has light that neither vanishes nor saturates. */
std::optional<ColourContrast> measure_colour_contrast(const RawFrame& frame, const Origin& origin, int full_scale);

}  // namespace nerova_zel
