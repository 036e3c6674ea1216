#pragma once

#include <cstdint>

#include "frames/mosaic_layout.h"
#include "frames/raw_frame.h"
#include "nerova_zel/polarization_processor.hpp"

namespace nerova_zel {

/** A mosaic frame that lies somewhere else, as the library takes it. */
struct MosaicFrame {
  const std::uint16_t* pixels;  ///< width * height, row by row
  int width;                    ///< at least 2
  int height;                   ///< at least 2
  MosaicLayout layout;
  Origin origin;
};

/** Where the linear Stokes parameters go, width * height elements each; NULL where one is not wanted. */
struct StokesPlanes {
  float* s0;  ///< P
  float* s1;
  float* s2;
};

/**
 * P, S1 and S2 of each pixel in rows first_row to end_row - 1, in pixel values and not clipped. The arithmetic, the
 * mirrored edges and the choice of matrices are those of the library's per-pixel rules, to the last bit: its plugins
 * divide and scale just these numbers. Rows are independent: any number of threads may each compute some.
 */
void compute_linear_stokes(const MosaicFrame& frame, const Calibration& matrices, int first_row, int end_row,
                           const StokesPlanes& planes);

/**
 * Degrees, at least 0 and below 180: half the angle of each pair S1 / P, S2 / P, counter-clockwise from the image's
 * horizontal axis. NaN where a pair is not finite, as where P is 0. `degrees` has room for `pixels`; the error is at
 * most that of rounding to float.
 */
void angles_of_pairs(const float* pairs, std::size_t pixels, float* degrees);

}  // namespace nerova_zel
