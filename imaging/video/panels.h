#pragma once

#include <cstddef>
#include <cstdint>

#include "azimuth_colours.h"

namespace nerova_zel {

/** Two rows of a frame, of which one row of each panel is made. */
struct PanelRows {
  /** The images of the first of the two rows: a pixel of it sees the whole 2 x 2 pixels already. */
  const std::uint16_t* power;
  const std::uint16_t* azimuth;
  const std::uint16_t* degree;
  /** Both rows. */
  const std::uint16_t* raw[2];
};

/** Where samples and images are shown in full. */
struct PanelScales {
  int output_maximum;
  int full_scale;     ///< of raw samples
  double degree_end;  ///< above 0, at most 1
  double power_end;   ///< a share of full scale, above 0 and at most 1
};

/**
 * Paints one row of each of four panels, `count` = width / 2 pixels of 3 bytes: power and angle, side by side, into
 * `upper`, degree and raw pixels into `lower`. A raw pixel is the brightest of its 2 x 2, red where that is saturated.
 */
void paint_panel_rows(const PanelRows& rows, const PanelScales& scales, const AzimuthColours& colours,
                      std::size_t count, std::uint8_t* upper, std::uint8_t* lower);

}  // namespace nerova_zel
