#pragma once

#include <cstdint>

#include "kernels/shared/image_view.h"

namespace nerova_zel {

/**
 * Where a pixel's partners lie. A mirrored partner stands under the same polarizer as the forward one would, so the
 * order itself, horizontal, vertical, diagonal meets the same matrix in every shape.
 */
enum class NeighbourhoodShape : std::uint32_t {
  Forward = 0,       ///< (x + 1, y + 1)
  MirrorLeft = 1,    ///< (x - 1, y + 1): last column
  MirrorUp = 2,      ///< (x + 1, y - 1): last row
  MirrorCorner = 3,  ///< (x - 1, y - 1): bottom-right pixel
};

/**
 * Computes and stores every selected output of one pixel by the per-pixel rules. Specialised for the outputs; shared
 * by the kernels of all phases and both instruction sets.
 */
using ComputePixel = void (*)(std::uint32_t row, std::uint32_t column, const CalibrationMatrix& matrix,
                              const TransformParameters& parameters, const ImageViews& views, NeighbourhoodShape shape);

/** By pixel selection index. */
struct ComputePixelTable {
  ComputePixel routines[pixel_selection_count];
};

extern const ComputePixelTable compute_pixel_table;

}  // namespace nerova_zel
