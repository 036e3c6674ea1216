#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/shared/outputs.h"

namespace nerova_zel {

/** What is prepared once per frame; reciprocals as the sum of two floats. */
struct FrameConstants {
  float output_maximum;
  float input_reciprocal;
  float input_reciprocal_remainder;
  float half_turn_reciprocal;
  float half_turn_reciprocal_remainder;
};

/** A step whose samples need not lie behind those of the steps before. It may overlap them. */
struct LastStep {
  const std::uint16_t* own;  ///< NULL: there is none
  const std::uint16_t* partner;
  std::size_t x;  ///< of its first pixel, from the first of the stretch
};

/**
 * A stretch of one row, beginning at an even column: whole steps, and perhaps a last one. One sample more is read of
 * both rows than there are pixels: the right partners of the last pixel.
 */
struct RowStretch {
  const std::uint16_t* own;              ///< samples of the row
  const std::uint16_t* partner;          ///< samples of the row below, or above for the last row
  std::size_t element;                   ///< of the first pixel in the outputs
  std::size_t pixels;                    ///< a multiple of the step, or 0
  const CalibrationMatrix* even_matrix;  ///< for even columns
  const CalibrationMatrix* odd_matrix;
  LastStep last;
};

/** Computes a stretch into the images. Leaves the upper halves of the vector registers clean. */
using WideRow = void (*)(const TransformParameters& images, const FrameConstants& constants, const RowStretch& stretch);

/** Pixels that any code may compute at a time: buffers for a step have this size. */
constexpr std::size_t largest_step = 32;

/** By pixel selection index. */
struct WideRowTable {
  WideRow rows[pixel_selection_count];
  /**
   * The same with one image stored past the caches, the Stokes pairs or, where it is alone, a 16-bit output. The
   * stretch must begin in it at a cache line or at a multiple of a step's bytes, and a store fence is needed before
   * others may read it. NULL for other selections.
   */
  WideRow streaming_rows[pixel_selection_count];
  std::size_t step_pixels;  ///< that the code computes at a time; even, at most largest_step, the same for all tables
                            ///< of a plugin
};

/**
 * Code for the default calibration, by the polarizer angle of the row's first pixel (0 to 3); only selections whose
 * distinct_angle is the table's own have an entry.
 */
extern const WideRowTable default_wide_rows_0;
extern const WideRowTable default_wide_rows_1;
extern const WideRowTable default_wide_rows_2;
extern const WideRowTable default_wide_rows_3;

/** Code for all angles, where all weights are ordinary (see ordinary_weights()). */
extern const WideRowTable ordinary_wide_rows;

/** Code for any calibration and all angles. */
extern const WideRowTable calibrated_wide_rows;

}  // namespace nerova_zel
