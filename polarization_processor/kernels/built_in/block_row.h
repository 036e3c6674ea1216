#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/shared/outputs.h"

namespace nerova_zel {

/** What the blocks prepare once per frame; r() is the processor's reciprocal estimate. */
struct BlockConstants {
  float half;              ///< r(2)
  float input_reciprocal;  ///< r(input maximum)
  float output_maximum;    ///< as in TransformParameters
  float azimuth_scale;     ///< output maximum / 180
};

BlockConstants prepare_block_constants(const TransformParameters& parameters);

/**
 * Computes the first `columns` pixels of row `row`, which is not the last one; `columns` is a multiple of 4, and at
 * least four more columns follow. Specialised for the polarizer angle of the row's first pixel and for the outputs.
 */
using BlockRow = void (*)(const TransformParameters& parameters, const BlockConstants& constants, std::size_t row,
                          std::size_t columns);

/**
 * By pixel selection index; one table for each polarizer angle of the row's first pixel and each form. Selections
 * whose distinct_angle is another table's have no entry.
 */
struct BlockRowTable {
  BlockRow rows[pixel_selection_count];
};

extern const BlockRowTable block_rows_sse2_0;
extern const BlockRowTable block_rows_sse2_1;
extern const BlockRowTable block_rows_sse2_2;
extern const BlockRowTable block_rows_sse2_3;
extern const BlockRowTable block_rows_sse41_0;
extern const BlockRowTable block_rows_sse41_1;
extern const BlockRowTable block_rows_sse41_2;
extern const BlockRowTable block_rows_sse41_3;

}  // namespace nerova_zel
